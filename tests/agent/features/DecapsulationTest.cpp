// Tunnels end by the routes of a decapsulation VRF; rules choose it by protocol, source and DSCP,
// and with it where a miss goes on and where the packet inside is looked up.
#include <gtest/gtest.h>

#include "tests/agent/features/ExpectedTraffic.h"

namespace ZelAgent {
namespace {

constexpr const char* repairSource = "198.51.100.222";
constexpr const char* transitSource = "198.51.100.111";
constexpr const char* decapHit = "203.0.113.7";
constexpr const char* decapMiss = "198.18.7.7";

constexpr const char* decapOn = "route DECAP 203.0.113.0/24 decap\ndecap-nh on\n";

const std::vector<std::uint8_t> dscpsA{10, 12};
const std::vector<std::uint8_t> dscpsB{20, 22, 24};
const std::vector<std::uint8_t> dscpsOther{0, 11, 63};

struct TrafficClass {
  const std::vector<std::uint8_t>& dscps;
  bool isMatched;
  std::string postDecap;  // as the configuration names it
};

const std::vector<TrafficClass> classes{
    {dscpsA, true, "TUNNEL-A"}, {dscpsB, true, "TUNNEL-B"}, {dscpsOther, false, "DEFAULT"}};

// Rules 1 to 12: for each class of traffic, for each source, for protocols 4 and 41.
struct DecapRule {
  unsigned number;
  const TrafficClass& trafficClass;
  std::string source;
  std::string fallback;
  unsigned protocol;
};

std::vector<DecapRule> decapRules() {
  std::vector<DecapRule> rules;
  for (const TrafficClass& trafficClass : classes) {
    for (const bool isRepair : {true, false}) {
      for (const unsigned protocol : {4U, 41U}) {
        rules.push_back({static_cast<unsigned>(rules.size() + 1), trafficClass,
                         isRepair ? repairSource : transitSource, isRepair ? "REPAIR" : "TRANSIT",
                         protocol});
      }
    }
  }
  return rules;
}

std::vector<nlohmann::json> allRules() {
  std::vector<nlohmann::json> rules;
  for (const DecapRule& rule : decapRules()) {
    Leaves match{{"protocol", rule.protocol}, {"source-address", rule.source + "/32"}};
    if (rule.trafficClass.isMatched) match["dscp-set"] = rule.trafficClass.dscps;
    rules.push_back(ruleOf(rule.number, "ipv4", match,
                           toDecap("DECAP", rule.fallback, rule.trafficClass.postDecap)));
  }
  rules.push_back(ruleOf(13, "ipv4", {{"dscp-set", dscpsA}}, toVrf("TUNNEL-A")));
  rules.push_back(ruleOf(14, "ipv6", {{"dscp-set", dscpsA}}, toVrf("TUNNEL-A")));
  rules.push_back(ruleOf(15, "ipv4", {{"dscp-set", dscpsB}}, toVrf("TUNNEL-B")));
  rules.push_back(ruleOf(16, "ipv6", {{"dscp-set", dscpsB}}, toVrf("TUNNEL-B")));
  rules.push_back(ruleOf(17, "ipv4", {{"source-address", "192.0.2.66/32"}}, toDiscard()));
  rules.push_back(ruleOf(18, "", {}, toVrf("DEFAULT")));
  return rules;
}

void addOuterRoutes(OpenConfigBuilder& configuration, const char* vrf, const char* interface) {
  configuration.route(vrf, "203.0.113.0/24", interface).route(vrf, "198.18.0.0/16", interface);
}

void addInnerRoutes(OpenConfigBuilder& configuration, const char* vrf, const char* interface) {
  configuration.route(vrf, "10.1.0.0/16", interface).route(vrf, "2001:db8:1::/48", interface);
}

// TUNNEL-A falls back to default, which knows more; TUNNEL-B has no fallback.
OpenConfigBuilder tunnels() {
  OpenConfigBuilder configuration;
  configuration.vrf("DECAP").vrf("REPAIR").vrf("TRANSIT").vrf("TUNNEL-A", "DEFAULT");
  configuration.vrf("TUNNEL-B").intf("DEFAULT", "Ethernet1");
  addOuterRoutes(configuration, "REPAIR", "Ethernet22");
  addOuterRoutes(configuration, "TRANSIT", "Ethernet11");
  addOuterRoutes(configuration, "DEFAULT", "Ethernet2");
  addInnerRoutes(configuration, "TUNNEL-A", "Ethernet31");
  addInnerRoutes(configuration, "TUNNEL-B", "Ethernet32");
  configuration.route("DEFAULT", "10.0.0.0/8", "Ethernet2")
      .route("DEFAULT", "2001:db8::/32", "Ethernet2");
  configuration.policy("tunnels", allRules(), {"Ethernet1"});
  return configuration;
}

std::string egressOf(const std::string& vrf) {
  if (vrf == "TUNNEL-A") return "Ethernet31";
  if (vrf == "TUNNEL-B") return "Ethernet32";
  if (vrf == "REPAIR") return "Ethernet22";
  if (vrf == "TRANSIT") return "Ethernet11";
  return "Ethernet2";
}

std::string shownName(const std::string& vrf) {
  return vrf == "DEFAULT" ? "default" : vrf;
}

// What TUNNEL-A and TUNNEL-B have routes to, and what only DEFAULT has one to. The marks inside
// would choose otherwise if rules looked at them.
PacketBytes innerPacket(unsigned protocol, bool isKnownToTunnels, std::uint16_t number = 0) {
  if (protocol == 4) {
    return ipv4Packet({"10.2.2.2", isKnownToTunnels ? "10.1.0.1" : "10.9.0.1", 22, ect0, 17},
                      number);
  }
  return ipv6Packet(
      {"2001:db8:2::2", isKnownToTunnels ? "2001:db8:1::1" : "2001:db8:9::1", 10, ect0, 17},
      number);
}

PacketBytes tunnelPacket(const DecapRule& rule, std::uint8_t dscp, const char* destination,
                         bool isKnownToTunnels) {
  return inIpv4({rule.source, destination, dscp, notEct, 99},
                innerPacket(rule.protocol, isKnownToTunnels, dscp));
}

// Calls `of` for each rule with each DSCP that it is to match.
template <class Of>
void forEachTunnel(Of of) {
  for (const DecapRule& rule : decapRules()) {
    for (const std::uint8_t dscp : rule.trafficClass.dscps)
      of(rule, dscp);
  }
}

TEST(Decapsulation, AHitIsDecapsulatedAndForwardedByThePostDecapVrf) {
  ExpectedTraffic traffic;
  forEachTunnel([&](const DecapRule& rule, std::uint8_t dscp) {
    const PacketBytes packet = tunnelPacket(rule, dscp, decapHit, true);
    const std::string& vrf = rule.trafficClass.postDecap;
    traffic.leaves(packet, rule.number, egressOf(vrf), shownName(vrf), asDecapsulated(packet));
  });
  traffic.expectFrom(tunnels(), decapOn);
}

TEST(Decapsulation, AMissInThePostDecapVrfGoesOnInItsFallbackOrIsDropped) {
  ExpectedTraffic traffic;
  forEachTunnel([&](const DecapRule& rule, std::uint8_t dscp) {
    const PacketBytes packet = tunnelPacket(rule, dscp, decapHit, false);
    if (rule.trafficClass.postDecap == "TUNNEL-B") {
      traffic.isDropped(packet, rule.number, "noRoute");
    } else {
      traffic.leaves(packet, rule.number, "Ethernet2", "default", asDecapsulated(packet));
    }
  });
  traffic.expectFrom(tunnels(), decapOn);
}

TEST(Decapsulation, AMissInTheDecapVrfGoesOnInTheFallbackWithItsTunnel) {
  ExpectedTraffic traffic;
  forEachTunnel([&](const DecapRule& rule, std::uint8_t dscp) {
    const PacketBytes packet = tunnelPacket(rule, dscp, decapMiss, true);
    traffic.leaves(packet, rule.number, egressOf(rule.fallback), rule.fallback,
                   asForwarded(packet));
  });
  traffic.expectFrom(tunnels(), decapOn);
}

TEST(Decapsulation, WithoutARouteInTheDecapVrfEverythingMisses) {
  ExpectedTraffic traffic;
  forEachTunnel([&](const DecapRule& rule, std::uint8_t dscp) {
    const PacketBytes packet = tunnelPacket(rule, dscp, decapHit, true);
    traffic.leaves(packet, rule.number, egressOf(rule.fallback), rule.fallback,
                   asForwarded(packet));
  });
  traffic.expectFrom(tunnels(), "decap-nh on\n");
  traffic.expectFrom(tunnels(), std::string(decapOn) + "route DECAP 203.0.113.0/24 remove\n");
}

TEST(Decapsulation, TheFirstRuleThatMatchesDecides) {
  ExpectedTraffic traffic;
  const auto add = [&traffic](const PacketBytes& packet, unsigned rule, const char* interface,
                              const char* vrf) {
    traffic.leaves(packet, rule, interface, vrf, asForwarded(packet));
  };
  add(ipv4Packet({"192.0.2.1", "10.1.0.1", 10}), 13, "Ethernet31", "TUNNEL-A");
  add(ipv6Packet({"2001:db8:7::7", "2001:db8:1::1", 12}), 14, "Ethernet31", "TUNNEL-A");
  add(ipv4Packet({"192.0.2.1", "10.1.0.1", 24}), 15, "Ethernet32", "TUNNEL-B");
  add(ipv6Packet({"2001:db8:7::7", "2001:db8:1::1", 20}), 16, "Ethernet32", "TUNNEL-B");
  // A discarding rule comes after the rules of both classes, and before that for all.
  add(ipv4Packet({"192.0.2.66", "10.1.0.1", 12}), 13, "Ethernet31", "TUNNEL-A");
  add(ipv4Packet({"192.0.2.66", "10.1.0.1", 22}), 15, "Ethernet32", "TUNNEL-B");
  traffic.isDropped(ipv4Packet({"192.0.2.66", "10.1.0.1", 11}), 17, "discardedByRule");
  add(ipv4Packet({"192.0.2.67", "10.1.0.1", 11}), 18, "Ethernet2", "default");
  add(ipv6Packet({"2001:db8:7::7", "2001:db8:1::1", 11}), 18, "Ethernet2", "default");
  // A tunnel from elsewhere is not taken apart: its destination is looked up as any other.
  for (const unsigned protocol : {4U, 41U}) {
    add(inIpv4({"198.51.100.223", decapHit, 10}, innerPacket(protocol, true)), 13, "Ethernet2",
        "default");
    add(inIpv4({"198.51.100.223", decapHit, 0}, innerPacket(protocol, true)), 18, "Ethernet2",
        "default");
  }
  // The source of tunnels, but no tunnel.
  add(ipv4Packet({repairSource, "10.1.0.1", 10}), 13, "Ethernet31", "TUNNEL-A");
  traffic.expectFrom(tunnels(), decapOn);
}

// Which marks go on, by RFC 6040; nothing where the packet must be dropped.
constexpr std::uint8_t dropped = 4;
constexpr std::uint8_t marksAfter[4][4] = {
    // outer: notEct, ect1, ect0, ce
    {notEct, notEct, notEct, dropped},
    {ect1, ect1, ect1, ce},
    {ect0, ect1, ect0, ce},
    {ce, ce, ce, ce},
};

TEST(Decapsulation, MarksOfCongestionOfBothHeadersAreCombined) {
  ExpectedTraffic traffic;
  for (const unsigned protocol : {4U, 41U}) {
    for (std::uint8_t inner = 0; inner < 4; ++inner) {
      for (std::uint8_t outer = 0; outer < 4; ++outer) {
        const PacketBytes packet = inIpv4({transitSource, decapHit, 20, outer},
                                          withEcn(innerPacket(protocol, true), inner));
        const unsigned rule = protocol == 4 ? 7 : 8;
        const std::uint8_t after = marksAfter[inner][outer];
        if (after == dropped) {
          traffic.isDropped(packet, rule, "congestion");
        } else {
          traffic.leaves(packet, rule, "Ethernet32", "TUNNEL-B",
                         withEcn(asDecapsulated(packet), after));
        }
      }
    }
  }
  traffic.expectFrom(tunnels(), decapOn);
}

TEST(Decapsulation, TheTimeToLiveOfTheTunnelGoesOn) {
  ExpectedTraffic traffic;
  for (const unsigned protocol : {4U, 41U}) {
    for (const std::uint8_t inner : {std::uint8_t{1}, std::uint8_t{255}}) {
      const unsigned rule = protocol == 4 ? 1 : 2;
      const PacketBytes inside = withTtl(innerPacket(protocol, true), inner);
      const auto tunnel = [&](std::uint8_t ttl) {
        return inIpv4({repairSource, decapHit, 10, notEct, ttl}, inside);
      };
      traffic.leaves(tunnel(2), rule, "Ethernet31", "TUNNEL-A", withTtl(inside, 1));
      traffic.leaves(tunnel(255), rule, "Ethernet31", "TUNNEL-A", withTtl(inside, 254));
      traffic.isDropped(tunnel(1), rule, "ttlExpired");
      traffic.isDropped(tunnel(0), rule, "ttlExpired");
    }
  }
  traffic.expectFrom(tunnels(), decapOn);
}

TEST(Decapsulation, WhileItIsOffHitsAreDroppedAndMissesGoOn) {
  ExpectedTraffic traffic;
  forEachTunnel([&](const DecapRule& rule, std::uint8_t dscp) {
    traffic.isDropped(tunnelPacket(rule, dscp, decapHit, true), rule.number, "decapDisabled");
    const PacketBytes miss = tunnelPacket(rule, dscp, decapMiss, true);
    traffic.leaves(miss, rule.number, egressOf(rule.fallback), rule.fallback, asForwarded(miss));
  });
  traffic.expectFrom(tunnels(), "route DECAP 203.0.113.0/24 decap\n");
  traffic.expectFrom(tunnels(), std::string(decapOn) + "decap-nh off\n");
}

TEST(Decapsulation, WhileItIsOffHitsGoOnInTheFallbackWhereTheyMay) {
  ExpectedTraffic traffic;
  forEachTunnel([&](const DecapRule& rule, std::uint8_t dscp) {
    const PacketBytes packet = tunnelPacket(rule, dscp, decapHit, true);
    traffic.leaves(packet, rule.number, egressOf(rule.fallback), rule.fallback,
                   asForwarded(packet));
  });
  traffic.expectFrom(tunnels(), "route DECAP 203.0.113.0/24 decap\ndecap-nh-fallback on\n");
}

TEST(Decapsulation, WhileItIsOnHitsDoNotGoOnInTheFallbackThoughTheyMay) {
  ExpectedTraffic traffic;
  forEachTunnel([&](const DecapRule& rule, std::uint8_t dscp) {
    const PacketBytes packet = tunnelPacket(rule, dscp, decapHit, true);
    const std::string& vrf = rule.trafficClass.postDecap;
    traffic.leaves(packet, rule.number, egressOf(vrf), shownName(vrf), asDecapsulated(packet));
  });
  traffic.expectFrom(tunnels(), std::string(decapOn) + "decap-nh-fallback on\n");
}

TEST(Decapsulation, WithoutARouteInTheFallbackWhatGoesOnThereIsDropped) {
  ExpectedTraffic traffic;
  const PacketBytes unknown = inIpv4({repairSource, "192.0.2.200", 10}, innerPacket(4, true));
  traffic.isDropped(unknown, 1, "noRoute");
  traffic.expectFrom(tunnels(), decapOn);
  traffic.expectFrom(tunnels(), "route DECAP 192.0.2.0/24 decap\ndecap-nh-fallback on\n");
}

TEST(Decapsulation, WhatCannotBeDecapsulatedIsDroppedForItsReason) {
  ExpectedTraffic traffic;
  const HeaderText outer{transitSource, decapHit, 10};
  // IPv6 where the protocol says IPv4, and the other way round.
  traffic.isDropped(ipv4PacketOf(outer, 4, innerPacket(41, true)), 3, "innerMalformed");
  traffic.isDropped(ipv4PacketOf(outer, 41, innerPacket(4, true)), 4, "innerMalformed");
  PacketBytes cut = innerPacket(4, true);
  cut.resize(19);
  traffic.isDropped(ipv4PacketOf(outer, 4, cut), 3, "innerMalformed");
  traffic.isDropped(ipv4PacketOf(outer, 4, {}), 3, "innerMalformed");
  PacketBytes badChecksum = innerPacket(4, true);
  badChecksum[10] ^= 1;
  traffic.isDropped(ipv4PacketOf(outer, 4, badChecksum), 3, "innerMalformed");
  PacketBytes firstFragment = tunnelPacket(decapRules()[2], 10, decapHit, true);
  firstFragment[6] = 0x20;  // more fragments
  traffic.isDropped(withTtl(firstFragment, 99), 3, "fragmentedTunnel");
  // A tunnel in a tunnel: only one is taken off.
  const PacketBytes second = inIpv4({"10.2.2.2", "10.1.0.1"}, innerPacket(4, true));
  const PacketBytes both = inIpv4(outer, second);
  traffic.leaves(both, 3, "Ethernet31", "TUNNEL-A", asDecapsulated(both));
  const PacketBytes toDecap = inIpv4(outer, inIpv4({"10.2.2.2", "10.1.7.7"}, innerPacket(4, true)));
  traffic.isDropped(toDecap, 3, "nestedDecap");
  traffic.expectFrom(tunnels(), std::string(decapOn) + "route TUNNEL-A 10.1.7.0/24 decap\n");
}

TEST(Decapsulation, ARouteThatDecapsulatesTakesNoPacketThatIsNoTunnel) {
  OpenConfigBuilder configuration;
  configuration.vrf("DECAP").vrf("REPAIR").vrf("TUNNEL-A").intf("DEFAULT", "Ethernet1");
  addInnerRoutes(configuration, "TUNNEL-A", "Ethernet31");
  configuration.policy("all", {ruleOf(1, "", {}, toDecap("DECAP", "REPAIR", "TUNNEL-A"))},
                       {"Ethernet1"});
  ExpectedTraffic traffic;
  traffic.isDropped(ipv4Packet({"192.0.2.1", decapHit}), 1, "notATunnel");
  traffic.isDropped(ipv6Packet({"2001:db8::1", "2001:db8:5::1"}), 1, "notATunnel");
  const PacketBytes tunnel = inIpv4({"192.0.2.1", decapHit}, innerPacket(41, true));
  traffic.leaves(tunnel, 1, "Ethernet31", "TUNNEL-A", asDecapsulated(tunnel));
  traffic.expectFrom(configuration, std::string(decapOn) + "route DECAP 2001:db8:5::/48 decap\n");
}

}  // namespace
}  // namespace ZelAgent
