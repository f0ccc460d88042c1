#include "chips/soft/SoftAclHelper.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "chips/interface/RuleField.h"
#include "testing/RandomSeed.h"
#include "tests/chips/packet/TestPacket.h"

namespace Chips {
namespace {

using Classification::PrefixSet;
using PolicyMap::AclMatch;
using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::ActionType;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

const Velo::String eth1("Ethernet1");
const Velo::String eth2("Ethernet2");

// A rule that is told from others by its VRF, and matches one protocol.
AclRule ruleOf(const char* vrf, std::uint8_t protocol) {
  AclMatch match;
  match.family = Ip::Family::v4;
  match.protocol = protocol;
  return {match, {ActionType::vrf, vrf, {}, {}}};
}

PacketHeader headerOf(std::uint8_t protocol) {
  PacketHeader header;
  header.protocol = protocol;
  return header;
}

class SoftAclHelperTest : public ::testing::Test {
 protected:
  void add(const Velo::String& intf, std::size_t place, const AclRule& rule) {
    EXPECT_EQ(acl_->addRule(intf, place, rule), AclResult());
  }
  void addThree() {
    add(eth1, 0, ruleOf("a", 1));
    add(eth1, 1, ruleOf("b", 2));
    add(eth1, 2, ruleOf("c", 3));
  }
  // The VRFs of the rules of an interface, and how many packets each rule has counted.
  [[nodiscard]] std::string shown(const Velo::String& intf) const {
    std::ostringstream text;
    const auto& rules = acl_->rules(intf);
    for (std::size_t place = 0; place < rules.size(); ++place)
      text << rules[place].action.vrfName << acl_->counter(intf, place).packets << ' ';
    return text.str();
  }

  Mox::Ptr<SoftAclHelper> acl_ = Mox::makeActivePtr<SoftAclHelper>(Velo::String("acl"), 4U);
};

TEST_F(SoftAclHelperTest, IsEmptyAtFirst) {
  EXPECT_EQ(acl_->nameString(), Velo::String("acl"));
  EXPECT_EQ(acl_->capacity(), 4U);
  EXPECT_EQ(acl_->rulesInUse(), 0U);
  EXPECT_TRUE(acl_->rules(eth1).empty());
  EXPECT_TRUE(acl_->intfs().empty());
  EXPECT_EQ(acl_->classify(eth1, headerOf(1)), std::nullopt);
}

TEST_F(SoftAclHelperTest, PutsRulesWhereTheyAreAskedFor) {
  add(eth1, 0, ruleOf("b", 2));
  add(eth1, 0, ruleOf("a", 1));
  add(eth1, 2, ruleOf("d", 4));
  add(eth1, 2, ruleOf("c", 3));
  EXPECT_EQ(shown(eth1), "a0 b0 c0 d0 ");
  EXPECT_EQ(acl_->rulesInUse(), 4U);
}

TEST_F(SoftAclHelperTest, KeepsTheListsOfInterfacesApart) {
  add(eth2, 0, ruleOf("b", 2));
  add(eth1, 0, ruleOf("a", 1));
  EXPECT_EQ(acl_->intfs(), (std::vector<Velo::String>{eth1, eth2}));
  EXPECT_EQ(acl_->classify(eth1, headerOf(1)), 0U);
  EXPECT_EQ(acl_->classify(eth2, headerOf(1)), std::nullopt);
  acl_->removeRule(eth1, 0);
  EXPECT_EQ(acl_->intfs(), (std::vector<Velo::String>{eth2}));
  EXPECT_EQ(acl_->rulesInUse(), 1U);
}

TEST_F(SoftAclHelperTest, RefusesWhatThereIsNoRoomFor) {
  addThree();
  add(eth2, 0, ruleOf("x", 1));
  const AclResult refused = acl_->addRule(eth2, 0, ruleOf("y", 1));
  EXPECT_FALSE(refused.accepted);
  EXPECT_EQ(
      refused.reason.str(),
      "the rules do not fit into the 4 rule entries of the chip; remove rules or interfaces of "
      "a policy");
  EXPECT_EQ(shown(eth2), "x0 ");
  EXPECT_EQ(acl_->rulesInUse(), 4U);
  acl_->removeRule(eth1, 1);
  add(eth2, 0, ruleOf("y", 1));
  EXPECT_EQ(shown(eth2), "y0 x0 ");
}

TEST_F(SoftAclHelperTest, ARefusalMakesNoInterfaceKnown) {
  acl_->capacityIs(0);
  EXPECT_FALSE(acl_->addRule(eth1, 0, ruleOf("a", 1)).accepted);
  EXPECT_TRUE(acl_->intfs().empty());
}

TEST_F(SoftAclHelperTest, ALowerCapacityTakesNoRuleAway) {
  addThree();
  acl_->capacityIs(1);
  EXPECT_EQ(acl_->rulesInUse(), 3U);
  EXPECT_FALSE(acl_->addRule(eth1, 0, ruleOf("d", 4)).accepted);
  acl_->capacityIs(4);
  EXPECT_TRUE(acl_->addRule(eth1, 0, ruleOf("d", 4)).accepted);
}

TEST_F(SoftAclHelperTest, ReplacesAnActionWithoutRoomForAnother) {
  addThree();
  acl_->capacityIs(3);
  acl_->count(eth1, 1, 100);
  AclRule rule = acl_->rules(eth1)[1];
  const auto place = acl_->classify(eth1, headerOf(2));
  rule.action.vrfName = "other";
  EXPECT_EQ(acl_->replaceRule(eth1, 1, rule), AclResult());
  EXPECT_EQ(acl_->rules(eth1)[1], rule);
  EXPECT_EQ(acl_->counter(eth1, 1), PacketCounter()) << "it is another rule";
  EXPECT_EQ(acl_->classify(eth1, headerOf(2)), place);
  EXPECT_EQ(acl_->rulesInUse(), 3U);
}

TEST_F(SoftAclHelperTest, AClosedInterfaceNeedsNoRule) {
  acl_->capacityIs(0);
  EXPECT_FALSE(acl_->intfClosed(eth1));
  acl_->intfClosedIs(eth1, true);
  EXPECT_TRUE(acl_->intfClosed(eth1));
  EXPECT_FALSE(acl_->intfClosed(eth2));
  EXPECT_EQ(acl_->intfs(), (std::vector<Velo::String>{eth1}));
  acl_->intfClosedIs(eth1, false);
  EXPECT_TRUE(acl_->intfs().empty());
}

TEST_F(SoftAclHelperTest, AnInterfaceStaysClosedWhenItsRulesGo) {
  addThree();
  acl_->intfClosedIs(eth1, true);
  for (int rule = 0; rule < 3; ++rule)
    acl_->removeRule(eth1, 0);
  EXPECT_TRUE(acl_->intfClosed(eth1));
  addThree();
  acl_->intfClosedIs(eth1, false);
  EXPECT_EQ(acl_->rules(eth1).size(), 3U);
}

TEST_F(SoftAclHelperTest, RemembersTheMostRulesThatWereInUse) {
  addThree();
  acl_->removeRule(eth1, 0);
  EXPECT_EQ(acl_->mostRulesInUse(), 3U);
  add(eth1, 0, ruleOf("a", 1));
  EXPECT_EQ(acl_->mostRulesInUse(), 3U);
  add(eth1, 0, ruleOf("d", 4));
  EXPECT_EQ(acl_->mostRulesInUse(), 4U);
}

TEST_F(SoftAclHelperTest, CountsByRule) {
  addThree();
  acl_->count(eth1, 1, 100);
  acl_->count(eth1, 1, 50);
  EXPECT_EQ(acl_->counter(eth1, 1), (PacketCounter{2, 150}));
  EXPECT_EQ(shown(eth1), "a0 b2 c0 ");
  acl_->countersReset();
  EXPECT_EQ(shown(eth1), "a0 b0 c0 ");
}

TEST_F(SoftAclHelperTest, ARuleKeepsItsCounterWhereverItIsMoved) {
  addThree();
  acl_->count(eth1, 0, 1);
  for (int i = 0; i < 2; ++i)
    acl_->count(eth1, 1, 1);
  for (int i = 0; i < 3; ++i)
    acl_->count(eth1, 2, 1);
  acl_->moveRule(eth1, 0, 2);
  EXPECT_EQ(shown(eth1), "b2 c3 a1 ");
  acl_->moveRule(eth1, 1, 0);
  EXPECT_EQ(shown(eth1), "c3 b2 a1 ");
  acl_->moveRule(eth1, 1, 1);
  EXPECT_EQ(shown(eth1), "c3 b2 a1 ");
  add(eth1, 1, ruleOf("d", 4));
  EXPECT_EQ(shown(eth1), "c3 d0 b2 a1 ");
  acl_->removeRule(eth1, 0);
  EXPECT_EQ(shown(eth1), "d0 b2 a1 ");
}

TEST_F(SoftAclHelperTest, TheFirstMatchingRuleDecides) {
  AclRule every;
  add(eth1, 0, ruleOf("a", 1));
  add(eth1, 1, every);
  add(eth1, 2, ruleOf("c", 2));
  EXPECT_EQ(acl_->classify(eth1, headerOf(1)), 0U);
  EXPECT_EQ(acl_->classify(eth1, headerOf(2)), 1U);
  acl_->moveRule(eth1, 2, 0);
  EXPECT_EQ(acl_->classify(eth1, headerOf(2)), 0U);
  EXPECT_EQ(acl_->classify(eth1, headerOf(1)), 1U);
  acl_->removeRule(eth1, 2);
  EXPECT_EQ(acl_->classify(eth1, headerOf(3)), std::nullopt);
  EXPECT_EQ(acl_->classify(eth1, headerOf(1)), 1U);
}

// Rules that overlap much, of few values and prefixes of few addresses.
class RandomRules final {
 public:
  explicit RandomRules(std::uint32_t seed) : random_(seed) {}

  unsigned below(std::size_t end) {
    return static_cast<unsigned>(std::uniform_int_distribution<std::size_t>(0, end - 1)(random_));
  }

  AclRule rule() {
    AclMatch match;
    if (below(20) == 0) return {match, {}};
    match.family = below(2) == 0 ? Ip::Family::v4 : Ip::Family::v6;
    if (below(3) == 0) match.protocol = protocol();
    if (below(3) == 0) {
      std::uint64_t dscps = 0;  // none stays possible: such a rule matches nothing
      for (unsigned i = below(4); i > 0; --i)
        dscps |= std::uint64_t{1} << dscp();
      match.dscps = dscps;
    }
    if (below(4) != 0) match.source = prefix(*match.family);
    if (below(4) != 0) match.destination = prefix(*match.family);
    if (below(3) == 0) match.sourceSet = prefixSet(*match.family);
    if (below(3) == 0) match.destinationSet = prefixSet(*match.family);
    if (below(6) == 0) match.hopLimit = number();
    if (below(8) == 0) match.length = number();
    if (below(6) == 0) match.isFragment = true;
    if (below(6) == 0) match.fragmentOffsets = ranges();
    if (below(3) == 0) match.sourcePorts = ranges();
    if (below(3) == 0) match.destinationPorts = ranges();
    for (unsigned count = below(4) == 0 ? below(3) : 0; count > 0; --count) {
      const unsigned mask = below(256);
      match.tcpFlags.push_back(
          {static_cast<std::uint8_t>(mask), static_cast<std::uint8_t>(below(256) & mask)});
    }
    match.matchesLaterFragments = below(2) == 0;
    return {match, {}};
  }

  PacketHeader header() {
    PacketHeader header;
    header.family = below(2) == 0 ? Ip::Family::v4 : Ip::Family::v6;
    header.source = address(header.family);
    header.destination = address(header.family);
    header.protocol = protocol();
    header.dscp = dscp();
    header.ttl = number();
    header.totalLength = below(10) == 0 ? 65540 : number();
    if (below(3) == 0) header.fragment = {number(), below(2) == 0};
    if (header.fragment.offset != 0 || below(4) == 0) return header;
    header.ports = {number(), number()};
    if (below(2) == 0) header.tcpFlags = static_cast<std::uint8_t>(below(256));
    return header;
  }

 private:
  // Few numbers, with the ends of ranges and their neighbours among them.
  std::uint8_t number() { return static_cast<std::uint8_t>(below(12)); }
  std::vector<PolicyMap::NumberRange> ranges() {
    std::vector<PolicyMap::NumberRange> ranges;
    for (unsigned count = below(4); count > 0; --count) {
      const std::uint16_t first = number();
      const unsigned last = below(8) == 0 ? 65535U : first + below(4);
      ranges.push_back({first, static_cast<std::uint16_t>(last)});
    }
    return ranges;
  }
  // Prefixes and exclusions within each other. Some sets are of several rules.
  PrefixSet prefixSet(Ip::Family family) {
    std::vector<PrefixSet>& sets = family == Ip::Family::v4 ? setsV4_ : setsV6_;
    if (!sets.empty() && below(2) == 0) return sets[below(sets.size())];
    PrefixSet set;
    for (unsigned count = below(4); count > 0; --count)
      set.prefixes.push_back(prefix(family));
    for (unsigned count = below(3); count > 0; --count)
      set.excluded.push_back(prefix(family));
    sets.push_back(set);
    return set;
  }
  std::uint8_t protocol() { return static_cast<std::uint8_t>(std::array{0, 4, 41, 255}[below(4)]); }
  std::uint8_t dscp() { return static_cast<std::uint8_t>(std::array{0, 1, 46, 63}[below(4)]); }
  Ip::Address address(Ip::Family family) {
    Ip::Address address;
    address.family = family;
    for (unsigned at = 0; at < Ip::addressBits(family) / 8; ++at)
      address.bytes[at] = below(8) == 0 ? static_cast<std::uint8_t>(below(256)) : 0;
    return address;
  }
  Ip::Prefix prefix(Ip::Family family) {
    const unsigned length = below(Ip::addressBits(family) + 1);
    return {Ip::firstBits(address(family), length), static_cast<std::uint8_t>(length)};
  }

  std::mt19937 random_;
  std::vector<PrefixSet> setsV4_;
  std::vector<PrefixSet> setsV6_;
};

std::optional<std::size_t> linearScan(const SoftAclHelper::Rules& rules,
                                      const PacketHeader& header) {
  for (std::size_t place = 0; place < rules.size(); ++place) {
    if (!firstDifference(*rules[place].match, header)) return place;
  }
  return std::nullopt;
}

void changeRules(SoftAclHelper& acl, RandomRules& random) {
  const std::size_t count = acl.rules(eth1).size();
  switch (count == 0 ? 0 : random.below(4)) {
    case 1:
      acl.removeRule(eth1, random.below(count));
      break;
    case 2:
      acl.moveRule(eth1, random.below(count), random.below(count));
      break;
    default:
      EXPECT_TRUE(acl.addRule(eth1, random.below(count + 1), random.rule()).accepted);
  }
}

void expectLikeLinearScan(const SoftAclHelper& acl, RandomRules& random, int packets) {
  for (int i = 0; i < packets; ++i) {
    const PacketHeader header = random.header();
    ASSERT_EQ(acl.classify(eth1, header), linearScan(acl.rules(eth1), header));
  }
}

TEST(ClassifyLikeALinearScan, AfterEachOfManyChanges) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomRules random(seed.value());
  const auto acl = Mox::makeActivePtr<SoftAclHelper>(Velo::String("acl"), 100000U);
  for (int change = 0; change < 400; ++change) {
    changeRules(*acl, random);
    expectLikeLinearScan(*acl, random, 20);
    if (HasFatalFailure()) return;
  }
}

TEST(ClassifyLikeALinearScan, OnManyRules) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomRules random(seed.value());
  const auto acl = Mox::makeActivePtr<SoftAclHelper>(Velo::String("acl"), 100000U);
  while (acl->rulesInUse() < 2000) {
    const AclRule rule = random.rule();
    if (!rule.match->source || !rule.match->destination) continue;
    ASSERT_TRUE(acl->addRule(eth1, acl->rulesInUse(), rule).accepted);
  }
  expectLikeLinearScan(*acl, random, 2000);
}

}  // namespace
}  // namespace Chips
