// Which number is handed out next.
#include "chips/interface/FreeNumbers.h"

#include <gtest/gtest.h>

namespace Chips {
namespace {

TEST(FreeNumbers, NumbersBeginAtOneAndFollowEachOther) {
  FreeNumbers numbers;
  EXPECT_EQ(numbers.take(), 1U);
  EXPECT_EQ(numbers.take(), 2U);
  EXPECT_EQ(numbers.take(), 3U);
}

TEST(FreeNumbers, TheLowestFreeNumberIsTakenFirst) {
  FreeNumbers numbers;
  for (int i = 0; i < 4; ++i)
    static_cast<void>(numbers.take());
  numbers.giveBack(3);
  numbers.giveBack(1);
  EXPECT_EQ(numbers.take(), 1U);
  EXPECT_EQ(numbers.take(), 3U);
  EXPECT_EQ(numbers.take(), 5U);
}

}  // namespace
}  // namespace Chips
