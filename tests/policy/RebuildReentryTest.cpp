#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "testing/Journal.h"
#include "testing/RecordingVrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A top object with a machine on its tables, and one VRF that falls back to another, so that the
/// start of a machine calls the chip for the created actions.
class RebuildReentry : public ::testing::Test {
 protected:
  RebuildReentry() {
    fallback_->fallbackVrfIs("red", "blue");
    rebuild();
    users_->vrfRefCountInc(red_, 1);
    users_->vrfRefCountInc(green_, 1);
    EXPECT_THAT(journal_.take(), ElementsAre("createVrf red", "createVrf green"));
  }

  // Another route status makes another machine.
  void rebuild() {
    top_->vrfSmIs(users_, statuses_, chip_, fallback_,
                  Routing::Hardware::RouteStatus::RouteStatusIs(), nullptr);
  }

  const VrfAction red_{"red", PolicyMap::ActionType::vrf};
  const VrfAction green_{"green", PolicyMap::ActionType::vrf};
  Journal journal_;
  Mox::Ptr<VrfHwConfig> users_ = vrfHwConfigFactory();
  Mox::Ptr<VrfHwStatus> statuses_ = vrfHwStatusFactory();
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback_ =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<RecordingVrfHelper> chip_ = Mox::makePtr<RecordingVrfHelper>(journal_, fallback_);
  Mox::Ptr<ZelVrfSelectionPolicySm> top_ =
      zelVrfSelectionPolicySmFactory(nullptr, nullptr, chip_, fallback_, nullptr, nullptr);
};

TEST_F(RebuildReentry, AHookMayDropTheTopObjectWhileItsMachineIsRebuilt) {
  chip_->onUpdate = [this](const VrfAction&) {
    top_ = nullptr;
    return HwStatus();
  };
  rebuild();
  EXPECT_THAT(journal_.take(), ElementsAre("updateVrf red"));
  users_->vrfRefCountInc(red_, 1);
  users_->vrfRefCountIs(VrfAction("late", PolicyMap::ActionType::vrf), 1);
  EXPECT_THAT(journal_.take(), IsEmpty());
}

TEST_F(RebuildReentry, AUserWhoLeavesDuringARebuildHasTheResourceDeletedOnce) {
  chip_->onUpdate = [this](const VrfAction&) {
    users_->vrfRefCountDec(green_, 1);
    return HwStatus();
  };
  rebuild();
  EXPECT_THAT(journal_.take(), ElementsAre("updateVrf red", "deleteVrf green"));
  EXPECT_FALSE(statuses_->hwStatusHas(green_));
}

// In the innermost call three machines stand on the tables, and only the first of them is paused.
TEST_F(RebuildReentry, AUserWhoLeavesDuringARebuildWithinARebuildHasTheResourceDeletedOnce) {
  chip_->onUpdate = [this, calls = 0](const VrfAction&) mutable {
    const int call = ++calls;
    if (call == 1) rebuild();
    if (call == 2) users_->vrfRefCountDec(green_, 1);
    return HwStatus();
  };
  rebuild();
  EXPECT_THAT(journal_.take(), ElementsAre("updateVrf red", "updateVrf red", "deleteVrf green"));
  EXPECT_FALSE(statuses_->hwStatusHas(green_));
  EXPECT_FALSE(users_->vrfRefCount().has(green_));
}

TEST_F(RebuildReentry, ARebuildInTheMiddleOfARemovalDeletesTheResourceOnce) {
  chip_->onDelete = [this](const VrfAction&) { rebuild(); };
  users_->vrfRefCountDec(green_, 1);
  EXPECT_THAT(journal_.take(), ElementsAre("deleteVrf green", "updateVrf red"));
  EXPECT_FALSE(statuses_->hwStatusHas(green_));
  EXPECT_FALSE(users_->vrfRefCount().has(green_));
}

TEST_F(RebuildReentry, AnActionThatComesBackBeforeTheMachineIsDroppedIsCreatedAnew) {
  chip_->onDelete = [this](const VrfAction& action) {
    users_->vrfRefCountInc(action, 1);
    top_ = nullptr;
  };
  users_->vrfRefCountDec(green_, 1);
  EXPECT_THAT(journal_.take(), ElementsAre("deleteVrf green", "createVrf green"));
  EXPECT_TRUE(statuses_->hwStatusHas(green_));
}

TEST_F(RebuildReentry, AFailedRebuildLeavesTheOldMachineAtWork) {
  chip_->onUpdate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("no"); };
  const Mox::Ptr<VrfSm> before = top_->vrfSm();
  EXPECT_THROW(rebuild(), std::runtime_error);
  EXPECT_THAT(journal_.take(), ElementsAre("updateVrf red"));
  EXPECT_EQ(top_->vrfSm(), before);
  users_->vrfRefCountDec(green_, 1);
  EXPECT_THAT(journal_.take(), ElementsAre("deleteVrf green"));
}

TEST_F(RebuildReentry, AHandlerMayBeGivenAKeyThatItsHookDeletes) {
  const VrfAction late("late", PolicyMap::ActionType::vrf);
  const Mox::Ptr<VrfSm> machine = top_->vrfSm();
  machine->hasNotificationActiveIs(false);
  users_->vrfRefCountIs(late, 1);
  machine->hasNotificationActiveIs(true);
  chip_->onCreate = [this](const VrfAction& action) {
    users_->vrfRefCountDel(action);
    return HwStatus();
  };
  const auto& counts = users_->vrfRefCount();
  machine->handleVrfRefCountChange(counts.key(counts.position(late)));
  EXPECT_THAT(journal_.take(), ElementsAre("createVrf late", "deleteVrf late"));
  EXPECT_FALSE(statuses_->hwStatusHas(late));
}

TEST_F(RebuildReentry, AHandlerMayBeGivenAKeyOfATableThatItsHookClears) {
  const VrfAction late("late", PolicyMap::ActionType::vrf);
  const Mox::Ptr<VrfSm> machine = top_->vrfSm();
  machine->hasNotificationActiveIs(false);
  users_->vrfRefCountIs(late, 1);
  chip_->onCreate = [this](const VrfAction&) {
    users_->vrfRefCountDelAll();
    for (int i = 0; i < 1000; ++i)
      users_->vrfRefCountIs(VrfAction("v" + std::to_string(i), PolicyMap::ActionType::vrf), 1);
    return HwStatus();
  };
  const auto& counts = users_->vrfRefCount();
  machine->handleVrfRefCountChange(counts.key(counts.position(late)));
  EXPECT_THAT(journal_.take(), ElementsAre("createVrf late"));
  EXPECT_TRUE(statuses_->hwStatusHas(late));
}

TEST_F(RebuildReentry, AnUpdateMayBeGivenAKeyOfATableThatItsHookClears) {
  const Mox::Ptr<VrfSm> machine = top_->vrfSm();
  chip_->onUpdate = [this](const VrfAction&) {
    statuses_->hwStatusDelAll();
    for (int i = 0; i < 1000; ++i) {
      statuses_->hwStatusIs(VrfAction("v" + std::to_string(i), PolicyMap::ActionType::vrf),
                            HwStatus());
    }
    return HwStatus();
  };
  const auto& statuses = statuses_->hwStatus();
  machine->updateVrfAction(statuses.key(statuses.position(green_)));
  EXPECT_THAT(journal_.take(), ElementsAre("updateVrf green"));
  EXPECT_FALSE(statuses_->hwStatusHas(green_));
}

TEST_F(RebuildReentry, AnOutcomeIsNotStoredForAnEntryThatCameAndWentDuringTheUpdate) {
  const VrfAction late("late", PolicyMap::ActionType::vrf);
  chip_->onUpdate = [this](const VrfAction& action) {
    users_->vrfRefCountIs(action, 1);
    users_->vrfRefCountIs(action, 0);
    return HwStatus();
  };
  top_->vrfSm()->updateVrfAction(late);
  EXPECT_THAT(journal_.take(), ElementsAre("updateVrf late", "createVrf late", "deleteVrf late"));
  EXPECT_FALSE(statuses_->hwStatusHas(late));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
