#include "Mox/SharedValue.h"

#include <gtest/gtest.h>

#include <utility>

namespace Mox {
namespace {

// Counts how often contents are compared. All numbers with the same last digit have the same hash.
struct Compared {
  int number = 0;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept {
    return seed + static_cast<unsigned>(number % 10);
  }
  friend bool operator==(const Compared& a, const Compared& b) noexcept {
    ++comparisons;
    return a.number == b.number;
  }
  static inline int comparisons = 0;
};

TEST(SharedValue, IsTheDefaultAtFirst) {
  EXPECT_EQ(SharedValue<Compared>()->number, 0);
}

TEST(SharedValue, CopiesShare) {
  const SharedValue<Compared> value(Compared{7});
  const SharedValue<Compared> copy = value;
  EXPECT_EQ(&*copy, &*value);
  SharedValue<Compared> other;
  other = copy;
  const SharedValue<Compared> moved = std::move(other);
  EXPECT_EQ(&*moved, &*value);
}

TEST(SharedValue, EqualsByContent) {
  const SharedValue<Compared> value(Compared{7});
  EXPECT_EQ(value, SharedValue<Compared>(Compared{7}));
  EXPECT_NE(value, SharedValue<Compared>(Compared{17})) << "of the same hash";
  EXPECT_NE(value, SharedValue<Compared>(Compared{8}));
  EXPECT_EQ(value.hash(), SharedValue<Compared>(Compared{7}).hash());
}

TEST(SharedValue, ComparesContentsOnlyIfNeeded) {
  const SharedValue<Compared> value(Compared{7});
  const SharedValue<Compared> copy = value;
  const SharedValue<Compared> other(Compared{8});
  Compared::comparisons = 0;
  EXPECT_TRUE(value == copy);
  EXPECT_FALSE(value == other);
  EXPECT_EQ(Compared::comparisons, 0);
}

}  // namespace
}  // namespace Mox
