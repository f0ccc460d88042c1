// Which known name a mistyped name stands for.
#include "agent/language/NearestName.h"

#include <gtest/gtest.h>

namespace ZelAgent {
namespace {

const std::set<std::string> names{"Ethernet1", "Ethernet12", "red"};

TEST(NearestName, TakesTheFewestChanges) {
  EXPECT_EQ(nearestName("Ethernt1", names), "Ethernet1");
  EXPECT_EQ(nearestName("ethernet12", names), "Ethernet12");
  EXPECT_EQ(nearestName("Ethernet122", names), "Ethernet12");
  EXPECT_EQ(nearestName("rad", names), "red");
}

TEST(NearestName, AnExchangeOfTwoBytesIsOneChange) {
  EXPECT_EQ(nearestName("rde", names), "red");
  EXPECT_EQ(nearestName("Ehtrenet1", {"Ethernet1"}), "Ethernet1");
  EXPECT_EQ(nearestName("der", names), std::nullopt);
}

TEST(NearestName, IsTheFirstOfSeveralThatAreAsNear) {
  EXPECT_EQ(nearestName("bad", {"bed", "bid"}), "bed");
}

TEST(NearestName, IsNoneIfMoreThanAThirdDiffers) {
  EXPECT_EQ(nearestName("abcdef", {"abcdxy"}), "abcdxy");
  EXPECT_EQ(nearestName("abcdef", {"abcxyz"}), std::nullopt);
  EXPECT_EQ(nearestName("blue", names), std::nullopt);
  EXPECT_EQ(nearestName("", {"ab"}), std::nullopt);
  EXPECT_EQ(nearestName("blue", {}), std::nullopt);
}

TEST(NearestName, OneChangeIsNearForAShortName) {
  EXPECT_EQ(nearestName("a", {"b"}), "b");
  EXPECT_EQ(nearestName("ab", {"cd"}), std::nullopt);
}

TEST(NearestName, ASuggestionQuotesTheName) {
  EXPECT_EQ(suggestion("twowords", {"two words"}), "; did you mean 'two words'?");
  EXPECT_EQ(suggestion("blue", names), "");
}

}  // namespace
}  // namespace ZelAgent
