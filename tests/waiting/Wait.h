#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>
#include <thread>

#include "tests/waiting/Deadline.h"

namespace Waiting {

/// Waits until `condition()` is true. Returns false and fails the test when the deadline passes
/// first; then `seen()` is the text of what was seen so far.
///
///     ASSERT_TRUE(waitUntil("a message", [&] { return count > 0; }, [&] { return text; }));
template <class Condition, class Seen>
[[nodiscard]] bool waitUntil(std::string_view awaited, Condition condition, Seen seen,
                             const Deadline& deadline = Deadline()) {
  constexpr std::chrono::microseconds pause{50};
  while (!condition()) {
    if (deadline.hasPassed()) {
      ADD_FAILURE() << deadline.expiry(awaited, seen());
      return false;
    }
    std::this_thread::sleep_for(pause);
  }
  return true;
}

}  // namespace Waiting
