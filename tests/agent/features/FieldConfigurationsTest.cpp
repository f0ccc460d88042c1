// Configurations as the published test plans of the field have them, in `field/`. Each sends its
// packets where the plan says, or is refused with the leaf that the agent does not support.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/TestPackets.h"

namespace ZelAgent {
namespace {

std::string fieldFile(const std::string& name) {
  return std::string(ZEL_FIELD_DIR) + '/' + name + ".json";
}

// Addresses without a meaning of their own.
constexpr const char* anyone = "192.0.2.77";
constexpr const char* anywhere = "198.51.100.200";

struct Fields {
  const char* from = anyone;
  const char* to = anywhere;
  std::uint8_t dscp = 0;
  std::uint8_t ttl = 64;
};

HeaderText headerOf(const Fields& fields) {
  return {fields.from, fields.to, fields.dscp, notEct, fields.ttl};
}

PacketBytes v4(const Fields& fields = {}) {
  return ipv4Packet(headerOf(fields));
}

PacketBytes v6(Fields fields = {"2001:db8:77::7", "2001:db8:99::9"}) {
  if (fields.from == anyone) fields.from = "2001:db8:77::7";
  if (fields.to == anywhere) fields.to = "2001:db8:99::9";
  return ipv6Packet(headerOf(fields));
}

PacketBytes tunnel4(const Fields& fields = {}, const char* innerTo = anywhere) {
  return inIpv4(headerOf(fields), v4({.to = innerTo}));
}

PacketBytes tunnel6(const Fields& fields = {}, const char* innerTo = anywhere) {
  return inIpv4(headerOf(fields), v6({.to = innerTo}));
}

void append16(PacketBytes& bytes, unsigned number) {
  append(bytes, {static_cast<std::uint8_t>(number / 256), static_cast<std::uint8_t>(number % 256)});
}

PacketBytes udp(unsigned from, unsigned to) {
  PacketBytes payload;
  for (const unsigned word : {from, to, 8U, 0U})
    append16(payload, word);
  return ipv4PacketOf(headerOf({}), 17, payload);
}

PacketBytes udpOfIpv6(unsigned from, unsigned to) {
  constexpr std::size_t ports = 40;
  PacketBytes packet = v6();
  packet[ports] = static_cast<std::uint8_t>(from / 256);
  packet[ports + 1] = static_cast<std::uint8_t>(from % 256);
  packet[ports + 2] = static_cast<std::uint8_t>(to / 256);
  packet[ports + 3] = static_cast<std::uint8_t>(to % 256);
  return packet;
}

enum TcpFlag : std::uint8_t { fin = 1, syn = 2, rst = 4, psh = 8, ack = 16, ece = 64, cwr = 128 };

PacketBytes tcp(unsigned from, unsigned to, unsigned flags = syn) {
  PacketBytes payload;
  for (const unsigned word : {from, to, 0U, 1U, 0U, 0U, 0x5000U + flags, 1024U, 0U, 0U})
    append16(payload, word);
  return ipv4PacketOf(headerOf({}), 6, payload);
}

PacketBytes tcpWith(unsigned flags) {
  return tcp(40000, 179, flags);
}

enum class MoreFragments : std::uint8_t { no, yes };

// `offset` is in units of eight bytes.
PacketBytes fragment(PacketBytes packet, unsigned offset, MoreFragments more) {
  packet[6] = static_cast<std::uint8_t>((more == MoreFragments::yes ? 0x20U : 0U) + offset / 256);
  packet[7] = static_cast<std::uint8_t>(offset % 256);
  return withTtl(packet, packet[8]);  // a right checksum
}

struct Arrival {
  PacketBytes packet;
  // "INTERFACE by VRF", the same and "decapsulated", or "drop REASON".
  std::string outcome;
  std::string interface = "Ethernet1";
};

struct Plan {
  const char* name;  // of the file
  std::vector<Arrival> arrivals;
  const char* events = "";  // what a controller programs

  friend std::ostream& operator<<(std::ostream& stream, const Plan& plan) {
    return stream << plan.name;
  }
};

constexpr const char* selected = "Ethernet2.10 by VRF-10";
constexpr const char* alsoSelected = "Ethernet2.30 by VRF-30";
constexpr const char* unselected = "Ethernet2.20 by default";
constexpr const char* discarded = "drop discardedByRule";

constexpr const char* decapRoute = "route DECAP_TE_VRF 203.0.113.100/32 decap\ndecap-nh on\n";
constexpr const char* endsHere = "203.0.113.100";
constexpr const char* passesBy = "203.0.113.200";
constexpr const char* source111 = "198.51.100.111";
constexpr const char* source222 = "198.51.100.222";
constexpr const char* inner4 = "198.18.10.1";
constexpr const char* inner6 = "2001:db8:2::5";

const std::vector<Plan> plans{
    {"protocol-4",
     {{tunnel4(), selected},
      {tunnel6(), unselected},
      {v4(), unselected},
      {v6(), unselected},
      {tunnel4(), unselected, "Ethernet3"}}},
    {"protocol-4-from-source",
     {{tunnel4({.from = "198.18.0.1"}), selected},
      {tunnel4({.from = "198.18.0.2"}), unselected},
      {tunnel6({.from = "198.18.0.1"}), unselected},
      {v4({.from = "198.18.0.1"}), unselected}}},
    {"protocol-41",
     {{tunnel6(), selected}, {tunnel4(), unselected}, {v4(), unselected}, {v6(), unselected}}},
    {"any-ipv6", {{v6(), selected}, {v4(), unselected}, {tunnel6(), unselected}}},
    {"source-moves-between-rules",
     {{v4({.from = "198.18.7.9"}), selected},
      {v4({.from = "198.18.8.1"}), alsoSelected},
      {v4({.from = "198.19.255.255"}), alsoSelected},
      {v4({.from = "198.20.0.0"}), unselected}}},
    {"protocol-and-dscp",
     {{tunnel4({.dscp = 10}), selected},
      {tunnel4({.dscp = 20}), alsoSelected},
      {tunnel6({.dscp = 10}), alsoSelected},
      {tunnel6({.dscp = 20}), unselected},
      {tunnel4({.dscp = 30}), unselected},
      {tunnel4(), unselected},
      {v4({.dscp = 10}), unselected}}},
    {"dscp-sets-of-both-families",
     {{v4({.dscp = 18}), selected},
      {v6({.dscp = 10}), selected},
      {v4({.dscp = 28}), alsoSelected},
      {v6({.dscp = 20}), alsoSelected},
      {v4({.dscp = 11}), unselected},
      {v6(), unselected}}},
    {"traffic-engineering",
     {{tunnel4({source222, endsHere, 10}, inner4), "Ethernet2 by ENCAP_TE_VRF_A decapsulated"},
      {tunnel6({source111, endsHere, 28}, inner6), "Ethernet3 by ENCAP_TE_VRF_B decapsulated"},
      {tunnel4({source222, endsHere, 30}, inner4), "Ethernet8 by default decapsulated"},
      {tunnel4({source111, endsHere, 18}, anywhere), "Ethernet8 by default decapsulated"},
      {tunnel4({source222, passesBy, 10}, inner4), "Ethernet4 by TE_VRF_222"},
      {tunnel6({source111, passesBy, 20}, inner6), "Ethernet2 by TE_VRF_111"},
      {tunnel4({source111, passesBy}, inner4), "Ethernet2 by TE_VRF_111"},
      {tunnel4({source222, anywhere}, inner4), "drop noRoute"},
      {tunnel4({anyone, endsHere, 10}, inner4), "Ethernet8 by default"},
      {v4({.to = inner4, .dscp = 10}), "Ethernet2 by ENCAP_TE_VRF_A"},
      {v6({.to = inner6, .dscp = 20}), "Ethernet3 by ENCAP_TE_VRF_B"},
      {v4({.dscp = 18}), "Ethernet8 by default"},
      {v4({.to = inner4, .dscp = 30}), "Ethernet8 by default"}},
     decapRoute},
    {"decapsulation-of-one-source",
     {{tunnel4({source222, endsHere}, inner4), "Ethernet2 by ENCAP_TE_VRF_A decapsulated"},
      {tunnel4({source222, passesBy}, inner4), "Ethernet4 by TE_VRF_222"},
      {tunnel4({source111, endsHere}, inner4), "Ethernet8 by default"},
      {tunnel6({source222, endsHere}, inner6), "Ethernet8 by default"},
      {v4({source222, endsHere}), "Ethernet8 by default"}},
     decapRoute},
    {"decapsulation-into-the-default",
     {{tunnel4({.to = endsHere}, inner4), "Ethernet8 by default decapsulated"},
      {tunnel6({.to = endsHere}, inner6), "Ethernet8 by default decapsulated"},
      {tunnel4({.to = passesBy}, inner4), "Ethernet8 by default"},
      {v4({.to = passesBy}), "Ethernet8 by default"}},
     decapRoute},
    {"fallback-chain",
     {{v4({.to = "10.1.0.1", .dscp = 8}), "Ethernet2 by A"},
      {v4({.to = "10.2.0.1", .dscp = 8}), "Ethernet3 by B"},
      {v4({.to = "10.3.0.1", .dscp = 8}), "Ethernet8 by default"},
      {v4({.to = "10.1.0.1"}), "Ethernet8 by default"}}},
    {"fallback-loop",
     {{v4({.to = "10.1.0.1", .dscp = 8}), "Ethernet2 by A"},
      {v4({.to = "10.2.0.1", .dscp = 8}), "Ethernet3 by B"},
      {v4({.to = "10.3.0.1", .dscp = 8}), "drop noRoute"}}},
    {"fallback-of-the-ingress",
     {{v4({.to = "10.1.0.1"}), "Ethernet2 by CUSTOMER"},
      {v4({.to = "10.9.0.1"}), "Ethernet8 by default"},
      {v4({.to = "10.1.0.1"}), "Ethernet8 by default", "Ethernet3"}}},
    {"steering-out-of-a-vrf",
     {{v4({.to = "203.0.113.1", .dscp = 40}), "Ethernet8 by default"},
      {v4({.to = "203.0.113.1"}), "Ethernet2 by CUSTOMER"},
      {v4({.to = "203.0.113.1", .dscp = 20}), "Ethernet2 by CUSTOMER"},
      {v4({.dscp = 40}), "Ethernet2 by CUSTOMER"}}},
    {"steering-by-destination",
     {{v4({.to = "203.0.113.1"}), "Ethernet8 by default"},
      {v4({.to = "203.0.113.200"}), "Ethernet2 by CUSTOMER"},
      {v6({.to = "2001:db8:3::1"}), "Ethernet8 by default"},
      {v6({.to = "2001:db8:4::1"}), "Ethernet2 by CUSTOMER"},
      {v6({.to = "2001:db8:5::1"}), "Ethernet8 by default"}}},
    {"source-prefix-set",
     {{v4({.from = "198.18.0.9"}), selected},
      {v4({.from = "198.19.4.1"}), selected},
      {v4({.from = "198.19.5.1"}), unselected},
      {v4({.from = "198.18.1.9"}), unselected},
      {v4({.to = "198.18.0.9"}), unselected},
      {v6(), unselected}}},
    {"destination-prefix-set-of-ipv6",
     {{v6({.to = "2001:db8:10::1", .dscp = 46}), selected},
      {v6({.to = "2001:db8:20::1", .dscp = 46}), selected},
      {v6({.to = "2001:db8:20::2", .dscp = 46}), unselected},
      {v6({.to = "2001:db8:10::1"}), unselected},
      {v4({.dscp = 46}), unselected}}},
    {"prefix-set-and-time-to-live",
     {{v4({.to = "203.0.113.5", .ttl = 33}), selected},
      {v4({.to = "203.0.113.5", .ttl = 9}), discarded},
      {v4({.to = "203.0.113.5", .ttl = 34}), unselected},
      {v4({.to = anywhere, .ttl = 9}), unselected},
      {v6({.ttl = 9}), selected},
      {v6({.ttl = 33}), unselected}}},
    {"tcp-ports",
     {{tcp(40000, 443), selected},
      {tcp(40000, 444), unselected},
      {tcp(1023, 80), unselected},
      {tcp(1024, 80), alsoSelected},
      {tcp(2047, 80), alsoSelected},
      {tcp(2048, 80), unselected},
      {udp(40000, 443), unselected},
      {fragment(tcp(1024, 443), 1, MoreFragments::yes), unselected}}},
    {"port-sets",
     {{udp(9, 16384), selected},
      {udp(9, 16387), selected},
      {udp(9, 16386), unselected},
      {udp(9, 16388), unselected},
      {udp(9, 5004), selected},
      {udp(5004, 9), unselected},
      {udpOfIpv6(5004, 9), selected},
      {udpOfIpv6(9, 5004), unselected},
      {tcp(9, 5004), unselected}}},
    {"tcp-flags",
     {{tcpWith(syn | ack), selected},
      {tcpWith(syn | ack | psh), selected},
      {tcpWith(syn), unselected},
      {tcpWith(ack), unselected},
      {tcpWith(fin | ack), alsoSelected},
      {tcpWith(rst), alsoSelected},
      {tcpWith(0), unselected},
      {fragment(tcpWith(syn | ack), 5, MoreFragments::yes), unselected},
      {udp(40000, 179), unselected}}},
    {"tcp-sessions",
     {{tcpWith(syn), selected},
      {tcpWith(syn | ece | cwr), selected},
      {tcpWith(syn | ack), alsoSelected},
      {tcpWith(ack), alsoSelected},
      {tcpWith(rst), alsoSelected},
      {tcpWith(fin), unselected},
      {udp(40000, 179), unselected}}},
    {"fragments",
     {{fragment(v4(), 185, MoreFragments::yes), selected},
      {fragment(v4(), 369, MoreFragments::no), selected},
      {fragment(v4(), 740, MoreFragments::no), selected},
      {fragment(v4(), 184, MoreFragments::yes), unselected},
      {fragment(udp(9, 5004), 370, MoreFragments::yes), unselected},
      {fragment(udp(9, 5004), 0, MoreFragments::yes), alsoSelected},
      {udp(9, 5004), alsoSelected}}},
    {"fragments-by-name",
     {{fragment(udp(9, 5004), 7, MoreFragments::no), selected},
      {fragment(udp(9, 5004), 7, MoreFragments::yes), selected},
      // The model: "non-zero values of the fragment-offset field".
      {fragment(udp(9, 5004), 0, MoreFragments::yes), unselected},
      {udp(9, 5004), unselected},
      // ANY is "any valid fragment, including first fragment".
      {fragment(tcpWith(syn), 7, MoreFragments::no), alsoSelected},
      {fragment(tcpWith(syn), 0, MoreFragments::yes), alsoSelected},
      {tcpWith(syn), unselected}}},
    {"packet-length", {{v4(), selected}, {v6(), selected}, {tunnel4(), unselected}}},
    {"forwarding-policy",
     {{v4({.from = "198.18.0.5"}), selected},
      {v4({.from = "198.18.1.5"}), discarded},
      {v4(), unselected}}},
    {"both-policies-on-an-interface",
     {{tunnel4({.dscp = 46}), selected},
      {tunnel4({.from = "198.18.66.1"}), selected},
      {v4({.dscp = 46}), alsoSelected},
      {v4({.from = "198.18.66.1"}), discarded},
      {v4(), unselected},
      {tunnel4({.dscp = 46}), alsoSelected, "Ethernet3"},
      {tunnel4(), unselected, "Ethernet3"}}},
    {"counted-and-logged-rules",
     {{v4({.dscp = 46}), selected}, {v4({.dscp = 8}), discarded}, {v4(), unselected}}},
    {"exported-by-a-switch", {{tunnel4(), selected}, {v4(), unselected}}},
    {"update-of-a-management-protocol", {{tunnel4(), selected}, {v4(), unselected}}},
    {"members-at-the-top", {{tunnel4(), selected}, {v4(), unselected}}},
    {"interfaces-by-reference",
     {{v4(), selected, "Ethernet1.7"},
      {v4(), selected, "Ethernet3"},
      {v4(), unselected, "Ethernet1"},
      {v4(), unselected, "customer-seven"},
      {v4(), unselected, "trunk"}}},
    {"routes-of-several-steps",
     {{v4({.to = "203.0.113.1", .dscp = 8}), "Ethernet2 by A"},
      {v4({.to = "203.0.113.129", .dscp = 8}), "drop dropRoute"},
      {v4({.dscp = 8}), "drop noRoute"},
      {v4(), "Ethernet8 by default"},
      {v4({.to = "203.0.113.65"}), "drop dropRoute"}}},
    {"instance-that-is-not-enabled",
     {{v4({.dscp = 8}), "drop noVrfResource"},
      {v4({.dscp = 9}), "Ethernet3 by B"},
      {v4(), "Ethernet8 by default"}}},
};

// By which VRF a packet left, and whether it left its tunnel.
class Passage final : public Chips::PacketWay {
 public:
  void decapsulated(const Chips::PacketHeader& /*outer*/, const Chips::PacketHeader& /*arrived*/,
                    const Chips::PacketHeader& /*inner*/) override {
    decapsulated_ = true;
  }
  void dropped(Chips::DropReason reason, std::string_view /*detail*/) override {
    outcome_ = "drop " + std::string(nameOf(reason));
  }
  void left(const std::string& intf, const L3::VrfName& vrf,
            const Chips::PacketHeader& /*header*/) override {
    outcome_ = intf + " by " + std::string(vrf.bytes()) + (decapsulated_ ? " decapsulated" : "");
  }

  [[nodiscard]] const std::string& outcome() const { return outcome_; }

 private:
  bool decapsulated_ = false;
  std::string outcome_;
};

std::string testNameOf(std::string name) {
  for (auto dash = name.find('-'); dash != std::string::npos; dash = name.find('-'))
    name.replace(dash, 1, "_");
  return name;
}

class FieldPlanTest : public ::testing::TestWithParam<Plan> {};

TEST_P(FieldPlanTest, SendsEachPacketWhereThePlanSays) {
  const Plan& plan = GetParam();
  ForwardingAgent agent(Limits::chipResources);
  agent.apply(readOpenConfigFile(fieldFile(plan.name)).configuration);
  EventPlayer player(agent, {});
  forEachEvent(plan.events, "plan",
               [&](const EventPlace& /*place*/, const Event& event) { player.play(event); });
  int number = 0;
  for (const Arrival& arrival : plan.arrivals) {
    Passage passage;
    const Chips::Verdict verdict =
        agent.forwarder().explain(arrival.interface, arrival.packet, passage);
    EXPECT_EQ(passage.outcome(), arrival.outcome) << "packet " << ++number;
    EXPECT_EQ(agent.forwarder().forward(arrival.interface, arrival.packet), verdict)
        << "without a listener, packet " << number;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, FieldPlanTest, ::testing::ValuesIn(plans),
                         [](const auto& plan) { return testNameOf(plan.param.name); });

struct UnsupportedPlan {
  const char* name;
  const char* leaf;  // in the policies of the default instance

  friend std::ostream& operator<<(std::ostream& stream, const UnsupportedPlan& plan) {
    return stream << plan.name;
  }
};

const UnsupportedPlan unsupportedPlans[] = {
    {"next-hop-action", "rule[sequence-id=1]/action/config/next-hop"},
    {"gre-decapsulation-action", "rule[sequence-id=20]/action/config/decapsulate-gre"},
    {"ethertype-match", "rule[sequence-id=1]/l2"},
    {"flow-label-match", "rule[sequence-id=5]/ipv6/config/source-flow-label"},
};

class UnsupportedFieldPlanTest : public ::testing::TestWithParam<UnsupportedPlan> {};

TEST_P(UnsupportedFieldPlanTest, NamesTheOneThingThatIsNotSupported) {
  const std::string file = fieldFile(GetParam().name);
  const std::string start = file +
                            ": /network-instances/network-instance[name=DEFAULT]/"
                            "policy-forwarding/policies/policy[policy-id=vrf-selection]/rules/" +
                            GetParam().leaf + ": ";
  try {
    static_cast<void>(readOpenConfigFile(file));
    FAIL() << "it was read";
  } catch (const ConfigError& error) {
    const std::string text = error.what();
    EXPECT_EQ(text.substr(0, start.size()), start);
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, UnsupportedFieldPlanTest, ::testing::ValuesIn(unsupportedPlans),
                         [](const auto& plan) { return testNameOf(plan.param.name); });

TEST(FieldConfigurations, CountersAndLogsOfRulesAreNamedInAWarningEach) {
  const auto warnings = readOpenConfigFile(fieldFile("counted-and-logged-rules")).warnings;
  for (const std::string leaf :
       {"rule[sequence-id=1]/action/config/count: ", "rule[sequence-id=1]/action/config/log: ",
        "rule[sequence-id=2]/action/config/count: "}) {
    EXPECT_EQ(std::count_if(warnings.begin(), warnings.end(),
                            [&](const std::string& warning) {
                              return warning.find(leaf) != std::string::npos;
                            }),
              1)
        << leaf;
  }
  EXPECT_EQ(warnings.size(), 3U);
}

// Interfaces, protocols, instances and modules of others: at most one line for each.
TEST(FieldConfigurations, WhatASwitchExportsBesideIsAtMostOneWarningForEachThing) {
  const auto warnings = readOpenConfigFile(fieldFile("exported-by-a-switch")).warnings;
  EXPECT_EQ(std::set<std::string>(warnings.begin(), warnings.end()).size(), warnings.size());
  for (const std::string& warning : warnings) {
    EXPECT_EQ(warning.find("/rules/"), std::string::npos) << warning;
    EXPECT_EQ(warning.find("/state/"), std::string::npos) << warning;
  }
}

}  // namespace
}  // namespace ZelAgent
