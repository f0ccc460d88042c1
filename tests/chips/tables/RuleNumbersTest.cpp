#include "chips/tables/RuleNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "testing/RandomSeed.h"

namespace ChipTables {
namespace {

using Numbers = RuleNumbers::Numbers;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

class RuleNumbersTest : public ::testing::Test {
 protected:
  // Inserts a rule, and returns how many others got new numbers.
  std::size_t insert(std::size_t place) {
    auto plan = numbers_.planFor(present_, place);
    if (!plan) {
      settle();
      plan = numbers_.planFor(present_, place);
    }
    present_.insert(present_.begin() + static_cast<std::ptrdiff_t>(place), 0);
    for (std::size_t at = 0; at < plan->numbers.size(); ++at) {
      const std::uint32_t number = plan->numbers[at];
      EXPECT_TRUE(numbers_.isFree(number)) << number;
      numbers_.take(number);
      if (plan->first + at != place) left_.push_back(present_[plan->first + at]);
      present_[plan->first + at] = number;
    }
    EXPECT_TRUE(std::is_sorted(present_.begin(), present_.end(), std::less_equal<>()));
    return plan->numbers.size() - 1;
  }
  // Frees the numbers that rules have left.
  void settle() {
    for (const std::uint32_t number : left_)
      numbers_.giveBack(number);
    left_.clear();
  }

  RuleNumbers numbers_;
  Numbers present_;
  Numbers left_;
};

TEST_F(RuleNumbersTest, RulesAddedAtTheEndStayWhereTheyAre) {
  std::size_t moved = 0;
  for (std::size_t place = 0; place < 1000; ++place)
    moved += insert(place);
  EXPECT_EQ(moved, 0U);
}

TEST_F(RuleNumbersTest, ARuleBetweenOthersMovesFewOfThem) {
  std::size_t moved = 0;
  for (std::size_t place = 0; place < 500; ++place)
    insert(place);
  for (int i = 0; i < 500; ++i) {
    moved += insert(250);
    settle();
  }
  EXPECT_LT(moved, 500U * 25);
}

TEST_F(RuleNumbersTest, AsManyRulesAsTheCapacityFitInAnyOrder) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  for (std::size_t size = 0; size < RuleNumbers::capacity; ++size) {
    const std::size_t place = random() % 3 == 0 ? 0 : random() % (size + 1);
    insert(place);
    if (HasFailure()) return;
  }
  settle();
  EXPECT_EQ(present_.size(), RuleNumbers::capacity);
  EXPECT_TRUE(numbers_.planFor(present_, 1000).has_value()) << "a rule that moves needs another";
}

TEST_F(RuleNumbersTest, NumbersThatAreNotFreeAreNotGiven) {
  Numbers taken;
  for (std::uint32_t number = 0; number < zelRules; ++number) {
    if (number == 17) continue;
    numbers_.take(number);
  }
  const auto plan = numbers_.planFor({}, 0);
  ASSERT_TRUE(plan.has_value());
  EXPECT_EQ(plan->numbers, Numbers{17});
  EXPECT_EQ(numbers_.planFor({16}, 0), std::nullopt) << "two rules need two numbers";
}

}  // namespace
}  // namespace ChipTables
