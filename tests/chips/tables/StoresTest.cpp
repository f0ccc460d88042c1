#include "chips/tables/Stores.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace ChipTables {
namespace {

TEST(Stores, TheObserverSeesEachValueStored) {
  std::uint64_t word = 1;
  std::vector<std::uint64_t> seen;
  const Stores stores([&] { seen.push_back(word); });
  stores.store(word, 2);
  stores.storeChange(word, 3);
  EXPECT_EQ(seen, (std::vector<std::uint64_t>{2, 3}));
}

TEST(Stores, AnEqualValueIsNotAChange) {
  std::uint32_t word = 1;
  int stored = 0;
  const Stores stores([&] { ++stored; });
  stores.storeChange(word, 1);
  EXPECT_EQ(stored, 0);
  stores.store(word, 1);
  EXPECT_EQ(stored, 1);
}

}  // namespace
}  // namespace ChipTables
