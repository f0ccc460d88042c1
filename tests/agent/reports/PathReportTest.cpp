// The path of a packet, step by step, as text and as JSON.
#include "agent/reports/PathReport.h"

#include <gtest/gtest.h>

#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "tests/agent/TestPackets.h"
#include "tests/agent/reports/ReportedAgent.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

class PathReportTest : public ::testing::Test {
 protected:
  PathReportTest() { agent_.apply(reportedConfiguration().configuration()); }

  void play(const std::string& event) {
    (void)EventPlayer(agent_, TestFiles::processFolder()).play(readEvent(event).value());
  }
  std::string pathOf(const PacketBytes& packet, const std::string& interface = "Ethernet1") {
    return explain(agent_, interface, packet).text();
  }
  nlohmann::json stepsOf(const PacketBytes& packet, const std::string& interface = "Ethernet1") {
    return explain(agent_, interface, packet).json();
  }

  ForwardingAgent agent_{16};
};

TEST_F(PathReportTest, EachRuleUntilOneMatches) {
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "203.0.113.1", 10})),
            "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 17 dscp 10 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "rule 1 of edge, ipv4 protocol 4: differs by protocol\n"
            "rule 2 of edge, ipv4 dscp 10,12: matches\n"
            "action actionVrf red, resource 2\n"
            "look up 203.0.113.1 in VRF red (id 2): 203.0.113.0/24 via Ethernet9\n"
            "forward via Ethernet9: ipv4 192.0.2.1 to 203.0.113.1 protocol 17 dscp 10 ttl 63 "
            "source-port 12345 destination-port 54321, 30 "
            "bytes\n");
}

TEST_F(PathReportTest, EachFieldThatDiffers) {
  OpenConfigBuilder configuration;
  configuration.policy(
      "P",
      {ruleOf(1, "ipv6", {}, toDiscard()), ruleOf(2, "ipv4", {{"protocol", 4}}, toDiscard()),
       ruleOf(3, "ipv4", {{"dscp", 1}}, toDiscard()),
       ruleOf(4, "ipv4", {{"source-address", "10.0.0.0/8"}}, toDiscard()),
       ruleOf(5, "ipv4", {{"destination-address", "10.0.0.0/8"}}, toDiscard())},
      {"Ethernet1"});
  agent_.apply(configuration.configuration());
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "203.0.113.1"})),
            "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 17 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "rule 1 of P, ipv6: differs by family\n"
            "rule 2 of P, ipv4 protocol 4: differs by protocol\n"
            "rule 3 of P, ipv4 dscp 1: differs by dscp\n"
            "rule 4 of P, ipv4 source 10.0.0.0/8: differs by source-address\n"
            "rule 5 of P, ipv4 destination 10.0.0.0/8: differs by destination-address\n"
            "interface VRF default: no rule matches\n"
            "look up 203.0.113.1 in VRF default (id 1): miss\n"
            "drop noRoute: no VRF that it was looked up in has a route\n");
}

TEST_F(PathReportTest, AMissFallsBack) {
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "198.51.100.1", 12})),
            "packet ipv4 192.0.2.1 to 198.51.100.1 protocol 17 dscp 12 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "rule 1 of edge, ipv4 protocol 4: differs by protocol\n"
            "rule 2 of edge, ipv4 dscp 10,12: matches\n"
            "action actionVrf red, resource 2\n"
            "look up 198.51.100.1 in VRF red (id 2): miss\n"
            "fall back to VRF blue: no route\n"
            "look up 198.51.100.1 in VRF blue (id 3): 0.0.0.0/0 via Ethernet8\n"
            "forward via Ethernet8: ipv4 192.0.2.1 to 198.51.100.1 protocol 17 dscp 12 ttl 63 "
            "source-port 12345 destination-port 54321, 30 "
            "bytes\n");
}

TEST_F(PathReportTest, ADiscardingRule) {
  EXPECT_EQ(pathOf(ipv6Packet({"2001:db8::1", "2001:db8::2", 0, ect0, 1})),
            "packet ipv6 2001:db8::1 to 2001:db8::2 protocol 17 ecn 2 ttl 1 source-port 12345 "
            "destination-port 54321, 50 bytes\n"
            "rule 1 of edge, ipv4 protocol 4: differs by family\n"
            "rule 2 of edge, ipv4 dscp 10,12: differs by family\n"
            "rule 10 of edge, ipv6 destination 2001:db8::/32: matches\n"
            "action discard\n"
            "drop discardedByRule: the rule discards it\n");
}

TEST_F(PathReportTest, ARuleWithoutAnActionAndARouteThatDrops) {
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "203.0.113.66"})),
            "packet ipv4 192.0.2.1 to 203.0.113.66 protocol 17 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "rule 1 of edge, ipv4 protocol 4: differs by protocol\n"
            "rule 2 of edge, ipv4 dscp 10,12: differs by dscp\n"
            "rule 10 of edge, ipv6 destination 2001:db8::/32: differs by family\n"
            "rule 20 of edge, any: matches\n"
            "action -\n"
            "interface VRF default: the rule has no action\n"
            "look up 203.0.113.66 in VRF default (id 1): 203.0.113.66/32 drop\n"
            "drop dropRoute: the route drops it\n");
}

TEST_F(PathReportTest, ATunnelThatEnds) {
  play("route decap 203.0.113.0/24 decap");
  play("decap-nh on");
  play("route default 10.0.0.0/8 via Ethernet7");
  EXPECT_EQ(pathOf(inIpv4({"192.0.2.1", "203.0.113.1", 10, ce, 9},
                          ipv4Packet({"10.0.0.1", "10.0.0.2", 20, ect0, 200}))),
            "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 4 dscp 10 ecn 3 ttl 9, 50 bytes\n"
            "rule 1 of edge, ipv4 protocol 4: matches\n"
            "action actionDecapVrf decap fallback red post-decap default, resource 1\n"
            "look up 203.0.113.1 in VRF decap (id 4): 203.0.113.0/24 decap\n"
            "decapsulate: ipv4 10.0.0.1 to 10.0.0.2 protocol 17 dscp 20 ecn 3 ttl 9 source-port "
            "12345 destination-port 54321, 30 bytes\n"
            "look up 10.0.0.2 in VRF default (id 1): 10.0.0.0/8 via Ethernet7\n"
            "forward via Ethernet7: ipv4 10.0.0.1 to 10.0.0.2 protocol 17 dscp 20 ecn 3 ttl 8 "
            "source-port 12345 destination-port 54321, 30 "
            "bytes\n");
}

TEST_F(PathReportTest, ATunnelWhileDecapsulationIsOff) {
  play("route decap 203.0.113.0/24 decap");
  const PacketBytes tunnel =
      inIpv4({"192.0.2.1", "203.0.113.1"}, ipv4Packet({"10.0.0.1", "10.0.0.2"}));
  const std::string upToTheHit =
      "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 4 ttl 64, 50 bytes\n"
      "rule 1 of edge, ipv4 protocol 4: matches\n"
      "action actionDecapVrf decap fallback red post-decap default, resource 1\n"
      "look up 203.0.113.1 in VRF decap (id 4): 203.0.113.0/24 decap\n";
  EXPECT_EQ(pathOf(tunnel),
            upToTheHit + "drop decapDisabled: the route decapsulates, which is not enabled\n");
  play("decap-nh-fallback on");
  EXPECT_EQ(
      pathOf(tunnel),
      upToTheHit +
          "fall back to VRF red: decap-nh is off, and decap-nh-fallback is on\n"
          "look up 203.0.113.1 in VRF red (id 2): 203.0.113.0/24 via Ethernet9\n"
          "forward via Ethernet9: ipv4 192.0.2.1 to 203.0.113.1 protocol 4 ttl 63, 50 bytes\n");
}

TEST_F(PathReportTest, AnActionWithoutAResource) {
  play("vrf red remove");
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "203.0.113.1"}), "Ethernet3"),
            "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 17 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "rule 5 of edge, any: matches\n"
            "action actionVrf red, no resource\n"
            "drop noVrfResource: the action of the rule has no resource on the chip\n");
}

TEST_F(PathReportTest, AStaleResourceAndAVrfWithoutAnId) {
  play("fallback red to blue");
  play("chip fail any 100");
  play("vrf blue id 0");
  play("fallback red to default");
  play("prefix-lens ipv4 red 16");
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "198.51.100.1"}), "Ethernet3"),
            "packet ipv4 192.0.2.1 to 198.51.100.1 protocol 17 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "rule 5 of edge, any: matches\n"
            "action actionVrf red, resource 2 (stale)\n"
            "look up 198.51.100.1 in VRF red (id 2): miss\n"
            "fall back to VRF blue: no route\n"
            "look up 198.51.100.1 in VRF blue (id 3): miss\n"
            "drop noRoute: no VRF that it was looked up in has a route\n");
  play("chip fail any 0");
  play("fallback red to blue");
  play("vrf red id 0");
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "198.51.100.1"}), "Ethernet4"),
            "packet ipv4 192.0.2.1 to 198.51.100.1 protocol 17 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "interface VRF default: no rule matches\n"
            "look up 198.51.100.1 in VRF default (id 1): miss\n"
            "drop noRoute: no VRF that it was looked up in has a route\n");
}

TEST_F(PathReportTest, AnExactMatch) {
  play("prefix-lens ipv4 red 24");
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "203.0.113.1"}), "Ethernet3"),
            "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 17 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "rule 5 of edge, any: matches\n"
            "action actionVrf red, resource 2\n"
            "look up 203.0.113.1 in VRF red (id 2): 203.0.113.0/24 via Ethernet9 (exact match)\n"
            "forward via Ethernet9: ipv4 192.0.2.1 to 203.0.113.1 protocol 17 ttl 63 source-port "
            "12345 destination-port 54321, 30 bytes\n");
}

TEST_F(PathReportTest, NoVrfHasAnId) {
  play("vrf default remove");
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "203.0.113.1"}), "Ethernet4"),
            "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 17 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "interface VRF default: no rule matches\n"
            "look up 203.0.113.1 in VRF default (id 0): miss\n"
            "drop noVrfId: no VRF that it was to be looked up in has a hardware id\n");
  play("fallback default to blue");
  EXPECT_EQ(pathOf(ipv4Packet({"192.0.2.1", "203.0.113.1"}), "Ethernet4"),
            "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 17 ttl 64 source-port 12345 "
            "destination-port 54321, 30 bytes\n"
            "interface VRF default: no rule matches\n"
            "look up 203.0.113.1 in VRF default (id 0): miss\n"
            "fall back to VRF blue: the VRF has no hardware id\n"
            "look up 203.0.113.1 in VRF blue (id 3): 0.0.0.0/0 via Ethernet8\n"
            "forward via Ethernet8: ipv4 192.0.2.1 to 203.0.113.1 protocol 17 ttl 63 source-port "
            "12345 destination-port 54321, 30 bytes\n");
}

TEST_F(PathReportTest, NoHeader) {
  EXPECT_EQ(pathOf({}), "drop malformed: the packet is shorter than an IP header\n");
  PacketBytes badChecksum = ipv4Packet({"192.0.2.1", "203.0.113.1"});
  badChecksum[11] ^= 0xff;
  EXPECT_EQ(pathOf(badChecksum), "drop badChecksum: the checksum of the IPv4 header is wrong\n");
}

TEST_F(PathReportTest, AFragmentIsMarked) {
  PacketBytes fragment = ipv4Packet({"192.0.2.1", "203.0.113.1"});
  fragment[6] = 0x20;
  fragment = withTtl(fragment, 64);
  const std::string path = pathOf(fragment, "Ethernet3");
  EXPECT_EQ(path.substr(0, path.find('\n')),
            "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 17 ttl 64 fragment-offset 0 source-port "
            "12345 destination-port 54321, 30 bytes");
}

TEST_F(PathReportTest, NamesWithBlanksAreQuoted) {
  play("route default 203.0.113.7/32 via 'two words'");
  const std::string path = pathOf(ipv4Packet({"192.0.2.1", "203.0.113.7"}), "Ethernet4");
  EXPECT_NE(path.find("203.0.113.7/32 via 'two words'\nforward via 'two words': ipv4"),
            std::string::npos)
      << path;
}

TEST_F(PathReportTest, StepsAsJson) {
  play("route decap 203.0.113.0/24 decap");
  play("decap-nh on");
  const nlohmann::json steps = stepsOf(inIpv4({"192.0.2.1", "203.0.113.1", 10, ce, 9},
                                              ipv4Packet({"10.0.0.1", "10.0.0.2", 20, ect0, 200})));
  EXPECT_EQ(steps, nlohmann::json::parse(R"([
    {"step": "packet",
     "packet": {"family": "ipv4", "source": "192.0.2.1", "destination": "203.0.113.1",
                "protocol": 4, "dscp": 10, "ecn": 3, "ttl": 9, "bytes": 50}},
    {"step": "rule", "place": 0, "policy": "edge", "rule": 1, "match": "ipv4 protocol 4",
     "matches": true, "differsBy": null},
    {"step": "action",
     "action": {"vrfName": "decap", "fallbackVrfName": "red", "postDecapVrfName": "default",
                "action": "actionDecapVrf"},
     "resource": {"index": 1, "stale": false}},
    {"step": "lookUp", "vrfName": "decap", "vrfId": 4, "destination": "203.0.113.1",
     "prefix": "203.0.113.0/24", "route": "decap", "exactMatch": false},
    {"step": "decapsulate",
     "outer": {"family": "ipv4", "source": "192.0.2.1", "destination": "203.0.113.1",
               "protocol": 4, "dscp": 10, "ecn": 3, "ttl": 9, "bytes": 50},
     "inner": {"family": "ipv4", "source": "10.0.0.1", "destination": "10.0.0.2",
               "protocol": 17, "dscp": 20, "ecn": 3, "ttl": 9, "bytes": 30, "sourcePort": 12345, "destinationPort": 54321},
     "arrived": {"family": "ipv4", "source": "10.0.0.1", "destination": "10.0.0.2",
                 "protocol": 17, "dscp": 20, "ecn": 2, "ttl": 200, "bytes": 30, "sourcePort": 12345, "destinationPort": 54321}},
    {"step": "lookUp", "vrfName": "default", "vrfId": 1, "destination": "10.0.0.2",
     "prefix": null, "route": null, "exactMatch": false},
    {"step": "drop", "reason": "noRoute",
     "detail": "no VRF that it was looked up in has a route"}])"));
}

TEST_F(PathReportTest, TheOtherStepsAsJson) {
  const nlohmann::json steps = stepsOf(ipv4Packet({"192.0.2.1", "198.51.100.1"}), "Ethernet3");
  EXPECT_EQ(steps, nlohmann::json::parse(R"([
    {"step": "packet",
     "packet": {"family": "ipv4", "source": "192.0.2.1", "destination": "198.51.100.1",
                "protocol": 17, "dscp": 0, "ecn": 0, "ttl": 64, "bytes": 30, "sourcePort": 12345, "destinationPort": 54321}},
    {"step": "rule", "place": 0, "policy": "edge", "rule": 5, "match": "any",
     "matches": true, "differsBy": null},
    {"step": "action",
     "action": {"vrfName": "red", "fallbackVrfName": "", "postDecapVrfName": "",
                "action": "actionVrf"},
     "resource": {"index": 2, "stale": false}},
    {"step": "lookUp", "vrfName": "red", "vrfId": 2, "destination": "198.51.100.1",
     "prefix": null, "route": null, "exactMatch": false},
    {"step": "fallback", "from": "red", "to": "blue", "because": "no route"},
    {"step": "lookUp", "vrfName": "blue", "vrfId": 3, "destination": "198.51.100.1",
     "prefix": "0.0.0.0/0", "route": "via Ethernet8", "exactMatch": false},
    {"step": "forward", "interface": "Ethernet8", "vrfName": "blue",
     "packet": {"family": "ipv4", "source": "192.0.2.1", "destination": "198.51.100.1",
                "protocol": 17, "dscp": 0, "ecn": 0, "ttl": 63, "bytes": 30, "sourcePort": 12345, "destinationPort": 54321}}])"));
  const nlohmann::json own = stepsOf(ipv4Packet({"192.0.2.1", "203.0.113.66"}));
  EXPECT_EQ(own[1], nlohmann::json::parse(R"({"step": "rule", "place": 0, "policy": "edge",
    "rule": 1, "match": "ipv4 protocol 4", "matches": false, "differsBy": "protocol"})"));
  EXPECT_EQ(own[5], nlohmann::json::parse(R"({"step": "action", "action": null,
    "resource": null})"));
  EXPECT_EQ(own[6], nlohmann::json::parse(R"({"step": "interfaceVrf", "vrfName": "default",
    "because": "the rule has no action"})"));
}

TEST_F(PathReportTest, AnExplainedPacketIsNotCounted) {
  (void)pathOf(ipv4Packet({"192.0.2.1", "203.0.113.1"}), "Ethernet3");
  EXPECT_TRUE(agent_.forwarder().vrfCounters().empty());
  EXPECT_EQ(agent_.rules().back().counter.packets, 0U);
}

TEST_F(PathReportTest, ExplainingAndForwardingDecideTheSame) {
  play("route decap 203.0.113.0/24 decap");
  play("decap-nh on");
  const PacketBytes inside = ipv6Packet({"2001:db8::1", "2001:db8::2"});
  for (const PacketBytes& packet :
       {inIpv4({"192.0.2.1", "203.0.113.1"}, ipv4Packet({"192.0.2.1", "192.0.2.2"})),
        inIpv4({"192.0.2.1", "203.0.113.1", 10}, inside), inside,
        ipv4Packet({"192.0.2.1", "203.0.113.1", 12, notEct, 1}),
        ipv4Packet({"192.0.2.1", "198.51.100.1", 12}), PacketBytes{0x45}}) {
    for (const char* const interface : {"Ethernet1", "Ethernet3", "Ethernet4"}) {
      const auto verdict = agent_.forwarder().forward(interface, packet);
      const nlohmann::json last = stepsOf(packet, interface).back();
      EXPECT_EQ(last.value("reason", ""),
                verdict.drop ? std::string(nameOf(*verdict.drop)) : std::string());
      EXPECT_EQ(last.value("interface", ""), verdict.egress);
    }
  }
}

}  // namespace
}  // namespace ZelAgent
