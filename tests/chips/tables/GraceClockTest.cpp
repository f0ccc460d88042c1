#include "chips/tables/GraceClock.h"

#include <gtest/gtest.h>

namespace ChipTables {
namespace {

TEST(GraceClock, APeriodEndsWithAWaitThatBeganInItOrLater) {
  GraceClock clock([] {});
  const std::uint64_t unlinked = clock.current();
  EXPECT_FALSE(clock.hasEnded(unlinked));
  const std::uint64_t waited = clock.begins();
  EXPECT_FALSE(clock.hasEnded(unlinked)) << "the wait is not over";
  const std::uint64_t later = clock.current();
  clock.ends(waited);
  EXPECT_TRUE(clock.hasEnded(unlinked));
  EXPECT_FALSE(clock.hasEnded(later)) << "it was unlinked after the wait had begun";
}

TEST(GraceClock, AnEarlierWaitThatIsOverLateTakesNothingBack) {
  GraceClock clock([] {});
  const std::uint64_t first = clock.begins();
  const std::uint64_t second = clock.begins();
  clock.ends(second);
  clock.ends(first);
  EXPECT_TRUE(clock.hasEnded(second));
}

TEST(GraceClock, WaitsNowForAllThatWasUnlinkedBefore) {
  int waits = 0;
  GraceClock* during = nullptr;
  std::uint64_t unlinkedDuring = 0;
  GraceClock clock([&] {
    ++waits;
    unlinkedDuring = during->current();
  });
  during = &clock;
  const std::uint64_t unlinked = clock.current();
  clock.waitNow();
  EXPECT_EQ(waits, 1);
  EXPECT_TRUE(clock.hasEnded(unlinked));
  EXPECT_FALSE(clock.hasEnded(unlinkedDuring));
}

}  // namespace
}  // namespace ChipTables
