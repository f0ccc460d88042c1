#include "Steps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace VrfModel {
namespace {

using testing::HasSubstr;

// An item of the steps under test.
struct Letter {
  char letter;
  friend auto operator<=>(const Letter&, const Letter&) = default;
};
std::string shown(const Letter& item) {
  return std::string(1, item.letter);
}

std::vector<Letter> letters(std::string_view text) {
  std::vector<Letter> made;
  for (const char letter : text)
    made.push_back({letter});
  return made;
}

Steps<Letter> steps(std::string_view text) {
  Steps<Letter> made;
  for (const char letter : text) {
    if (letter == ' ') {
      made.next();
    } else {
      made.add({letter});
    }
  }
  return made;
}

TEST(Steps, AcceptAnyOrderWithinAStep) {
  EXPECT_EQ(steps("a bcd e").differenceFrom(letters("adcbe")), "");
}

TEST(Steps, RefuseAnItemOfALaterStep) {
  EXPECT_THAT(steps("a bcd e").differenceFrom(letters("aecbd")), HasSubstr("expected"));
}

TEST(Steps, RefuseAMissingAndAnExtraItem) {
  EXPECT_THAT(steps("a bb").differenceFrom(letters("ab")), HasSubstr("then"));
  EXPECT_THAT(steps("a b").differenceFrom(letters("abb")), HasSubstr("observed"));
}

TEST(Steps, OfNothingAcceptNothingOnly) {
  EXPECT_EQ(steps("").differenceFrom({}), "");
  EXPECT_THAT(steps("").differenceFrom(letters("x")), HasSubstr("nothing"));
}

}  // namespace
}  // namespace VrfModel
