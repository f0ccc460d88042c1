// Destinations are moved one by one into another VRF while packets flow: none is lost, and none
// goes by a VRF that it does not belong to.
#include <gtest/gtest.h>

#include <memory>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/features/ChangeProbe.h"
#include "tests/agent/features/ForwardRun.h"

namespace ZelAgent {
namespace {

struct Destination {
  const char* family;
  const char* prefix;
  const char* address;
};

constexpr std::size_t destinationCount = 4;
constexpr Destination destinations[destinationCount] = {
    {"ipv4", "203.0.113.0/25", "203.0.113.1"},
    {"ipv4", "203.0.113.128/25", "203.0.113.129"},
    {"ipv6", "2001:db8:a::/48", "2001:db8:a::1"},
    {"ipv6", "2001:db8:b::/48", "2001:db8:b::1"},
};

PacketBytes packetTo(const Destination& destination, std::uint16_t number = 0) {
  if (std::string(destination.family) == "ipv4") {
    return ipv4Packet({"192.0.2.1", destination.address}, number);
  }
  return ipv6Packet({"2001:db8::1", destination.address}, number);
}

void addRoutes(OpenConfigBuilder& configuration, const char* vrf, const char* interface) {
  configuration.route(vrf, "203.0.113.0/24", interface).route(vrf, "2001:db8::/32", interface);
}

// How rules tell destinations that have not moved.
enum class Unmoved { byARuleIntoDefault, byNoRule };

std::vector<nlohmann::json> rulesOf(std::size_t moved, Unmoved unmoved, const char* vrf) {
  std::vector<nlohmann::json> rules;
  for (std::size_t i = 0; i < destinationCount; ++i) {
    if (i >= moved && unmoved == Unmoved::byNoRule) break;
    rules.push_back(ruleOf(static_cast<std::uint32_t>(10 * i + 10), destinations[i].family,
                           {{"destination-address", destinations[i].prefix}},
                           toVrf(i < moved ? vrf : "DEFAULT")));
  }
  return rules;
}

// The first `moved` destinations are in VRF-1.
OpenConfigBuilder configurationOf(std::size_t moved, Unmoved unmoved) {
  OpenConfigBuilder configuration;
  configuration.vrf("VRF-1").intf("DEFAULT", "Ethernet1");
  addRoutes(configuration, "DEFAULT", "Ethernet2");
  addRoutes(configuration, "VRF-1", "Ethernet3");
  configuration.policy("selection", rulesOf(moved, unmoved, "VRF-1"), {"Ethernet1"});
  return configuration;
}

const char* egressOf(std::size_t destination, std::size_t moved) {
  return destination < moved ? "Ethernet3" : "Ethernet2";
}

// An agent under traffic: at each probe a packet to each destination.
class Traffic final {
 public:
  explicit Traffic(const Configuration& configuration)
      : agent_(std::make_unique<ForwardingAgent>(16)) {
    agent_->apply(configuration);
  }

  // The egress of each destination ("drop REASON" for none), once per probe.
  using Ways = std::vector<std::vector<std::string>>;

  [[nodiscard]] std::vector<std::string> probe() {
    std::vector<std::string> ways;
    for (const Destination& destination : destinations) {
      const PacketBytes packet = packetTo(destination, number_++);
      const Chips::Verdict verdict = agent_->forwarder().forward("Ethernet1", packet);
      if (!verdict.drop) {
        EXPECT_EQ(verdict.packet, asForwarded(packet));
      }
      ways.push_back(verdict.drop ? "drop " + std::string(nameOf(*verdict.drop)) : verdict.egress);
    }
    return ways;
  }

  // What went where before, while and after the configuration was applied.
  [[nodiscard]] Ways change(const Configuration& next) {
    Ways ways{probe()};
    {
      const ChangeProbe during(*agent_, [&] { ways.push_back(probe()); });
      agent_->apply(next);
      EXPECT_GT(during.taken(), 0U);
    }
    ways.push_back(probe());
    return ways;
  }

  [[nodiscard]] ForwardingAgent& agent() { return *agent_; }
  [[nodiscard]] unsigned sent() const { return number_; }
  [[nodiscard]] std::uint64_t left() const {
    std::uint64_t packets = 0;
    for (const auto& [vrf, counter] : agent_->forwarder().vrfCounters())
      packets += counter.packets;
    return packets;
  }

 private:
  std::unique_ptr<ForwardingAgent> agent_;
  std::uint16_t number_ = 0;
};

// Each destination goes as before, until from some probe on it goes as after.
void expectOneMove(const Traffic::Ways& ways, std::size_t movedBefore, std::size_t movedAfter) {
  for (std::size_t i = 0; i < destinationCount; ++i) {
    const std::string before = egressOf(i, movedBefore);
    const std::string after = egressOf(i, movedAfter);
    EXPECT_EQ(ways.front()[i], before);
    EXPECT_EQ(ways.back()[i], after);
    bool hasMoved = false;
    for (const auto& way : ways) {
      hasMoved = hasMoved || way[i] != before;
      EXPECT_EQ(way[i], hasMoved ? after : before) << destinations[i].prefix;
    }
  }
}

class SelectionByPrefixTest : public ::testing::TestWithParam<Unmoved> {};

TEST_P(SelectionByPrefixTest, NoPacketIsLostWhileDestinationsMoveOneByOne) {
  Traffic traffic(configurationOf(0, GetParam()).configuration());
  for (std::size_t moved = 1; moved <= destinationCount; ++moved) {
    expectOneMove(traffic.change(configurationOf(moved, GetParam()).configuration()), moved - 1,
                  moved);
  }
  EXPECT_EQ(traffic.left(), traffic.sent());
}

TEST_P(SelectionByPrefixTest, NoPacketIsLostWhileDestinationsMoveBackOneByOne) {
  Traffic traffic(configurationOf(destinationCount, GetParam()).configuration());
  for (std::size_t moved = destinationCount; moved-- > 0;) {
    expectOneMove(traffic.change(configurationOf(moved, GetParam()).configuration()), moved + 1,
                  moved);
  }
  EXPECT_EQ(traffic.left(), traffic.sent());
}

TEST_P(SelectionByPrefixTest, NoPacketIsLostWhileAllMoveAtOnce) {
  Traffic traffic(configurationOf(0, GetParam()).configuration());
  expectOneMove(traffic.change(configurationOf(destinationCount, GetParam()).configuration()), 0,
                destinationCount);
  expectOneMove(traffic.change(configurationOf(0, GetParam()).configuration()), destinationCount,
                0);
  EXPECT_EQ(traffic.left(), traffic.sent());
}

TEST_P(SelectionByPrefixTest, TheBinaryForwardsEachDestinationByItsVrf) {
  std::string events;
  for (std::size_t moved = 0; moved <= destinationCount; ++moved) {
    SCOPED_TRACE(moved);
    std::vector<Sent> sent;
    Egress expected;
    std::map<std::string, unsigned> byVrf;
    std::map<unsigned, unsigned> byRule;
    for (std::uint16_t number = 0; number < 5; ++number) {
      for (std::size_t i = 0; i < destinationCount; ++i) {
        sent.push_back({"Ethernet1", packetTo(destinations[i], number)});
        expected[egressOf(i, moved)].push_back(asForwarded(sent.back().packet));
        ++byVrf[i < moved ? "VRF-1" : "default"];
        if (i < moved || GetParam() == Unmoved::byARuleIntoDefault)
          ++byRule[static_cast<unsigned>(10 * i + 10)];
      }
    }
    // Each time by way of all the changes before.
    const auto outcome = forwardThrough(configurationOf(0, GetParam()), events, sent);
    EXPECT_EQ(outcome.egress, expected);
    EXPECT_EQ(outcome.packetsByVrf(), byVrf);
    EXPECT_EQ(outcome.packetsByRule("Ethernet1"), byRule);
    EXPECT_EQ(outcome.packetsByDrop(), (std::map<std::string, unsigned>{}));
    if (moved == destinationCount) break;
    const std::string file = "moved-" + std::to_string(moved + 1) + ".json";
    writeFile(file, configurationOf(moved + 1, GetParam()).text());
    events += "config " + file + '\n';
  }
}

INSTANTIATE_TEST_SUITE_P(Each, SelectionByPrefixTest,
                         ::testing::Values(Unmoved::byARuleIntoDefault, Unmoved::byNoRule),
                         [](const auto& unmoved) {
                           return unmoved.param == Unmoved::byNoRule ? "UnmovedByNoRule"
                                                                     : "UnmovedByARule";
                         });

// A VRF, its routes and the rules into it come and go in one change.

OpenConfigBuilder withoutTheVrf() {
  OpenConfigBuilder configuration;
  configuration.intf("DEFAULT", "Ethernet1");
  addRoutes(configuration, "DEFAULT", "Ethernet2");
  configuration.policy("selection",
                       rulesOf(destinationCount, Unmoved::byARuleIntoDefault, "DEFAULT"),
                       {"Ethernet1"});
  return configuration;
}

TEST(SelectionByPrefix, NoPacketIsLostWhileTheVrfComesWithItsRules) {
  Traffic traffic(withoutTheVrf().configuration());
  expectOneMove(traffic.change(configurationOf(2, Unmoved::byARuleIntoDefault).configuration()), 0,
                2);
  EXPECT_EQ(traffic.left(), traffic.sent());
}

TEST(SelectionByPrefix, NoPacketIsLostWhileTheVrfGoesWithItsRules) {
  Traffic traffic(configurationOf(2, Unmoved::byARuleIntoDefault).configuration());
  expectOneMove(traffic.change(withoutTheVrf().configuration()), 2, 0);
  EXPECT_EQ(traffic.left(), traffic.sent());
}

TEST(SelectionByPrefix, NoPacketIsLostWhileRoutesAndRulesMoveTogether) {
  // Each VRF has routes only while rules send packets into it.
  const auto only = [](const char* vrf, const char* interface) {
    OpenConfigBuilder configuration;
    configuration.vrf("VRF-1").intf("DEFAULT", "Ethernet1");
    addRoutes(configuration, vrf, interface);
    configuration.policy("selection", rulesOf(destinationCount, Unmoved::byARuleIntoDefault, vrf),
                         {"Ethernet1"});
    return configuration.configuration();
  };
  Traffic traffic(only("DEFAULT", "Ethernet2"));
  expectOneMove(traffic.change(only("VRF-1", "Ethernet3")), 0, destinationCount);
  expectOneMove(traffic.change(only("DEFAULT", "Ethernet2")), destinationCount, 0);
  EXPECT_EQ(traffic.left(), traffic.sent());
}

}  // namespace
}  // namespace ZelAgent
