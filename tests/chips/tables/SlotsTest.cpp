#include "chips/tables/Slots.h"

#include <gtest/gtest.h>

#include <set>

namespace ChipTables {
namespace {

class SlotsTest : public ::testing::Test {
 protected:
  // The numbers that are handed out until none is free.
  [[nodiscard]] std::set<std::uint32_t> takeAll() {
    std::set<std::uint32_t> all;
    while (const auto slot = slots_.take())
      EXPECT_TRUE(all.insert(*slot).second) << *slot << " was handed out twice";
    return all;
  }

  GraceClock clock_{[] {}};
  Slots slots_{4, clock_};
};

TEST_F(SlotsTest, HandOutEachNumberFromOneToTheCapacityOnce) {
  EXPECT_EQ(slots_.available(), 4U);
  EXPECT_EQ(takeAll(), (std::set<std::uint32_t>{1, 2, 3, 4}));
  EXPECT_EQ(slots_.available(), 0U);
}

TEST_F(SlotsTest, KeepANumberAsideUntilItsGracePeriodHasEnded) {
  EXPECT_EQ(takeAll().size(), 4U);
  slots_.giveBack(2);
  EXPECT_TRUE(slots_.waits());
  EXPECT_EQ(slots_.available(), 0U);
  EXPECT_EQ(slots_.take(), std::nullopt);
  const std::uint64_t waited = clock_.begins();
  slots_.giveBack(3);
  clock_.ends(waited);
  EXPECT_EQ(slots_.available(), 1U);
  EXPECT_EQ(slots_.take(), 2U);
  EXPECT_EQ(slots_.take(), std::nullopt) << "3 was given back after the wait had begun";
  clock_.waitNow();
  EXPECT_EQ(slots_.take(), 3U);
  EXPECT_FALSE(slots_.waits());
}

TEST_F(SlotsTest, ContinueWithTheNumbersThatAreTaken) {
  slots_.takenIs({true, false, true, false, false, true});
  EXPECT_EQ(slots_.available(), 3U);
  EXPECT_EQ(takeAll(), (std::set<std::uint32_t>{1, 3, 4}));
  slots_.giveBack(2);
  slots_.takenIs({});
  EXPECT_EQ(takeAll(), (std::set<std::uint32_t>{1, 2, 3, 4}));
}

}  // namespace
}  // namespace ChipTables
