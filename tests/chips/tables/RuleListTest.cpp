#include "chips/tables/RuleList.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "chips/soft/SoftAclHelper.h"
#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"
#include "tests/chips/packet/TestPacket.h"
#include "tests/chips/tables/ClassifierWorld.h"
#include "tests/chips/tables/RandomRules.h"

namespace ChipTables {
namespace {

using Chips::PacketHeader;
using Chips::prefix;
using PolicyMap::AclMatch;
using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

AclMatch toPort(std::uint16_t port) {
  AclMatch match;
  match.family = Ip::Family::v4;
  match.destinationPorts = {{port, port}};
  return match;
}

AclMatch toPrefix(const std::string& text) {
  AclMatch match;
  match.family = Ip::Family::v4;
  match.destination = prefix(text);
  return match;
}

ZelPacketFields packetTo(const std::string& address, std::uint16_t port = 80) {
  PacketHeader header;
  header.destination = Chips::address(address);
  header.ports = {1, port};
  return fieldsOf(header);
}

TEST(RuleList, WithoutRulesNoPacketFindsAnAction) {
  const ClassifierWorld world;
  EXPECT_EQ(world.actionFor(packetTo("10.0.0.1")), 0U);
  EXPECT_EQ(world.list.size(), 0U);
}

TEST(RuleList, TheFirstRuleThatMatchesDecides) {
  ClassifierWorld world;
  EXPECT_TRUE(world.list.addRule(0, toPrefix("10.0.0.0/8"), 1));
  EXPECT_TRUE(world.list.addRule(1, AclMatch(), 2));
  EXPECT_TRUE(world.list.addRule(0, toPrefix("10.1.0.0/16"), 3));
  EXPECT_EQ(world.actionFor(packetTo("10.1.0.1")), 3U);
  EXPECT_EQ(world.actionFor(packetTo("10.2.0.1")), 1U);
  EXPECT_EQ(world.actionFor(packetTo("11.0.0.1")), 2U);
  world.list.moveRule(1, 0);
  EXPECT_EQ(world.actionFor(packetTo("10.1.0.1")), 1U);
  world.list.removeRule(0);
  EXPECT_EQ(world.actionFor(packetTo("10.1.0.1")), 3U);
  EXPECT_EQ(world.actionFor(packetTo("10.2.0.1")), 2U);
  world.list.replaceRule(1, 4);
  EXPECT_EQ(world.actionFor(packetTo("10.2.0.1")), 4U);
  EXPECT_EQ(world.list.size(), 2U);
  EXPECT_EQ(world.list.action(0), 3U);
  EXPECT_EQ(world.list.action(1), 4U);
}

TEST(RuleList, AFullMemoryOfSetsRefusesARuleAndChangesNothing) {
  ClassifierWorld world([] {}, {.sets = 3, .elements = 100});
  EXPECT_TRUE(world.list.addRule(0, toPort(80), 1));  // a set for IPv4, and one for the port
  EXPECT_FALSE(world.list.addRule(0, toPrefix("10.0.0.0/8"), 2) &&
               world.list.addRule(0, toPort(81), 2));
  EXPECT_EQ(world.list.size(), 2U);
  EXPECT_EQ(world.actionFor(packetTo("10.0.0.1", 81)), 2U);
  EXPECT_EQ(world.actionFor(packetTo("11.0.0.1", 81)), 0U);
  EXPECT_EQ(world.actionFor(packetTo("11.0.0.1", 80)), 1U);
  world.list.moveRule(0, 1);
  world.list.replaceRule(0, 7);
  EXPECT_EQ(world.actionFor(packetTo("10.0.0.1", 80)), 7U) << "neither needs a set";
}

TEST(RuleList, AFullMemoryOfElementsRefusesARuleAndChangesNothing) {
  ClassifierWorld world([] {}, {.sets = 100, .elements = 2});
  EXPECT_TRUE(world.list.addRule(0, toPort(80), 1));
  AclMatch both = toPrefix("10.0.0.0/8");
  both.destinationPorts = {{81, 81}};
  EXPECT_FALSE(world.list.addRule(0, both, 2));
  EXPECT_EQ(world.elements.size(), 1U);
  EXPECT_EQ(world.list.size(), 1U);
  EXPECT_EQ(world.actionFor(packetTo("10.0.0.1", 81)), 0U);
  EXPECT_TRUE(world.list.addRule(0, toPrefix("10.0.0.0/8"), 3));
  EXPECT_EQ(world.actionFor(packetTo("10.0.0.1", 81)), 3U);
}

TEST(RuleList, AValueThatFindsNoSetRefusesARuleAndChangesNothing) {
  ClassifierWorld world([] {}, {.sets = 2, .elements = 100});
  AclMatch flags;
  flags.family = Ip::Family::v4;
  flags.tcpFlags = {{1, 1}};  // 128 values
  EXPECT_FALSE(world.list.addRule(0, flags, 1));
  world.clock.waitNow();
  EXPECT_EQ(world.sets.available(), 2U);
  EXPECT_EQ(world.classifier->compared, 0U);
  EXPECT_TRUE(world.list.addRule(0, toPort(80), 2));
}

TEST(RuleList, APrefixSetThatFitsInPartLeavesNoElement) {
  ClassifierWorld world([] {}, {.sets = 100, .elements = 2});
  AclMatch match;
  match.family = Ip::Family::v4;
  match.sourceSet = Classification::PrefixSet{{prefix("10.0.0.0/8"), prefix("11.0.0.0/8")},
                                              {prefix("10.1.0.0/16")}};
  EXPECT_FALSE(world.list.addRule(0, match, 1));
  EXPECT_EQ(world.elements.size(), 0U);
  EXPECT_TRUE(world.list.addRule(0, toPort(80), 2));
}

TEST(RuleList, WaitsForAGracePeriodOnlyWhenThatMakesRoom) {
  int waits = 0;
  ClassifierWorld world([] {}, {.sets = 2, .elements = 100}, [&] { ++waits; });
  EXPECT_TRUE(world.list.addRule(0, toPort(80), 1));
  EXPECT_FALSE(world.list.addRule(0, toPort(81), 1));
  EXPECT_EQ(waits, 0);
  world.clock.waitNow();
  world.list.tidy();
  EXPECT_TRUE(world.list.isTidy());
  waits = 0;
  world.list.removeRule(0);
  EXPECT_FALSE(world.list.isTidy());
  EXPECT_TRUE(world.list.addRule(0, toPort(81), 2));
  EXPECT_GT(waits, 0);
  EXPECT_EQ(world.actionFor(packetTo("10.0.0.1", 81)), 2U);
}

// A packet that begins before the rule is removed, and ends after the next changes.
TEST(RuleList, ARemovedRuleIsReadableForAGracePeriod) {
  ClassifierWorld world;
  EXPECT_TRUE(world.list.addRule(0, AclMatch(), 1));
  PacketOnItsWay way(world, packetTo("10.0.0.1"));
  world.list.removeRule(0);
  EXPECT_TRUE(world.list.addRule(0, toPort(81), 2));
  world.list.removeRule(0);
  while (!way.step())
    continue;
  EXPECT_EQ(way.action(), 1U);
}

// A packet that begins after the rule was removed, and still finds the number of the rule in a set.
TEST(RuleList, ANumberIsNotUsedAgainWhileAPacketMayHoldIt) {
  std::optional<PacketOnItsWay> way;
  const auto look = [&way] {
    if (!way) return;
    PacketOnItsWay copy = *way;
    while (!copy.step())
      continue;
    EXPECT_EQ(copy.action(), 0U);
  };
  ClassifierWorld world(look);
  EXPECT_TRUE(world.list.addRule(0, AclMatch(), 1));
  world.list.removeRule(0);
  world.clock.waitNow();
  way.emplace(world, packetTo("10.0.0.1"));
  for (std::uint32_t step = 0; step <= zelFields; ++step)
    way->step();
  world.list.tidy();
  EXPECT_TRUE(world.list.addRule(0, AclMatch(), 2));
}

TEST(RuleList, HoldsAsManyRulesAsItsCapacity) {
  ClassifierWorld world;
  for (std::size_t place = 0; place < RuleList::capacity; ++place)
    ASSERT_TRUE(world.list.addRule(place, toPort(static_cast<std::uint16_t>(place)), place + 1));
  EXPECT_FALSE(world.list.addRule(0, toPort(80), 1));
  world.list.moveRule(0, RuleList::capacity - 1);
  world.list.moveRule(RuleList::capacity - 2, 0);
  for (std::uint16_t port = 0; port < RuleList::capacity; port += 89)
    EXPECT_EQ(world.actionFor(packetTo("10.0.0.1", port)), port + 1U);
  EXPECT_EQ(world.actionFor(packetTo("10.0.0.1", 3000)), 0U);
}

TEST(RuleList, NothingIsLeftOfRemovedRules) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomRules random(seed.value());
  ClassifierWorld world;
  const std::size_t sets = world.sets.available();
  for (int i = 0; i < 60; ++i)
    ASSERT_TRUE(world.list.addRule(0, random.match(), 1));
  while (world.list.size() > 0)
    world.list.removeRule(random.below(static_cast<std::uint32_t>(world.list.size())));
  world.clock.waitNow();
  world.list.tidy();
  EXPECT_EQ(world.elements.size(), 0U);
  EXPECT_EQ(world.classifier->compared, 0U);
  for (const ZelRuleSet& any : world.classifier->any)
    EXPECT_EQ(any.summary, 0U);
  world.clock.waitNow();
  world.list.tidy();
  EXPECT_EQ(world.sets.available(), sets);
  EXPECT_TRUE(world.list.isTidy());
}

// The rule list, the software chip with the same rules, and some packets. A change is made in the
// software chip first, so that the answers for the next epoch are known before the first store.
class Compared {
 public:
  // There are about four times as many rules as the weight says.
  Compared(std::uint32_t seed, std::uint32_t weight) : random_(seed), weight_(weight) {}

  void packetsIs(std::size_t count) {
    packets_.clear();
    for (std::size_t i = 0; i < count; ++i)
      packets_.push_back(random_.packet());
    answers_.clear();
    answers_[world_.epoch()] = softAnswers();
  }

  void change() {
    const auto size = static_cast<std::uint32_t>(actions_.size());
    if (random_.below(size + weight_) < weight_) return add();
    const std::uint32_t at = random_.below(size);
    switch (random_.below(4)) {
      case 0:
        return remove(at);
      case 1:
        return replace(at);
      default:
        return move(at, random_.below(size));
    }
  }

  // Packets that find another rule than that of the software chip.
  [[nodiscard]] std::string wrong() const { return wrong_; }
  [[nodiscard]] std::size_t looks() const { return looks_; }
  [[nodiscard]] std::size_t arrived() const { return arrived_; }

  void look() {
    if (packets_.empty()) return;
    ++looks_;
    for (std::size_t packet = 0; packet < packets_.size(); ++packet)
      compare(packet, world_.epoch(), world_.actionFor(fieldsOf(packets_[packet])));
    stepPackets();
  }
  void finishPackets() {
    while (!onTheirWay_.empty())
      stepPackets();
  }
  // Sends each packet on its way.
  void startPackets() {
    for (std::size_t packet = 0; packet < packets_.size(); ++packet)
      onTheirWay_.emplace_back(packet, PacketOnItsWay(world_, fieldsOf(packets_[packet])));
  }
  void waitAtTimes() {
    if (random_.oneIn(4)) world_.clock.waitNow();
  }

 private:
  using Answers = std::vector<std::uint64_t>;  // by packet

  void stepPackets() {
    std::erase_if(onTheirWay_, [this](auto& way) {
      if (!random_.oneIn(8) || !way.second.step()) return false;
      ++arrived_;
      compare(way.first, way.second.epoch(), way.second.action());
      return true;
    });
  }

  void compare(std::size_t packet, std::uint64_t epoch, std::uint64_t action) {
    const std::uint64_t expected = answers_.at(epoch)[packet];
    if (action == expected) return;
    wrong_ = "packet " + std::to_string(packet) + " found " + std::to_string(action) +
             " instead of " + std::to_string(expected) + " in epoch " + std::to_string(epoch);
  }

  [[nodiscard]] Answers softAnswers() const {
    Answers answers;
    for (const PacketHeader& packet : packets_) {
      const auto place = soft_->classify(intf_, packet);
      answers.push_back(place ? actions_[*place] : 0);
    }
    return answers;
  }
  void nextAnswers() { answers_[world_.epoch() + 1] = softAnswers(); }

  void add() {
    const std::uint32_t place = random_.below(static_cast<std::uint32_t>(actions_.size()) + 1);
    const AclMatch match = random_.match();
    EXPECT_TRUE(soft_->addRule(intf_, place, {match, {}}).accepted);
    actions_.insert(actions_.begin() + place, nextAction_);
    nextAnswers();
    EXPECT_TRUE(world_.list.addRule(place, match, nextAction_++));
  }
  void remove(std::uint32_t place) {
    soft_->removeRule(intf_, place);
    actions_.erase(actions_.begin() + place);
    nextAnswers();
    world_.list.removeRule(place);
  }
  void replace(std::uint32_t place) {
    actions_[place] = nextAction_;
    nextAnswers();
    world_.list.replaceRule(place, nextAction_++);
  }
  void move(std::uint32_t from, std::uint32_t to) {
    soft_->moveRule(intf_, from, to);
    const std::uint64_t action = actions_[from];
    actions_.erase(actions_.begin() + from);
    actions_.insert(actions_.begin() + to, action);
    nextAnswers();
    world_.list.moveRule(from, to);
  }

  const Velo::String intf_{"in"};
  RandomRules random_;
  std::uint32_t weight_;
  ClassifierWorld world_{[this] { look(); }, {}, [this] { finishPackets(); }};
  Mox::Ptr<Chips::SoftAclHelper> soft_ =
      Mox::makeActivePtr<Chips::SoftAclHelper>(Velo::String("soft"), 10000U);
  std::vector<std::uint64_t> actions_;  // by place
  std::uint64_t nextAction_ = 1;
  std::vector<PacketHeader> packets_;
  std::map<std::uint64_t, Answers> answers_;  // by epoch
  std::vector<std::pair<std::size_t, PacketOnItsWay>> onTheirWay_;
  std::string wrong_;
  std::size_t looks_ = 0;
  std::size_t arrived_ = 0;
};

TEST(RuleList, FindsTheRuleThatTheSoftwareChipFinds) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  Compared compared(seed.value(), 20);
  for (std::size_t round = 0; round < randomRounds(40); ++round) {
    for (int i = 0; i < 20; ++i)
      compared.change();
    compared.packetsIs(200);
    compared.look();
    compared.packetsIs(0);
    compared.waitAtTimes();
    ASSERT_EQ(compared.wrong(), "");
  }
}

// At each store some packets search all rules. Others are on their way for several changes, and
// take a step of their search at times. Each finds the rule of the list that was in force when it
// began.
TEST(RuleList, EachStoreShowsPacketsTheOldListOrTheNew) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  Compared compared(seed.value(), 3);
  for (int i = 0; i < 30; ++i)
    compared.change();
  for (std::size_t round = 0; round < randomRounds(6); ++round) {
    compared.packetsIs(3);
    compared.startPackets();
    for (int i = 0; i < 5; ++i) {
      compared.change();
      if (i < 3) compared.startPackets();
      ASSERT_EQ(compared.wrong(), "");
    }
    compared.finishPackets();
    compared.packetsIs(0);
    compared.waitAtTimes();
    ASSERT_EQ(compared.wrong(), "");
  }
  EXPECT_GT(compared.looks(), 100U);
  EXPECT_GT(compared.arrived(), 10U);
}

}  // namespace
}  // namespace ChipTables
