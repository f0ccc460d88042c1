// The columns that text takes on a terminal.
#include "agent/language/DisplayWidth.h"

#include <gtest/gtest.h>

namespace ZelAgent {
namespace {

TEST(DisplayWidth, CountsTheColumnsOfEachCharacter) {
  EXPECT_EQ(displayWidth(""), 0U);
  EXPECT_EQ(displayWidth("red"), 3U);
  EXPECT_EQ(displayWidth("grün"), 4U);
  EXPECT_EQ(displayWidth("東京"), 4U);
  EXPECT_EQ(displayWidth("gru\u0308n"), 4U);  // a combining diaeresis
}

TEST(DisplayWidth, ABeginningHasWholeCharacters) {
  EXPECT_EQ(bytesWithin("red", 2), 2U);
  EXPECT_EQ(bytesWithin("red", 9), 3U);
  EXPECT_EQ(bytesWithin("grün", 3), 4U);
  EXPECT_EQ(bytesWithin("東京", 3), 3U);
  EXPECT_EQ(bytesWithin("東京", 1), 0U);
  EXPECT_EQ(bytesWithin("u\u0308n", 1), 3U);
}

}  // namespace
}  // namespace ZelAgent
