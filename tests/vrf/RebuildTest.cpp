// A machine that takes the place of another on the same tables.

#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VrfSmRebuild : public VrfSmFrameFixture {
 protected:
  // The first machine has created red and failed to create blue.
  void SetUp() override {
    routes->vrfStatusIs("red")->vrfIdIs(7);
    start();
    users->vrfRefCountIs(red, 1);
    chip->onCreate = [](const VrfAction&) { return failedBlue(); };
    users->vrfRefCountIs(blue, 1);
    chip->onCreate = nullptr;
    journalTrace();
    journalTables();
    forgetLines();
  }
  static HwStatus failedBlue() {
    return failure(FailureCode::failureVrfResourceExhausted, "no VRF left");
  }
};

TEST_F(VrfSmRebuild, BuildingTheNewMachineReplaysNoCounts) {
  const Mox::Ptr<VrfSm> replacement = newVrfSm();
  EXPECT_THAT(journal.take(), ElementsAre(initialize(), instanceInitialized("red", 7)));
}

TEST_F(VrfSmRebuild, DroppingTheOldMachineCallsNoHookAndLeavesTheStatuses) {
  const Mox::Ptr<VrfSm> replacement = newVrfSm();
  forgetLines();
  vrfSm = nullptr;
  EXPECT_THAT(journal.take(), ElementsAre(instanceRemove("red", 7)));
  EXPECT_EQ(statuses->hwStatus(red), HwStatus());
  EXPECT_EQ(statuses->hwStatus(blue), failedBlue());
}

TEST_F(VrfSmRebuild, TheNewMachineFindsResourcesInPlaceAndEndsThem) {
  vrfSm = newVrfSm();
  forgetLines();
  users->vrfRefCountIs(red, 2);
  EXPECT_THAT(journal.take(), ElementsAre("vrfRefCount red = 2", alreadyInUse("red", 2)));
  for (const VrfAction& action : {red, blue})
    users->vrfRefCountIs(action, 0);
  EXPECT_THAT(
      journal.take(),
      ElementsAre("vrfRefCount red = 0", "deleteVrf red", deleting("red"), "vrfRefCount red gone",
                  "hwStatus red gone", "vrfRefCount blue = 0", "deleteVrf blue", deleting("blue"),
                  "vrfRefCount blue gone", "hwStatus blue gone"));
}

TEST_F(VrfSmRebuild, CountsWithoutAResourceAreNotReplayedEither) {
  vrfSm = nullptr;
  users->vrfRefCountIs(green, 1);
  forgetLines();
  start();
  EXPECT_THAT(journal.take(), ElementsAre(initialize(), instanceInitialized("red", 7)));
  EXPECT_FALSE(statuses->hwStatusHas(green));
}

TEST_F(VrfSmRebuild, AnEmptyPlaceBetweenTheMachinesChangesNothing) {
  vrfSm = nullptr;
  start();
  forgetLines();
  EXPECT_EQ(statuses->hwStatus().count(), 2U);
  users->vrfRefCountIs(red, 3);
  EXPECT_THAT(journal.take(), ElementsAre("vrfRefCount red = 3", alreadyInUse("red", 3)));
}

TEST_F(VrfSmRebuild, OnAnotherRouteStatusTheNewMachineFollowsThatAlone) {
  const auto otherRoutes = Routing::Hardware::RouteStatus::RouteStatusIs();
  otherRoutes->vrfStatusIs("green");
  vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, otherRoutes, routes6);
  EXPECT_FALSE(vrfSm->moxVrfInstanceHas("red"));
  EXPECT_TRUE(vrfSm->moxVrfInstanceHas("green"));
  EXPECT_EQ(notifiees(*routes), 0U);
  EXPECT_EQ(notifiees(*otherRoutes), 1U);
  forgetLines();
  routes->vrfStatus("red")->vrfIdIs(8);
  EXPECT_THAT(journal.take(), IsEmpty());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
