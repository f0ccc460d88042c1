#include "chips/tables/PrefixCondition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace ChipTables {
namespace {

using Ranges = std::vector<PolicyMap::NumberRange>;

std::size_t covering(const PrefixCondition& condition, std::uint16_t number) {
  return static_cast<std::size_t>(
      std::count_if(condition.included.begin(), condition.included.end(),
                    [number](const auto& prefix) { return prefix.contains(addressOf(number)); }));
}

TEST(PrefixCondition, PrefixesOfRangesHaveTheirNumbersAndNoOthers) {
  const Ranges ranges{{0, 0}, {80, 80}, {1000, 2000}, {1500, 3000}, {65533, 65535}};
  const PrefixCondition condition = conditionOf(ranges);
  for (std::uint32_t number = 0; number <= 0xffff; ++number) {
    const auto value = static_cast<std::uint16_t>(number);
    const bool expected = std::any_of(ranges.begin(), ranges.end(),
                                      [value](const auto& range) { return range.contains(value); });
    if (covering(condition, value) != (expected ? 1U : 0U)) ADD_FAILURE() << number;
  }
}

TEST(PrefixCondition, PrefixesOfARangeAreFew) {
  EXPECT_EQ(conditionOf(Ranges{{0, 65535}}).included.size(), 1U);
  EXPECT_EQ(conditionOf(Ranges{{1024, 65535}}).included.size(), 6U);
  EXPECT_EQ(conditionOf(Ranges{{1, 65534}}).included.size(), 30U);
}

}  // namespace
}  // namespace ChipTables
