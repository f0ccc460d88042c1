// What reaches the chip when one configuration replaces another.
#include "agent/model/forwarding/ForwardingAgent.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "Velo/Subscriber.h"
#include "agent/config/OpenConfigReader.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

using Chips::HookCounts;
using PolicyMap::ActionType;

class ForwardingAgentTest : public ::testing::Test {
 protected:
  void apply(const SmallConfiguration& small) { agent_.apply(configurationOf(small)); }
  // What the hooks were called since the last time this was asked.
  HookCounts newCalls() {
    const HookCounts now = agent_.chip().hookCounts();
    const HookCounts before = std::exchange(seen_, now);
    return {now.creates - before.creates, now.updates - before.updates,
            now.deletes - before.deletes, now.failures - before.failures};
  }
  [[nodiscard]] std::uint32_t vrfIdIn(const VrfAction& action) {
    const auto* const resource = agent_.chip().resource(action);
    return resource == nullptr ? 0 : resource->program.lookUp.front().vrfId;
  }

  ForwardingAgent agent_{16};
  HookCounts seen_;
};

TEST_F(ForwardingAgentTest, StartsEmpty) {
  const AgentState state = agent_.state();
  EXPECT_TRUE(state.actions.empty());
  EXPECT_EQ(state.chip.capacity, 16U);
  EXPECT_EQ(state.chip.used, 0U);
}

TEST_F(ForwardingAgentTest, CreatesOneResourcePerAction) {
  apply({{{"red"}, {"blue"}}, {"red", "blue", "red"}, {"e1", "e2"}});
  EXPECT_EQ(newCalls(), (HookCounts{2, 0, 0, 0}));
  const AgentState state = agent_.state();
  ASSERT_EQ(state.actions.size(), 2U);
  EXPECT_EQ(state.actions[0].action, blue);
  EXPECT_EQ(state.actions[0].users, 2U);
  EXPECT_EQ(state.actions[1].action, red);
  EXPECT_EQ(state.actions[1].users, 4U);
  EXPECT_EQ(state.actions[1].usedBy.size(), 4U);
  EXPECT_FALSE(hasFailedAction(state));
}

TEST_F(ForwardingAgentTest, TheSameConfigurationAgainReachesNobody) {
  const SmallConfiguration same{{{"red", "DEFAULT"}}, {"red"}, {"e1"}};
  apply(same);
  (void)newCalls();
  apply(same);
  EXPECT_EQ(newCalls(), HookCounts{});
}

TEST_F(ForwardingAgentTest, AnActionWhoseUsersAllChangeStays) {
  apply({{{"red"}}, {"red"}, {"e1", "e2"}});
  (void)newCalls();
  apply({{{"red"}}, {"red"}, {"e3"}});
  EXPECT_EQ(newCalls(), HookCounts{});
  EXPECT_EQ(agent_.state().actions.at(0).users, 1U);
  EXPECT_EQ(agent_.state().actions.at(0).usedBy.begin()->interface, "e3");
}

TEST_F(ForwardingAgentTest, AnActionWithoutUsersGoes) {
  apply({{{"red"}, {"blue"}}, {"red", "blue"}, {"e1"}});
  (void)newCalls();
  apply({{{"red"}, {"blue"}}, {"red"}, {"e1"}});
  EXPECT_EQ(newCalls(), (HookCounts{0, 0, 1, 0}));
  EXPECT_EQ(agent_.chip().resource(blue), nullptr);
  EXPECT_NE(agent_.chip().resource(red), nullptr);
}

TEST_F(ForwardingAgentTest, InstancesHaveIdsBeforeTheirActionsAreCreated) {
  apply({{{"red"}, {"blue"}}, {"blue"}, {"e1"}});
  EXPECT_EQ(newCalls(), (HookCounts{1, 0, 0, 0}));
  EXPECT_EQ(vrfIdIn(blue), 3U);
}

TEST_F(ForwardingAgentTest, IdsStayWhileAnInstanceIsConfiguredAndAreReusedAfterwards) {
  apply({{{"red"}, {"blue"}}, {"blue"}, {"e1"}});
  apply({{{"blue"}}, {"blue"}, {"e1"}});
  EXPECT_EQ(vrfIdIn(blue), 3U);
  apply({{{"green"}, {"blue"}}, {"green"}, {"e1"}});
  EXPECT_EQ(vrfIdIn(VrfAction("green", ActionType::vrf)), 2U);
}

TEST_F(ForwardingAgentTest, FallbacksAreKnownBeforeTheirActionsAreCreated) {
  apply({{{"red", "blue"}, {"blue", "DEFAULT"}}, {"red"}, {"e1"}});
  EXPECT_EQ(newCalls(), (HookCounts{1, 0, 0, 0}));
  const auto& walk = agent_.chip().resource(red)->program.lookUp;
  ASSERT_EQ(walk.size(), 3U);
  EXPECT_EQ(walk[1].name, L3::VrfName("blue"));
  EXPECT_EQ(walk[2].name, L3::VrfName("default"));
}

TEST_F(ForwardingAgentTest, AChangedFallbackReachesTheResource) {
  apply({{{"red", "blue"}, {"blue"}}, {"red"}, {"e1"}});
  for (const SmallVrf& changed : {SmallVrf{"red", "DEFAULT"}, SmallVrf{"red"}}) {
    apply({{changed, {"blue"}}, {"red"}, {"e1"}});
    const AgentState state = agent_.state();
    EXPECT_FALSE(state.actions.at(0).resourceIsStale());
    EXPECT_EQ(state.actions.at(0).resource->program.lookUp.size(),
              changed.fallback.empty() ? 1U : 2U);
  }
}

TEST_F(ForwardingAgentTest, AnActionIntoAnInstanceThatIsNotConfiguredFailsUntilItIs) {
  apply({{}, {"red"}, {"e1"}});
  EXPECT_EQ(newCalls(), (HookCounts{1, 0, 0, 1}));
  EXPECT_TRUE(hasFailedAction(agent_.state()));
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_FALSE(hasFailedAction(agent_.state()));
  EXPECT_NE(agent_.chip().resource(red), nullptr);
  apply({{}, {"red"}, {"e1"}});
  EXPECT_TRUE(hasFailedAction(agent_.state()));
  EXPECT_EQ(agent_.chip().resource(red), nullptr);
}

TEST_F(ForwardingAgentTest, AResourceThatTheChipDidNotUpdateIsShownAsStale) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  agent_.chip().faultPlan().anyFaultsIs(100);
  apply({{{"red", "DEFAULT"}}, {"red"}, {"e1"}});
  const AgentState state = agent_.state();
  EXPECT_TRUE(state.actions.at(0).resourceIsStale());
  EXPECT_TRUE(hasFailedAction(state));
}

TEST_F(ForwardingAgentTest, UsersAreThePairsOfInterfaceAndRule) {
  apply({{{"red"}, {"blue"}}, {"red", "blue", "red"}, {"e1", "e2"}});
  const ActionUsers users = agent_.users();
  ASSERT_EQ(users.size(), 2U);
  EXPECT_EQ(users.at(red), (std::set<ActionUser>{{"e1", "default", "P", 1},
                                                 {"e1", "default", "P", 3},
                                                 {"e2", "default", "P", 1},
                                                 {"e2", "default", "P", 3}}));
  EXPECT_EQ(users.at(blue),
            (std::set<ActionUser>{{"e1", "default", "P", 2}, {"e2", "default", "P", 2}}));
}

TEST_F(ForwardingAgentTest, RulesThatDoNotFitAreNoUsers) {
  agent_.ruleCapacityIs(1);
  apply({{{"red"}, {"blue"}}, {"red", "blue"}, {"e1"}});
  EXPECT_TRUE(agent_.users().empty());
  EXPECT_EQ(agent_.chip().resource(red), nullptr);
  const RuleStates rules = agent_.rules();
  ASSERT_EQ(rules.size(), 2U);
  for (const RuleState& rule : rules) {
    EXPECT_FALSE(rule.place.has_value());
    EXPECT_EQ(
        rule.reason,
        "the rules do not fit into the 1 rule entries of the chip; remove rules or interfaces "
        "of a policy; all packets of the interface are dropped");
  }
  EXPECT_TRUE(agent_.acl().intfClosed("e1"));
}

TEST_F(ForwardingAgentTest, RulesThatDoNotFitAreAskedForAgainWhenThereIsRoom) {
  agent_.ruleCapacityIs(1);
  apply({{{"red"}, {"blue"}}, {"red", "blue"}, {"e1"}});
  agent_.ruleCapacityIs(2);
  EXPECT_EQ(agent_.acl().rulesInUse(), 2U);
  EXPECT_FALSE(agent_.acl().intfClosed("e1"));
  apply({{{"red"}, {"blue"}}, {"red", "blue"}, {"e1", "e2"}});
  EXPECT_EQ(agent_.acl().rulesInUse(), 2U);
  apply({{{"red"}, {"blue"}}, {"red", "blue"}, {"e2"}});
  EXPECT_EQ(agent_.users().at(red).size(), 1U);
  EXPECT_EQ(agent_.users().at(blue).size(), 1U);
  EXPECT_EQ(agent_.users().at(blue).begin()->interface, "e2");
}

TEST_F(ForwardingAgentTest, APolicyThatDoesNotFitReplacesNone) {
  agent_.ruleCapacityIs(2);
  apply({{{"red"}, {"blue"}}, {"red", "red"}, {"e1"}});
  apply({{{"red"}, {"blue"}}, {"blue", "red", "red"}, {"e1"}});
  const RuleStates rules = agent_.rules();
  ASSERT_EQ(rules.size(), 5U);
  for (std::size_t at = 0; at < 3; ++at)
    EXPECT_FALSE(rules[at].place.has_value());
  for (std::size_t at = 3; at < 5; ++at) {
    EXPECT_EQ(rules[at].place, at - 3);
    EXPECT_TRUE(rules[at].isPrevious);
    EXPECT_EQ(rules[at].user, (ActionUser{"e1", "default", "P", static_cast<unsigned>(at - 2)}));
  }
  EXPECT_EQ(agent_.users().at(red).size(), 2U);
  EXPECT_EQ(agent_.state().actions.size(), 1U) << "blue is not used";
  agent_.ruleCapacityIs(4);
  EXPECT_EQ(agent_.rules().size(), 3U);
  EXPECT_EQ(agent_.users().at(blue).size(), 1U);
}

TEST_F(ForwardingAgentTest, AnActionChangesInPlaceWhileTheRuleTableIsFull) {
  agent_.ruleCapacityIs(1);
  apply({{{"red"}, {"blue"}}, {"red"}, {"e1"}});
  (void)newCalls();
  apply({{{"red"}, {"blue"}}, {"blue"}, {"e1"}});
  EXPECT_EQ(agent_.users().size(), 1U);
  EXPECT_EQ(agent_.users().at(blue).size(), 1U);
  EXPECT_NE(agent_.chip().resource(blue), nullptr);
  EXPECT_EQ(agent_.chip().resource(red), nullptr);
}

TEST(ForwardingAgent, LeavesAnInterfaceOpenWhoseRulesDoNotFitIfThatIsChosen) {
  ForwardingAgent agent(ChipOptions{.ruleCapacity = 0, .whenFull = PolicyMap::WhenFull::open});
  agent.apply(configurationOf({{{"red"}}, {"red"}, {"e1"}}));
  EXPECT_FALSE(agent.acl().intfClosed("e1"));
  EXPECT_FALSE(agent.rules().at(0).place.has_value());
}

// Throws at the first status of a rule that an agent writes.
class ThrowingSubscriber final {
 public:
  explicit ThrowingSubscriber(ForwardingAgent& agent)
      : status_(agent.policySm().policySmMounts()->policyStatus()) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void*,
                              const void*) {
      auto& self = Velo::MemberSubscriber<ThrowingSubscriber>::ownerOf(subscriber);
      if (!std::exchange(self.hasThrown_, true)) throw std::runtime_error("subscriber failed");
    };
    status_->publisher().subscriberIs(subscriber_);
  }
  ThrowingSubscriber(const ThrowingSubscriber&) = delete;
  ThrowingSubscriber& operator=(const ThrowingSubscriber&) = delete;
  ~ThrowingSubscriber() { status_->publisher().subscriberDel(subscriber_); }

 private:
  Mox::Ptr<PolicyMap::PolicyMapTypeStatus> status_;
  bool hasThrown_ = false;
  Velo::MemberSubscriber<ThrowingSubscriber> subscriber_{*this};
};

TEST_F(ForwardingAgentTest, AFailureWhileRulesAreProgrammedIsReported) {
  const ThrowingSubscriber thrower(agent_);
  EXPECT_THROW(apply({{{"red"}}, {"red"}, {"e1"}}), std::runtime_error);
}

TEST_F(ForwardingAgentTest, TheNextConfigurationCompletesOneThatFailed) {
  const SmallConfiguration wanted{{{"red"}, {"blue"}}, {"red", "blue"}, {"e1", "e2"}};
  {
    const ThrowingSubscriber thrower(agent_);
    EXPECT_THROW(apply(wanted), std::runtime_error);
  }
  apply(wanted);
  EXPECT_EQ(agent_.acl().rulesInUse(), 4U);
  EXPECT_EQ(agent_.users(), usersOfActions(configurationOf(wanted)));
  for (const RuleState& rule : agent_.rules())
    EXPECT_TRUE(rule.place.has_value()) << rule.reason;
  EXPECT_TRUE(agent_.policySm().policySm()->ready());
}

TEST_F(ForwardingAgentTest, RulesThatMatchTheSameAreUsersEachOfItsOwn) {
  apply({{{"red"}}, {"red", "red"}, {"e1"}});
  EXPECT_EQ(agent_.state().actions.at(0).users, 2U);
  EXPECT_EQ(agent_.acl().rulesInUse(), 2U);
}

TEST_F(ForwardingAgentTest, RemovingAllLeavesNothing) {
  apply({{{"red", "blue"}, {"blue"}}, {"red", "blue", "nowhere"}, {"e1", "e2"}});
  (void)newCalls();
  agent_.removeAll();
  EXPECT_EQ(newCalls().deletes, 3U);
  EXPECT_TRUE(agent_.state().actions.empty());
  EXPECT_TRUE(agent_.chip().resources().empty());
  EXPECT_EQ(agent_.chip().routingHwRouteStatus()->vrfStatus().count(), 0U);
  EXPECT_EQ(agent_.chip().vrfFallbackConfig()->fallbackVrf().count(), 0U);
  EXPECT_EQ(agent_.acl().rulesInUse(), 0U);
  EXPECT_TRUE(agent_.users().empty());
  EXPECT_TRUE(agent_.rules().empty());
}

}  // namespace
}  // namespace ZelAgent
