#pragma once

#include <cstdint>
#include <ctime>

namespace Blinklog {

/// Reads a clock of the system, as the function `clock_gettime` of POSIX does. A ring gets its time
/// by it, so that a test can supply the time.
using ClockReader = decltype(&::clock_gettime);

/// The time of `clock` in nanoseconds.
[[nodiscard]] inline std::uint64_t nanosecondsOf(ClockReader read, clockid_t clock) noexcept {
  constexpr std::uint64_t second = 1'000'000'000;
  timespec time;
  read(clock, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * second +
         static_cast<std::uint64_t>(time.tv_nsec);
}

/// The monotonic time of a message, in nanoseconds. This is the last tick of the system, at most
/// 10 ms ago, since an exact time costs seven times as much to read.
[[nodiscard]] inline std::uint64_t tickTime(ClockReader read) noexcept {
  return nanosecondsOf(read, CLOCK_MONOTONIC_COARSE);
}

/// The monotonic clock and the wall clock at one moment, in nanoseconds. They convert the times of
/// messages to wall-clock time, in any process and at any time.
///
/// A wall clock that is set later is not followed. So later messages never have an earlier time.
struct ClockPair {
  std::uint64_t monotonic = 0;
  /// Since 1970.
  std::uint64_t wall = 0;

  /// The clocks now.
  [[nodiscard]] static ClockPair now(ClockReader read) noexcept {
    return {nanosecondsOf(read, CLOCK_MONOTONIC), nanosecondsOf(read, CLOCK_REALTIME)};
  }
  /// Any number gives a time, since the result wraps. All results are before the year 2555.
  [[nodiscard]] std::uint64_t wallAt(std::uint64_t monotonicTime) const noexcept {
    return wall + (monotonicTime - monotonic);
  }
};

}  // namespace Blinklog
