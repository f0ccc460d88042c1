// How the count of an action's users becomes the creation and deletion of its resource.

#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class VrfSmLifecycle : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    start();
    journalTrace();
  }
};

TEST_F(VrfSmLifecycle, TheFirstUserOfANewActionHasItsResourceCreatedOnce) {
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red"));
  EXPECT_TRUE(statuses->hwStatusHas(red));
  EXPECT_EQ(statuses->hwStatus(red), HwStatus());
  EXPECT_EQ(users->vrfRefCount(red), 1U);
}

TEST_F(VrfSmLifecycle, AnIncrementByOneCreatesLikeAWrittenOne) {
  users->vrfRefCountInc(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red"));
}

TEST_F(VrfSmLifecycle, TheStatusIsExactlyWhatTheCreationReturned) {
  HwStatus returned;
  returned.failureReasonIs(FailureCode::failureVrfResourceAlloc);
  returned.failureDescriptionIs("programmed, with a remark");
  chip->onCreate = [&](const VrfAction&) { return returned; };
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red"));
  EXPECT_EQ(statuses->hwStatus(red), returned);
}

TEST_F(VrfSmLifecycle, AFailedCreationIsTracedWithItsReasonAndStoredAsReturned) {
  const HwStatus returned = failure(FailureCode::failureVrfResourceExhausted, "no VRF left");
  chip->onCreate = [&](const VrfAction&) { return returned; };
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(),
              ElementsAre("createVrf red", createFailed("red", "failureVrfResourceExhausted")));
  ASSERT_TRUE(statuses->hwStatusHas(red));
  EXPECT_EQ(statuses->hwStatus(red), returned);
}

TEST_F(VrfSmLifecycle, AFailedCreationIsNotRetriedWhenFurtherUsersCome) {
  const HwStatus returned = failure(FailureCode::failureVrfResourceAlloc, "no memory");
  chip->onCreate = [&](const VrfAction&) { return returned; };
  users->vrfRefCountIs(red, 1);
  forgetLines();
  users->vrfRefCountInc(red, 1);
  users->vrfRefCountDec(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 2), alreadyInUse("red", 1)));
  EXPECT_EQ(statuses->hwStatus(red), returned);
}

TEST_F(VrfSmLifecycle, AFailedCreationIsDeletedAndCreatedAgainLikeAnyOther) {
  chip->onCreate = [&](const VrfAction&) {
    return failure(FailureCode::failureVrfResourceAlloc, "no memory");
  };
  users->vrfRefCountIs(red, 1);
  forgetLines();
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", deleting("red")));
  EXPECT_FALSE(statuses->hwStatusHas(red));
  chip->onCreate = nullptr;
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red"));
  EXPECT_EQ(statuses->hwStatus(red), HwStatus());
}

TEST_F(VrfSmLifecycle, FurtherUsersCallNoHookAndEachNewCountIsTraced) {
  users->vrfRefCountIs(red, 1);
  forgetLines();
  users->vrfRefCountIs(red, 2);
  users->vrfRefCountIs(red, 3);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 2), alreadyInUse("red", 3)));
}

TEST_F(VrfSmLifecycle, GoingDownFromTwoToOneUserDoesNotCreateAgain) {
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountIs(red, 2);
  forgetLines();
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 1)));
}

TEST_F(VrfSmLifecycle, TheHighestCountIsACountLikeAnyOther) {
  users->vrfRefCountIs(red, 1);
  forgetLines();
  users->vrfRefCountIs(red, 4294967295U);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 4294967295U)));
}

TEST_F(VrfSmLifecycle, ACountThatWrapsToZeroEndsTheResource) {
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountIs(red, 4294967295U);
  forgetLines();
  users->vrfRefCountInc(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", deleting("red")));
}

TEST_F(VrfSmLifecycle, ACountOfOneForAnActionThatHasAResourceAlreadyIsAFurtherUser) {
  const HwStatus present = failure(FailureCode::failureVrfResourceAlloc, "from before");
  statuses->hwStatusIs(red, present);
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 1)));
  EXPECT_EQ(statuses->hwStatus(red), present);
}

TEST_F(VrfSmLifecycle, ACountSetToZeroDeletesThenRemovesCountEntryAndStatusEntryInThatOrder) {
  users->vrfRefCountIs(red, 1);
  forgetLines();
  journalTables();
  users->vrfRefCountIs(red, 0);
  // The journal subscribed after the machine, so the notice of the new count itself comes last.
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", deleting("red"), "vrfRefCount red gone",
                                          "hwStatus red gone", "vrfRefCount red gone"));
  EXPECT_EQ(users->vrfRefCount().count(), 0U);
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
}

TEST_F(VrfSmLifecycle, BothEntriesAreStillThereWhenTheChipIsToldToDelete) {
  users->vrfRefCountIs(red, 1);
  bool countWasThere = false;
  bool statusWasThere = false;
  chip->onDelete = [&](const VrfAction& action) {
    countWasThere = users->vrfRefCount().has(action);
    statusWasThere = statuses->hwStatusHas(action);
  };
  users->vrfRefCountIs(red, 0);
  EXPECT_TRUE(countWasThere);
  EXPECT_TRUE(statusWasThere);
}

TEST_F(VrfSmLifecycle, ACountDecrementedToZeroEndsTheResource) {
  users->vrfRefCountInc(red, 1);
  forgetLines();
  users->vrfRefCountDec(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", deleting("red")));
  EXPECT_FALSE(users->vrfRefCount().has(red));
}

TEST_F(VrfSmLifecycle, ARemovedCountEntryEndsTheResourceWhateverTheCountWas) {
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountIs(red, 3);
  forgetLines();
  EXPECT_EQ(users->vrfRefCountDel(red), 3U);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", deleting("red")));
  EXPECT_FALSE(statuses->hwStatusHas(red));
}

TEST_F(VrfSmLifecycle, RemovingEveryCountEntryEndsEveryResource) {
  for (const VrfAction& action : {red, blue, green})
    users->vrfRefCountIs(action, 1);
  forgetLines();
  users->vrfRefCountDelAll();
  EXPECT_THAT(journal.take(),
              UnorderedElementsAre("deleteVrf red", deleting("red"), "deleteVrf blue",
                                   deleting("blue"), "deleteVrf green", deleting("green")));
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
}

TEST_F(VrfSmLifecycle, ActionsThatDifferInOneFieldHaveResourcesOfTheirOwn) {
  VrfAction withFallback = red;
  withFallback.fallbackVrfNameIs("blue");
  VrfAction withPostDecap = red;
  withPostDecap.postDecapVrfNameIs("blue");
  const VrfAction decap("red", PolicyMap::ActionType::decapVrf);
  for (const VrfAction& action : {red, withFallback, withPostDecap, decap}) {
    users->vrfRefCountIs(action, 1);
  }
  const Lines created = journal.take();
  EXPECT_EQ(created.size(), 4U);
  EXPECT_EQ(statuses->hwStatus().count(), 4U);
  users->vrfRefCountIs(decap, 0);
  EXPECT_EQ(statuses->hwStatus().count(), 3U);
  EXPECT_FALSE(statuses->hwStatusHas(decap));
}

TEST_F(VrfSmLifecycle, MessagesNameTheVrfOfTheActionAndNothingElseOfIt) {
  VrfAction full("red", PolicyMap::ActionType::decapVrf);
  full.fallbackVrfNameIs("blue");
  full.postDecapVrfNameIs("green");
  users->vrfRefCountIs(full, 1);
  users->vrfRefCountIs(full, 2);
  users->vrfRefCountIs(full, 0);
  const std::string shown = "red>blue>green:" + PolicyMap::stringValue(full.action()).str();
  EXPECT_THAT(journal.take(), ElementsAre("createVrf " + shown, alreadyInUse("red", 2),
                                          "deleteVrf " + shown, deleting("red")));
}

TEST_F(VrfSmLifecycle, AnActionThatIsNotSetIsTreatedLikeAnyOther) {
  const VrfAction unset;
  users->vrfRefCountIs(unset, 1);
  EXPECT_TRUE(statuses->hwStatusHas(unset));
  EXPECT_EQ(journal.take().size(), 1U);
  users->vrfRefCountIs(unset, 0);
  EXPECT_FALSE(statuses->hwStatusHas(unset));
  EXPECT_THAT(journal.take(), ElementsAre(::testing::StartsWith("deleteVrf "), deleting("")));
}

TEST_F(VrfSmLifecycle, CreationAsksNeitherForAVrfStatusNorForItsId) {
  routes->vrfStatusIs("red");
  forgetLines();
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountIs(blue, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red", "createVrf blue"));
}

TEST_F(VrfSmLifecycle, HandlingAnUnchangedCountAgainCallsNoHook) {
  users->vrfRefCountIs(red, 1);
  forgetLines();
  vrfSm->handleVrfRefCountChange(red);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 1)));
}

TEST_F(VrfSmLifecycle, AWrittenEqualCountIsNoChange) {
  users->vrfRefCountIs(red, 1);
  forgetLines();
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmLifecycle, ACountMayBeWrittenUnderTheTablesOwnKeyWhoseEntryThenGoes) {
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountIs(red, 2);
  forgetLines();
  const VrfAction* key = nullptr;
  for (auto entry = users->vrfRefCount().iterator(); entry; ++entry)
    key = &entry.key();
  ASSERT_NE(key, nullptr);
  users->vrfRefCountIs(*key, 0);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", deleting("red")));
}

class VrfSmCreation : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    start();
    journalTrace();
  }
  // Runs `work` inside the next creation.
  void duringCreation(std::function<void()> work) {
    chip->onCreate = [this, work = std::move(work)](const VrfAction&) {
      const auto now = std::exchange(chip->onCreate, nullptr);
      work();
      return HwStatus();
    };
  }
};

TEST_F(VrfSmCreation, UsersThatComeMeanwhileAreHandledWhenItIsComplete) {
  duringCreation([this] {
    users->vrfRefCountIs(red, 2);
    users->vrfRefCountIs(red, 3);
  });
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red", alreadyInUse("red", 3)));
}

TEST_F(VrfSmCreation, TheLastUserLeavingMeanwhileEndsTheResourceWhenItIsComplete) {
  duringCreation([this] { users->vrfRefCountIs(red, 0); });
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red", "deleteVrf red", deleting("red")));
  EXPECT_FALSE(statuses->hwStatusHas(red));
  EXPECT_FALSE(users->vrfRefCount().has(red));
}

TEST_F(VrfSmCreation, AnotherActionIsCreatedInsideIt) {
  duringCreation([this] { users->vrfRefCountIs(blue, 1); });
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red", "createVrf blue"));
  EXPECT_TRUE(statuses->hwStatusHas(red));
  EXPECT_TRUE(statuses->hwStatusHas(blue));
}

TEST_F(VrfSmCreation, AnExceptionOfTheChipReachesWhoeverCountedAndLeavesTheMachineInOrder) {
  chip->onCreate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("chip is gone"); };
  EXPECT_THROW(users->vrfRefCountIs(red, 1), std::runtime_error);
  EXPECT_FALSE(statuses->hwStatusHas(red));
  chip->onCreate = nullptr;
  forgetLines();
  users->vrfRefCountIs(blue, 1);
  vrfSm->handleVrfRefCountChange(red);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf blue", "createVrf red"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
