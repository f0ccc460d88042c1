// A wall clock that stands still.
#pragma once

#include "agent/language/TimeText.h"

namespace ZelAgent {

inline constexpr const char* fixedTimeText = "2027-01-15T08:00:00.000007Z";
[[nodiscard]] inline WallTime fixedTime() {
  return WallTime(std::chrono::microseconds(1'800'000'000'000'007));
}

}  // namespace ZelAgent
