#include "chips/soft/SoftForwarder.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "chips/packet/HeaderParser.h"
#include "tests/chips/soft/ForwardWorld.h"

namespace Chips {
namespace {

using PolicyMap::AclRule;
using PolicyMap::ActionType;

constexpr const char* inner = "10.9.9.9";
constexpr const char* tunnelEnd = "198.51.100.1";

TestPacket packetTo(const std::string& destination) {
  TestPacket packet;
  packet.destination = destination;
  if (address(destination).family == Ip::Family::v6) packet.source = "2001:db8::1";
  return packet;
}

TestPacket tunnelled(const TestPacket& packet) {
  return packetTo(tunnelEnd).around(packet);
}

class ForwarderTest : public ::testing::Test {
 protected:
  ForwarderTest() {
    for (const char* const vrf : {"default", "red", "blue", "green"})
      world_.vrfIs(vrf);
    world_.routeIs("default", "0.0.0.0/0", "ownV4");
    world_.routeIs("default", "::/0", "ownV6");
  }

  ForwardWorld world_;
};

TEST_F(ForwarderTest, TakesTheDefaultVrfWhereNothingElseIsSaid) {
  EXPECT_EQ(world_.where("10.0.0.1"), "ownV4");
  EXPECT_EQ(world_.where("2001:db8::2"), "ownV6");
}

TEST_F(ForwarderTest, TakesTheVrfOfTheInterface) {
  world_.routeIs("red", "0.0.0.0/0", "red1");
  world_.forwarder.intfVrfIs("in", "red");
  EXPECT_EQ(world_.where("10.0.0.1"), "red1");
  EXPECT_EQ(world_.where(packetTo("10.0.0.1"), "other"), "ownV4");
  world_.forwarder.intfVrfIs("in", "blue");
  EXPECT_EQ(world_.where("10.0.0.1"), "noRoute");
  world_.forwarder.intfVrfDel("in");
  EXPECT_EQ(world_.where("10.0.0.1"), "ownV4");
}

TEST_F(ForwarderTest, SendsAPacketOnWithALowerTimeToLive) {
  TestPacket packet = packetTo("10.0.0.1");
  packet.options = {7, 7, 4, 0, 0, 0, 0, 0};
  packet.ecn = 3;
  Bytes padded = packet.bytes();
  padded.resize(padded.size() + 5);
  const Verdict verdict = world_.forward(padded);
  EXPECT_EQ(verdict.drop, std::nullopt);
  EXPECT_EQ(verdict.egress, "ownV4");
  packet.ttl = 63;
  EXPECT_EQ(verdict.packet, packet.bytes());
  EXPECT_TRUE(hasRightChecksum(verdict.packet));
}

TEST_F(ForwarderTest, KeepsExtensionHeaders) {
  TestPacket packet = packetTo("2001:db8::2");
  packet.extensions = {{0, {0, 1, 4, 0, 0, 0, 0}}, {60, {0, 1, 4, 0, 0, 0, 0}}};
  const Verdict verdict = world_.forward(packet.bytes());
  packet.ttl = 63;
  EXPECT_EQ(verdict.packet, packet.bytes());
}

TEST_F(ForwarderTest, DropsMalformedPackets) {
  EXPECT_EQ(shown(world_.forward({})), "malformed");
  EXPECT_EQ(shown(world_.forward({0x45, 0, 0})), "malformed");
  Bytes bytes = TestPacket().bytes();
  bytes.pop_back();
  const Verdict verdict = world_.forward(bytes);
  EXPECT_EQ(verdict.drop, DropReason::malformed);
  EXPECT_TRUE(verdict.egress.empty());
  EXPECT_TRUE(verdict.packet.empty());
}

TEST_F(ForwarderTest, DropsPacketsWithAWrongChecksum) {
  Bytes bytes = TestPacket().bytes();
  bytes[8] = 63;
  EXPECT_EQ(shown(world_.forward(bytes)), "badChecksum");
}

TEST_F(ForwarderTest, DropsPacketsWhoseTimeIsOver) {
  for (const unsigned ttl : {0U, 1U}) {
    for (TestPacket packet : {packetTo("10.0.0.1"), packetTo("2001:db8::2")}) {
      packet.ttl = static_cast<std::uint8_t>(ttl);
      EXPECT_EQ(world_.where(packet), "ttlExpired");
    }
  }
}

TEST_F(ForwarderTest, DropsByADropRoute) {
  world_.routeIs("default", "10.0.0.0/8", "drop");
  EXPECT_EQ(world_.where("10.0.0.1"), "dropRoute");
}

TEST_F(ForwarderTest, DropsWithoutARoute) {
  world_.forwarder.intfVrfIs("in", "red");
  EXPECT_EQ(world_.where("10.0.0.1"), "noRoute");
  EXPECT_EQ(world_.where("::1"), "noRoute");
}

TEST_F(ForwarderTest, DropsWhereNoVrfHasAnId) {
  world_.forwarder.intfVrfIs("in", "unknown");
  EXPECT_EQ(world_.where("10.0.0.1"), "noVrfId");
  world_.fallbackIs("unknown", "unheardOf");
  EXPECT_EQ(world_.where("10.0.0.1"), "noVrfId");
  world_.fallbackIs("unheardOf", "red");
  EXPECT_EQ(world_.where("10.0.0.1"), "noRoute");
  world_.fallbackIs("unheardOf", "default");
  EXPECT_EQ(world_.where("10.0.0.1"), "ownV4");
}

TEST_F(ForwarderTest, DropsByADiscardingRule) {
  world_.ruleIs("in", always({ActionType::discard, {}, {}, {}}));
  EXPECT_EQ(world_.where("10.0.0.1"), "discardedByRule");
  EXPECT_EQ(world_.where(packetTo("10.0.0.1"), "other"), "ownV4");
}

TEST_F(ForwarderTest, DropsOnAClosedInterfaceWhatNoRuleMatches) {
  world_.acl->intfClosedIs("in", true);
  EXPECT_EQ(world_.where("10.0.0.1"), "intfClosed");
  EXPECT_EQ(world_.where(packetTo("10.0.0.1"), "other"), "ownV4");
  world_.ruleIs("in", always({}));
  EXPECT_EQ(world_.where("10.0.0.1"), "ownV4");
}

TEST_F(ForwarderTest, DropsWithoutTheResourceOfTheAction) {
  world_.ruleWithoutResourceIs("in", always(lookUpIn("red")));
  world_.routeIs("red", "0.0.0.0/0", "red1");
  EXPECT_EQ(world_.where("10.0.0.1"), "noVrfResource");
  // A resource of the same VRF for another kind of action is not that of this one.
  ASSERT_EQ(world_.chip->createVrf({"red", ActionType::decapVrf}),
            ZelVrfSelectionPolicy::HwStatus());
  EXPECT_EQ(world_.where("10.0.0.1"), "noVrfResource");
  ASSERT_EQ(world_.chip->createVrf({"red", ActionType::vrf}), ZelVrfSelectionPolicy::HwStatus());
  EXPECT_EQ(world_.where("10.0.0.1"), "red1");
}

TEST_F(ForwarderTest, ARuleWithoutAnActionLeavesThePacketAlone) {
  world_.ruleIs("in", always({}));
  world_.ruleIs("in", always({ActionType::discard, {}, {}, {}}));
  EXPECT_EQ(world_.where("10.0.0.1"), "ownV4");
  EXPECT_EQ(world_.acl->counter("in", 0), (PacketCounter{1, 28}));
}

TEST_F(ForwarderTest, TheFirstMatchingRuleDecidesAndCounts) {
  world_.routeIs("red", "0.0.0.0/0", "red1");
  world_.routeIs("blue", "0.0.0.0/0", "blue1");
  AclRule toRed = always(lookUpIn("red"));
  PolicyMap::AclMatch toRedMatch;
  toRedMatch.family = Ip::Family::v4;
  toRedMatch.destination = prefix("10.0.0.0/8");
  toRed.match = toRedMatch;
  world_.ruleIs("in", toRed);
  world_.ruleIs("in", always(lookUpIn("blue")));
  EXPECT_EQ(world_.where("10.0.0.1"), "red1");
  EXPECT_EQ(world_.where("11.0.0.1"), "blue1");
  EXPECT_EQ(world_.where("12.0.0.1"), "blue1");
  EXPECT_EQ(world_.acl->counter("in", 0), (PacketCounter{1, 28}));
  EXPECT_EQ(world_.acl->counter("in", 1), (PacketCounter{2, 56}));
  world_.acl->moveRule("in", 1, 0);
  EXPECT_EQ(world_.where("10.0.0.1"), "blue1");
  EXPECT_EQ(world_.acl->counter("in", 0), (PacketCounter{3, 84}));
  EXPECT_EQ(world_.acl->counter("in", 1), (PacketCounter{1, 28}));
}

TEST_F(ForwarderTest, LooksUpInTheVrfOfTheActionAndItsFallbacks) {
  world_.fallbackIs("red", "blue");
  world_.fallbackIs("blue", "green");
  world_.ruleIs("in", always(lookUpIn("red")));
  world_.routeIs("red", "10.1.0.0/16", "red1");
  world_.routeIs("blue", "10.0.0.0/8", "blue1");
  world_.routeIs("green", "11.0.0.0/8", "green1");
  EXPECT_EQ(world_.where("10.1.0.1"), "red1");
  EXPECT_EQ(world_.where("10.2.0.1"), "blue1");
  EXPECT_EQ(world_.where("11.2.0.1"), "green1");
  EXPECT_EQ(world_.where("12.2.0.1"), "noRoute");  // the default VRF is no fallback
}

TEST_F(ForwarderTest, AWalkThatComesBackEnds) {
  world_.fallbackIs("red", "blue");
  world_.fallbackIs("blue", "red");
  world_.ruleIs("in", always(lookUpIn("red")));
  EXPECT_EQ(world_.where("10.0.0.1"), "noRoute");
  world_.fallbackIs("default", "default");
  world_.tables.routeDel(1, prefix("0.0.0.0/0"));
  EXPECT_EQ(world_.where(packetTo("10.0.0.1"), "other"), "noRoute");
}

TEST_F(ForwarderTest, GoesOnInTheFallbackVrfOfTheAction) {
  world_.fallbackIs("red", "blue");
  world_.fallbackIs("green", "default");
  world_.ruleIs("in", always(decapsulateIn("red", "green", "blue")));
  EXPECT_EQ(world_.where("10.0.0.1"), "ownV4");
  world_.routeIs("green", "0.0.0.0/0", "green1");
  EXPECT_EQ(world_.where("10.0.0.1"), "green1");
  world_.routeIs("blue", "0.0.0.0/0", "blue1");
  EXPECT_EQ(world_.where("10.0.0.1"), "blue1");
}

TEST_F(ForwarderTest, LooksInExactMatchForTheLengthsOfTheFamily) {
  world_.ruleIs("in", always(lookUpIn("red")));
  world_.routeIs("red", "10.0.0.1/32", "host4");
  world_.routeIs("red", "2001:db8::1/128", "host6");
  world_.exactMatchLenIs("red", 32);
  world_.exactMatchLenV6Is("red", 128);
  EXPECT_EQ(world_.where("10.0.0.1"), "noRoute");
  EXPECT_EQ(world_.where("2001:db8::1"), "noRoute");
  ASSERT_EQ(world_.chip->updateVrf(resourceOf(lookUpIn("red"))), ZelVrfSelectionPolicy::HwStatus());
  EXPECT_EQ(world_.where("10.0.0.1"), "host4");
  EXPECT_EQ(world_.where("2001:db8::1"), "host6");
}

TEST_F(ForwarderTest, LooksByTheFactsOfNowWithoutAResource) {
  world_.routeIs("default", "10.0.0.1/32", "host");
  world_.exactMatchLenIs("default", 32);
  EXPECT_EQ(world_.where("10.0.0.1"), "host");
}

// A rule that takes all into red, which ends tunnels.
class DecapTest : public ForwarderTest {
 protected:
  DecapTest() { world_.routeIs("red", "198.51.100.0/24", "decap"); }

  void flagsAre(bool decapNh, bool decapNhFallback) {
    world_.routes->decapNhEnabledIs(decapNh);
    world_.routes->decapNhFallbackEnabledIs(decapNhFallback);
  }
  void decapRuleIs() { world_.ruleIs("in", always(decapsulateIn("red", "blue", "green"))); }
};

TEST_F(DecapTest, LooksTheInnerPacketUpInThePostDecapVrf) {
  flagsAre(true, false);
  decapRuleIs();
  world_.routeIs("green", "10.0.0.0/8", "green4");
  world_.routeIs("green", "2001:db8::/32", "green6");
  for (const char* const destination : {inner, "2001:db8::9"}) {
    TestPacket packet = packetTo(destination);
    packet.ttl = 3;
    TestPacket outer = tunnelled(packet);
    outer.ttl = 21;
    const Verdict verdict = world_.forward(outer.bytes());
    EXPECT_EQ(shown(verdict), destination == inner ? "green4" : "green6");
    packet.ttl = 20;
    EXPECT_EQ(verdict.packet, packet.bytes());
  }
}

TEST_F(DecapTest, WalksTheFallbacksOfThePostDecapVrfAndNoOthers) {
  flagsAre(true, false);
  world_.fallbackIs("green", "default");
  decapRuleIs();
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "ownV4");
  world_.fallbacks->fallbackVrfDel("green");
  ASSERT_EQ(world_.chip->updateVrf(resourceOf(decapsulateIn("red", "blue", "green"))),
            ZelVrfSelectionPolicy::HwStatus());
  world_.routeIs("red", "10.0.0.0/8", "red1");
  world_.routeIs("blue", "10.0.0.0/8", "blue1");
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "noRoute");
}

TEST_F(DecapTest, TakesTheInterfacesOwnVrfWithoutAPostDecapVrf) {
  flagsAre(true, false);
  world_.ruleIs("in", always(lookUpIn("red")));
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "ownV4");
  world_.routeIs("blue", "10.0.0.0/8", "blue1");
  world_.forwarder.intfVrfIs("in", "blue");
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "blue1");
}

TEST_F(DecapTest, DecapsulatesInTheInterfacesOwnVrf) {
  world_.forwarder.intfVrfIs("in", "red");
  world_.routeIs("red", "10.0.0.0/8", "red1");
  flagsAre(false, false);
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "decapDisabled");
  flagsAre(true, false);
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "red1");
}

TEST_F(DecapTest, ObeysTheFlagsInAllCombinations) {
  world_.routeIs("blue", "0.0.0.0/0", "fellBack");
  world_.routeIs("green", "0.0.0.0/0", "decapsulated");
  const struct {
    bool decapNh;
    bool decapNhFallback;
    const char* where;
  } cases[] = {{false, false, "decapDisabled"},
               {false, true, "fellBack"},
               {true, false, "decapsulated"},
               {true, true, "decapsulated"}};
  decapRuleIs();
  for (const auto& one : cases) {
    flagsAre(one.decapNh, one.decapNhFallback);
    ASSERT_EQ(world_.chip->updateVrf(resourceOf(decapsulateIn("red", "blue", "green"))),
              ZelVrfSelectionPolicy::HwStatus());
    EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), one.where);
  }
}

TEST_F(DecapTest, ObeysTheFlagsOfNowWithoutAResource) {
  world_.forwarder.intfVrfIs("in", "red");
  world_.fallbackIs("red", "blue");
  world_.routeIs("blue", "0.0.0.0/0", "fellBack");
  const struct {
    bool decapNh;
    bool decapNhFallback;
    const char* where;
  } cases[] = {{false, false, "decapDisabled"},
               {false, true, "fellBack"},
               {true, false, "fellBack"},  // what came out of the tunnel starts in red again
               {true, true, "fellBack"}};
  for (const auto& one : cases) {
    flagsAre(one.decapNh, one.decapNhFallback);
    const Verdict verdict = world_.forward(tunnelled(packetTo(inner)).bytes());
    EXPECT_EQ(shown(verdict), one.where);
    if (verdict.drop) continue;
    EXPECT_EQ(parse(verdict.packet).header->destination, address(one.decapNh ? inner : tunnelEnd));
  }
}

TEST_F(DecapTest, MissesWhereNoOtherVrfHasARoute) {
  flagsAre(false, true);
  decapRuleIs();
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "noRoute");
}

TEST_F(DecapTest, DropsWhatIsNoTunnel) {
  flagsAre(true, false);
  world_.routeIs("red", "::/0", "decap");
  decapRuleIs();
  EXPECT_EQ(world_.where(packetTo(tunnelEnd)), "notATunnel");
  EXPECT_EQ(world_.where(packetTo("2001:db8::2").around(packetTo(inner))), "notATunnel");
}

TEST_F(DecapTest, DropsFragmentsOfTunnels) {
  flagsAre(true, false);
  decapRuleIs();
  TestPacket packet = tunnelled(packetTo(inner));
  packet.fragmentWord = 0x2000;
  EXPECT_EQ(world_.where(packet), "fragmentedTunnel");
}

TEST_F(DecapTest, DropsMalformedInnerPackets) {
  flagsAre(true, false);
  decapRuleIs();
  TestPacket packet = tunnelled(packetTo(inner));
  packet.payload[10] ^= 1;
  EXPECT_EQ(world_.where(packet), "innerMalformed");
  packet.payload.resize(3);
  EXPECT_EQ(world_.where(packet), "innerMalformed");
}

TEST_F(DecapTest, DropsCongestedPacketsThatCannotCarryTheMark) {
  flagsAre(true, false);
  decapRuleIs();
  TestPacket packet = tunnelled(packetTo(inner));
  packet.ecn = 3;
  EXPECT_EQ(world_.where(packet), "congestion");
}

TEST_F(DecapTest, TakesOffOneTunnelOnly) {
  flagsAre(true, true);
  decapRuleIs();
  world_.routeIs("green", "198.51.100.0/24", "decap");
  EXPECT_EQ(world_.where(tunnelled(tunnelled(packetTo(inner)))), "nestedDecap");
  EXPECT_EQ(world_.where(tunnelled(packetTo(tunnelEnd))), "nestedDecap");
}

TEST_F(DecapTest, ChecksTheTimeToLiveOfTheHeaderThatLeaves) {
  flagsAre(true, false);
  decapRuleIs();
  world_.routeIs("green", "0.0.0.0/0", "green1");
  TestPacket packet = packetTo(inner);
  packet.ttl = 0;
  TestPacket outer = tunnelled(packet);
  outer.ttl = 2;
  EXPECT_EQ(world_.where(outer), "green1");
  outer.ttl = 1;
  EXPECT_EQ(world_.where(outer), "ttlExpired");
}

TEST_F(DecapTest, RulesSeeTheOuterHeaderOnly) {
  flagsAre(true, false);
  AclRule discardInner = always({ActionType::discard, {}, {}, {}});
  PolicyMap::AclMatch discardInnerMatch;
  discardInnerMatch.family = Ip::Family::v4;
  discardInnerMatch.destination = prefix("10.0.0.0/8");
  discardInner.match = discardInnerMatch;
  world_.ruleIs("in", discardInner);
  AclRule tunnels = always(decapsulateIn("red", "blue", "green"));
  PolicyMap::AclMatch tunnelsMatch;
  tunnelsMatch.family = Ip::Family::v4;
  tunnelsMatch.protocol = std::uint8_t{4};
  tunnels.match = tunnelsMatch;
  world_.ruleIs("in", tunnels);
  world_.routeIs("green", "0.0.0.0/0", "green1");
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "green1");
  EXPECT_EQ(world_.where(inner), "discardedByRule");
  EXPECT_EQ(world_.where("11.0.0.1"), "ownV4");
}

TEST_F(ForwarderTest, CountsWhatLeftByTheVrfOfTheRoute) {
  world_.forwarder.intfVrfIs("in", "red");
  world_.fallbackIs("red", "blue");
  world_.routeIs("red", "10.0.0.0/8", "out");
  world_.routeIs("blue", "11.0.0.0/8", "out");
  EXPECT_TRUE(world_.forwarder.vrfCounters().empty());
  for (const char* const destination : {"10.0.0.1", "11.0.0.1", "11.0.0.2"})
    EXPECT_EQ(world_.where(destination), "out");
  EXPECT_EQ(world_.where("12.0.0.1"), "noRoute");
  const std::map<L3::VrfName, PacketCounter> wanted = {{"blue", {2, 56}}, {"red", {1, 28}}};
  EXPECT_EQ(world_.forwarder.vrfCounters(), wanted);
}

TEST_F(DecapTest, CountsTheBytesThatLeave) {
  flagsAre(true, false);
  decapRuleIs();
  world_.routeIs("green", "0.0.0.0/0", "green1");
  EXPECT_EQ(world_.where(tunnelled(packetTo(inner))), "green1");
  EXPECT_EQ(world_.forwarder.vrfCounters().at("green"), (PacketCounter{1, 28}));
  EXPECT_EQ(world_.acl->counter("in", 0), (PacketCounter{1, 48}));
}

TEST_F(DecapTest, CountsDropsBehindATunnelByTheBytesThatCame) {
  flagsAre(true, false);
  decapRuleIs();
  Bytes padded = tunnelled(packetTo(inner)).bytes();
  padded.resize(padded.size() + 6);
  EXPECT_EQ(shown(world_.forward(padded)), "noRoute");
  EXPECT_EQ(world_.forwarder.dropCounter(DropReason::noRoute), (PacketCounter{1, 48}));
}

TEST_F(ForwarderTest, CountsDropsByReason) {
  world_.routeIs("default", "10.0.0.0/8", "drop");
  EXPECT_EQ(world_.where("10.0.0.1"), "dropRoute");
  EXPECT_EQ(world_.where("10.0.0.2"), "dropRoute");
  EXPECT_EQ(shown(world_.forward({0x45, 0, 0})), "malformed");
  EXPECT_EQ(world_.forwarder.dropCounter(DropReason::dropRoute), (PacketCounter{2, 56}));
  EXPECT_EQ(world_.forwarder.dropCounter(DropReason::malformed), (PacketCounter{1, 3}));
  EXPECT_EQ(world_.forwarder.dropCounter(DropReason::noRoute), PacketCounter());
  EXPECT_EQ(world_.where("11.0.0.1"), "ownV4");
  world_.forwarder.countersReset();
  EXPECT_EQ(world_.forwarder.dropCounter(DropReason::dropRoute), PacketCounter());
  EXPECT_TRUE(world_.forwarder.vrfCounters().empty());
}

TEST(DropReason, EachHasANameAndATextOfItsOwn) {
  std::set<std::string_view> names;
  std::set<std::string_view> texts;
  for (std::size_t code = 0; code < dropReasons; ++code) {
    names.insert(nameOf(static_cast<DropReason>(code)));
    texts.insert(textOf(static_cast<DropReason>(code)));
  }
  EXPECT_EQ(names.size(), dropReasons);
  EXPECT_EQ(texts.size(), dropReasons);
  EXPECT_EQ(names.count(""), 0U);
  EXPECT_EQ(texts.count(""), 0U);
  std::ostringstream stream;
  stream << DropReason::malformed << ' ' << DropReason::ttlExpired;
  EXPECT_EQ(stream.str(), "malformed ttlExpired");
}

}  // namespace
}  // namespace Chips
