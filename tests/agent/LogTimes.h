// The times that the daemon prints before the lines of its log.
#pragma once

#include <cctype>
#include <cstddef>
#include <string>
#include <string_view>

namespace ZelAgent {

// Whether the line begins with a time.
[[nodiscard]] inline bool beginsWithTime(std::string_view line) {
  constexpr std::string_view form = "0000-00-00T00:00:00.000000Z ";
  if (line.size() < form.size()) return false;
  for (std::size_t at = 0; at < form.size(); ++at) {
    const bool isDigit = std::isdigit(static_cast<unsigned char>(line[at])) != 0;
    if (form[at] == '0' ? !isDigit : line[at] != form[at]) return false;
  }
  return true;
}

// The lines without the times with which they begin.
[[nodiscard]] inline std::string withoutTimes(std::string_view lines) {
  constexpr std::size_t timeBytes = 28;
  std::string text;
  while (!lines.empty()) {
    if (beginsWithTime(lines)) lines.remove_prefix(timeBytes);
    const std::size_t end = lines.find('\n');
    const std::size_t size = end == std::string_view::npos ? lines.size() : end + 1;
    text += lines.substr(0, size);
    lines.remove_prefix(size);
  }
  return text;
}

}  // namespace ZelAgent
