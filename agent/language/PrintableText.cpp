#include "agent/language/PrintableText.h"

#include <algorithm>
#include <cstdio>

#include "Mox/PrintableText.h"
#include "agent/language/Limits.h"

namespace ZelAgent {
namespace {

void appendEscaped(std::string& out, char byte) {
  char escape[5];
  std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(byte) & 0xffU);
  out += escape;
}

}  // namespace

std::string printable(std::string_view text, std::size_t maxBytes) {
  std::string out;
  std::size_t used = 0;
  while (used < text.size()) {
    const std::string_view rest = text.substr(used);
    const std::size_t length = Mox::printableAtFront(rest);
    const std::size_t taken = std::max<std::size_t>(length, 1);
    if (used + taken > maxBytes) return out + "...";
    if (length == 0) {
      appendEscaped(out, rest.front());
    } else {
      out += rest.substr(0, length);
    }
    used += taken;
  }
  return out;
}

std::string printableLines(std::string_view text) {
  std::string lines;
  while (true) {
    const std::size_t end = text.find('\n');
    lines += printable(text.substr(0, end), std::string_view::npos);
    if (end == std::string_view::npos) return lines;
    lines += '\n';
    text.remove_prefix(end + 1);
  }
}

std::string inQuotes(std::string_view text) {
  return '"' + printable(text) + '"';
}

std::string orDash(std::string_view text) {
  return text.empty() ? "-" : printable(text, Limits::shownTextBytes);
}

}  // namespace ZelAgent
