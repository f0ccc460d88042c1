// `zel-agent explain` as an operator runs it: one packet, every step, or one line of what is wrong.
#include <gtest/gtest.h>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

class ExplainCommandTest : public ::testing::Test {
 protected:
  ExplainCommandTest() {
    OpenConfigBuilder configuration;
    configuration.vrf("VRF-10", "VRF-20").vrf("VRF-20").vrf("DECAP").intf("VRF-20", "Ethernet5");
    configuration.policy(
        "edge",
        {ruleOf(1, "ipv4", {{"protocol", "IP_IN_IP"}}, toDecap("DECAP", "VRF-10", "VRF-20")),
         ruleOf(2, "ipv4", {{"source-address", "198.18.0.1/32"}}, toVrf("VRF-10")),
         ruleOf(3, "ipv4", {{"dscp", 46}}, toDiscard())},
        {"Ethernet1"});
    configuration.route("VRF-10", "203.0.113.0/24", "Ethernet10");
    configuration.route("VRF-20", "10.0.0.0/8", "Ethernet20")
        .route("VRF-20", "2001:db8::/32", "Ethernet20");
    configuration.route("DEFAULT", "203.0.113.0/24", "Ethernet2");
    configuration_ = writeFile("edge.json", configuration.text());
  }

  AgentOutcome explain(const std::string& packet, const std::vector<std::string>& more = {},
                       const std::string& interface = "Ethernet1") {
    std::vector<std::string> arguments{"explain", configuration_, "--in",
                                       interface, "--packet",     packet};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runAgent(arguments);
  }

  void expectText(const std::string& packet, const std::string& events, const std::string& text,
                  const std::string& interface = "Ethernet1") {
    const AgentOutcome outcome =
        explain(packet, {"--events", writeFile("test.events", events)}, interface);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, text);
  }

  void expectRefused(const AgentOutcome& outcome, const std::string& message) {
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "error: " + message + '\n');
    EXPECT_EQ(outcome.out, "");
  }

  std::string configuration_;
};

TEST_F(ExplainCommandTest, APacketThatARuleSelects) {
  expectText(
      "ipv4 198.18.0.1 to 203.0.113.1", "",
      "packet ipv4 198.18.0.1 to 203.0.113.1 protocol 17 ttl 64, 28 bytes\n"
      "rule 1 of edge, ipv4 protocol 4: differs by protocol\n"
      "rule 2 of edge, ipv4 source 198.18.0.1/32: matches\n"
      "action actionVrf VRF-10, resource 2\n"
      "look up 203.0.113.1 in VRF VRF-10 (id 2): 203.0.113.0/24 via Ethernet10\n"
      "forward via Ethernet10: ipv4 198.18.0.1 to 203.0.113.1 protocol 17 ttl 63, 28 bytes\n");
}

TEST_F(ExplainCommandTest, APacketThatNoRuleSelects) {
  expectText("ipv4 198.18.0.2 to 203.0.113.1 ttl 1", "",
             "packet ipv4 198.18.0.2 to 203.0.113.1 protocol 17 ttl 1, 28 bytes\n"
             "rule 1 of edge, ipv4 protocol 4: differs by protocol\n"
             "rule 2 of edge, ipv4 source 198.18.0.1/32: differs by source-address\n"
             "rule 3 of edge, ipv4 dscp 46: differs by dscp\n"
             "interface VRF default: no rule matches\n"
             "look up 203.0.113.1 in VRF default (id 1): 203.0.113.0/24 via Ethernet2\n"
             "drop ttlExpired: its time to live is over\n");
}

TEST_F(ExplainCommandTest, APacketThatIsDiscarded) {
  expectText("ipv4 198.18.0.2 to 203.0.113.1 dscp 46", "",
             "packet ipv4 198.18.0.2 to 203.0.113.1 protocol 17 dscp 46 ttl 64, 28 bytes\n"
             "rule 1 of edge, ipv4 protocol 4: differs by protocol\n"
             "rule 2 of edge, ipv4 source 198.18.0.1/32: differs by source-address\n"
             "rule 3 of edge, ipv4 dscp 46: matches\n"
             "action discard\n"
             "drop discardedByRule: the rule discards it\n");
}

TEST_F(ExplainCommandTest, ATunnelThatEndsHere) {
  expectText(
      "ipv4 192.0.2.1 to 203.0.113.1 ttl 9 ecn 3 carrying ipv4 10.1.1.1 to 10.2.2.2 ecn 1",
      "route DECAP 203.0.113.0/24 decap\ndecap-nh on\n",
      "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 4 ecn 3 ttl 9, 48 bytes\n"
      "rule 1 of edge, ipv4 protocol 4: matches\n"
      "action actionDecapVrf DECAP fallback VRF-10 post-decap VRF-20, resource 1\n"
      "look up 203.0.113.1 in VRF DECAP (id 4): 203.0.113.0/24 decap\n"
      "decapsulate: ipv4 10.1.1.1 to 10.2.2.2 protocol 17 ecn 3 ttl 9, 28 bytes\n"
      "look up 10.2.2.2 in VRF VRF-20 (id 3): 10.0.0.0/8 via Ethernet20\n"
      "forward via Ethernet20: ipv4 10.1.1.1 to 10.2.2.2 protocol 17 ecn 3 ttl 8, 28 bytes\n");
}

TEST_F(ExplainCommandTest, ATunnelThatGoesOnInTheFallback) {
  expectText("ipv4 192.0.2.1 to 203.0.113.1 carrying ipv4 10.1.1.1 to 10.2.2.2",
             "route DECAP 198.51.100.0/24 decap\ndecap-nh on\n",
             "packet ipv4 192.0.2.1 to 203.0.113.1 protocol 4 ttl 64, 48 bytes\n"
             "rule 1 of edge, ipv4 protocol 4: matches\n"
             "action actionDecapVrf DECAP fallback VRF-10 post-decap VRF-20, resource 1\n"
             "look up 203.0.113.1 in VRF DECAP (id 4): miss\n"
             "fall back to VRF VRF-10: no route\n"
             "look up 203.0.113.1 in VRF VRF-10 (id 2): 203.0.113.0/24 via Ethernet10\n"
             "forward via Ethernet10: ipv4 192.0.2.1 to 203.0.113.1 protocol 4 ttl 63, 48 bytes\n");
}

TEST_F(ExplainCommandTest, AStaleResourceSaysSo) {
  expectText("ipv4 198.18.0.1 to 10.9.9.9", "chip fail VRF-10 1\nfallback VRF-10 remove\n",
             "packet ipv4 198.18.0.1 to 10.9.9.9 protocol 17 ttl 64, 28 bytes\n"
             "rule 1 of edge, ipv4 protocol 4: differs by protocol\n"
             "rule 2 of edge, ipv4 source 198.18.0.1/32: matches\n"
             "action actionVrf VRF-10, resource 2 (stale)\n"
             "look up 10.9.9.9 in VRF VRF-10 (id 2): miss\n"
             "fall back to VRF VRF-20: no route\n"
             "look up 10.9.9.9 in VRF VRF-20 (id 3): 10.0.0.0/8 via Ethernet20\n"
             "forward via Ethernet20: ipv4 198.18.0.1 to 10.9.9.9 protocol 17 ttl 63, 28 bytes\n");
}

TEST_F(ExplainCommandTest, AnActionWithoutAResourceSaysSo) {
  expectText("ipv4 198.18.0.1 to 10.9.9.9", "vrf VRF-10 remove\n",
             "packet ipv4 198.18.0.1 to 10.9.9.9 protocol 17 ttl 64, 28 bytes\n"
             "rule 1 of edge, ipv4 protocol 4: differs by protocol\n"
             "rule 2 of edge, ipv4 source 198.18.0.1/32: matches\n"
             "action actionVrf VRF-10, no resource\n"
             "drop noVrfResource: the action of the rule has no resource on the chip\n");
}

TEST_F(ExplainCommandTest, AnInterfaceWithAVrfOfItsOwn) {
  expectText(
      "ipv6 2001:db8::1 to 2001:db8::2", "",
      "packet ipv6 2001:db8::1 to 2001:db8::2 protocol 17 ttl 64, 48 bytes\n"
      "interface VRF VRF-20: no rule matches\n"
      "look up 2001:db8::2 in VRF VRF-20 (id 3): 2001:db8::/32 via Ethernet20\n"
      "forward via Ethernet20: ipv6 2001:db8::1 to 2001:db8::2 protocol 17 ttl 63, 48 bytes\n",
      "Ethernet5");
}

TEST_F(ExplainCommandTest, BytesThatAreNoPacket) {
  expectText("hex 45 00 00 14", "", "drop malformed: the packet is shorter than an IP header\n");
}

TEST_F(ExplainCommandTest, AsJson) {
  const AgentOutcome outcome = explain("ipv4 198.18.0.1 to 203.0.113.1", {"--json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(
      outcome.out,
      R"([{"step":"packet","packet":{"family":"ipv4","source":"198.18.0.1","destination":"203.0.113.1","protocol":17,"dscp":0,"ecn":0,"ttl":64,"bytes":28,"sourcePort":0,"destinationPort":0}},)"
      R"({"step":"rule","place":0,"policy":"edge","rule":1,"match":"ipv4 protocol 4","matches":false,"differsBy":"protocol"},)"
      R"({"step":"rule","place":1,"policy":"edge","rule":2,"match":"ipv4 source 198.18.0.1/32","matches":true,"differsBy":null},)"
      R"({"step":"action","action":{"vrfName":"VRF-10","fallbackVrfName":"","postDecapVrfName":"","action":"actionVrf"},"resource":{"index":2,"stale":false}},)"
      R"({"step":"lookUp","vrfName":"VRF-10","vrfId":2,"destination":"203.0.113.1","prefix":"203.0.113.0/24","route":"via Ethernet10","exactMatch":false},)"
      R"({"step":"forward","interface":"Ethernet10","vrfName":"VRF-10","packet":{"family":"ipv4","source":"198.18.0.1","destination":"203.0.113.1","protocol":17,"dscp":0,"ecn":0,"ttl":63,"bytes":28,"sourcePort":0,"destinationPort":0}}])"
      "\n");
}

TEST_F(ExplainCommandTest, ABadPacketIsRefusedInOneLine) {
  expectRefused(explain("ipv4 198.18.0.1"),
                "--packet: ipv4|ipv6 SOURCE to DESTINATION [FIELD VALUE]... [carrying PACKET]: "
                "SOURCE must be followed by to, found the end of the line");
  expectRefused(explain("ipv4 198.18.0.1 to 10.0.0.1 dscp 64"),
                "--packet: ipv4|ipv6 SOURCE to DESTINATION [FIELD VALUE]... [carrying PACKET]: "
                "dscp must be a number from 0 to 63, found '64'");
  expectRefused(explain("hex 4"),
                "--packet: hex BYTES: BYTES must be pairs of hexadecimal digits, found '4'");
  expectRefused(explain(""),
                "--packet: ipv4|ipv6 SOURCE to DESTINATION [FIELD VALUE]... [carrying PACKET]: "
                "a packet must begin with ipv4, ipv6 or hex, found the end of "
                "the line");
}

TEST_F(ExplainCommandTest, ABadEventIsRefusedInOneLine) {
  const std::string events = writeFile("test.events", "decap-nh on\nvrf red id 1\n");
  expectRefused(explain("ipv4 198.18.0.1 to 10.0.0.1", {"--events", events}),
                events +
                    ":2: vrf NAME id N: NAME must be a VRF of the configuration or of the "
                    "hardware, found 'red'; a new one needs first: "
                    "vrf red add");
}

TEST_F(ExplainCommandTest, AFileThatIsNotThereIsRefusedInOneLine) {
  const std::string missing = TestFiles::processFolder() / "no-such-file";
  expectRefused(explain("ipv4 198.18.0.1 to 10.0.0.1", {"--events", missing}),
                missing +
                    ": cannot be read: No such file or directory; give a readable event "
                    "file");
  configuration_ = missing;
  expectRefused(explain("ipv4 198.18.0.1 to 10.0.0.1"),
                missing + ": cannot be read: No such file or directory; give a readable JSON file");
}

TEST_F(ExplainCommandTest, AnInterfaceNameOverHundredBytesIsRefused) {
  const std::string packet = "ipv4 198.18.0.1 to 10.0.0.1";
  expectRefused(
      runAgent({"explain", configuration_, "--in", std::string(100, 'e'), "--packet", packet}),
      "--in: INTERFACE must be an interface of the configuration, found '" + std::string(100, 'e') +
          "'");
  expectRefused(
      runAgent({"explain", configuration_, "--in", std::string(101, 'e'), "--packet", packet}),
      "--in: INTERFACE must be an interface name of 1 to 100 bytes, found \"" +
          std::string(100, 'e') + "...\"");
}

TEST_F(ExplainCommandTest, AMistypedInterfaceIsRefusedWithTheNearestOne) {
  expectRefused(runAgent({"explain", configuration_, "--in", "Ethernt1", "--packet", "hex 00"}),
                "--in: INTERFACE must be an interface of the configuration, found 'Ethernt1'; did "
                "you mean 'Ethernet1'?");
}

TEST_F(ExplainCommandTest, MissingOptionsAreRefusedInOneLine) {
  expectRefused(runAgent({"explain", configuration_, "--in", "Ethernet1"}),
                "--packet is required; see zel-agent explain --help");
  expectRefused(runAgent({"explain", configuration_, "--packet", "hex"}),
                "--in is required; see zel-agent explain --help");
}

}  // namespace
}  // namespace ZelAgent
