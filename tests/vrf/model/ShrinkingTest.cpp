#include "Shrinking.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

namespace VrfModel {
namespace {

using Numbers = std::vector<int>;

Numbers upTo(int count) {
  Numbers numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

bool has(const Numbers& numbers, int wanted) {
  return std::find(numbers.begin(), numbers.end(), wanted) != numbers.end();
}

TEST(Shrinking, KeepsExactlyTheItemsThatTheFailureNeeds) {
  const Numbers least = shrunk<int>(upTo(500), [](const Numbers& part) {
    return has(part, 3) && has(part, 250) && has(part, 499);
  });
  EXPECT_THAT(least, testing::ElementsAre(3, 250, 499));
}

TEST(Shrinking, KeepsItemsOfWhichOnlySomeManyAreNeeded) {
  const Numbers least =
      shrunk<int>(upTo(100), [](const Numbers& part) { return part.size() >= 4; });
  EXPECT_EQ(least.size(), 4U);
}

TEST(Shrinking, LeavesNothingOfWhatFailsAnyway) {
  EXPECT_THAT(shrunk<int>(upTo(7), [](const Numbers&) { return true; }), testing::IsEmpty());
}

}  // namespace
}  // namespace VrfModel
