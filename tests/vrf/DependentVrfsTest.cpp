#include <gmock/gmock.h>

#include "tests/vrf/BothSinks.h"
#include "tests/vrf/DrivenVrfSm.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Messages = std::vector<ExpectedMessage>;

ExpectedMessage updatingDependent(const std::string& dependent, const std::string& changed) {
  return {5, 177, "handleVrfUpdates",
          "ZelVrfSelectionPolicy::VrfSm::handleVrfUpdates: Updating dependent VRF:" + dependent +
              "  HW resource. Changed VRF:" + changed};
}

TEST(DependentVrfSet, AddingTheSameNameTwiceLeavesOneMember) {
  const auto record = Mox::makePtr<DependentVrfInfo>("blue");
  record->dependentVrfsIs("red");
  record->dependentVrfsIs("red");
  EXPECT_EQ(record->dependentVrfs().count(), 1U);
  EXPECT_TRUE(record->dependentVrfs("red"));
}

TEST(DependentVrfSet, RemovingAnAbsentNameReturnsFalseAndLeavesTheSetAsItWas) {
  const auto record = Mox::makePtr<DependentVrfInfo>("blue");
  EXPECT_FALSE(record->dependentVrfsDel("red"));
  record->dependentVrfsIs("red");
  EXPECT_FALSE(record->dependentVrfsDel("green"));
  EXPECT_TRUE(record->dependentVrfs("red"));
  EXPECT_EQ(record->dependentVrfs().count(), 1U);
}

TEST(DependentVrfSet, RemovingAMemberReturnsTrue) {
  const auto record = Mox::makePtr<DependentVrfInfo>("blue");
  record->dependentVrfsIs("red");
  record->dependentVrfsIs("green");
  EXPECT_TRUE(record->dependentVrfsDel("red"));
  EXPECT_FALSE(record->dependentVrfs("red"));
  EXPECT_TRUE(record->dependentVrfs("green"));
}

TEST(DependentVrfSet, RemovingAllEmptiesTheSetAndIsHarmlessOnAnEmptyOne) {
  const auto record = Mox::makePtr<DependentVrfInfo>("blue");
  record->dependentVrfsDelAll();
  EXPECT_EQ(record->dependentVrfs().count(), 0U);
  record->dependentVrfsIs("red");
  record->dependentVrfsIs("green");
  record->dependentVrfsDelAll();
  EXPECT_EQ(record->dependentVrfs().count(), 0U);
  EXPECT_FALSE(record->dependentVrfs("red"));
}

class DependentVrfs : public DrivenVrfSmTest {
 protected:
  DependentVrfs() {
    start();
    for (const char* vrf : {"blue", "red", "green", "grey"})
      created(actionOf(vrf));
  }

  // Straight into the records, where a VRF may depend on several.
  void dependsOn(const L3::VrfName& vrf, const L3::VrfName& fallbackVrf) const {
    vrfSm->dependentVrfInfoIs(fallbackVrf)->dependentVrfsIs(vrf);
  }
};

TEST_F(DependentVrfs, ChangeOfAVrfWithoutDependentsUpdatesItAloneAndTracesNoDependent) {
  dependsOn("blue", "red");
  const BothSinks sinks;

  vrfSm->handleVrfUpdates("blue", false);

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue"));
  const Messages expected{updatingAll("blue"),
                          {5, 137, "updateAllVrfActions",
                           "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions: Updating VRF HW "
                           "instance for: blue"}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TEST_F(DependentVrfs, ChangeOfAVrfReachesItsDependentsAndTheirs) {
  dependsOn("red", "blue");
  dependsOn("green", "red");
  vrfSm->handleVrfUpdates("blue", false);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue", "updateVrf red", "updateVrf green"));
}

TEST_F(DependentVrfs, ChangeOfFallbackConfigurationReachesTheDirectDependentsOnly) {
  dependsOn("red", "blue");
  dependsOn("green", "red");
  vrfSm->handleVrfUpdates("blue", true);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue", "updateVrf red"));
}

TEST_F(DependentVrfs, DirectDependentsAreTracedInBothSinksAndTheSecondLevelIsNot) {
  statuses->hwStatusDelAll();
  dependsOn("red", "blue");
  dependsOn("green", "red");
  const BothSinks sinks;

  vrfSm->handleVrfUpdates("blue", false);

  const Messages expected{updatingAll("blue"), updatingDependent("red", "blue"), updatingAll("red"),
                          updatingAll("green")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TEST_F(DependentVrfs, ChangeOfFallbackConfigurationTracesItsDirectDependents) {
  statuses->hwStatusDelAll();
  dependsOn("red", "blue");
  dependsOn("green", "red");
  const BothSinks sinks;

  vrfSm->handleVrfUpdates("blue", true);

  const Messages expected{updatingAll("blue"), updatingDependent("red", "blue"),
                          updatingAll("red")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TEST_F(DependentVrfs, ThirdLevelIsNeverReached) {
  dependsOn("red", "blue");
  dependsOn("green", "red");
  dependsOn("grey", "green");
  vrfSm->handleVrfUpdates("blue", false);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue", "updateVrf red", "updateVrf green"));
}

TEST_F(DependentVrfs, EveryDependentOfBothLevelsIsReached) {
  dependsOn("red", "blue");
  dependsOn("green", "blue");
  dependsOn("grey", "red");
  dependsOn("x", "green");
  created(actionOf("x"));
  vrfSm->handleVrfUpdates("blue", false);
  const std::map<std::string, int> expected{{"updateVrf blue", 1},
                                            {"updateVrf red", 1},
                                            {"updateVrf green", 1},
                                            {"updateVrf grey", 1},
                                            {"updateVrf x", 1}};
  EXPECT_EQ(counted(journal.take()), expected);
}

TEST_F(DependentVrfs, VrfThatDependsOnTwoOfTheChainIsUpdatedOncePerPath) {
  dependsOn("red", "blue");
  dependsOn("green", "blue");
  dependsOn("green", "red");
  vrfSm->handleVrfUpdates("blue", false);
  const std::map<std::string, int> expected{
      {"updateVrf blue", 1}, {"updateVrf red", 1}, {"updateVrf green", 2}};
  EXPECT_EQ(counted(journal.take()), expected);
}

TEST_F(DependentVrfs, CycleEndsAfterTwoLevels) {
  dependsOn("red", "blue");
  dependsOn("blue", "red");
  vrfSm->handleVrfUpdates("blue", false);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue", "updateVrf red", "updateVrf blue"));
  vrfSm->handleVrfUpdates("blue", true);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue", "updateVrf red"));
}

TEST_F(DependentVrfs, VrfThatDependsOnItselfIsUpdatedAtEachLevel) {
  dependsOn("blue", "blue");
  vrfSm->handleVrfUpdates("blue", false);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue", "updateVrf blue", "updateVrf blue"));
  vrfSm->handleVrfUpdates("blue", true);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue", "updateVrf blue"));
}

TEST_F(DependentVrfs, ActionThatNamesBothVrfsIsUpdatedForEach) {
  created(actionOf("a", "b"));
  dependsOn("a", "b");
  vrfSm->handleVrfUpdates("b", false);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf a>b>:actionVrf", "updateVrf a>b>:actionVrf"));
}

TEST_F(DependentVrfs, PropagationOnlyReadsTheRecords) {
  dependsOn("red", "blue");
  dependsOn("green", "red");
  vrfSm->handleVrfUpdates("blue", false);
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 2U);
  EXPECT_TRUE(vrfSm->dependentVrfInfo("blue")->dependentVrfs("red"));
  EXPECT_TRUE(vrfSm->dependentVrfInfo("red")->dependentVrfs("green"));
}

TEST_F(DependentVrfs, NewRecordHasItsNameNoDependentsAndActiveNotifications) {
  const auto record = vrfSm->dependentVrfInfoIs("blue");
  EXPECT_EQ(record->fallbackVrf(), L3::VrfName("blue"));
  EXPECT_EQ(record->dependentVrfs().count(), 0U);
  EXPECT_TRUE(record->hasNotificationActive());
  EXPECT_EQ(vrfSm->dependentVrfInfo("blue"), record);
}

TEST_F(DependentVrfs, SameNameTwiceYieldsTheSameRecordUnchanged) {
  const auto record = vrfSm->dependentVrfInfoIs("blue");
  record->dependentVrfsIs("red");
  EXPECT_EQ(vrfSm->dependentVrfInfoIs("blue"), record);
  EXPECT_TRUE(record->dependentVrfs("red"));
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 1U);
}

TEST_F(DependentVrfs, RemovingARecordGivesIt) {
  const auto record = vrfSm->dependentVrfInfoIs("blue");
  EXPECT_EQ(vrfSm->dependentVrfInfoDel("blue"), record);
  EXPECT_EQ(vrfSm->dependentVrfInfo("blue"), nullptr);
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

TEST_F(DependentVrfs, RemovingAnUnknownNameReturnsNullAndChangesNothing) {
  dependsOn("red", "blue");
  EXPECT_EQ(vrfSm->dependentVrfInfoDel("red"), nullptr);
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 1U);
  EXPECT_TRUE(vrfSm->dependentVrfInfo("blue")->dependentVrfs("red"));
}

TEST_F(DependentVrfs, RemovingAllRecordsLeavesNone) {
  dependsOn("red", "blue");
  dependsOn("green", "red");
  vrfSm->dependentVrfInfoDelAll();
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
  vrfSm->handleVrfUpdates("blue", false);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue"));
}

TEST_F(DependentVrfs, RecordWithoutDependentsReachesNothing) {
  vrfSm->dependentVrfInfoIs("blue");
  vrfSm->handleVrfUpdates("blue", false);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue"));
}

TEST_F(DependentVrfs, RecordsAreNotMadeByAChange) {
  vrfSm->handleVrfUpdates("blue", false);
  vrfSm->handleVrfUpdates("nowhere", true);
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
