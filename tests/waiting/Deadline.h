#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace Waiting {

/// The end of a wait. Every wait of a test has one, so that a test that waits for something that
/// never happens fails and says so.
///
/// A wait takes ten seconds at most, unless the test gives another limit. A build with sanitizers
/// multiplies each limit by 6. The environment variable `ZEL_TEST_WAIT_FACTOR`, a number from 1 to
/// 1000, replaces this factor, for valgrind and for slow machines.
class Deadline final {
 public:
  static constexpr std::chrono::milliseconds usual{10'000};

  /// Starts the wait. Throws `std::invalid_argument` if `ZEL_TEST_WAIT_FACTOR` has another value.
  explicit Deadline(std::chrono::milliseconds limit = usual);

  [[nodiscard]] bool hasPassed() const noexcept;
  /// The rest of the time, rounded up, or 0 after the end. It suits `poll`.
  [[nodiscard]] int millisecondsLeft() const noexcept;

  /// One line for a failed test: what was awaited, for how long, and the end of what was seen.
  [[nodiscard]] std::string expiry(std::string_view awaited, std::string_view seen) const;

 private:
  std::chrono::milliseconds limit_;
  std::chrono::steady_clock::time_point end_;
};

}  // namespace Waiting
