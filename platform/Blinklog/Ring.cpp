#include "Blinklog/Ring.h"

#include <deque>

namespace Blinklog {
namespace {

constexpr std::size_t processSlots = 4096;

std::deque<Site>& sites() {
  static std::deque<Site> registered;
  return registered;
}

}  // namespace

// Takes arguments out again and appends them to a text.
class Ring::Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}

  void appendTo(std::string& text, char kind) {
    const bool isWhole = kind == 's' ? appendText(text) : appendNumber(text, kind);
    if (!isWhole) text += cutMark;
  }

 private:
  static constexpr std::string_view cutMark = "...";

  // These say whether all of the argument is there.
  bool appendText(std::string& text) {
    TextHeader header{};
    if (!take(&header, sizeof header) || header.kept > bytes_.size()) return false;
    text.append(reinterpret_cast<const char*>(bytes_.data()), header.kept);
    bytes_ = bytes_.subspan(header.kept);
    return header.cut == 0;
  }
  bool appendNumber(std::string& text, char kind) {
    std::uint32_t number = 0;
    if (!take(&number, sizeof number)) return false;
    text += kind == 'b' ? (number != 0 ? "true" : "false") : std::to_string(number);
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

std::string Ring::textOf(const Site& site, std::span<const std::byte> arguments) {
  Reader reader(arguments);
  std::string text;
  for (const std::string& fragment : site.fragments) {
    if (fragment.size() == 2 && fragment[0] == '%') {
      reader.appendTo(text, fragment[1]);
    } else {
      text += fragment;
    }
  }
  return text;
}

SiteId siteIs(const Site& site) {
  const auto found = std::find(sites().begin(), sites().end(), site);
  const auto id = static_cast<SiteId>(found - sites().begin());
  if (found == sites().end()) sites().push_back(site);
  return id;
}

Ring::Ring(std::size_t slots) : slots_(slots), ring_(std::make_unique<Slot[]>(slots)) {}

Ring::~Ring() = default;

void Ring::write(SiteId site, std::span<const Argument> arguments) noexcept {
  Message message(*this, site);
  for (const Argument& argument : arguments)
    message.put(argument);
}

std::vector<Record> Ring::dump() const {
  std::vector<Record> records;
  const std::uint64_t oldest = written_ < slots_ ? 0 : written_ - slots_;
  for (std::uint64_t sequence = oldest; sequence < written_; ++sequence) {
    const Slot& slot = ring_[sequence % slots_];
    if (slot.sequence != sequence) continue;
    const Site& site = sites()[slot.site];
    records.push_back({sequence, &site, textOf(site, std::span(slot.arguments).first(slot.size))});
  }
  return records;
}

void Ring::clear() noexcept {
  for (std::size_t slot = 0; slot < slots_; ++slot)
    ring_[slot].sequence = noMessage;
}

// Made while the platform is loaded, so that messages can be sent until the process ends.
Ring ringOfProcess(processSlots);

}  // namespace Blinklog
