#include "agent/language/TimeText.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace ZelAgent {
namespace {

// As 2026-01-31T23:59:59.
std::string beginningOf(std::chrono::sys_seconds time) {
  const std::time_t seconds = time.time_since_epoch().count();
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts)};
}

}  // namespace

WallTime systemTime() {
  return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
}

std::string timeText(WallTime time) {
  const auto second = std::chrono::floor<std::chrono::seconds>(time);
  std::array<char, 16> fraction{};
  std::snprintf(fraction.data(), fraction.size(), ".%06dZ",
                static_cast<int>((time - second).count()));
  return beginningOf(second) + fraction.data();
}

std::string timeText(std::uint64_t nanosecondsSince1970) {
  constexpr std::uint64_t inMicrosecond = 1000;
  const std::uint64_t microseconds = nanosecondsSince1970 / inMicrosecond;
  return timeText(WallTime(std::chrono::microseconds(microseconds)));
}

std::string secondText(std::chrono::sys_seconds time) {
  return beginningOf(time) + 'Z';
}

}  // namespace ZelAgent
