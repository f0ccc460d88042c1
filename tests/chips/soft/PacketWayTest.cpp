#include "chips/interface/PacketWay.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "testing/RandomSeed.h"
#include "tests/chips/soft/ForwardWorld.h"

namespace Chips {
namespace {

using PolicyMap::AclRule;
using PolicyMap::ActionType;
using PolicyMap::RuleAction;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

std::string shown(const Ip::Address& address) {
  std::ostringstream text;
  const char* separator = "";
  for (unsigned at = 0; at < Ip::addressBits(address.family) / 8; ++at) {
    text << separator << unsigned{address.bytes[at]};
    separator = ".";
  }
  return text.str();
}

std::string shown(const std::optional<RouteHit>& hit) {
  if (!hit) return "miss";
  constexpr const char* kinds[] = {"egress ", "drop", "decap"};
  std::ostringstream text;
  text << shown(hit->prefix.address) << "/" << unsigned{hit->prefix.length} << " "
       << kinds[static_cast<std::size_t>(hit->route->kind)] << hit->route->intf
       << (hit->exactMatch ? " exact" : "");
  return text.str();
}

// Writes each step on a line.
class WayJournal final : public PacketWay {
 public:
  using Lines = std::vector<std::string>;

  [[nodiscard]] const Lines& lines() const noexcept { return lines_; }

  void parsed(const PacketHeader& header) override {
    line("parsed ", shown(header.destination), " ttl ", unsigned{header.ttl});
  }
  void ruleTried(std::size_t place, const AclRule& rule,
                 std::optional<RuleField> difference) override {
    line("rule ", place, " ", rule.action.vrfName, " ",
         difference ? nameOf(*difference) : "matches");
  }
  void actionTaken(const RuleAction& action, std::optional<ResourceUse> resource) override {
    if (!resource) {
      line("action ", action.type);
    } else {
      line("action ", action.type, " resource ", resource->index, resource->stale ? " stale" : "");
    }
  }
  void ownVrfTaken(const L3::VrfName& vrf, OwnVrfReason reason) override {
    constexpr const char* reasons[] = {"no rule", "no action", "no post-decap VRF"};
    line("own ", vrf, ": ", reasons[static_cast<std::size_t>(reason)]);
  }
  void lookedUp(const VrfFacts& vrf, const Ip::Address& destination,
                const std::optional<RouteHit>& hit) override {
    line("look up ", shown(destination), " in ", vrf.name, "(", vrf.vrfId, "): ", shown(hit));
  }
  void wentOn(const VrfFacts& from, const VrfFacts& to, GoOnReason reason) override {
    constexpr const char* reasons[] = {"no route", "no id", "decap disabled"};
    line("on from ", from.name, " to ", to.name, ": ", reasons[static_cast<std::size_t>(reason)]);
  }
  void decapsulated(const PacketHeader& outer, const PacketHeader& arrived,
                    const PacketHeader& inner) override {
    line("decapsulated ", shown(inner.destination), " ttl ", unsigned{outer.ttl}, " ",
         unsigned{arrived.ttl}, "->", unsigned{inner.ttl}, " ecn ", unsigned{outer.ecn}, " ",
         unsigned{arrived.ecn}, "->", unsigned{inner.ecn});
  }
  void dropped(DropReason reason, std::string_view detail) override {
    line("dropped ", reason, detail.empty() ? "" : ": ", detail);
  }
  void left(const std::string& intf, const L3::VrfName& vrf, const PacketHeader& header) override {
    line("left by ", intf, " of ", vrf, " to ", shown(header.destination), " ttl ",
         unsigned{header.ttl});
  }

 private:
  template <class... Parts>
  void line(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    lines_.push_back(text.str());
  }

  Lines lines_;
};

class PacketWayTest : public ::testing::Test {
 protected:
  PacketWayTest() {
    for (const char* const vrf : {"default", "red", "blue", "green"})
      world_.vrfIs(vrf);
  }
  [[nodiscard]] WayJournal::Lines wayOf(const Bytes& packet) {
    WayJournal way;
    const Verdict verdict = world_.explain(packet, way);
    EXPECT_EQ(shown(verdict), shown(world_.forward(packet)));
    return way.lines();
  }
  [[nodiscard]] WayJournal::Lines wayOf(const TestPacket& packet) { return wayOf(packet.bytes()); }

  ForwardWorld world_;
};

TestPacket tunnel() {
  TestPacket inner;
  inner.destination = "10.9.9.9";
  inner.ttl = 7;
  inner.ecn = 2;
  TestPacket outer;
  outer.ecn = 3;
  return outer.around(inner);
}

using Lines = WayJournal::Lines;

TEST_F(PacketWayTest, OfAPacketThatNoRuleMatches) {
  AclRule rule = always(lookUpIn("red"));
  PolicyMap::AclMatch match;
  match.family = Ip::Family::v6;
  rule.match = match;
  world_.ruleIs("in", rule);
  world_.routeIs("default", "198.0.0.0/8", "out");
  EXPECT_EQ(wayOf(TestPacket()),
            (Lines{"parsed 198.51.100.1 ttl 64", "rule 0 red family", "own default: no rule",
                   "look up 198.51.100.1 in default(1): 198.0.0.0/8 egress out",
                   "left by out of default to 198.51.100.1 ttl 63"}));
}

TEST_F(PacketWayTest, TellsWhyEachRuleDoesNotMatchUpToTheFirstThatDoes) {
  for (const RuleField field : {RuleField::family, RuleField::protocol, RuleField::dscp,
                                RuleField::source, RuleField::destination}) {
    AclRule rule = always({ActionType::discard, {}, {}, {}});
    PolicyMap::AclMatch match;
    match.family = field == RuleField::family ? Ip::Family::v6 : Ip::Family::v4;
    if (field == RuleField::protocol) match.protocol = std::uint8_t{1};
    if (field == RuleField::dscp) match.dscps = 2;
    if (field == RuleField::source) match.source = prefix("1.0.0.0/8");
    if (field == RuleField::destination) match.destination = prefix("1.0.0.0/8");
    rule.match = match;
    world_.ruleIs("in", rule);
  }
  world_.ruleIs("in", always({ActionType::discard, {}, {}, {}}));
  world_.ruleIs("in", always(lookUpIn("red")));
  EXPECT_EQ(wayOf(TestPacket()),
            (Lines{"parsed 198.51.100.1 ttl 64", "rule 0  family", "rule 1  protocol",
                   "rule 2  dscp", "rule 3  source-address", "rule 4  destination-address",
                   "rule 5  matches", "action actionDiscard", "dropped discardedByRule"}));
}

TEST_F(PacketWayTest, ThroughATunnel) {
  world_.routes->decapNhEnabledIs(true);
  world_.vrfIs("tail");
  world_.fallbackIs("green", "tail");
  world_.routeIs("red", "198.51.100.1/32", "decap");
  world_.exactMatchLenIs("red", 32);
  world_.routeIs("tail", "10.0.0.0/8", "out");
  world_.ruleIs("in", always(decapsulateIn("red", "blue", "green")));
  EXPECT_EQ(
      wayOf(tunnel()),
      (Lines{"parsed 198.51.100.1 ttl 64", "rule 0 red matches", "action actionDecapVrf resource 1",
             "look up 198.51.100.1 in red(2): 198.51.100.1/32 decap exact",
             "decapsulated 10.9.9.9 ttl 64 7->64 ecn 3 2->3", "look up 10.9.9.9 in green(4): miss",
             "on from green to tail: no route",
             "look up 10.9.9.9 in tail(5): 10.0.0.0/8 egress out",
             "left by out of tail to 10.9.9.9 ttl 63"}));
}

TEST_F(PacketWayTest, OnToFallbacksWithTheReason) {
  world_.routes->decapNhFallbackEnabledIs(true);
  world_.fallbackIs("red", "unknown");
  world_.fallbackIs("unknown", "blue");
  world_.routeIs("red", "0.0.0.0/0", "decap");
  // "blue" is tried once, though both walks have it.
  world_.ruleIs("in", always(decapsulateIn("red", "blue", "")));
  world_.fallbackIs("blue", "green");
  ASSERT_EQ(world_.chip->updateVrf(resourceOf(decapsulateIn("red", "blue", ""))),
            ZelVrfSelectionPolicy::HwStatus());
  EXPECT_EQ(
      wayOf(TestPacket()),
      (Lines{"parsed 198.51.100.1 ttl 64", "rule 0 red matches", "action actionDecapVrf resource 1",
             "look up 198.51.100.1 in red(2): 0.0.0.0/0 decap",
             "on from red to unknown: decap disabled", "look up 198.51.100.1 in unknown(0): miss",
             "on from unknown to blue: no id", "look up 198.51.100.1 in blue(3): miss",
             "on from blue to green: no route", "look up 198.51.100.1 in green(4): miss",
             "dropped noRoute"}));
}

TEST_F(PacketWayTest, TellsOfStaleAndOfMissingResources) {
  world_.ruleIs("in", always(lookUpIn("red")));
  world_.routeIs("red", "0.0.0.0/0", "drop");
  world_.fallbackIs("red", "blue");
  EXPECT_EQ(wayOf(TestPacket()),
            (Lines{"parsed 198.51.100.1 ttl 64", "rule 0 red matches",
                   "action actionVrf resource 1 stale",
                   "look up 198.51.100.1 in red(2): 0.0.0.0/0 drop", "dropped dropRoute"}));
  world_.chip->deleteVrf(resourceOf(lookUpIn("red")));
  EXPECT_EQ(wayOf(TestPacket()), (Lines{"parsed 198.51.100.1 ttl 64", "rule 0 red matches",
                                        "action actionVrf", "dropped noVrfResource"}));
}

TEST_F(PacketWayTest, TellsWhyTheInterfacesOwnVrfIsTaken) {
  world_.routes->decapNhEnabledIs(true);
  world_.forwarder.intfVrfIs("in", "red");
  world_.routeIs("red", "198.51.100.0/24", "decap");
  world_.ruleIs("in", always({}));
  EXPECT_EQ(wayOf(tunnel()),
            (Lines{"parsed 198.51.100.1 ttl 64", "rule 0  matches", "action actionNone",
                   "own red: no action", "look up 198.51.100.1 in red(2): 198.51.100.0/24 decap",
                   "decapsulated 10.9.9.9 ttl 64 7->64 ecn 3 2->3", "own red: no post-decap VRF",
                   "look up 10.9.9.9 in red(2): miss", "dropped noRoute"}));
}

TEST_F(PacketWayTest, SaysWhatIsWrongWithAHeader) {
  Bytes bytes = TestPacket().bytes();
  bytes.pop_back();
  EXPECT_EQ(wayOf(bytes),
            (Lines{"dropped malformed: the total length is beyond the end of the packet"}));
  bytes = TestPacket().bytes();
  bytes[8] = 1;
  EXPECT_EQ(wayOf(bytes), (Lines{"dropped badChecksum"}));
  world_.routes->decapNhEnabledIs(true);
  world_.routeIs("default", "0.0.0.0/0", "decap");
  TestPacket packet = tunnel();
  packet.payload[10] ^= 1;
  EXPECT_EQ(wayOf(packet).back(), "dropped innerMalformed: the header checksum is wrong");
  packet = tunnel();
  packet.protocol = 41;
  EXPECT_EQ(wayOf(packet).back(),
            "dropped innerMalformed: the IP version is not that of the outer protocol");
}

// A chip with rules, routes and facts of few values, some of its resources stale, and packets that
// run into them.
class RandomWorld final {
 public:
  explicit RandomWorld(std::uint32_t seed) : random_(seed) {
    for (const char* const vrf : vrfs_)
      world_.vrfIs(vrf);
    world_.routes->decapNhEnabledIs(below(4) != 0);
    world_.routes->decapNhFallbackEnabledIs(below(2) == 0);
    for (int i = 0; i < 6; ++i)
      changeFacts();
    for (int i = 0; i < 20; ++i)
      addRoute();
    for (int i = 0; i < 12; ++i)
      addRule();
    for (int i = 0; i < 3; ++i)
      changeFacts();
    if (below(3) == 0) world_.forwarder.intfVrfIs("in", vrf());
  }

  Bytes packet() {
    TestPacket packet = plain();
    if (below(2) == 0) packet = plain("198.51.100.1").around(packet);
    if (below(8) == 0) packet = plain("198.51.100.1").around(packet);
    if (below(10) == 0) packet.fragmentWord = 0x2000;
    Bytes bytes = packet.bytes();
    if (below(8) == 0) bytes[below(bytes.size())] ^= 1;
    if (below(8) == 0) bytes.resize(below(bytes.size() + 8));
    return bytes;
  }

  ForwardWorld& world() noexcept { return world_; }

 private:
  static constexpr std::array vrfs_ = {"default", "red", "blue", "green"};

  unsigned below(std::size_t end) {
    return static_cast<unsigned>(std::uniform_int_distribution<std::size_t>(0, end - 1)(random_));
  }
  std::string vrf() { return vrfs_[below(vrfs_.size())]; }
  std::string destination() {
    constexpr std::array destinations = {"198.51.100.1", "10.0.0.1",    "10.1.0.1",
                                         "20.0.0.1",     "2001:db8::1", "2001:db9::1"};
    return destinations[below(destinations.size())];
  }
  TestPacket plain(const std::string& to) {
    TestPacket packet;
    packet.destination = to;
    if (address(to).family == Ip::Family::v6) packet.source = "2001:db8::ffff";
    packet.ttl = static_cast<std::uint8_t>(below(6) == 0 ? below(3) : 64);
    packet.ecn = static_cast<std::uint8_t>(below(4));
    packet.dscp = static_cast<std::uint8_t>(below(3));
    return packet;
  }
  TestPacket plain() { return plain(destination()); }
  void changeFacts() {
    switch (below(3)) {
      case 0:
        world_.fallbackIs(vrf(), vrf());
        break;
      case 1:
        world_.exactMatchLenIs(vrf(), static_cast<std::uint8_t>(8 + 8 * below(4)));
        break;
      default:
        world_.routes->decapNhEnabledIs(below(2) == 0);
    }
  }
  void addRoute() {
    constexpr std::array prefixes = {"198.51.100.0/24", "10.0.0.0/8", "10.1.0.0/16",  "0.0.0.0/0",
                                     "10.0.0.1/32",     "::/0",       "2001:db8::/32"};
    constexpr std::array targets = {"one", "two", "three", "decap", "decap", "drop"};
    world_.routeIs(vrf(), prefixes[below(prefixes.size())], targets[below(targets.size())]);
  }
  void addRule() {
    AclRule rule = always(action());
    if (below(3) != 0) {
      const Ip::Address to = address(destination());
      PolicyMap::AclMatch match;
      match.family = to.family;
      const unsigned length = below(Ip::addressBits(to.family) + 1);
      if (below(2) == 0)
        match.destination = {Ip::firstBits(to, length), static_cast<std::uint8_t>(length)};
      if (below(2) == 0) match.protocol = static_cast<std::uint8_t>(below(2) == 0 ? 4 : 17);
      if (below(2) == 0) match.dscps = below(8);
      rule.match = match;
    }
    if (below(8) == 0 && world_.chip->resource(resourceOf(rule.action)) == nullptr) {
      world_.ruleWithoutResourceIs("in", rule);
    } else {
      world_.ruleIs("in", rule);
    }
  }
  RuleAction action() {
    switch (below(6)) {
      case 0:
        return {};
      case 1:
        return {ActionType::discard, {}, {}, {}};
      case 2:
        return lookUpIn(vrf());
      default:
        return decapsulateIn(vrf(), vrf(), below(4) == 0 ? "" : vrf());
    }
  }

  std::mt19937 random_;
  ForwardWorld world_;
};

std::string lastOf(const Verdict& verdict) {
  return verdict.drop ? "dropped " + std::string(nameOf(*verdict.drop))
                      : "left by " + verdict.egress;
}

// All counters of the chip.
std::vector<PacketCounter> countersOf(const ForwardWorld& world) {
  std::vector<PacketCounter> counters;
  for (std::size_t place = 0; place < world.acl->rules("in").size(); ++place)
    counters.push_back(world.acl->counter("in", place));
  for (const auto& [vrf, counter] : world.forwarder.vrfCounters())
    counters.push_back(counter);
  for (std::size_t code = 0; code < dropReasons; ++code)
    counters.push_back(world.forwarder.dropCounter(static_cast<DropReason>(code)));
  return counters;
}

TEST(PacketWayAgrees, WithForwardingAndCountsNothing) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  std::array<unsigned, dropReasons> drops{};
  for (int round = 0; round < 300; ++round) {
    RandomWorld made(static_cast<std::uint32_t>(random()));
    ForwardWorld& world = made.world();
    for (int i = 0; i < 50; ++i) {
      const Bytes packet = made.packet();
      const Verdict unwatched = world.forward(packet);
      WayJournal way;
      const std::vector<PacketCounter> counted = countersOf(world);
      const Verdict watched = world.explain(packet, way);
      ASSERT_EQ(countersOf(world), counted);
      ASSERT_EQ(watched, unwatched);
      ASSERT_EQ(way.lines().back().rfind(lastOf(watched), 0), 0U) << way.lines().back();
      if (watched.drop) ++drops[static_cast<std::size_t>(*watched.drop)];
    }
  }
  // A VRF without an id and a closed interface are out of reach in these worlds.
  for (std::size_t code = 0; code < dropReasons; ++code) {
    const auto reason = static_cast<DropReason>(code);
    const bool isOut = reason == DropReason::noVrfId || reason == DropReason::intfClosed;
    EXPECT_EQ(drops[code] == 0, isOut) << reason;
  }
}

}  // namespace
}  // namespace Chips
