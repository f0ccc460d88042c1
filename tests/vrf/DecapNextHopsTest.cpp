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
using PolicyMap::ActionType;

ExpectedMessage decapNh(const std::string& flag) {
  return {7, 278, "handleDecapNh", "VrfSm::handleDecapNh decapNhEnabled:" + flag};
}

ExpectedMessage decapNhFallback(const std::string& flag) {
  return {7, 266, "handleDecapNhFallback",
          "VrfSm::handleDecapNhFallback decapNhFallbackEnabled:" + flag};
}

ExpectedMessage decapNhAction(const std::string& action) {
  return {7, 282, "handleDecapNh", "VrfSm::handleDecapNh action:" + action};
}

ExpectedMessage updating(const std::string& vrf) {
  return {5, 149, "updateVrfAction",
          "ZelVrfSelectionPolicy::VrfSm::updateVrfAction: Updating VRF HW instance for: " + vrf};
}

class DecapNextHops : public DrivenVrfSmTest {
 protected:
  DecapNextHops() { start(); }

  void createOneOfEachType() {
    created(actionOf("none", {}, {}, ActionType::none));
    created(actionOf("vrf", {}, {}, ActionType::vrf));
    created(actionOf("decap", "vrf", "none", ActionType::decapVrf));
    created(actionOf("discard", {}, {}, ActionType::discard));
  }

  // In the order in which the status table is walked.
  std::vector<VrfAction> createdActions() const {
    std::vector<VrfAction> actions;
    for (auto entry = statuses->hwStatus().iterator(); entry; ++entry) {
      actions.push_back(entry.key());
    }
    return actions;
  }

  std::vector<std::string> updatesOfAll() const {
    std::vector<std::string> updates;
    for (const VrfAction& action : createdActions())
      updates.push_back("updateVrf " + shown(action));
    return updates;
  }
};

TEST_F(DecapNextHops, ChangeOfTheFlagWithoutActionsIsTracedInBothSinksAndUpdatesNothing) {
  const BothSinks sinks;

  routes->decapNhEnabledIs(true);

  EXPECT_EQ(sinks.text(), BothSinks::textOf({decapNh("true")}));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf({decapNh("true")}));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(DecapNextHops, ChangeOfTheFallbackFlagWithoutActionsIsTracedInBothSinksAndUpdatesNothing) {
  const BothSinks sinks;

  routes->decapNhFallbackEnabledIs(true);

  const Messages expected{decapNhFallback("false")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(DecapNextHops, ActionsOfEveryTypeAreUpdatedOnceInTheOrderOfTheTable) {
  createOneOfEachType();
  const auto expected = updatesOfAll();
  ASSERT_EQ(expected.size(), 4U);

  routes->decapNhEnabledIs(true);
  EXPECT_EQ(journal.take(), expected);
  routes->decapNhFallbackEnabledIs(true);
  EXPECT_EQ(journal.take(), expected);
}

TEST_F(DecapNextHops, EachActionIsTracedBeforeItsUpdateByNumberInTheRingAndByNameInTheText) {
  createOneOfEachType();
  const std::map<std::string, std::pair<std::string, std::string>> shownTypes{
      {"none", {"0", "actionNone"}},
      {"vrf", {"1", "actionVrf"}},
      {"decap", {"2", "actionDecapVrf"}},
      {"discard", {"3", "actionDiscard"}}};
  Messages inRing{decapNh("true")};
  Messages inText{decapNh("true")};
  for (const VrfAction& action : createdActions()) {
    const auto& [number, name] = shownTypes.at(action.vrfName().str());
    inRing.push_back(decapNhAction(number));
    inText.push_back(decapNhAction(name));
    inRing.push_back(updating(action.vrfName().str()));
    inText.push_back(updating(action.vrfName().str()));
  }
  const BothSinks sinks;

  routes->decapNhEnabledIs(true);

  EXPECT_EQ(inRing.size(), 9U);
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(inRing));
  EXPECT_EQ(sinks.text(), BothSinks::textOf(inText));
}

TEST_F(DecapNextHops, FallbackFlagTracesNoActionsOfItsOwn) {
  created(actionOf("red"));
  const BothSinks sinks;

  routes->decapNhFallbackEnabledIs(true);

  const Messages expected{decapNhFallback("false"), updating("red")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TEST_F(DecapNextHops, TogglingTheFlagOnAndOffUpdatesEveryActionTwice) {
  created(actionOf("red"));
  created(actionOf("blue"));
  const std::map<std::string, int> twiceEach{{"updateVrf red", 2}, {"updateVrf blue", 2}};

  routes->decapNhEnabledIs(true);
  routes->decapNhEnabledIs(false);
  EXPECT_EQ(counted(journal.take()), twiceEach);

  routes->decapNhFallbackEnabledIs(true);
  routes->decapNhFallbackEnabledIs(false);
  EXPECT_EQ(counted(journal.take()), twiceEach);
}

TEST_F(DecapNextHops, BothHandlersShowTheSameStoredFlagUnderTheirOwnLabels) {
  for (const bool enabled : {false, true}) {
    for (const bool fallbackEnabled : {false, true}) {
      SCOPED_TRACE(::testing::Message() << enabled << " " << fallbackEnabled);
      routes->decapNhEnabledIs(enabled);
      routes->decapNhFallbackEnabledIs(fallbackEnabled);
      const BothSinks sinks;

      vrfSm->handleDecapNh();
      vrfSm->handleDecapNhFallback();

      const std::string flag = enabled ? "true" : "false";
      const Messages expected{decapNh(flag), decapNhFallback(flag)};
      EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
      EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
    }
  }
}

TEST_F(DecapNextHops, FlagsOfTheIpv6RouteStatusDoNotMatter) {
  created(actionOf("red"));
  const BothSinks sinks;

  routes6->decapNhEnabledIs(true);
  routes6->decapNhFallbackEnabledIs(true);

  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(BothSinks::ring(), IsEmpty());
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(DecapNextHops, ActionIsUpdatedWhateverItsStatus) {
  chip->onCreate = [](const VrfAction& action) {
    return action.vrfName() == L3::VrfName("red") ? failure("no room") : HwStatus();
  };
  created(actionOf("red"));
  created(actionOf("blue"));

  routes->decapNhEnabledIs(true);

  EXPECT_THAT(journal.take(), UnorderedElementsAre("updateVrf red", "updateVrf blue"));
  EXPECT_EQ(statuses->hwStatus(actionOf("red")), HwStatus());
}

TEST_F(DecapNextHops, ActionWithUsersButWithoutAStatusIsNotUpdated) {
  vrfSm = nullptr;
  users->vrfRefCountIs(actionOf("red"), 1);
  start();
  routes->decapNhEnabledIs(true);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(DecapNextHops, ActionWhoseStatusIsRewrittenIsNeitherSkippedNorUpdatedTwice) {
  constexpr int actions = 100;
  std::map<std::string, int> onceEach;
  for (int i = 0; i < actions; ++i) {
    created(actionOf(numbered("vrf", i)));
    onceEach[numbered("updateVrf vrf", i)] = 1;
  }
  int updates = 0;
  chip->onUpdate = [&](const VrfAction&) { return failure(std::to_string(++updates).c_str()); };

  routes->decapNhEnabledIs(true);
  EXPECT_EQ(counted(journal.take()), onceEach);
  routes->decapNhFallbackEnabledIs(true);
  EXPECT_EQ(counted(journal.take()), onceEach);

  for (int i = 0; i < actions; ++i) {
    EXPECT_TRUE(statuses->hwStatus(actionOf(numbered("vrf", i))));
  }
}

TEST_F(DecapNextHops, OutcomeIsWrittenAfterEachUpdate) {
  created(actionOf("red"));
  chip->onUpdate = [](const VrfAction&) { return failure("full"); };
  const TableJournal tables(journal, users, statuses);

  routes->decapNhFallbackEnabledIs(true);

  EXPECT_THAT(journal.take(),
              ElementsAre("updateVrf red", "hwStatus red = " + shown(failure("full"))));
}

TEST_F(DecapNextHops, HookThatThrowsEndsTheWalkAndTheNextToggleUpdatesAll) {
  for (const char* vrf : {"a", "b", "c"})
    created(actionOf(vrf));
  const auto all = updatesOfAll();
  int updates = 0;
  chip->onUpdate = [&](const VrfAction&) -> HwStatus {
    if (++updates == 2) throw std::runtime_error("chip is gone");
    return HwStatus();
  };

  EXPECT_THROW(routes->decapNhEnabledIs(true), std::runtime_error);
  EXPECT_THAT(journal.take(), ElementsAre(all[0], all[1]));

  routes->decapNhEnabledIs(false);
  EXPECT_EQ(journal.take(), all);
  updates = 1;
  EXPECT_THROW(routes->decapNhFallbackEnabledIs(true), std::runtime_error);
  EXPECT_THAT(journal.take(), ElementsAre(all[0]));
  routes->decapNhFallbackEnabledIs(false);
  EXPECT_EQ(journal.take(), all);
}

class DecapNextHopsDeathTest : public DrivenVrfSmTest {
 protected:
  DecapNextHopsDeathTest() {
    vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, nullptr, routes6);
  }

  static constexpr const char* failureText =
      "a decap handler needs an IPv4 route status\n.*"
      "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:0: VrfSm::decapNhFlag: Assertion "
      "`\"routingHwRouteStatus\\(\\)\" == nullptr' failed";
};

TEST_F(DecapNextHopsDeathTest, HandlerWithoutAnIpv4RouteStatusStopsTheProcess) {
  EXPECT_DEATH(vrfSm->handleDecapNh(), failureText);
}

TEST_F(DecapNextHopsDeathTest, FallbackHandlerWithoutAnIpv4RouteStatusStopsTheProcess) {
  EXPECT_DEATH(vrfSm->handleDecapNhFallback(), failureText);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
