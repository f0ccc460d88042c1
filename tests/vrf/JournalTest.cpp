// Whole journals: every hook call, table change and trace line, in order.

#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;

// The journal subscribes before the machine: a change stands before what the machine makes of it.
class VrfSmJournal : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    journalTables();
    journalTrace();
  }
};

TEST_F(VrfSmJournal, OfAnActionsLivesFromTheFirstUserToTheLast) {
  start();
  EXPECT_THAT(journal.take(), ElementsAre(initialize()));
  for (int life = 0; life < 2; ++life) {
    for (const unsigned count : {1U, 2U, 3U, 2U, 1U, 0U})
      users->vrfRefCountIs(red, count);
    EXPECT_THAT(
        journal.take(),
        ElementsAre("vrfRefCount red = 1", "createVrf red", "hwStatus red = ok",
                    "vrfRefCount red = 2", alreadyInUse("red", 2), "vrfRefCount red = 3",
                    alreadyInUse("red", 3), "vrfRefCount red = 2", alreadyInUse("red", 2),
                    "vrfRefCount red = 1", alreadyInUse("red", 1), "vrfRefCount red = 0",
                    "deleteVrf red", deleting("red"), "vrfRefCount red gone", "hwStatus red gone"));
  }
}

TEST_F(VrfSmJournal, OfALifeThatBeginsWithAFailureAndEndsWithTheEntry) {
  start();
  forgetLines();
  chip->onCreate = [](const VrfAction&) {
    return failure(FailureCode::failureVrfResourceAlloc, "no memory");
  };
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountDel(red);
  EXPECT_THAT(
      journal.take(),
      ElementsAre("vrfRefCount red = 1", "createVrf red",
                  createFailed("red", "failureVrfResourceAlloc"),
                  "hwStatus red = programmingFailure failureVrfResourceAlloc 'no memory'",
                  "vrfRefCount red gone", "deleteVrf red", deleting("red"), "hwStatus red gone"));
}

TEST_F(VrfSmJournal, OfAStartWithResourcesFallbackVrfsAndPrefixLengthsInPlace) {
  resourcesAre({red, blue});
  fallback->fallbackVrfIs("red", "blue");
  routes->vrfStatusIs("red")->vrfIdIs(7);
  routes6->vrfStatusIs("green")->vrfIdIs(8);
  routes->vrfPrefixLensInExactMatchIs("red");
  routes6->vrfPrefixLensInExactMatchIs("blue");
  numberUpdates();
  forgetLines();
  start();
  EXPECT_THAT(
      journal.take(),
      ElementsAre(initialize(),
                  // The fallback entry.
                  fallbackChange("red"), updatingAll("red"), updatingOneOfAll("red"),
                  "updateVrf red", "hwStatus red = " + updated(1),
                  // The VRF of the IPv4 route status; that of the IPv6 one is not looked at.
                  instanceInitialized("red", 7),
                  // The IPv4 prefix lengths.
                  prefixLensInitialized("red"), updatingAll("red"), updatingOneOfAll("red"),
                  "updateVrf red", "hwStatus red = " + updated(2),
                  // The IPv6 prefix lengths, of a VRF that another falls back to.
                  prefixLens6Initialized("blue"), updatingAll("blue"), updatingOneOfAll("blue"),
                  "updateVrf blue", "hwStatus blue = " + updated(3),
                  updatingDependent("red", "blue"), updatingAll("red"), updatingOneOfAll("red"),
                  "updateVrf red", "hwStatus red = " + updated(4)));
}

TEST_F(VrfSmJournal, OfAWholeRunFromStartToEnd) {
  routes->vrfStatusIs("red");
  numberUpdates();
  start();
  users->vrfRefCountIs(red, 1);
  routes->vrfStatus("red")->vrfIdIs(7);
  fallback->fallbackVrfIs("red", "blue");
  routes6->vrfPrefixLensInExactMatchIs("blue");
  users->vrfRefCountIs(red, 0);
  vrfSm = nullptr;
  EXPECT_THAT(
      journal.take(),
      ElementsAre(initialize(), instanceInitialized("red", 0),
                  // Its first user.
                  "vrfRefCount red = 1", "createVrf red", "hwStatus red = ok",
                  // The id of its VRF.
                  instanceVrfId("red", 7), updatingAll("red"), updatingOneOfAll("red"),
                  "updateVrf red", "hwStatus red = " + updated(1),
                  // Its fallback VRF, and that one's prefix lengths.
                  fallbackChange("red"), updatingAll("red"), updatingOneOfAll("red"),
                  "updateVrf red", "hwStatus red = " + updated(2), prefixLens6Initialized("blue"),
                  updatingAll("blue"), updatingDependent("red", "blue"), updatingAll("red"),
                  updatingOneOfAll("red"), "updateVrf red", "hwStatus red = " + updated(3),
                  // Its last user.
                  "vrfRefCount red = 0", "deleteVrf red", deleting("red"), "vrfRefCount red gone",
                  "hwStatus red gone",
                  // The end of the machine.
                  instanceRemove("red", 7), prefixLens6("blue")));
}

TEST_F(VrfSmJournal, OfTheEndWithResourcesInPlace) {
  routes->vrfStatusIs("red")->vrfIdIs(7);
  routes->vrfPrefixLensInExactMatchIs("red");
  routes6->vrfPrefixLensInExactMatchIs("red");
  start();
  users->vrfRefCountIs(red, 1);
  forgetLines();
  vrfSm = nullptr;
  EXPECT_THAT(journal.take(),
              ElementsAre(instanceRemove("red", 7), prefixLens("red"), prefixLens6("red")));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
