#include "Blinklog/Slot.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace Blinklog {
namespace {

// Reads the arguments of a message.
class Arguments final {
 public:
  explicit Arguments(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}

  [[nodiscard]] bool isAtEnd() const noexcept { return bytes_.empty(); }

  void appendTo(std::string& text, char kind) {
    const bool isWhole = kind == 's' ? appendText(text) : appendNumber(text, kind);
    if (!isWhole) text += cutMark;
  }
  // Returns whether there was one.
  bool skip(char kind) noexcept {
    std::string_view text;
    TextHeader header{};
    std::uint32_t number = 0;
    return kind == 's' ? takeText(header, text) : take(&number, sizeof number);
  }

 private:
  static constexpr std::string_view cutMark = "...";

  // These return whether the argument is complete.
  bool appendText(std::string& text) {
    TextHeader header{};
    std::string_view kept;
    if (!takeText(header, kept)) return false;
    text += kept;
    return header.cut == 0;
  }
  bool appendNumber(std::string& text, char kind) {
    std::uint32_t number = 0;
    if (!take(&number, sizeof number)) return false;
    text += kind == 'b' ? (number != 0 ? "true" : "false") : std::to_string(number);
    return true;
  }
  bool takeText(TextHeader& header, std::string_view& kept) noexcept {
    if (!take(&header, sizeof header) || header.kept > bytes_.size()) return false;
    kept = {reinterpret_cast<const char*>(bytes_.data()), header.kept};
    bytes_ = bytes_.subspan(header.kept);
    return true;
  }
  bool take(void* to, std::size_t size) noexcept {
    if (bytes_.size() < size) return false;
    std::memcpy(to, bytes_.data(), size);
    bytes_ = bytes_.subspan(size);
    return true;
  }

  std::span<const std::byte> bytes_;
};

}  // namespace

std::string textOf(const Site& site, std::span<const std::byte> arguments) {
  Arguments left(arguments);
  std::string text;
  for (const std::string& fragment : site.fragments) {
    if (isPlaceholder(fragment)) {
      left.appendTo(text, fragment[1]);
    } else {
      text += fragment;
    }
  }
  return text;
}

bool areComplete(const Site& site, std::span<const std::byte> arguments) noexcept {
  Arguments left(arguments);
  return std::all_of(site.fragments.begin(), site.fragments.end(),
                     [&](const std::string& fragment) {
                       return !isPlaceholder(fragment) || left.isAtEnd() || left.skip(fragment[1]);
                     });
}

}  // namespace Blinklog
