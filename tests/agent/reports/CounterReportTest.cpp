// Counters by rule, by VRF and by drop reason.
#include "agent/reports/CounterReport.h"

#include <gtest/gtest.h>

#include "tests/agent/TestPackets.h"
#include "tests/agent/reports/ReportedAgent.h"

namespace ZelAgent {
namespace {

class CounterReportTest : public ::testing::Test {
 protected:
  CounterReportTest() {
    OpenConfigBuilder configuration;
    configuration.vrf("red", "blue").vrf("blue");
    configuration.policy(
        "P", {ruleOf(1, "ipv4", {{"dscp", 10}}, toVrf("red")), ruleOf(2, "ipv6", {}, toDiscard())},
        {"e1"});
    configuration.route("red", "203.0.113.0/24", "e9").route("blue", "0.0.0.0/0", "e8");
    configuration.dropRoute("DEFAULT", "203.0.113.66/32");
    agent_.apply(configuration.configuration());
  }

  void send(const PacketBytes& packet) { (void)agent_.forwarder().forward("e1", packet); }

  // 30 bytes of IPv4 three times by "red", once by "blue", and drops: 50 bytes of IPv6, and IPv4.
  void sendSome() {
    for (unsigned i = 0; i < 3; ++i)
      send(ipv4Packet({"192.0.2.1", "203.0.113.1", 10}));
    send(ipv4Packet({"192.0.2.1", "198.51.100.1", 10}));
    send(ipv6Packet({"2001:db8::1", "2001:db8::2"}));
    send(ipv4Packet({"192.0.2.1", "203.0.113.66"}));
    send(ipv4Packet({"192.0.2.1", "203.0.113.1"}));
    send(ipv4Packet({"192.0.2.1", "203.0.113.1", 10, notEct, 1}));
    PacketBytes badChecksum = ipv4Packet({"192.0.2.1", "203.0.113.1"});
    badChecksum[10] ^= 1;
    send(badChecksum);
    send({0x45, 0x00});
  }

  ForwardingAgent agent_{16};
};

TEST_F(CounterReportTest, WithoutPacketsALineBelowTheRulesSaysSo) {
  EXPECT_EQ(textOf(countersOf(agent_)),
            "  INTERFACE  POLICY  RULE  MATCH         ACTION         PACKETS  BYTES\n"
            "  e1         P       1     ipv4 dscp 10  actionVrf red  0        0\n"
            "  e1         P       2     ipv6          discard        0        0\n"
            "  no packets\n");
}

TEST_F(CounterReportTest, PacketsAreCountedByRuleByVrfAndByReason) {
  sendSome();
  EXPECT_EQ(textOf(countersOf(agent_)),
            "  INTERFACE  POLICY  RULE  MATCH         ACTION         PACKETS  BYTES\n"
            "  e1         P       1     ipv4 dscp 10  actionVrf red  5        150\n"
            "  e1         P       2     ipv6          discard        1        50\n"
            "  VRF   PACKETS  BYTES\n"
            "  blue  1        30\n"
            "  red   3        90\n"
            "  DROPPED          PACKETS  BYTES\n"
            "  malformed        1        2\n"
            "  badChecksum      1        30\n"
            "  discardedByRule  1        50\n"
            "  noRoute          1        30\n"
            "  dropRoute        1        30\n"
            "  ttlExpired       1        30\n");
}

TEST_F(CounterReportTest, AsJson) {
  sendSome();
  const nlohmann::json expected = nlohmann::json::parse(R"({
    "rules": [
      {"interface": "e1", "networkInstance": "default", "policy": "P", "rule": 1,
       "match": "ipv4 dscp 10",
       "action": {"vrfName": "red", "fallbackVrfName": "", "postDecapVrfName": "",
                  "action": "actionVrf"},
       "programmed": true, "packets": 5, "bytes": 150},
      {"interface": "e1", "networkInstance": "default", "policy": "P", "rule": 2,
       "match": "ipv6", "action": {"action": "actionDiscard"},
       "programmed": true, "packets": 1, "bytes": 50}],
    "vrfs": [
      {"vrfName": "blue", "packets": 1, "bytes": 30},
      {"vrfName": "red", "packets": 3, "bytes": 90}],
    "drops": [
      {"reason": "malformed", "packets": 1, "bytes": 2},
      {"reason": "badChecksum", "packets": 1, "bytes": 30},
      {"reason": "discardedByRule", "packets": 1, "bytes": 50},
      {"reason": "noRoute", "packets": 1, "bytes": 30},
      {"reason": "dropRoute", "packets": 1, "bytes": 30},
      {"reason": "ttlExpired", "packets": 1, "bytes": 30}],
    "notIp": 7})");
  std::ostringstream line;
  writeJsonReport(line, countersOf(agent_, 7));
  EXPECT_EQ(nlohmann::json::parse(line.str()), expected);
  EXPECT_EQ(line.str().find('\n'), line.str().size() - 1);
}

TEST_F(CounterReportTest, FramesWithoutIpAreNoPackets) {
  const std::string text = textOf(countersOf(agent_, 3));
  EXPECT_NE(text.find("  no packets\n  frames without IP: 3\n"), std::string::npos) << text;
}

TEST(CounterReport, WithoutRulesAndPacketsThereIsOneLine) {
  EXPECT_EQ(textOf(ForwardCounters{}), "  no packets\n");
}

TEST_F(CounterReportTest, CountersOfRulesSurviveAChangeOfOtherRules) {
  sendSome();
  OpenConfigBuilder next;
  next.vrf("red").policy("P",
                         {ruleOf(1, "ipv4", {{"dscp", 10}}, toVrf("red")),
                          ruleOf(2, "ipv6", {}, toVrf("red")), ruleOf(3, "", {}, toDiscard())},
                         {"e1"});
  agent_.apply(next.configuration());
  const RuleStates rules = agent_.rules();
  ASSERT_EQ(rules.size(), 3U);
  EXPECT_EQ(rules[0].counter.packets, 5U);
  EXPECT_EQ(rules[1].counter.packets, 0U);
  EXPECT_EQ(rules[2].counter.packets, 0U);
}

}  // namespace
}  // namespace ZelAgent
