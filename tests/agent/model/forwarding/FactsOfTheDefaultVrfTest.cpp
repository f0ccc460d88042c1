// Facts about the default VRF reach every action whose walk contains it.
//
// A resource with old facts drops packets that should leave, while its status is "programmedInHw".
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/model/packets/PacketText.h"
#include "tests/agent/OpenConfigBuilder.h"

namespace ZelAgent {
namespace {

class FactsOfTheDefaultVrf : public ::testing::Test {
 protected:
  // Packets on e1 are looked up in red, then in the default VRF, which has the only route.
  FactsOfTheDefaultVrf() {
    configuration_.vrf("red", "DEFAULT").vrf("blue").vrf("green", "red");
    configuration_.route("DEFAULT", "203.0.113.0/24", "e2");
    configuration_.policy("P", {ruleOf(1, "", {}, toVrf("red"))}, {"e1"});
    agent_.apply(configuration_.configuration());
  }

  void play(const std::string& line) { calls_ = player_.play(readEvent(line).value()).calls; }

  // The interface by which a packet on e1 leaves, or why it is dropped.
  [[nodiscard]] std::string way() {
    PacketFields fields;
    fields.source = parseIpAddress("192.0.2.1").value();
    fields.destination = parseIpAddress("203.0.113.1").value();
    const auto verdict = agent_.forwarder().forward("e1", buildPacket(fields));
    return verdict.drop ? std::string(nameOf(*verdict.drop)) : verdict.egress;
  }

  [[nodiscard]] bool isStale() { return agent_.state().actions.at(0).resourceIsStale(); }

  OpenConfigBuilder configuration_;
  ForwardingAgent agent_{16};
  EventPlayer player_{agent_, "."};
  std::vector<Chips::HookCall> calls_;
};

TEST_F(FactsOfTheDefaultVrf, PrefixLengthsReachAnActionThatFallsBackToIt) {
  ASSERT_EQ(way(), "e2");
  play("prefix-lens ipv4 default 24");
  EXPECT_EQ(calls_.size(), 1U);
  EXPECT_FALSE(isStale());
  EXPECT_EQ(way(), "e2");
  play("prefix-lens ipv4 default 24 32");
  EXPECT_FALSE(isStale());
  play("prefix-lens ipv4 default remove");
  EXPECT_FALSE(isStale());
  EXPECT_EQ(way(), "e2");
}

TEST_F(FactsOfTheDefaultVrf, PrefixLengthsOfBothFamiliesReachIt) {
  play("prefix-lens ipv6 default 64");
  EXPECT_FALSE(isStale());
  play("prefix-lens ipv6 default 48");
  EXPECT_FALSE(isStale());
}

TEST_F(FactsOfTheDefaultVrf, AnIdReachesAnActionThatFallsBackToIt) {
  play("vrf default id 99");
  EXPECT_EQ(calls_.size(), 1U);
  EXPECT_FALSE(isStale());
  EXPECT_EQ(way(), "e2");
}

TEST_F(FactsOfTheDefaultVrf, AStatusThatIsRemovedOrReplacedReachesIt) {
  play("vrf default remove");
  EXPECT_FALSE(isStale());
  EXPECT_EQ(way(), "noRoute");
  play("vrf default add id 7");
  EXPECT_FALSE(isStale());
  EXPECT_EQ(way(), "e2");
  play("vrf default add id 8");
  EXPECT_FALSE(isStale());
  EXPECT_EQ(way(), "e2");
  play("vrf default id 9");
  EXPECT_FALSE(isStale());
  EXPECT_EQ(way(), "e2");
}

TEST_F(FactsOfTheDefaultVrf, ItsOwnFallbackReachesAnActionThatFallsBackToIt) {
  play("route blue 203.0.113.1/32 via e3");
  play("vrf default remove");
  play("fallback default to blue");
  EXPECT_EQ(calls_.size(), 1U);
  EXPECT_FALSE(isStale());
  EXPECT_EQ(way(), "e3");
}

TEST_F(FactsOfTheDefaultVrf, AnActionThatDoesNotFallBackToItIsNotUpdated) {
  play("fallback red to blue");
  play("prefix-lens ipv4 default 24");
  EXPECT_TRUE(calls_.empty());
  EXPECT_FALSE(isStale());
  play("fallback blue to default");
  play("prefix-lens ipv4 default 32");
  EXPECT_EQ(calls_.size(), 1U);
  EXPECT_FALSE(isStale());
}

TEST_F(FactsOfTheDefaultVrf, AConfigurationThatChangesItsFallbackReachesIt) {
  configuration_.route("blue", "198.51.100.0/24", "e3");
  agent_.apply(configuration_.configuration());
  Configuration next = configuration_.configuration();
  next.networkInstances.front().fallback = "blue";
  agent_.apply(next);
  EXPECT_FALSE(isStale());
}

}  // namespace
}  // namespace ZelAgent
