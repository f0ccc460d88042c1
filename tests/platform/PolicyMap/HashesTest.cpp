// The hashes of what collections are keyed by.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "tests/platform/L3/CollidingNames.h"

namespace PolicyMap {
namespace {

constexpr unsigned seed = 0x1234abcd;

Ip::Prefix prefix(std::uint8_t byte, std::size_t at, unsigned length) {
  Ip::Prefix made;
  made.address.bytes.at(at) = byte;
  made.length = static_cast<std::uint8_t>(length);
  return made;
}

// A rule, and others each of which differs from it and from each other.
std::vector<AclRule> differentRules() {
  const AclRule plain{{}, {ActionType::vrf, "red", {}, {}}};
  std::vector<AclRule> rules{plain};
  const auto add = [&](auto change) { change(rules.emplace_back(plain)); };
  add([](AclRule& rule) { rule.match.family = Ip::Family::v4; });
  add([](AclRule& rule) { rule.match.family = Ip::Family::v6; });
  add([](AclRule& rule) { rule.match.protocol = 0; });
  add([](AclRule& rule) { rule.match.protocol = 255; });
  add([](AclRule& rule) { rule.match.dscps = 0; });
  add([](AclRule& rule) { rule.match.dscps = 1; });
  add([](AclRule& rule) { rule.match.dscps = std::uint64_t{1} << 32; });
  add([](AclRule& rule) { rule.match.source = prefix(0, 0, 0); });
  add([](AclRule& rule) { rule.match.source = prefix(0, 0, 8); });
  add([](AclRule& rule) { rule.match.source = prefix(1, 3, 32); });
  add([](AclRule& rule) { rule.match.source = prefix(1, 15, 128); });
  add([](AclRule& rule) { rule.match.destination = prefix(0, 0, 0); });
  add([](AclRule& rule) { rule.match.destination = prefix(1, 3, 32); });
  add([](AclRule& rule) { rule.action.type = ActionType::decapVrf; });
  add([](AclRule& rule) { rule.action.vrfName = "blue"; });
  add([](AclRule& rule) { rule.action.fallbackVrfName = "blue"; });
  add([](AclRule& rule) { rule.action.postDecapVrfName = "blue"; });
  return rules;
}

TEST(AclRuleHash, IsEqualForEqualRules) {
  const std::vector<AclRule> rules = differentRules();
  const std::vector<AclRule> again = differentRules();
  for (std::size_t at = 0; at < rules.size(); ++at) {
    EXPECT_EQ(rules[at], again[at]);
    EXPECT_EQ(rules[at].hash(seed), again[at].hash(seed));
  }
}

TEST(AclRuleHash, DependsOnEveryField) {
  const std::vector<AclRule> rules = differentRules();
  std::set<unsigned> hashes;
  for (const AclRule& rule : rules)
    hashes.insert(rule.hash(seed));
  EXPECT_EQ(hashes.size(), rules.size());
}

// The bytes of the names have one hash, under the seed 0.
TEST(AclRuleHash, DependsOnNamesThatWereChosenToCollide) {
  constexpr unsigned count = 100;
  const PlatformTests::CollidingNames names(count);
  std::set<unsigned> hashes;
  for (const std::string& name : names.texts()) {
    for (const RuleAction& action : {RuleAction{ActionType::decapVrf, name, {}, {}},
                                     RuleAction{ActionType::decapVrf, "red", name, {}},
                                     RuleAction{ActionType::decapVrf, "red", {}, name}})
      hashes.insert(AclRule{{}, action}.hash(seed));
  }
  EXPECT_GE(hashes.size(), 3 * count - 1) << "chance is far below one";
}

TEST(AclRuleHash, DependsOnTheSeed) {
  const AclRule rule = differentRules().front();
  EXPECT_NE(rule.hash(seed), rule.hash(seed + 1));
}

TEST(RuleKeyHash, IsEqualForEqualKeys) {
  EXPECT_EQ((RuleKey{"eth1", "P", 10}.hash(seed)), (RuleKey{"eth1", "P", 10}.hash(seed)));
}

TEST(RuleKeyHash, DependsOnEveryFieldAndItsPlace) {
  const std::vector<RuleKey> keys{{"eth1", "P", 10}, {"eth2", "P", 10}, {"eth1", "Q", 10},
                                  {"eth1", "P", 11}, {"P", "eth1", 10}, {"eth1P", "", 10},
                                  {"", "eth1P", 10}, {"", "", 0}};
  std::set<unsigned> hashes;
  for (const RuleKey& key : keys)
    hashes.insert(key.hash(seed));
  EXPECT_EQ(hashes.size(), keys.size());
}

TEST(RuleKeyHash, DependsOnTheSeed) {
  const RuleKey key{"eth1", "P", 10};
  EXPECT_NE(key.hash(seed), key.hash(seed + 1));
}

}  // namespace
}  // namespace PolicyMap
