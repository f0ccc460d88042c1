#include <gtest/gtest.h>

#include <array>

#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"
#include "tests/chips/kernel/KernelTest.h"
#include "tests/chips/kernel/RandomPackets.h"

namespace KernelChip {
namespace {

using Chips::Bytes;
using ChipTables::RandomRules;
using PolicyMap::ActionType;
using PolicyMap::RuleAction;
using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

const std::vector<std::string> vrfs{"red", "blue", "green", "gray", "pink", "cyan"};
const std::vector<std::string> intfs{"in", "in5", "in6"};

// Rules, routes and resources of a random kind, the same for both chips.
class RandomWorld {
 public:
  RandomWorld(TwoChips& chips, std::uint32_t seed) : chips_(chips), random_(seed) {
    addFacts();
    addRoutes();
    addRules();
    decapIs();  // the resources keep what they were programmed with
    chips_.programsIs();
  }

  [[nodiscard]] const std::string& intf() { return intfs.at(random_.below(3)); }
  [[nodiscard]] Bytes packet() { return RandomPackets(random_).bytes(); }

 private:
  [[nodiscard]] const std::string& vrf() { return vrfs.at(random_.below(6)); }

  void addFacts() {
    for (const std::string& vrf : vrfs)
      chips_.soft.vrfIs(vrf);
    for (const std::string& vrf : vrfs) {
      if (random_.oneIn(2)) chips_.soft.fallbackIs(vrf, random_.oneIn(4) ? "noid" : this->vrf());
      for (const Ip::Family family : {Ip::Family::v4, Ip::Family::v6}) {
        if (random_.oneIn(2)) chips_.exactMatchLenIs(vrf, family, length(family));
      }
    }
    decapIs();
    for (std::size_t at = 0; at < intfs.size(); ++at) {
      const auto vlan = static_cast<std::uint16_t>(at == 0 ? 0 : 4 + at);
      chips_.intfIs(intfs[at], vlan, random_.oneIn(5) ? "noid" : vrf(), random_.oneIn(3));
    }
  }

  void decapIs() {
    chips_.soft.routes->decapNhEnabledIs(!random_.oneIn(4));
    chips_.soft.routes->decapNhFallbackEnabledIs(random_.oneIn(2));
  }

  void addRoutes() {
    static const std::vector<std::string> targets{"drop", "decap", "decap", "e0", "e1", "e2", "e3"};
    for (int i = 0; i < 200; ++i) {
      const Chips::PacketHeader header = random_.packet();
      const std::uint8_t length = this->length(header.family);
      const Ip::Address address = Ip::firstBits(header.destination, length);
      chips_.routeIs(vrf(), textOf(address) + "/" + std::to_string(length),
                     targets.at(random_.below(7)));
    }
  }

  void addRules() {
    for (int i = 0; i < 25; ++i) {
      const PolicyMap::AclRule rule{random_.match(), action()};
      chips_.ruleIs(intf(), rule, !random_.oneIn(6));
    }
  }

  [[nodiscard]] RuleAction action() {
    switch (random_.below(6)) {
      case 0:
        return {ActionType::none, {}, {}, {}};
      case 1:
        return {ActionType::discard, {}, {}, {}};
      case 2:
      case 3:
        return Chips::lookUpIn(vrf());
      default:
        return Chips::decapsulateIn(vrf(), random_.oneIn(3) ? "" : vrf(),
                                    random_.oneIn(3) ? "" : vrf());
    }
  }

  [[nodiscard]] std::uint8_t length(Ip::Family family) {
    static constexpr std::array<std::uint8_t, 7> lengths{0, 1, 8, 9, 16, 17, 31};
    if (random_.oneIn(3)) return static_cast<std::uint8_t>(Ip::addressBits(family));
    return lengths.at(random_.below(7));
  }

  TwoChips& chips_;
  RandomRules random_;
};

class DifferentialTest : public KernelTest {};

// A packet whose header one byte damaged can be for the link or a group. Those are the kernel's.
bool isTheKernels(const Outcome& outcome) {
  return outcome.verdict == "the kernel's, reason " + std::to_string(zelLocal);
}

TEST_F(DifferentialTest, BothChipsDoTheSameWithEveryPacket) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomWorld world(chips(), seed.value());
  std::map<std::string, int> verdicts;
  for (std::size_t round = 0; round < randomRounds(3000); ++round) {
    const std::string& intf = world.intf();
    const Bytes packet = world.packet();
    const Outcome kernel = chips().kernelOutcome(intf, packet);
    if (isTheKernels(kernel)) continue;
    const Outcome soft = chips().softOutcome(intf, packet);
    ++verdicts[soft.verdict];
    ASSERT_EQ(kernel.verdict, soft.verdict)
        << "packet " << round << ": " << ::testing::PrintToString(packet);
    ASSERT_EQ(kernel.packet, soft.packet) << "packet " << round;
  }
  EXPECT_GT(verdicts.size(), 3U) << "the packets share few fates";
  EXPECT_EQ(chips().kernelCounters(), chips().softCounters());
}

// The resource still decapsulates. The walk of the port would pass over the route.
TEST_F(DifferentialTest, ADecapsulatedPacketIsNotDecapsulatedAgain) {
  chips().soft.vrfIs("red");
  chips().soft.routes->decapNhEnabledIs(true);
  chips().soft.routes->decapNhFallbackEnabledIs(true);
  chips().intfIs("in", 0, "red", false);
  chips().routeIs("red", "10.0.0.0/8", "decap");
  chips().ruleIs("in", Chips::always(Chips::decapsulateIn("red", "", "")), true);
  chips().soft.routes->decapNhEnabledIs(false);
  chips().programsIs();
  Chips::TestPacket inner;
  inner.destination = "10.0.0.2";
  Chips::TestPacket outer;
  outer.destination = "10.0.0.1";
  const Bytes packet = outer.around(inner).bytes();
  EXPECT_EQ(chips().softOutcome("in", packet).verdict, "nestedDecap");
  EXPECT_EQ(chips().kernelOutcome("in", packet).verdict, "nestedDecap");
}

}  // namespace
}  // namespace KernelChip
