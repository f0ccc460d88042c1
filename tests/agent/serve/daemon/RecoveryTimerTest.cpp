// When a daemon asks the chip again without an event.
#include "agent/serve/daemon/RecoveryTimer.h"

#include <gtest/gtest.h>

#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/serve/daemon/ManualScheduler.h"

namespace ZelAgent {
namespace {

using std::chrono::milliseconds;

class RecoveryTimerTest : public ::testing::Test {
 protected:
  [[nodiscard]] bool isProgrammed() { return !hasFailedAction(served_.agent().state()); }
  [[nodiscard]] std::uint64_t updates() { return served_.agent().chip().hookCounts().updates; }

  ManualScheduler scheduler_;
  ServedAgent served_{writeSmall("timer.json", {{{"red"}}, {"red"}, {"e1"}}), 16};
  RecoveryTimer timer_{scheduler_, served_};
};

TEST_F(RecoveryTimerTest, DoesNotRunWhileThereIsNothingToRecover) {
  (void)served_.start();
  EXPECT_EQ(scheduler_.running(), 0U);
  (void)served_.reload();
  EXPECT_EQ(scheduler_.running(), 0U);
}

TEST_F(RecoveryTimerTest, AsksOnceInEachPeriodThatIsDueUntilTheChipAccepts) {
  served_.agent().chip().faultPlan().anyFaultsIs(3);
  (void)served_.start();
  EXPECT_EQ(scheduler_.running(), 1U);
  scheduler_.pass(RecoveryTimer::period - milliseconds(1));
  EXPECT_EQ(updates(), 0U);
  scheduler_.pass(milliseconds(1));
  EXPECT_EQ(updates(), 1U);
  scheduler_.pass(2 * RecoveryTimer::period);
  EXPECT_EQ(updates(), 2U);
  EXPECT_FALSE(isProgrammed());
  scheduler_.pass(4 * RecoveryTimer::period);
  EXPECT_EQ(updates(), 3U);
  EXPECT_TRUE(isProgrammed());
  EXPECT_EQ(scheduler_.running(), 0U);
}

TEST_F(RecoveryTimerTest, RunsAfterAnEventThatTheChipRefused) {
  (void)served_.start();
  (void)served_.play(PlanChipFaults{"red", 1});
  EXPECT_EQ(scheduler_.running(), 0U);
  (void)served_.play(SetVrfId{"red", 9});
  EXPECT_EQ(scheduler_.running(), 1U);
  scheduler_.pass(RecoveryTimer::period);
  EXPECT_TRUE(isProgrammed());
  EXPECT_EQ(scheduler_.running(), 0U);
}

TEST_F(RecoveryTimerTest, RunsAfterAReloadThatTheChipRefused) {
  (void)served_.start();
  served_.agent().chip().faultPlan().anyFaultsIs(1);
  writeSmall("timer.json", {{{"red"}, {"blue"}}, {"red", "blue"}, {"e1"}});
  (void)served_.reload();
  EXPECT_EQ(scheduler_.running(), 1U);
  scheduler_.pass(RecoveryTimer::period);
  EXPECT_TRUE(isProgrammed());
}

TEST_F(RecoveryTimerTest, DoesNotBeginItsPeriodAgainAtEachEvent) {
  served_.agent().chip().faultPlan().anyFaultsIs(100);
  (void)served_.start();
  for (int event = 0; event < 4; ++event) {
    scheduler_.pass(RecoveryTimer::period / 2);
    (void)served_.play(Show{});
  }
  EXPECT_EQ(updates(), 1U);
}

TEST_F(RecoveryTimerTest, DoesNotRunWhileAnActionWaitsForRoomOrAnId) {
  served_.agent().chip().capacityIs(0);
  (void)served_.start();
  EXPECT_EQ(scheduler_.running(), 0U);
  (void)served_.play(SetVrfId{"red", 0});
  EXPECT_EQ(scheduler_.running(), 0U);
}

}  // namespace
}  // namespace ZelAgent
