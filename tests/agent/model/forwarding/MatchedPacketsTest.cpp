// Packets that meet rules with prefix sets, ports and fragments, and the two policies of an
// interface.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/model/packets/PacketText.h"

namespace ZelAgent {
namespace {

class MatchedPackets : public ::testing::Test {
 protected:
  MatchedPackets() {
    instance_.name = defaultVrfName;
    instance_.type = InstanceType::defaultInstance;
  }

  static RuleMatch ipv4() {
    RuleMatch match;
    match.family = IpFamily::v4;
    return match;
  }
  void apply() {
    configuration_.networkInstances = {instance_};
    agent_.apply(configuration_);
  }
  // "P 10" for the rule that counted the packet, or "no rule".
  std::string ruleOf(const std::string& packet) {
    agent_.acl().countersReset();
    EventLine line(packet);
    static_cast<void>(agent_.forwarder().forward("e1", readPacket(line)));
    for (const RuleState& rule : agent_.rules()) {
      if (rule.counter.packets != 0)
        return rule.user.policyId + ' ' + std::to_string(rule.user.sequenceId);
    }
    return "no rule";
  }

  ForwardingAgent agent_{64};
  Configuration configuration_;
  NetworkInstance instance_;
};

TEST_F(MatchedPackets, WhatTheVrfSelectionPolicyDoesNotMatchGoesToTheForwardingPolicy) {
  RuleMatch tcp = ipv4();
  tcp.protocol = 6;
  RuleMatch udp = ipv4();
  udp.protocol = 17;
  instance_.policies = {{"F", {{1, tcp, Discard{}}, {2, udp, Discard{}}}, PolicyType::forwarding},
                        {"V", {{1, tcp, LookUp{"default"}}}, PolicyType::vrfSelection}};
  instance_.policyBindings = {{"e1", "V", "F"}};
  apply();
  EXPECT_EQ(ruleOf("ipv4 10.0.0.1 to 10.0.0.2 protocol 6"), "V 1");
  EXPECT_EQ(ruleOf("ipv4 10.0.0.1 to 10.0.0.2 protocol 17"), "F 2");
  EXPECT_EQ(ruleOf("ipv4 10.0.0.1 to 10.0.0.2 protocol 1"), "no rule");
  instance_.policyBindings = {{"e1", "", "F"}};
  apply();
  EXPECT_EQ(ruleOf("ipv4 10.0.0.1 to 10.0.0.2 protocol 6"), "F 1");
}

TEST_F(MatchedPackets, RefusedRulesOfTwoPoliciesLeaveThePreviousOnesInForce) {
  instance_.policies = {{"F", {{7, ipv4(), Discard{}}}, PolicyType::forwarding},
                        {"V", {{7, {}, Discard{}}}, PolicyType::vrfSelection}};
  instance_.policyBindings = {{"e1", "V", "F"}};
  apply();
  agent_.ruleCapacityIs(0);
  RuleMatch other = ipv4();
  other.protocol = 1;
  instance_.policies[1].rules[0].match = other;
  apply();
  std::vector<std::string> previous;
  for (const RuleState& rule : agent_.rules()) {
    if (rule.isPrevious) previous.push_back(rule.user.policyId + ' ' + toText(*rule.rule.match));
  }
  EXPECT_EQ(previous, (std::vector<std::string>{"V any", "F ipv4"}));
}

TEST_F(MatchedPackets, APrefixSetIsWhatTheConfigurationSays) {
  RuleMatch match = ipv4();
  match.sourceSet = "pods";
  instance_.policies = {{"P", {{1, match, Discard{}}}}};
  instance_.policyBindings = {{"e1", "P"}};
  configuration_.prefixSets = {{"pods",
                                IpFamily::v4,
                                {parseIpPrefix("10.0.0.0/8").value()},
                                {parseIpPrefix("10.1.0.0/16").value()}}};
  apply();
  EXPECT_EQ(ruleOf("ipv4 10.2.0.1 to 192.0.2.1"), "P 1");
  EXPECT_EQ(ruleOf("ipv4 10.1.0.1 to 192.0.2.1"), "no rule");
  configuration_.prefixSets[0].excluded.clear();
  apply();
  EXPECT_EQ(ruleOf("ipv4 10.1.0.1 to 192.0.2.1"), "P 1");
  configuration_.prefixSets.clear();
  instance_.policies[0].rules.clear();
  apply();
  const auto& sets = agent_.policySm().policySm()->inputs().fieldSetConfig;
  EXPECT_EQ(sets->prefixSet().count(), 0U);
}

TEST_F(MatchedPackets, ARuleWithPortsMatchesNoFragmentWithoutPorts) {
  RuleMatch web = ipv4();
  web.destinationPorts = {{80, 80}};
  RuleMatch later = ipv4();
  later.fragmentOffsets = {{1, 8191}};
  instance_.policies = {{"P", {{1, web, LookUp{"default"}}, {2, later, Discard{}}}}};
  instance_.policyBindings = {{"e1", "P"}};
  apply();
  EXPECT_EQ(ruleOf("ipv4 10.0.0.1 to 10.0.0.2 destination-port 80"), "P 1");
  EXPECT_EQ(ruleOf("ipv4 10.0.0.1 to 10.0.0.2 destination-port 80 fragment-offset 0"), "P 1");
  EXPECT_EQ(ruleOf("ipv4 10.0.0.1 to 10.0.0.2 fragment-offset 185"), "P 2");
  EXPECT_EQ(ruleOf("ipv4 10.0.0.1 to 10.0.0.2 destination-port 81"), "no rule");
}

}  // namespace
}  // namespace ZelAgent
