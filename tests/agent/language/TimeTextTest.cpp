// Times of the wall clock as text.
#include "agent/language/TimeText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace ZelAgent {
namespace {

using std::chrono::microseconds;

TEST(TimeText, HasMicrosecondsInUtc) {
  EXPECT_EQ(timeText(WallTime(microseconds(0))), "1970-01-01T00:00:00.000000Z");
  EXPECT_EQ(timeText(WallTime(microseconds(1'800'000'000'000'007))), "2027-01-15T08:00:00.000007Z");
  EXPECT_EQ(timeText(WallTime(microseconds(951'782'399'999'999))), "2000-02-28T23:59:59.999999Z");
}

TEST(TimeText, OfNanosecondsLeavesOutWhatIsBelowAMicrosecond) {
  EXPECT_EQ(timeText(std::uint64_t{1'999}), "1970-01-01T00:00:00.000001Z");
  EXPECT_EQ(timeText(std::numeric_limits<std::uint64_t>::max()), "2554-07-21T23:34:33.709551Z");
}

TEST(TimeText, OfSecondsHasNoFraction) {
  EXPECT_EQ(secondText(std::chrono::sys_seconds(std::chrono::seconds(253'402'300'799))),
            "9999-12-31T23:59:59Z");
}

}  // namespace
}  // namespace ZelAgent
