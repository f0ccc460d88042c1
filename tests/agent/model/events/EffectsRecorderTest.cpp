// What a recorder counts of the calls that change the chip.
#include "agent/model/events/EffectsRecorder.h"

#include <gtest/gtest.h>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

class EffectsRecorderTest : public ::testing::Test {
 protected:
  EventEffects effectsOf(const Configuration& configuration) {
    EffectsRecorder recorder(agent_);
    agent_.apply(configuration);
    return recorder.take();
  }
  static Configuration edge(const std::vector<nlohmann::json>& rules) {
    return OpenConfigBuilder().vrf("red").policy("edge", rules, {"e1", "e2"}).configuration();
  }

  ForwardingAgent agent_{ChipOptions{.capacity = 16, .ruleCapacity = 6}};
};

TEST_F(EffectsRecorderTest, CountsRulesOfEachInterface) {
  const auto one = ruleOf(1, "ipv4", {}, toVrf("red"));
  const auto two = ruleOf(2, "ipv6", {}, toVrf("red"));
  EventEffects effects = effectsOf(edge({one, two}));
  EXPECT_EQ(effects.counts, (ChangeCounts{.creates = 1, .rulesAdded = 4}));
  EXPECT_EQ(effects.calls, (std::vector<Chips::HookCall>{{Chips::Hook::createVrf, red, false}}));
  effects = effectsOf(edge({one, two}));
  EXPECT_EQ(effects.counts, ChangeCounts());
  EXPECT_TRUE(effects.statusChanges.empty());
  EXPECT_EQ(effectsOf(edge({two})).counts, ChangeCounts{.rulesRemoved = 2});
  EXPECT_EQ(effectsOf(edge({})).counts, (ChangeCounts{.deletes = 1, .rulesRemoved = 2}));
}

TEST_F(EffectsRecorderTest, CountsRefusedRules) {
  std::vector<nlohmann::json> rules;
  for (unsigned sequence = 1; sequence <= 4; ++sequence)
    rules.push_back(ruleOf(sequence, "ipv4", {{"dscp", sequence}}, toVrf("red")));
  EXPECT_EQ(effectsOf(edge(rules)).counts,
            (ChangeCounts{.creates = 1, .rulesAdded = 4, .rulesRefused = 4}));
}

// Rules for the DSCPs.
std::vector<nlohmann::json> rulesFor(const std::vector<unsigned>& dscps) {
  std::vector<nlohmann::json> rules;
  for (const unsigned dscp : dscps)
    rules.push_back(ruleOf(static_cast<std::uint32_t>(rules.size() + 1), "ipv4", {{"dscp", dscp}},
                           toDiscard()));
  return rules;
}

TEST_F(EffectsRecorderTest, CountsNoRuleOfAnInterfaceWhoseRulesAreTakenBack) {
  agent_.ruleCapacityIs(4);
  const auto onOne = [](const std::vector<unsigned>& dscps) {
    return OpenConfigBuilder().policy("edge", rulesFor(dscps), {"e1"}).configuration();
  };
  EXPECT_EQ(effectsOf(onOne({1, 2, 3})).counts, ChangeCounts{.rulesAdded = 3});
  EXPECT_EQ(effectsOf(onOne({3, 7, 8, 9, 2})).counts, ChangeCounts{.rulesRefused = 5});
  EXPECT_EQ(effectsOf(onOne({3, 1, 2, 4})).counts,
            (ChangeCounts{.rulesAdded = 1, .rulesMoved = 1}));
}

TEST_F(EffectsRecorderTest, CountsNoRefusalThatEndsWithTheRulesInForce) {
  agent_.ruleCapacityIs(2);
  const auto onTwo = [](const std::vector<unsigned>& first, const std::vector<unsigned>& second) {
    return OpenConfigBuilder()
        .policy("one", rulesFor(first), {"e1"})
        .policy("two", rulesFor(second), {"e2"})
        .configuration();
  };
  EXPECT_EQ(effectsOf(onTwo({}, {1, 2})).counts, ChangeCounts{.rulesAdded = 2});
  EXPECT_EQ(effectsOf(onTwo({1}, {1})).counts, (ChangeCounts{.rulesAdded = 1, .rulesRemoved = 1}));
}

TEST_F(EffectsRecorderTest, CountsACallThatUndoesTheLastOneOfItsInterfaceAsNone) {
  using Kind = RuleCall::Kind;
  const Velo::String intf("e1");
  const PolicyMap::AclRule one;
  PolicyMap::AclRule two;
  two.action.type = PolicyMap::ActionType::discard;
  RuleChangeCounter undone;
  undone.take({Kind::replace, intf, 0, 0, two, true, &one});
  undone.take({Kind::replace, intf, 0, 0, one, true, &two});
  ChangeCounts counts;
  undone.addTo(counts, agent_);
  EXPECT_EQ(counts, ChangeCounts());
  RuleChangeCounter kept;
  kept.take({Kind::replace, intf, 0, 0, two, true, &one});
  kept.take({Kind::replace, intf, 0, 0, two, true, &two});
  kept.take({Kind::add, intf, 0, 0, one});
  kept.take({Kind::remove, intf, 1, 0, two});
  kept.addTo(counts, agent_);
  EXPECT_EQ(counts, (ChangeCounts{.rulesAdded = 1, .rulesReplaced = 2, .rulesRemoved = 1}));
}

TEST_F(EffectsRecorderTest, CountsRoutes) {
  OpenConfigBuilder routes;
  routes.vrf("red").route("red", "10.0.0.0/8", "e1").route("red", "11.0.0.0/8", "e1");
  EXPECT_EQ(effectsOf(routes.configuration()).counts, ChangeCounts{.routesSet = 2});
  OpenConfigBuilder changed;
  changed.vrf("red").route("red", "10.0.0.0/8", "e2");
  EXPECT_EQ(effectsOf(changed.configuration()).counts,
            (ChangeCounts{.routesSet = 1, .routesRemoved = 1}));
  EXPECT_EQ(effectsOf(OpenConfigBuilder().configuration()).counts,
            ChangeCounts{.routesRemoved = 1});
}

TEST_F(EffectsRecorderTest, AStatusIsComparedWithThatBeforeTheFirstCall) {
  agent_.chip().capacityIs(0);
  EventEffects effects = effectsOf(edge({ruleOf(1, "ipv4", {}, toVrf("red"))}));
  EXPECT_EQ(effects.counts.failures, 1U);
  ASSERT_EQ(effects.statusChanges.size(), 1U);
  EXPECT_FALSE(effects.statusChanges[0].before);
  const auto refused = effects.statusChanges[0].after;
  ASSERT_TRUE(refused);
  effects = effectsOf(edge({}));
  ASSERT_EQ(effects.statusChanges.size(), 1U);
  EXPECT_EQ(effects.statusChanges[0].before, refused);
  EXPECT_FALSE(effects.statusChanges[0].after);
}

TEST_F(EffectsRecorderTest, RecordsNothingBeforeAndAfterItsLifetime) {
  agent_.apply(edge({ruleOf(1, "ipv4", {}, toVrf("red"))}));
  EventEffects effects = EffectsRecorder(agent_).take();
  EXPECT_EQ(effects.counts, ChangeCounts());
  agent_.apply(edge({}));
  EXPECT_TRUE(effects.calls.empty());
}

}  // namespace
}  // namespace ZelAgent
