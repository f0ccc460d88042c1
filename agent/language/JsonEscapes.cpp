#include "agent/language/JsonEscapes.h"

#include <cstdio>

#include "Mox/PrintableText.h"

namespace ZelAgent {
namespace {

// Appends the escape of the character at the front of `json`, and returns the number of its bytes.
// Precondition: the character has at most three bytes, as every unprintable one has.
std::size_t appendEscape(std::string& text, std::string_view json) {
  const auto bits = [&](std::size_t at) { return static_cast<unsigned>(json[at]) & 0x3fU; };
  const auto first = static_cast<unsigned char>(json.front());
  const std::size_t length = first < 0x80 ? 1 : first < 0xe0 ? 2 : 3;
  unsigned character = first;
  if (length == 2) character = (first & 0x1fU) << 6U | bits(1);
  if (length == 3) character = (first & 0xfU) << 12U | bits(1) << 6U | bits(2);
  char escape[7];
  std::snprintf(escape, sizeof escape, "\\u%04x", character & 0xffffU);
  text += escape;
  return length;
}

}  // namespace

std::string escapedJson(std::string_view json) {
  std::string text;
  while (!json.empty()) {
    std::size_t length = Mox::printableAtFront(json);
    if (length != 0) {
      text += json.substr(0, length);
    } else {
      length = appendEscape(text, json);
    }
    json.remove_prefix(length);
  }
  return text;
}

}  // namespace ZelAgent
