// One rule on the outer header sends tunnels into VRF-10; everything else stays in the default VRF.
#include <gtest/gtest.h>

#include <functional>

#include "tests/agent/features/ForwardRun.h"

namespace ZelAgent {
namespace {

constexpr const char* theSource = "198.18.0.1";
constexpr const char* otherSource = "198.18.0.2";
constexpr const char* inVrf10 = "203.0.113.1";
constexpr const char* inDefault = "198.51.100.1";

struct Flow {
  const char* name;
  unsigned protocol;  // of the outer header
  const char* source;
  const char* destination;
  PacketBytes (*packet)(const Flow& flow, std::uint16_t number);

  [[nodiscard]] bool isToVrf10() const { return std::string(destination) == inVrf10; }
};

PacketBytes ipv4InIpv4(const Flow& flow, std::uint16_t number) {
  return inIpv4({flow.source, flow.destination},
                ipv4Packet({"192.0.2.1", "192.0.2.2", 10, ect0, 33}, number));
}

PacketBytes ipv6InIpv4(const Flow& flow, std::uint16_t number) {
  return inIpv4({flow.source, flow.destination},
                ipv6Packet({"2001:db8::1", "2001:db8::2", 10, ect0, 33}, number));
}

PacketBytes nativeIpv4(const Flow& flow, std::uint16_t number) {
  return ipv4Packet({flow.source, flow.destination}, number);
}

PacketBytes nativeIpv6(const Flow& flow, std::uint16_t number) {
  return ipv6Packet({flow.source, flow.destination}, number);
}

const std::vector<Flow> flows{
    {"Ipv4FromTheSourceToVrf10", 4, theSource, inVrf10, ipv4InIpv4},
    {"Ipv4FromTheSourceToDefault", 4, theSource, inDefault, ipv4InIpv4},
    {"Ipv4FromAnotherToVrf10", 4, otherSource, inVrf10, ipv4InIpv4},
    {"Ipv4FromAnotherToDefault", 4, otherSource, inDefault, ipv4InIpv4},
    {"Ipv6FromTheSourceToVrf10", 41, theSource, inVrf10, ipv6InIpv4},
    {"Ipv6FromTheSourceToDefault", 41, theSource, inDefault, ipv6InIpv4},
    {"Ipv6FromAnotherToVrf10", 41, otherSource, inVrf10, ipv6InIpv4},
    {"Ipv6FromAnotherToDefault", 41, otherSource, inDefault, ipv6InIpv4},
    {"NativeIpv4", 17, theSource, inDefault, nativeIpv4},
    {"NativeIpv6", 17, "2001:db8:1::1", "2001:db8:2::1", nativeIpv6},
};

struct SelectionPolicy {
  const char* name;
  Leaves match;
  std::function<bool(const Flow&)> selects;

  friend std::ostream& operator<<(std::ostream& stream, const SelectionPolicy& policy) {
    return stream << policy.name;
  }
};

const std::vector<SelectionPolicy> policies{
    {"Protocol4", {{"protocol", 4}}, [](const Flow& flow) { return flow.protocol == 4; }},
    {"Protocol4FromTheSource",
     {{"protocol", "openconfig-packet-match-types:IP_IN_IP"},
      {"source-address", std::string(theSource) + "/32"}},
     [](const Flow& flow) { return flow.protocol == 4 && flow.source == std::string(theSource); }},
    {"Protocol41", {{"protocol", 41}}, [](const Flow& flow) { return flow.protocol == 41; }},
    {"Protocol41FromTheSource",
     {{"protocol", 41}, {"source-address", std::string(theSource) + "/32"}},
     [](const Flow& flow) { return flow.protocol == 41 && flow.source == std::string(theSource); }},
};

constexpr unsigned packetsPerFlow = 7;

// Packets of all flows, taking turns.
std::vector<Sent> trafficOf(const std::vector<Flow>& some) {
  std::vector<Sent> sent;
  for (std::uint16_t number = 0; number < packetsPerFlow; ++number) {
    for (const Flow& flow : some)
      sent.push_back({"Ethernet1", flow.packet(flow, number)});
  }
  return sent;
}

OpenConfigBuilder vrfsOf(const SelectionPolicy& policy) {
  OpenConfigBuilder configuration;
  configuration.vrf("VRF-10").intf("DEFAULT", "Ethernet1");
  configuration.policy("selection", {ruleOf(1, "ipv4", policy.match, toVrf("VRF-10"))},
                       {"Ethernet1"});
  return configuration;
}

class BaseSelectionTest : public ::testing::TestWithParam<SelectionPolicy> {
 protected:
  // What the rule takes of the traffic, of one interface.
  static nlohmann::json taken() {
    unsigned packets = 0;
    std::size_t bytes = 0;
    for (const Sent& one : trafficOf(selected())) {
      ++packets;
      bytes += one.packet.size();
    }
    return {{"packets", packets}, {"bytes", bytes}};
  }

  static std::vector<Flow> selected() {
    std::vector<Flow> some;
    for (const Flow& flow : flows)
      if (GetParam().selects(flow)) some.push_back(flow);
    return some;
  }
};

TEST_P(BaseSelectionTest, EachFlowIsForwardedByItsVrfOnly) {
  auto configuration = vrfsOf(GetParam());
  configuration.route("VRF-10", "203.0.113.0/24", "Ethernet10");
  configuration.route("DEFAULT", "198.51.100.0/24", "Ethernet2")
      .route("DEFAULT", "2001:db8:2::/48", "Ethernet2");
  const auto outcome = forwardThrough(configuration, "", trafficOf(flows));
  Egress expected;
  std::map<std::string, unsigned> byVrf;
  unsigned unrouted = 0;
  for (std::uint16_t number = 0; number < packetsPerFlow; ++number) {
    for (const Flow& flow : flows) {
      const bool isSelected = GetParam().selects(flow);
      if (isSelected != flow.isToVrf10()) {
        ++unrouted;
        continue;
      }
      expected[isSelected ? "Ethernet10" : "Ethernet2"].push_back(
          asForwarded(flow.packet(flow, number)));
      ++byVrf[isSelected ? "VRF-10" : "default"];
    }
  }
  EXPECT_EQ(outcome.egress, expected);
  EXPECT_EQ(outcome.rule("Ethernet1", 1), taken());
  EXPECT_EQ(outcome.packetsByVrf(), byVrf);
  EXPECT_EQ(outcome.packetsByDrop(), (std::map<std::string, unsigned>{{"noRoute", unrouted}}));
}

TEST_P(BaseSelectionTest, NothingIsLostWhereBothVrfsHaveARoute) {
  auto configuration = vrfsOf(GetParam());
  for (const char* const everything : {"0.0.0.0/0", "::/0"}) {
    configuration.route("VRF-10", everything, "Ethernet10");
    configuration.route("DEFAULT", everything, "Ethernet2");
  }
  const auto sent = trafficOf(flows);
  const auto outcome = forwardThrough(configuration, "", sent);
  Egress expected;
  for (std::uint16_t number = 0; number < packetsPerFlow; ++number) {
    for (const Flow& flow : flows) {
      expected[GetParam().selects(flow) ? "Ethernet10" : "Ethernet2"].push_back(
          asForwarded(flow.packet(flow, number)));
    }
  }
  EXPECT_EQ(outcome.egress, expected);
  EXPECT_EQ(outcome.packetsOut(), sent.size());
  EXPECT_EQ(outcome.packetsByDrop(), (std::map<std::string, unsigned>{}));
  EXPECT_EQ(outcome.rule("Ethernet1", 1), taken());
}

TEST_P(BaseSelectionTest, AnInterfaceWithoutThePolicyIsNotSelectedFrom) {
  auto configuration = vrfsOf(GetParam());
  configuration.intf("DEFAULT", "Ethernet3");
  configuration.route("VRF-10", "0.0.0.0/0", "Ethernet10");
  configuration.route("DEFAULT", "0.0.0.0/0", "Ethernet2").route("DEFAULT", "::/0", "Ethernet2");
  std::vector<Sent> sent = trafficOf(flows);
  Egress expected;
  for (Sent& one : sent) {
    one.interface = "Ethernet3";
    expected["Ethernet2"].push_back(asForwarded(one.packet));
  }
  const auto outcome = forwardThrough(configuration, "", sent);
  EXPECT_EQ(outcome.egress, expected);
  EXPECT_EQ(outcome.rule("Ethernet1", 1), (nlohmann::json{{"packets", 0}, {"bytes", 0}}));
}

INSTANTIATE_TEST_SUITE_P(Each, BaseSelectionTest, ::testing::ValuesIn(policies),
                         [](const auto& policy) { return std::string(policy.param.name); });

}  // namespace
}  // namespace ZelAgent
