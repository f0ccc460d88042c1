#include "agent/language/DisplayWidth.h"

#include <algorithm>
#include <clocale>
#include <cwchar>

namespace ZelAgent {
namespace {

// The functions of the C library decode UTF-8 on this thread while this exists, whatever locale the
// process has.
class Utf8OnThisThread final {
 public:
  Utf8OnThisThread() : before_(uselocale(utf8())) {}
  Utf8OnThisThread(const Utf8OnThisThread&) = delete;
  Utf8OnThisThread& operator=(const Utf8OnThisThread&) = delete;
  ~Utf8OnThisThread() { uselocale(before_); }

 private:
  // A null locale leaves the locale of the thread as it is.
  static locale_t utf8() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
  }

  locale_t before_;
};

struct Character {
  std::size_t bytes = 1;
  std::size_t columns = 1;
};

Character characterAtFront(std::string_view text) {
  wchar_t character = 0;
  std::mbstate_t state{};
  const std::size_t bytes = std::mbrtowc(&character, text.data(), text.size(), &state);
  if (bytes == 0 || bytes > text.size()) return {};
  const int columns = wcwidth(character);
  return {bytes, columns < 0 ? 1 : static_cast<std::size_t>(columns)};
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  if (isAscii(text)) return text.size();
  const Utf8OnThisThread utf8;
  std::size_t columns = 0;
  while (!text.empty()) {
    const Character character = characterAtFront(text);
    columns += character.columns;
    text.remove_prefix(character.bytes);
  }
  return columns;
}

std::size_t bytesWithin(std::string_view text, std::size_t columns) {
  if (isAscii(text)) return std::min(text.size(), columns);
  const Utf8OnThisThread utf8;
  std::size_t taken = 0;
  while (taken < text.size()) {
    const Character character = characterAtFront(text.substr(taken));
    if (character.columns > columns) break;
    columns -= character.columns;
    taken += character.bytes;
  }
  return taken;
}

}  // namespace ZelAgent
