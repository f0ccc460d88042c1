#include "chips/tables/RuleSets.h"

#include <gtest/gtest.h>

#include <vector>

namespace ChipTables {
namespace {

class RuleSetsTest : public ::testing::Test {
 protected:
  GraceClock clock_{[] {}};
  std::vector<ZelRuleSet> memory_ = std::vector<ZelRuleSet>(4);
  RuleSets sets_{memory_, clock_};
};

TEST_F(RuleSetsTest, BeginWithTheSetsOfNoneAndOfAll) {
  EXPECT_EQ(memory_[zelNoRules].summary, 0U);
  EXPECT_EQ(memory_[zelAllRules].summary, ~0ULL);
  EXPECT_EQ(memory_[zelAllRules].words[0], ~0ULL);
  EXPECT_EQ(memory_[zelAllRules].words[63], ~0ULL);
  EXPECT_EQ(sets_.available(), 2U);
}

TEST_F(RuleSetsTest, TheSummarySaysWhichWordsHaveMembers) {
  const std::uint32_t set = sets_.take().value();
  EXPECT_TRUE(sets_.isEmpty(set));
  for (const std::uint32_t member : {0U, 127U, 64U, 4095U})
    sets_.memberIs(set, member, true);
  EXPECT_EQ(memory_[set].words[0], 1U);
  EXPECT_EQ(memory_[set].words[1], 1ULL << 63 | 1U);
  EXPECT_EQ(memory_[set].words[63], 1ULL << 63);
  EXPECT_EQ(memory_[set].summary, 1ULL << 63 | 3U);
  sets_.memberIs(set, 64, false);
  EXPECT_EQ(memory_[set].summary, 1ULL << 63 | 3U) << "127 is still in the word";
  sets_.memberIs(set, 127, false);
  EXPECT_EQ(memory_[set].summary, 1ULL << 63 | 1U);
  EXPECT_FALSE(sets_.isEmpty(set));
}

TEST_F(RuleSetsTest, ANewSetIsEmptyOrACopy) {
  const std::uint32_t one = sets_.take().value();
  sets_.memberIs(one, 70, true);
  const std::uint32_t copy = sets_.take(one).value();
  EXPECT_EQ(memory_[copy].words[1], 1U << 6);
  EXPECT_EQ(memory_[copy].summary, 2U);
  EXPECT_EQ(sets_.take(), std::nullopt);
  sets_.giveBack(copy);
  EXPECT_EQ(sets_.take(), std::nullopt) << "a packet may still read it";
  clock_.waitNow();
  EXPECT_EQ(sets_.take(), copy);
  EXPECT_TRUE(sets_.isEmpty(copy));
}

TEST(RuleSetLayout, TheLowestBitOfAWord) {
  for (std::uint32_t bit = 0; bit < 64; ++bit) {
    EXPECT_EQ(zelLowestBit(1ULL << bit), bit);
    EXPECT_EQ(zelLowestBit(~0ULL << bit), bit);
  }
}

}  // namespace
}  // namespace ChipTables
