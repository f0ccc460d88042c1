#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>

#include "tests/vrf/BothSinks.h"
#include "tests/vrf/DrivenVrfSm.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

using Messages = std::vector<ExpectedMessage>;

ExpectedMessage handling(const std::string& vrf) {
  return {7, 69, "handleVrfFallbackConfig",
          "ZelVrfSelectionPolicy::VrfSm::handleVrfFallbackConfig: Handling fallback vrf config "
          "change for VRF:" +
              vrf};
}

ExpectedMessage updatingAll(const std::string& vrf) {
  return {5, 130, "updateAllVrfActions",
          "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions " + vrf};
}

const ExpectedMessage alreadyHandled{
    7, 85, "handleVrfFallbackConfig",
    "ZelVrfSelectionPolicy::VrfSm::handleVrfFallbackConfig Fallback config already handled, "
    "Skipping this notification"};

class FallbackConfig : public DrivenVrfSmTest {
 protected:
  FallbackConfig() { start(); }

  std::vector<std::string> dependentsOf(const L3::VrfName& vrf) const {
    std::vector<std::string> names;
    const auto record = vrfSm->dependentVrfInfo(vrf);
    if (!record) return names;
    for (auto entry = record->dependentVrfs().iterator(); entry; ++entry) {
      names.push_back(entry.key().str());
    }
    return names;
  }

  bool isHandled(const L3::VrfName& vrf) const { return vrfSm->fallbackVrfInfo().has(vrf); }

  void notify(short attributeId, const L3::VrfName& vrf) const {
    const L3::VrfName value = fallback->fallbackVrf(vrf);
    fallback->publisher().publish(attributeId, &vrf, &value);
  }
};

TEST_F(FallbackConfig, FirstEntryMakesARecordWithTheVrfAndKeepsTheMapping) {
  fallback->fallbackVrfIs("v", "X");
  EXPECT_THAT(dependentsOf("X"), ElementsAre("v"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("X"));
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 1U);
}

TEST_F(FallbackConfig, FirstEntryToTheDefaultVrfMakesNoRecordAndKeepsTheMapping) {
  fallback->fallbackVrfIs("v", "default");
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("default"));
}

TEST_F(FallbackConfig, NamesLikeThatOfTheDefaultVrfAreOrdinary) {
  fallback->fallbackVrfIs("v", "Default");
  fallback->fallbackVrfIs("w", "default2");
  EXPECT_THAT(dependentsOf("Default"), ElementsAre("v"));
  EXPECT_THAT(dependentsOf("default2"), ElementsAre("w"));
}

TEST_F(FallbackConfig, DefaultVrfMayItselfFallBack) {
  fallback->fallbackVrfIs("default", "X");
  EXPECT_THAT(dependentsOf("X"), ElementsAre("default"));
}

TEST_F(FallbackConfig, ChangeMovesTheVrfToTheNewRecordAndDeletesTheOldOneWithItsLastMember) {
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("v", "Y");
  EXPECT_THAT(dependentsOf("Y"), ElementsAre("v"));
  EXPECT_EQ(vrfSm->dependentVrfInfo("X"), nullptr);
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("Y"));
}

TEST_F(FallbackConfig, ChangeKeepsTheOldRecordWhileOthersAreInIt) {
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("w", "X");
  fallback->fallbackVrfIs("v", "Y");
  EXPECT_THAT(dependentsOf("X"), ElementsAre("w"));
  EXPECT_THAT(dependentsOf("Y"), ElementsAre("v"));
}

TEST_F(FallbackConfig, ChangeToTheDefaultVrfTakesTheVrfOutOfItsRecord) {
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("v", "default");
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("default"));
}

TEST_F(FallbackConfig, ChangeToTheDefaultVrfKeepsTheRecordWhileOthersAreInIt) {
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("w", "X");
  fallback->fallbackVrfIs("v", "default");
  EXPECT_THAT(dependentsOf("X"), ElementsAre("w"));
}

TEST_F(FallbackConfig, ChangeFromTheDefaultVrfMakesTheNewRecord) {
  fallback->fallbackVrfIs("v", "default");
  fallback->fallbackVrfIs("v", "X");
  EXPECT_THAT(dependentsOf("X"), ElementsAre("v"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("X"));
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 1U);
}

TEST_F(FallbackConfig, RepeatedNoticeIsTracedAsHandledUpdatesAndLeavesTheRecords) {
  fallback->fallbackVrfIs("v", "X");
  const auto record = vrfSm->dependentVrfInfo("X");
  created(actionOf("v"));
  const BothSinks sinks;

  notify(258, "v");

  const Messages expected{handling("v"),
                          updatingAll("v"),
                          {5, 137, "updateAllVrfActions",
                           "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions: Updating VRF HW "
                           "instance for: v"},
                          alreadyHandled};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf v"));
  EXPECT_EQ(vrfSm->dependentVrfInfo("X"), record);
  EXPECT_THAT(dependentsOf("X"), ElementsAre("v"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("X"));
}

TEST_F(FallbackConfig, RepeatedNoticeDoesNotRestoreARecordThatWasTakenAway) {
  fallback->fallbackVrfIs("v", "X");
  vrfSm->dependentVrfInfoDelAll();
  notify(258, "v");
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

TEST_F(FallbackConfig, NewChangedAndRemovedEntriesAreTracedOnEntryOnly) {
  const BothSinks sinks;
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("v", "Y");
  fallback->fallbackVrfDel("v");

  const Messages expected{handling("v"),    updatingAll("v"), handling("v"),
                          updatingAll("v"), handling("v"),    updatingAll("v")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TEST_F(FallbackConfig, RemovalTakesTheVrfOutAndDeletesTheRecordWithItsLastMember) {
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfDel("v");
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
  EXPECT_FALSE(isHandled("v"));
}

TEST_F(FallbackConfig, RemovalKeepsTheRecordWhileOthersAreInIt) {
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("w", "X");
  fallback->fallbackVrfDel("v");
  EXPECT_THAT(dependentsOf("X"), ElementsAre("w"));
  EXPECT_FALSE(isHandled("v"));
  EXPECT_TRUE(isHandled("w"));
}

TEST_F(FallbackConfig, RemovalOfAnEntryToTheDefaultVrfTouchesNoRecord) {
  fallback->fallbackVrfIs("w", "X");
  fallback->fallbackVrfIs("v", "default");
  fallback->fallbackVrfDel("v");
  EXPECT_FALSE(isHandled("v"));
  EXPECT_THAT(dependentsOf("X"), ElementsAre("w"));
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 1U);
}

TEST_F(FallbackConfig, RemovalOfAllEntriesLeavesNothing) {
  fallback->fallbackVrfIs("u", "X");
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("w", "u");
  fallback->fallbackVrfDelAll();
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 0U);
}

TEST_F(FallbackConfig, NoticeOfAVrfThatIsNeitherConfiguredNorHandledUpdatesAndChangesNothing) {
  fallback->fallbackVrfIs("w", "X");
  created(actionOf("v"));

  notify(258, "v");

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf v"));
  EXPECT_FALSE(isHandled("v"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 1U);
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 1U);
  EXPECT_THAT(dependentsOf("X"), ElementsAre("w"));
}

TEST_F(FallbackConfig, NoticeOfAnotherAttributeDoesNothing) {
  fallback->fallbackVrfIs("v", "X");
  created(actionOf("v"));
  vrfSm->fallbackVrfInfoDelAll();
  const BothSinks sinks;

  for (const int other : {0, 130, 257, 259, -1})
    notify(static_cast<short>(other), "v");

  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(BothSinks::ring(), IsEmpty());
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_FALSE(isHandled("v"));
}

TEST_F(FallbackConfig, NoticeWhileTheMachineIsAZombieDoesNothing) {
  fallback->fallbackVrfIs("v", "X");
  created(actionOf("v"));
  vrfSm->moxDoZombieReactors(true);
  const BothSinks sinks;

  fallback->fallbackVrfIs("v", "Y");
  fallback->fallbackVrfDel("v");

  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("X"));
  EXPECT_THAT(dependentsOf("X"), ElementsAre("v"));
}

TEST_F(FallbackConfig, ChangeUpdatesTheVrfAndItsDirectDependentsOnly) {
  for (const char* vrf : {"a", "b", "c", "X"})
    created(actionOf(vrf));
  fallback->fallbackVrfIs("b", "a");
  fallback->fallbackVrfIs("c", "b");
  forget();

  fallback->fallbackVrfIs("a", "X");

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf a", "updateVrf b"));
}

TEST_F(FallbackConfig, UpdateComesBeforeTheRecordsChange) {
  created(actionOf("v"));
  fallback->fallbackVrfIs("v", "X");
  std::optional<L3::VrfName> handledDuringUpdate;
  bool wasDependentOfNew = true;
  bool wasDependentOfOld = false;
  chip->onUpdate = [&](const VrfAction&) {
    handledDuringUpdate = vrfSm->fallbackVrfInfo("v");
    wasDependentOfNew = vrfSm->dependentVrfInfo("Y") != nullptr;
    wasDependentOfOld = vrfSm->dependentVrfInfo("X") != nullptr;
    return HwStatus();
  };

  fallback->fallbackVrfIs("v", "Y");

  EXPECT_EQ(handledDuringUpdate, L3::VrfName("X"));
  EXPECT_FALSE(wasDependentOfNew);
  EXPECT_TRUE(wasDependentOfOld);
}

TEST_F(FallbackConfig, LaterChangeOfTheFallbackVrfReachesTheVrf) {
  const auto status = routes->vrfStatusIs("X");
  created(actionOf("v"));
  fallback->fallbackVrfIs("v", "X");
  forget();
  status->vrfIdIs(7);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf v"));

  fallback->fallbackVrfIs("v", "Y");
  forget();
  status->vrfIdIs(8);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(FallbackConfig, VrfMayFallBackToItself) {
  created(actionOf("v"));
  fallback->fallbackVrfIs("v", "v");
  EXPECT_THAT(dependentsOf("v"), ElementsAre("v"));
  forget();
  fallback->fallbackVrfDel("v");
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf v", "updateVrf v"));
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

TEST_F(FallbackConfig, KeptMappingsAreAPlainCollection) {
  vrfSm->fallbackVrfInfoIs("v", "X");
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("X"));
  vrfSm->fallbackVrfInfoIs("v", "Y");
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("Y"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 1U);
  EXPECT_EQ(vrfSm->fallbackVrfInfo("w"), L3::VrfName());
  EXPECT_EQ(vrfSm->fallbackVrfInfoDel("w"), L3::VrfName());
  EXPECT_EQ(vrfSm->fallbackVrfInfoDel("v"), L3::VrfName("Y"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 0U);
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

TEST_F(FallbackConfig, EmptyingTheKeptMappingsTouchesNoRecord) {
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("w", "Y");
  vrfSm->fallbackVrfInfoDelAll();
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 0U);
  EXPECT_THAT(dependentsOf("X"), ElementsAre("v"));
  EXPECT_THAT(dependentsOf("Y"), ElementsAre("w"));
}

TEST_F(FallbackConfig, EntryThatIsConfiguredButNotKeptIsHandledAsNew) {
  fallback->fallbackVrfIs("v", "X");
  vrfSm->fallbackVrfInfoDelAll();
  const BothSinks sinks;

  notify(258, "v");

  EXPECT_EQ(sinks.text(), BothSinks::textOf({handling("v"), updatingAll("v")}));
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("X"));
  EXPECT_THAT(dependentsOf("X"), ElementsAre("v"));
}

TEST_F(FallbackConfig, HookThatThrowsLeavesTheRecordsAndTheNextNoticeCatchesUp) {
  created(actionOf("v"));
  fallback->fallbackVrfIs("v", "X");
  chip->onUpdate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("chip is gone"); };

  EXPECT_THROW(fallback->fallbackVrfIs("v", "Y"), std::runtime_error);
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("X"));
  EXPECT_THAT(dependentsOf("X"), ElementsAre("v"));
  EXPECT_EQ(vrfSm->dependentVrfInfo("Y"), nullptr);

  chip->onUpdate = nullptr;
  fallback->fallbackVrfIs("v", "Z");
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("Z"));
  EXPECT_THAT(dependentsOf("Z"), ElementsAre("v"));
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 1U);
}

TEST_F(FallbackConfig, RemovalWhoseHookThrewIsCaughtUpWithByTheNextNotice) {
  created(actionOf("v"));
  fallback->fallbackVrfIs("v", "X");
  chip->onUpdate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("chip is gone"); };
  EXPECT_THROW(fallback->fallbackVrfDel("v"), std::runtime_error);
  EXPECT_EQ(vrfSm->fallbackVrfInfo("v"), L3::VrfName("X"));

  chip->onUpdate = nullptr;
  notify(258, "v");
  EXPECT_FALSE(isHandled("v"));
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

class FallbackConfigAtStart : public DrivenVrfSmTest {};

TEST_F(FallbackConfigAtStart, EveryConfiguredEntryIsHandledOnce) {
  fallback->fallbackVrfIs("a", "X");
  fallback->fallbackVrfIs("b", "X");
  fallback->fallbackVrfIs("c", "default");
  for (const char* vrf : {"a", "b", "c"})
    statuses->hwStatusIs(actionOf(vrf), HwStatus());

  vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, routes6);

  EXPECT_THAT(journal.take(), UnorderedElementsAre("updateVrf a", "updateVrf b", "updateVrf c"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 3U);
  EXPECT_EQ(vrfSm->fallbackVrfInfo("c"), L3::VrfName("default"));
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 1U);
  EXPECT_EQ(vrfSm->dependentVrfInfo("X")->dependentVrfs().count(), 2U);
}

TEST_F(FallbackConfigAtStart, ConfiguredEntryIsTracedAsNew) {
  fallback->fallbackVrfIs("v", "X");
  const BothSinks sinks;

  start();

  const Messages expected{
      {5, 289, "handleInitialized", "VrfSm::VrfInstanceSm::handleInitialized Initialize VRF SM"},
      handling("v"),
      updatingAll("v")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TEST_F(FallbackConfigAtStart, NothingIsKeptWithoutConfiguration) {
  start();
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 0U);
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
