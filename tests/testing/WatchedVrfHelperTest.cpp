// The proxy of a chip forwards each hook call, measures it, and reports what it throws.
#include "testing/conformance/WatchedVrfHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

#include "testing/Journal.h"
#include "testing/RecordingVrfHelper.h"
#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {
namespace {

using ::testing::ElementsAre;

// Returns when the clock has advanced.
void takeTime() {
  const auto begun = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() == begun) {
  }
}

HwStatus notProgrammed() {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  return status;
}

class WatchedChip : public ::testing::Test {
 protected:
  Journal journal_;
  const Mox::Ptr<RecordingVrfHelper> chip_ = Mox::makePtr<RecordingVrfHelper>(
      journal_, VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs(),
      Routing::Hardware::RouteStatus::RouteStatusIs(),
      Routing6::Hardware::RouteStatus::RouteStatusIs());
  const Mox::Ptr<WatchedVrfHelper> watched_ = Mox::makePtr<WatchedVrfHelper>(chip_);
  const VrfAction red_{"red", PolicyMap::ActionType::vrf};
};

TEST_F(WatchedChip, GetsEachCallAndItsOutcomeIsReturned) {
  chip_->onCreate = [](const VrfAction&) { return notProgrammed(); };
  EXPECT_EQ(watched_->createVrf(red_), notProgrammed());
  EXPECT_EQ(watched_->updateVrf(red_), HwStatus());
  watched_->deleteVrf(red_);
  EXPECT_THAT(journal_.lines(), ElementsAre("createVrf red", "updateVrf red", "deleteVrf red"));
}

TEST_F(WatchedChip, HasTheNameAndTheFactsOfTheChip) {
  EXPECT_EQ(watched_->nameString(), chip_->nameString());
  EXPECT_EQ(watched_->vrfFallbackConfig(), chip_->vrfFallbackConfig());
  EXPECT_EQ(watched_->routingHwRouteStatus(), chip_->routingHwRouteStatus());
  EXPECT_EQ(watched_->routing6HwRouteStatus(), chip_->routing6HwRouteStatus());
}

TEST_F(WatchedChip, HasTheNumberAndTheTimesOfItsCalls) {
  chip_->onUpdate = [](const VrfAction&) {
    takeTime();
    return HwStatus();
  };
  static_cast<void>(watched_->updateVrf(red_));
  static_cast<void>(watched_->updateVrf(red_));
  EXPECT_EQ(watched_->creations().calls, 0U);
  EXPECT_EQ(watched_->deletions().calls, 0U);
  const HookTimes& times = watched_->updates();
  EXPECT_EQ(times.calls, 2U);
  EXPECT_GT(times.longest, HookTimes::Duration::zero());
  EXPECT_GT(times.total, times.longest);
  EXPECT_LE(times.total, 2 * times.longest);
}

TEST_F(WatchedChip, FailsTheTestWhenAHookThrowsAndReturnsAFailure) {
  chip_->onCreate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("no room"); };
  chip_->onUpdate = [](const VrfAction&) -> HwStatus { throw 1; };
  chip_->onDelete = [](const VrfAction&) { throw std::runtime_error("not there"); };
  HwStatus created;
  HwStatus updated;
  EXPECT_NONFATAL_FAILURE(created = watched_->createVrf(red_),
                          "createVrf of 'red' threw no room\nThe contract of VrfHelper says: a "
                          "failure is data in the returned record, never an exception.");
  EXPECT_NONFATAL_FAILURE(updated = watched_->updateVrf(red_),
                          "updateVrf of 'red' threw something that is no std::exception");
  EXPECT_NONFATAL_FAILURE(watched_->deleteVrf(red_), "deleteVrf of 'red' threw not there");
  EXPECT_EQ(shown(created), "programmingFailure failureVrfResourceAlloc 'the hook threw'");
  EXPECT_EQ(updated, created);
  EXPECT_EQ(watched_->deletions().calls, 1U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
