#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace ZelAgent {

/// A time of the wall clock.
using WallTime = std::chrono::sys_time<std::chrono::microseconds>;

/// Returns the time of the wall clock now. A test supplies its own.
using WallClock = std::function<WallTime()>;

/// The wall clock of the system.
[[nodiscard]] WallTime systemTime();

/// The time in UTC, as 2026-01-31T23:59:59.123456Z. Precondition: it is in the years 1970 to 9999.
[[nodiscard]] std::string timeText(WallTime time);

/// The same of a number of nanoseconds since 1970, without the part below a microsecond.
[[nodiscard]] std::string timeText(std::uint64_t nanosecondsSince1970);

/// The time in UTC without the fraction, as 2026-01-31T23:59:59Z. The precondition is the same.
[[nodiscard]] std::string secondText(std::chrono::sys_seconds time);

}  // namespace ZelAgent
