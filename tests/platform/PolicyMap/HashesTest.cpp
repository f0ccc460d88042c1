// The hashes of what collections are keyed by.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "PolicyMap/ClassMatch.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "tests/platform/L3/CollidingNames.h"

namespace PolicyMap {
namespace {

using PrefixSetOf = Classification::SharedPrefixSet;

constexpr unsigned seed = 0x1234abcd;

Ip::Prefix prefix(std::uint8_t byte, std::size_t at, unsigned length) {
  Ip::Prefix made;
  made.address.bytes.at(at) = byte;
  made.length = static_cast<std::uint8_t>(length);
  return made;
}

PrefixSetOf setOf(const std::vector<Ip::Prefix>& prefixes,
                  const std::vector<Ip::Prefix>& excluded = {}) {
  return PrefixSetOf(Classification::PrefixSet{prefixes, excluded});
}

// A match without any field, and others each of which differs from it and from each other.
std::vector<AclMatch> differentMatches() {
  std::vector<AclMatch> matches(1);
  const auto add = [&](auto change) { change(matches.emplace_back()); };
  add([](AclMatch& match) { match.family = Ip::Family::v4; });
  add([](AclMatch& match) { match.family = Ip::Family::v6; });
  add([](AclMatch& match) { match.protocol = 0; });
  add([](AclMatch& match) { match.protocol = 255; });
  add([](AclMatch& match) { match.dscps = 0; });
  add([](AclMatch& match) { match.dscps = 1; });
  add([](AclMatch& match) { match.dscps = std::uint64_t{1} << 32; });
  add([](AclMatch& match) { match.source = prefix(0, 0, 0); });
  add([](AclMatch& match) { match.source = prefix(0, 0, 8); });
  add([](AclMatch& match) { match.source = prefix(1, 3, 32); });
  add([](AclMatch& match) { match.source = prefix(1, 15, 128); });
  add([](AclMatch& match) { match.destination = prefix(0, 0, 0); });
  add([](AclMatch& match) { match.destination = prefix(1, 3, 32); });
  add([](AclMatch& match) { match.hopLimit = 0; });
  add([](AclMatch& match) { match.hopLimit = 1; });
  add([](AclMatch& match) { match.length = 0; });
  add([](AclMatch& match) { match.length = 1; });
  add([](AclMatch& match) { match.fragmentOffsets = {{1, 2}}; });
  add([](AclMatch& match) { match.sourcePorts = {{1, 2}}; });
  add([](AclMatch& match) { match.sourcePorts = {{1, 3}}; });
  add([](AclMatch& match) { match.sourcePorts = {{1, 2}, {4, 5}}; });
  add([](AclMatch& match) { match.destinationPorts = {{1, 2}}; });
  add([](AclMatch& match) { match.tcpFlags = {{2, 2}}; });
  add([](AclMatch& match) { match.tcpFlags = {{2, 0}}; });
  add([](AclMatch& match) { match.tcpFlags = {{2, 2}, {4, 4}}; });
  add([](AclMatch& match) { match.isFragment = true; });
  add([](AclMatch& match) { match.sourceSet = setOf({}); });
  add([](AclMatch& match) { match.sourceSet = setOf({prefix(1, 0, 8)}); });
  add([](AclMatch& match) { match.sourceSet = setOf({}, {prefix(1, 0, 8)}); });
  add([](AclMatch& match) { match.destinationSet = setOf({}); });
  add([](AclMatch& match) { match.destinationSet = setOf({prefix(1, 0, 8)}); });
  add([](AclMatch& match) { match.matchesLaterFragments = true; });
  return matches;
}

std::vector<AclRule> differentRules() {
  const RuleAction action{ActionType::vrf, "red", {}, {}};
  std::vector<AclRule> rules;
  for (const AclMatch& match : differentMatches())
    rules.push_back({match, action});
  const auto add = [&](auto change) { change(rules.emplace_back(AclRule{{}, action}).action); };
  add([](RuleAction& other) { other.type = ActionType::decapVrf; });
  add([](RuleAction& other) { other.vrfName = "blue"; });
  add([](RuleAction& other) { other.fallbackVrfName = "blue"; });
  add([](RuleAction& other) { other.postDecapVrfName = "blue"; });
  return rules;
}

TEST(AclRule, DiffersByEveryField) {
  const std::vector<AclRule> rules = differentRules();
  for (std::size_t at = 0; at < rules.size(); ++at) {
    for (std::size_t other = 0; other < rules.size(); ++other)
      EXPECT_EQ(rules[at] == rules[other], at == other) << at << ' ' << other;
  }
}

TEST(AclRule, ACopyIsSmallAndSharesTheMatch) {
  const AclRule rule = differentRules()[21];
  const AclRule copy = rule;
  EXPECT_EQ(&*copy.match, &*rule.match);
  EXPECT_LE(sizeof(AclRule), 48U);
}

TEST(ClassMatchHash, DependsOnEveryField) {
  std::vector<ClassMatch> matches(4);
  matches[1].sourceSet = "a";
  matches[2].destinationSet = "a";
  matches[3].protocol = 1;
  std::set<unsigned> hashes;
  for (const ClassMatch& match : matches)
    hashes.insert(match.hash(seed));
  EXPECT_EQ(hashes.size(), matches.size());
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

TEST(FewestRanges, HaveTheSameNumbers) {
  using Ranges = std::vector<NumberRange>;
  EXPECT_EQ(fewestRanges({}), Ranges{});
  EXPECT_EQ(fewestRanges({{5, 5}, {1, 2}}), (Ranges{{1, 2}, {5, 5}}));
  EXPECT_EQ(fewestRanges({{3, 4}, {1, 2}}), (Ranges{{1, 4}})) << "they touch";
  EXPECT_EQ(fewestRanges({{1, 9}, {2, 3}, {8, 12}}), (Ranges{{1, 12}}));
  EXPECT_EQ(fewestRanges({{65535, 65535}, {0, 65535}}), (Ranges{{0, 65535}}));
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
