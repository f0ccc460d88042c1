// A policy of ten thousand rules is loaded, changed by one rule and removed; the change touches
// only what it is about.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/TestPackets.h"

namespace ZelAgent {
namespace {

using Chips::HookCounts;

constexpr std::uint32_t ruleCount = 10'000;
constexpr std::uint32_t actionCount = 4'000;
constexpr std::uint32_t changed = 5'432;  // a rule in the middle

std::string vrfOf(std::uint32_t number) {
  return std::string("vrf-") + std::to_string(number % actionCount);
}

// One address for each rule.
IpPrefix destinationOf(std::uint32_t rule) {
  IpAddress address;
  address.bytes = {10, static_cast<std::uint8_t>(rule >> 16), static_cast<std::uint8_t>(rule >> 8),
                   static_cast<std::uint8_t>(rule)};
  return {address, 32};
}

PacketBytes packetFor(std::uint32_t rule) {
  return ipv4Packet({"192.0.2.1", toText(destinationOf(rule).address)});
}

Rule ruleInto(std::uint32_t number, const std::string& vrf) {
  Rule rule;
  rule.sequenceId = number + 1;
  rule.match.family = IpFamily::v4;
  rule.match.destination = destinationOf(number);
  rule.action = LookUp{vrf};
  return rule;
}

// Rule n sends one address into VRF n modulo the number of actions.
Configuration manyRules() {
  Configuration configuration;
  NetworkInstance& standard = configuration.networkInstances.emplace_back();
  standard.name = defaultVrfName;
  standard.type = InstanceType::defaultInstance;
  Policy& policy = standard.policies.emplace_back();
  policy.policyId = "many";
  for (std::uint32_t number = 0; number < ruleCount; ++number)
    policy.rules.push_back(ruleInto(number, vrfOf(number)));
  standard.policyBindings.push_back({"Ethernet1", "many"});
  for (std::uint32_t number = 0; number <= actionCount; ++number) {
    NetworkInstance& instance = configuration.networkInstances.emplace_back();
    instance.name = number == actionCount ? "new" : vrfOf(number);
    NextHop nextHop{"0", {}, std::string("to-") + instance.name, false};
    instance.staticRoutes.push_back({{IpAddress{}, 0}, {nextHop}});
  }
  return configuration;
}

std::vector<Rule>& rulesIn(Configuration& configuration) {
  return configuration.networkInstances.front().policies.front().rules;
}

class ManyRulesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    agent_.apply(configuration_);
    // Each rule has taken one packet, so that a rule that was removed and put back shows.
    for (std::uint32_t number = 0; number < ruleCount; ++number)
      ASSERT_EQ(egressOf(number), std::string("to-") + vrfOf(number));
    agent_.chip().hookObserverIs([this](const Chips::HookCall& call) { calls_.push_back(call); });
  }

  std::string egressOf(std::uint32_t rule) {
    return agent_.forwarder().forward("Ethernet1", packetFor(rule)).egress;
  }

  // The rules that have taken no packet since they were put into the chip.
  [[nodiscard]] std::set<std::uint32_t> untouchedByPackets() const {
    std::set<std::uint32_t> rules;
    for (const RuleState& rule : agent_.rules()) {
      EXPECT_TRUE(rule.place.has_value());
      if (rule.counter.packets == 0) rules.insert(rule.user.sequenceId);
    }
    return rules;
  }

  [[nodiscard]] std::size_t userCount() const {
    std::size_t users = 0;
    for (const auto& [action, usersOfAction] : agent_.users())
      users += usersOfAction.size();
    return users;
  }

  ForwardingAgent agent_{actionCount + 1};
  Configuration configuration_ = manyRules();
  std::vector<Chips::HookCall> calls_;
};

TEST_F(ManyRulesTest, EachActionHasOneResource) {
  EXPECT_EQ(agent_.chip().hookCounts(), (HookCounts{actionCount, 0, 0, 0}));
  EXPECT_EQ(agent_.chip().resources().size(), actionCount);
  EXPECT_EQ(agent_.acl().rulesInUse(), ruleCount);
  EXPECT_EQ(userCount(), ruleCount);
}

TEST_F(ManyRulesTest, OneRuleIntoAVrfInUseTouchesOnlyThatRule) {
  rulesIn(configuration_)[changed] = ruleInto(changed, vrfOf(7));
  agent_.apply(configuration_);
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(untouchedByPackets(), (std::set<std::uint32_t>{changed + 1}));
  EXPECT_EQ(egressOf(changed), std::string("to-") + vrfOf(7));
  EXPECT_EQ(egressOf(changed + 1), std::string("to-") + vrfOf(changed + 1));
  EXPECT_EQ(userCount(), ruleCount);
}

TEST_F(ManyRulesTest, OneRuleIntoANewVrfTouchesOnlyThatRuleAndItsAction) {
  rulesIn(configuration_)[changed] = ruleInto(changed, "new");
  agent_.apply(configuration_);
  ASSERT_EQ(calls_.size(), 1U);
  EXPECT_EQ(calls_[0].hook, Chips::Hook::createVrf);
  EXPECT_EQ(calls_[0].action, VrfAction("new", PolicyMap::ActionType::vrf));
  EXPECT_EQ(untouchedByPackets(), (std::set<std::uint32_t>{changed + 1}));
  EXPECT_EQ(egressOf(changed), "to-new");
}

TEST_F(ManyRulesTest, ARuleInFrontMovesNoOtherRuleOutOfTheChip) {
  // The only rule of its action, put in front of all others.
  Rule first = ruleInto(changed, "new");
  first.sequenceId = 0;
  rulesIn(configuration_).insert(rulesIn(configuration_).begin(), first);
  agent_.apply(configuration_);
  EXPECT_EQ(calls_.size(), 1U);
  EXPECT_EQ(untouchedByPackets(), (std::set<std::uint32_t>{0}));
  EXPECT_EQ(egressOf(changed), "to-new");
  calls_.clear();
  rulesIn(configuration_).erase(rulesIn(configuration_).begin());
  agent_.apply(configuration_);
  ASSERT_EQ(calls_.size(), 1U);
  EXPECT_EQ(calls_[0].hook, Chips::Hook::deleteVrf);
  EXPECT_TRUE(untouchedByPackets().empty());
  EXPECT_EQ(egressOf(changed), std::string("to-") + vrfOf(changed));
}

TEST_F(ManyRulesTest, RemovingThePolicyLeavesNothing) {
  configuration_.networkInstances.front().policyBindings.clear();
  agent_.apply(configuration_);
  EXPECT_EQ(calls_.size(), actionCount);
  EXPECT_TRUE(agent_.chip().resources().empty());
  EXPECT_EQ(agent_.acl().rulesInUse(), 0U);
  EXPECT_TRUE(agent_.users().empty());
  EXPECT_TRUE(agent_.rules().empty());
}

}  // namespace
}  // namespace ZelAgent
