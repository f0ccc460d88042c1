#include "agent/language/PrintableText.h"

#include <cstdint>
#include <cstdio>

namespace ZelAgent {
namespace {

// Bytes in the UTF-8 sequence at the front of the text; 0 where none is well formed.
std::size_t sequenceLength(std::string_view text) {
  const auto first = static_cast<std::uint8_t>(text.front());
  const std::size_t length = first < 0x80              ? 1
                             : (first & 0xe0U) == 0xc0 ? 2
                             : (first & 0xf0U) == 0xe0 ? 3
                             : (first & 0xf8U) == 0xf0 ? 4
                                                       : 0;
  if (length == 0 || length > text.size()) return 0;
  for (const char byte : text.substr(1, length - 1)) {
    if ((static_cast<std::uint8_t>(byte) & 0xc0U) != 0x80) return 0;
  }
  return length;
}

bool isControl(std::string_view sequence) {
  const auto first = static_cast<std::uint8_t>(sequence.front());
  const bool c1 = sequence.size() == 2 && first == 0xc2 &&
                  static_cast<std::uint8_t>(sequence[1]) < 0xa0;  // U+0080 to U+009F
  return first < 0x20 || first == 0x7f || c1;
}

void appendEscaped(std::string& out, std::string_view bytes) {
  for (const char byte : bytes) {
    char escape[5];
    std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(byte) & 0xffU);
    out += escape;
  }
}

}  // namespace

std::string printable(std::string_view text, std::size_t maxBytes) {
  std::string out;
  std::size_t used = 0;
  while (used < text.size()) {
    const std::string_view rest = text.substr(used);
    const std::size_t length = sequenceLength(rest);
    const std::string_view sequence = rest.substr(0, length == 0 ? 1 : length);
    if (used + sequence.size() > maxBytes) return out + "...";
    if (length == 0 || isControl(sequence)) {
      appendEscaped(out, sequence);
    } else {
      out += sequence;
    }
    used += sequence.size();
  }
  return out;
}

std::string inQuotes(std::string_view text) {
  return '"' + printable(text) + '"';
}

std::string orDash(std::string_view text) {
  return text.empty() ? "-" : printable(text, 1000);
}

}  // namespace ZelAgent
