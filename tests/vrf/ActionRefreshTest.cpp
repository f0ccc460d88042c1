#include <gmock/gmock.h>

#include <stdexcept>

#include "testing/TableJournal.h"
#include "tests/vrf/BothSinks.h"
#include "tests/vrf/DrivenVrfSm.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

using Messages = std::vector<ExpectedMessage>;

ExpectedMessage updatingOneOfAll(const std::string& vrf) {
  return {
      5, 137, "updateAllVrfActions",
      "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions: Updating VRF HW instance for: " + vrf};
}

class ActionRefresh : public DrivenVrfSmTest {
 protected:
  ActionRefresh() { start(); }
};

TEST_F(ActionRefresh, EveryActionThatNamesTheVrfInAnyFieldIsUpdatedAndTracedWithTheVrf) {
  created(actionOf("blue"));
  created(actionOf("red", "blue"));
  created(actionOf("green", {}, "blue"));
  created(actionOf("grey", "red", "green"));
  const BothSinks sinks;

  vrfSm->updateAllVrfActions("blue");

  EXPECT_THAT(journal.take(),
              UnorderedElementsAre("updateVrf blue", "updateVrf red>blue>:actionVrf",
                                   "updateVrf green>>blue:actionVrf"));
  const Messages expected{updatingAll("blue"), updatingOneOfAll("blue"), updatingOneOfAll("blue"),
                          updatingOneOfAll("blue")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TEST_F(ActionRefresh, ActionThatNamesTheVrfInSeveralFieldsIsUpdatedOnce) {
  for (const VrfAction& action :
       {actionOf("blue", "blue"), actionOf("blue", {}, "blue"), actionOf("red", "blue", "blue"),
        actionOf("blue", "blue", "blue")}) {
    SCOPED_TRACE(shown(action));
    created(action);
    const BothSinks sinks;

    vrfSm->updateAllVrfActions("blue");

    EXPECT_THAT(journal.take(), ElementsAre("updateVrf " + shown(action)));
    EXPECT_EQ(sinks.text(), BothSinks::textOf({updatingAll("blue"), updatingOneOfAll("blue")}));
    users->vrfRefCountDel(action);
    forget();
  }
}

TEST_F(ActionRefresh, ActionsThatDifferInTheirTypeAloneAreUpdatedEach) {
  created(actionOf("blue"));
  created(actionOf("blue", {}, {}, PolicyMap::ActionType::discard));
  vrfSm->updateAllVrfActions("blue");
  EXPECT_THAT(journal.take(),
              UnorderedElementsAre("updateVrf blue", "updateVrf blue>>:actionDiscard"));
}

TEST_F(ActionRefresh, ActionWithUsersButWithoutAStatusIsNotTouched) {
  vrfSm = nullptr;
  users->vrfRefCountIs(actionOf("blue"), 3);
  start();

  vrfSm->updateAllVrfActions("blue");

  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_FALSE(statuses->hwStatusHas(actionOf("blue")));
  EXPECT_EQ(users->vrfRefCount(actionOf("blue")), 3U);
}

TEST_F(ActionRefresh, UpdatingAnActionWithoutAStatusCallsTheChipAndCreatesTheEntry) {
  chip->onUpdate = [](const VrfAction&) { return failure("full"); };

  vrfSm->updateVrfAction(actionOf("blue"));

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue"));
  EXPECT_TRUE(statuses->hwStatusHas(actionOf("blue")));
  EXPECT_EQ(statuses->hwStatus(actionOf("blue")), failure("full"));
  EXPECT_EQ(users->vrfRefCount().count(), 0U);
}

TEST_F(ActionRefresh, UpdatingOneActionIsTracedInBothSinksWithItsVrfNameOnly) {
  const VrfAction action = created(actionOf("red", "blue", "green"));
  created(actionOf("red"));
  const BothSinks sinks;

  vrfSm->updateVrfAction(action);

  const Messages expected{
      {5, 149, "updateVrfAction",
       "ZelVrfSelectionPolicy::VrfSm::updateVrfAction: Updating VRF HW instance for: red"}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red>blue>green:actionVrf"));
}

TEST_F(ActionRefresh, EmptyStatusTableIsTracedAndCallsNothing) {
  const BothSinks sinks;

  vrfSm->updateAllVrfActions("blue");

  EXPECT_EQ(sinks.text(), BothSinks::textOf({updatingAll("blue")}));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf({updatingAll("blue")}));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(ActionRefresh, ActionsThatDoNotNameTheVrfAreLeftAlone) {
  created(actionOf("red", "green", "grey"));
  created(actionOf("blue2"));
  created(actionOf("BLUE"));
  const BothSinks sinks;

  vrfSm->updateAllVrfActions("blue");

  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(sinks.text(), BothSinks::textOf({updatingAll("blue")}));
}

TEST_F(ActionRefresh, EmptyNameMatchesActionsWithAnEmptyFieldLikeAnyOtherName) {
  created(actionOf("a"));
  created(actionOf("b", "x"));
  created(actionOf("c", {}, "x"));
  created(actionOf("d", "x", "y"));
  const BothSinks sinks;

  vrfSm->updateAllVrfActions(L3::VrfName());

  EXPECT_THAT(journal.take(), UnorderedElementsAre("updateVrf a", "updateVrf b>x>:actionVrf",
                                                   "updateVrf c>>x:actionVrf"));
  const Messages expected{updatingAll(""), updatingOneOfAll(""), updatingOneOfAll(""),
                          updatingOneOfAll("")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
}

TEST_F(ActionRefresh, OutcomeIsWrittenUnchangedAfterTheCall) {
  created(actionOf("blue"));
  chip->onUpdate = [](const VrfAction&) { return failure("table full"); };
  const TableJournal tables(journal, users, statuses);

  vrfSm->updateAllVrfActions("blue");
  vrfSm->updateAllVrfActions("blue");
  chip->onUpdate = nullptr;
  vrfSm->updateVrfAction(actionOf("blue"));

  EXPECT_THAT(journal.take(),
              ElementsAre("updateVrf blue", "hwStatus blue = " + shown(failure("table full")),
                          "updateVrf blue", "updateVrf blue", "hwStatus blue = ok"));
}

TEST_F(ActionRefresh, FailedOutcomeIsNotTraced) {
  created(actionOf("blue"));
  chip->onUpdate = [](const VrfAction&) { return failure("table full"); };
  const BothSinks sinks;

  vrfSm->updateAllVrfActions("blue");

  EXPECT_EQ(sinks.text(), BothSinks::textOf({updatingAll("blue"), updatingOneOfAll("blue")}));
}

TEST_F(ActionRefresh, ActionWhoseCreationFailedIsUpdatedLikeAnyOther) {
  chip->onCreate = [](const VrfAction&) { return failure("no room"); };
  created(actionOf("blue"));

  vrfSm->updateAllVrfActions("blue");

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue"));
  EXPECT_EQ(statuses->hwStatus(actionOf("blue")), HwStatus());
}

TEST_F(ActionRefresh, CountsAreNotTouched) {
  created(actionOf("blue"));
  users->vrfRefCountInc(actionOf("blue"), 4);
  const TableJournal tables(journal, users, nullptr);

  vrfSm->updateAllVrfActions("blue");
  vrfSm->updateVrfAction(actionOf("blue"));

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf blue", "updateVrf blue"));
  EXPECT_EQ(users->vrfRefCount(actionOf("blue")), 5U);
}

TEST_F(ActionRefresh, DeletedActionIsNoLongerUpdated) {
  created(actionOf("blue"));
  created(actionOf("red", "blue"));
  users->vrfRefCountDec(actionOf("blue"), 1);
  forget();
  vrfSm->updateAllVrfActions("blue");
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red>blue>:actionVrf"));
}

TEST_F(ActionRefresh, HookThatThrowsLeavesTheStatusAsItWasAndTheNextRefreshWorks) {
  created(actionOf("blue"));
  chip->onUpdate = [](const VrfAction&) { return failure("first"); };
  vrfSm->updateVrfAction(actionOf("blue"));
  chip->onUpdate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("chip is gone"); };

  EXPECT_THROW(vrfSm->updateVrfAction(actionOf("blue")), std::runtime_error);
  EXPECT_THROW(vrfSm->updateAllVrfActions("blue"), std::runtime_error);
  EXPECT_EQ(statuses->hwStatus(actionOf("blue")), failure("first"));

  chip->onUpdate = nullptr;
  vrfSm->updateAllVrfActions("blue");
  EXPECT_EQ(statuses->hwStatus(actionOf("blue")), HwStatus());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
