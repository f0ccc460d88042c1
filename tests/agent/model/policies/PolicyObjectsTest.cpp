// What a configuration's policies become on the platform.
#include "agent/model/policies/PolicyObjects.h"

#include <gtest/gtest.h>

#include "tests/agent/OpenConfigBuilder.h"

namespace ZelAgent {
namespace {

using PolicyMap::ActionType;
using PolicyMap::RuleAction;

std::uint64_t dscpBits(std::initializer_list<unsigned> dscps) {
  std::uint64_t bits = 0;
  for (const unsigned dscp : dscps)
    bits |= std::uint64_t{1} << dscp;
  return bits;
}

// The only policy map there is.
const PolicyMap::PolicyMapRules& onlyRules(const PolicyObjects& objects) {
  EXPECT_EQ(objects.policyMaps.size(), 1U);
  return objects.policyMaps.begin()->second;
}

const PolicyMap::ClassMatch& matchOf(const PolicyObjects& objects,
                                     const PolicyMap::PolicyMapRule& rule) {
  return *objects.classMaps.at(rule.classMap);
}

PolicyObjects objectsOf(const std::vector<nlohmann::json>& rules) {
  OpenConfigBuilder configuration;
  configuration.vrf("red").policy("P", rules, {"e1"});
  return policyObjectsOf(configuration.configuration());
}

TEST(PolicyObjects, OfNothingAreNothing) {
  const PolicyObjects objects = policyObjectsOf({});
  EXPECT_TRUE(objects.classMaps.empty());
  EXPECT_TRUE(objects.policyMaps.empty());
  EXPECT_TRUE(objects.intfs.empty());
  EXPECT_TRUE(objects.origins.empty());
}

TEST(PolicyObjects, ARuleKeepsItsFields) {
  const auto objects = objectsOf({ruleOf(7, "ipv4",
                                         {{"protocol", 4},
                                          {"dscp", 10},
                                          {"source-address", "198.18.0.1/32"},
                                          {"destination-address", "203.0.113.0/24"}},
                                         toVrf("red"))});
  const auto& rule = onlyRules(objects).at(0);
  EXPECT_EQ(rule.sequence, 7U);
  const auto& match = matchOf(objects, rule);
  EXPECT_EQ(match.family, IpFamily::v4);
  EXPECT_EQ(match.protocol, 4);
  EXPECT_EQ(match.dscps, dscpBits({10}));
  EXPECT_EQ(match.source, parseIpPrefix("198.18.0.1/32"));
  EXPECT_EQ(match.destination, parseIpPrefix("203.0.113.0/24"));
}

TEST(PolicyObjects, AFieldThatIsNotGivenIsAWildcard) {
  const auto objects = objectsOf({ruleOf(1, "ipv6", {}, toVrf("red"))});
  PolicyMap::ClassMatch expected;
  expected.family = IpFamily::v6;
  EXPECT_EQ(matchOf(objects, onlyRules(objects).at(0)), expected);
}

TEST(PolicyObjects, EachActionBecomesItsType) {
  const auto objects = objectsOf(
      {ruleOf(1, "", {}, toVrf("red")), ruleOf(2, "", {}, toDecap("decap", "transit", "DEFAULT")),
       ruleOf(3, "", {}, toDiscard()), ruleOf(4, "", {}, nlohmann::json::object())});
  const auto& rules = onlyRules(objects);
  ASSERT_EQ(rules.size(), 4U);
  EXPECT_EQ(rules[0].action, (RuleAction{ActionType::vrf, "red", {}, {}}));
  EXPECT_EQ(rules[1].action, (RuleAction{ActionType::decapVrf, "decap", "transit", "default"}));
  EXPECT_EQ(rules[2].action, (RuleAction{ActionType::discard, {}, {}, {}}));
  EXPECT_EQ(rules[3].action, RuleAction{});
}

struct DscpCase {
  const char* name;
  Leaves match;
  std::optional<std::uint64_t> dscps;

  friend std::ostream& operator<<(std::ostream& stream, const DscpCase& dscp) {
    return stream << dscp.name;
  }
};

class PolicyObjectsDscpTest : public ::testing::TestWithParam<DscpCase> {};

TEST_P(PolicyObjectsDscpTest, EveryGivenFieldMustMatch) {
  const auto objects = objectsOf({ruleOf(1, "ipv4", GetParam().match, toVrf("red"))});
  EXPECT_EQ(matchOf(objects, onlyRules(objects).at(0)).dscps, GetParam().dscps);
}

INSTANTIATE_TEST_SUITE_P(
    Each, PolicyObjectsDscpTest,
    ::testing::Values(DscpCase{"Neither", Leaves::object(), std::nullopt},
                      DscpCase{"Dscp", {{"dscp", 63}}, dscpBits({63})},
                      DscpCase{"DscpZero", {{"dscp", 0}}, dscpBits({0})},
                      DscpCase{"Set", {{"dscp-set", {0, 10, 63}}}, dscpBits({0, 10, 63})},
                      DscpCase{
                          "DscpInTheSet", {{"dscp", 10}, {"dscp-set", {10, 12}}}, dscpBits({10})}),
    [](const auto& dscp) { return std::string(dscp.param.name); });

TEST(PolicyObjects, RulesThatMatchTheSameShareAClassMap) {
  const auto objects = objectsOf({ruleOf(1, "ipv4", {{"dscp-set", {10, 12}}}, toVrf("red")),
                                  ruleOf(2, "ipv4", {{"dscp-set", {12, 10}}}, toDiscard()),
                                  ruleOf(3, "ipv4", {{"dscp", 10}}, toDiscard())});
  const auto& rules = onlyRules(objects);
  EXPECT_EQ(rules[0].classMap, rules[1].classMap);
  EXPECT_NE(rules[0].classMap, rules[2].classMap);
  EXPECT_EQ(objects.classMaps.size(), 2U);
}

TEST(PolicyObjects, RulesAreInTheOrderInWhichTheyAreTried) {
  const auto objects = objectsOf({ruleOf(30, "", {}, toDiscard()), ruleOf(4, "", {}, toVrf("red")),
                                  ruleOf(0, "", {}, toDiscard())});
  std::vector<std::uint32_t> sequences;
  for (const auto& rule : onlyRules(objects))
    sequences.push_back(rule.sequence);
  EXPECT_EQ(sequences, (std::vector<std::uint32_t>{0, 4, 30}));
}

TEST(PolicyObjects, PoliciesOfOneIdInTwoInstancesAreTwo) {
  OpenConfigBuilder configuration;
  configuration.vrf("red").vrf("it's");
  configuration.policy("P", {ruleOf(1, "", {}, toVrf("red"))}, {"e1"});
  configuration.policy("P", {ruleOf(1, "", {}, toDiscard())}, {"e2", "e3"}, "red");
  configuration.policy("P", {ruleOf(2, "", {}, toDiscard())}, {"e4"}, "it's");
  const auto objects = policyObjectsOf(configuration.configuration());
  ASSERT_EQ(objects.policyMaps.size(), 3U);
  std::map<std::string, std::string> instanceOfIntf;
  for (const auto& [intf, applied] : objects.intfs) {
    EXPECT_EQ(applied.kind, PolicyMap::IntfKind::routed);
    EXPECT_EQ(objects.origins.at(applied.policyMap)->policyIds, std::vector<std::string>{"P"});
    instanceOfIntf[intf.str()] = objects.origins.at(applied.policyMap)->networkInstance;
  }
  EXPECT_EQ(instanceOfIntf, (std::map<std::string, std::string>{
                                {"e1", "default"}, {"e2", "red"}, {"e3", "red"}, {"e4", "it's"}}));
  const auto& ofRed = objects.policyMaps.at(objects.intfs.at("e2").policyMap);
  EXPECT_EQ(ofRed.at(0).action.type, ActionType::discard);
}

TEST(PolicyObjects, NamesThatRunTogetherStayApart) {
  OpenConfigBuilder configuration;
  configuration.vrf("a").vrf("a' 'b").vrf("a b");
  configuration.policy("b' 'c", {}, {"e1"}, "a");
  configuration.policy("c", {}, {"e2"}, "a' 'b");
  configuration.policy("c", {}, {"e3"}, "a b");
  configuration.policy("b c", {}, {"e4"}, "a");
  EXPECT_EQ(policyObjectsOf(configuration.configuration()).policyMaps.size(), 4U);
}

TEST(PolicyObjects, APolicyThatIsAppliedNowhereIsThere) {
  OpenConfigBuilder configuration;
  configuration.policy("P", {ruleOf(1, "", {}, toDiscard())}, {});
  const auto objects = policyObjectsOf(configuration.configuration());
  EXPECT_EQ(objects.policyMaps.size(), 1U);
  EXPECT_TRUE(objects.intfs.empty());
}

TEST(PolicyObjects, AnInterfaceToWhichNothingIsAppliedIsAbsent) {
  Configuration configuration;
  NetworkInstance& instance = configuration.networkInstances.emplace_back();
  instance.name = defaultVrfName;
  instance.policies.push_back({"P", {}});
  instance.policyBindings = {{"e1", ""}, {"e2", "P"}};
  const auto objects = policyObjectsOf(configuration);
  EXPECT_FALSE(objects.intfs.contains("e1"));
  EXPECT_TRUE(objects.intfs.contains("e2"));
}

struct OriginOfRule {
  std::string policy;
  std::uint32_t sequence;
  bool operator==(const OriginOfRule&) const = default;
};

TEST(PolicyObjects, OfTwoPoliciesOnOneInterfaceAreOneListInTheirOrder) {
  Configuration configuration;
  NetworkInstance& instance = configuration.networkInstances.emplace_back();
  instance.name = defaultVrfName;
  instance.policies = {{"F", {{5, {}, Discard{}}, {7, {}, NoAction{}}}, PolicyType::forwarding},
                       {"V", {{7, {}, LookUp{"red"}}}, PolicyType::vrfSelection}};
  instance.policyBindings = {{"e1", "V", "F"}, {"e2", "V", ""}, {"e3", "", "F"}};
  const auto objects = policyObjectsOf(configuration);
  const auto originsOn = [&](const char* intf) {
    std::vector<OriginOfRule> rules;
    const PolicyMapOrigin& origin = *objects.origins.at(objects.intfs.at(intf).policyMap);
    for (const PolicyMapOrigin::Rule& rule : origin.rules)
      rules.push_back({origin.policyOf(rule), rule.sequence});
    return rules;
  };
  EXPECT_EQ(originsOn("e1"), (std::vector<OriginOfRule>{{"V", 7}, {"F", 5}, {"F", 7}}));
  EXPECT_EQ(originsOn("e2"), (std::vector<OriginOfRule>{{"V", 7}}));
  EXPECT_EQ(originsOn("e3"), (std::vector<OriginOfRule>{{"F", 5}, {"F", 7}}));
  const auto& rules = objects.policyMaps.at(objects.intfs.at("e1").policyMap);
  ASSERT_EQ(rules.size(), 3U);
  EXPECT_EQ(rules[0].action.type, ActionType::vrf);
  EXPECT_EQ(rules[1].action.type, ActionType::discard);
  EXPECT_EQ(rules[2].sequence, 3U) << "sequences of two policies are not those of one";
  EXPECT_EQ(objects.policyMaps.size(), 3U);
}

TEST(PolicyObjects, EveryFieldOfAMatchIsKept) {
  Configuration configuration;
  configuration.prefixSets = {{"s", IpFamily::v4, {parseIpPrefix("10.0.0.0/8").value()}, {}},
                              {"s", IpFamily::v6, {}, {parseIpPrefix("2001:db8::/32").value()}}};
  RuleMatch given;
  given.family = IpFamily::v4;
  given.hopLimit = 1;
  given.length = 100;
  given.fragmentOffsets = {{1, 8191}};
  given.sourcePorts = {{80, 80}, {81, 90}, {5, 5}};
  given.destinationPorts = {{443, 443}};
  given.tcpFlags = {{4, 4}, {2, 2}, {4, 4}};
  given.isFragment = true;
  given.sourceSet = "s";
  given.destinationSet = "t";
  NetworkInstance& instance = configuration.networkInstances.emplace_back();
  instance.policies = {{"P", {{1, given, Discard{}}}}};
  const auto objects = policyObjectsOf(configuration);
  const PolicyMap::ClassMatch& match = matchOf(objects, onlyRules(objects).at(0));
  using Ranges = std::vector<PolicyMap::NumberRange>;
  EXPECT_EQ(match.hopLimit, 1);
  EXPECT_EQ(match.length, 100);
  EXPECT_EQ(match.fragmentOffsets, (Ranges{{1, 8191}}));
  EXPECT_EQ(match.sourcePorts, (Ranges{{5, 5}, {80, 90}}));
  EXPECT_EQ(match.destinationPorts, (Ranges{{443, 443}}));
  EXPECT_EQ(match.tcpFlags, (std::vector<PolicyMap::TcpFlagsMatch>{{2, 2}, {4, 4}}));
  EXPECT_TRUE(match.isFragment);
  EXPECT_EQ(match.sourceSet, Velo::String("s"));
  EXPECT_EQ(match.destinationSet, Velo::String("t"));
  ASSERT_EQ(objects.prefixSets.size(), 2U);
  EXPECT_EQ(objects.prefixSets.at({IpFamily::v4, "s"})->prefixes,
            configuration.prefixSets[0].prefixes);
  EXPECT_EQ(objects.prefixSets.at({IpFamily::v6, "s"})->excluded,
            configuration.prefixSets[1].excluded);
}

}  // namespace
}  // namespace ZelAgent
