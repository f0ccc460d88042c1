// What differs from one configuration to another, as the report prints it.
#include "agent/model/differences/ConfigurationDifference.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "agent/reports/DifferenceReport.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/reports/ReportText.h"

namespace ZelAgent {
namespace {

std::string differenceText(const Configuration& before, const Configuration& after) {
  return printedBy([&](std::ostream& out) { writeTextReport(out, differenceOf(before, after)); });
}

// A policy `edge` with the rules, applied to these interfaces.
Configuration edgeOf(const std::vector<nlohmann::json>& rules,
                     const std::vector<std::string>& interfaces = {"e1"}) {
  return OpenConfigBuilder()
      .vrf("red")
      .vrf("blue")
      .policy("edge", rules, interfaces)
      .configuration();
}

nlohmann::json dscpRule(std::uint32_t sequence, unsigned dscp, const std::string& vrf) {
  return ruleOf(sequence, "ipv4", {{"dscp", dscp}}, toVrf(vrf));
}

TEST(ConfigurationDifference, EqualConfigurationsHaveNone) {
  const Configuration same = edgeOf({dscpRule(10, 1, "red")});
  EXPECT_TRUE(differenceOf(same, same).isEmpty());
  EXPECT_EQ(differenceText(same, same), "no difference\n");
}

TEST(ConfigurationDifference, ARuleIsAddedOrRemovedWithItsUsers) {
  const Configuration one = edgeOf({dscpRule(10, 1, "red")}, {"e1", "e2"});
  const Configuration two = edgeOf({dscpRule(10, 1, "red"), dscpRule(20, 2, "blue")}, {"e1", "e2"});
  EXPECT_EQ(differenceText(one, two),
            "rules\n"
            "  + 20 of edge on e1, e2: ipv4 dscp 2, actionVrf blue\n"
            "actions\n"
            "  + actionVrf blue: 2 users\n");
  EXPECT_EQ(differenceText(two, one),
            "rules\n"
            "  - 20 of edge on e1, e2: ipv4 dscp 2, actionVrf blue\n"
            "actions\n"
            "  - actionVrf blue: 2 users\n");
}

TEST(ConfigurationDifference, ARuleWithAnotherMatchOrActionHasChanged) {
  const Configuration before = edgeOf({dscpRule(10, 1, "red"), dscpRule(20, 2, "red")});
  const Configuration after =
      edgeOf({dscpRule(10, 3, "red"), ruleOf(20, "ipv4", {{"dscp", 2}}, toDiscard())});
  EXPECT_EQ(differenceText(before, after),
            "rules\n"
            "  ~ 10 of edge on e1: ipv4 dscp 1, actionVrf red -> ipv4 dscp 3, actionVrf red\n"
            "  ~ 20 of edge on e1: ipv4 dscp 2, actionVrf red -> ipv4 dscp 2, discard\n"
            "actions\n"
            "  ~ actionVrf red: 2 users -> 1 user\n");
}

TEST(ConfigurationDifference, ARuleUnderAnotherSequenceIdHasMoved) {
  const Configuration before = edgeOf({dscpRule(10, 1, "red"), dscpRule(20, 2, "blue")});
  const Configuration after = edgeOf({dscpRule(10, 2, "blue"), dscpRule(20, 1, "red")});
  EXPECT_EQ(differenceText(before, after),
            "rules\n"
            "  ~ 10 of edge on e1: moved from 20: ipv4 dscp 2, actionVrf blue\n"
            "  ~ 20 of edge on e1: moved from 10: ipv4 dscp 1, actionVrf red\n");
}

TEST(ConfigurationDifference, TheOrderOfADscpSetIsNoDifference) {
  const auto rule = [](const std::vector<int>& dscps) {
    return ruleOf(10, "ipv4", {{"dscp-set", dscps}}, toVrf("red"));
  };
  EXPECT_EQ(differenceText(edgeOf({rule({1, 2})}), edgeOf({rule({2, 1})})), "no difference\n");
  EXPECT_NE(differenceText(edgeOf({rule({1, 2})}), edgeOf({rule({1, 3})})), "no difference\n");
}

TEST(ConfigurationDifference, ARuleNamesThreeOfManyInterfaces) {
  const std::vector<std::string> interfaces{"e1", "e2", "e3", "e4", "e5"};
  EXPECT_EQ(differenceText(edgeOf({}, interfaces), edgeOf({dscpRule(1, 1, "red")}, interfaces)),
            "rules\n"
            "  + 1 of edge on e1, e2, e3 and 2 more: ipv4 dscp 1, actionVrf red\n"
            "actions\n"
            "  + actionVrf red: 5 users\n");
}

TEST(ConfigurationDifference, RulesOfAPolicyWithoutInterfacesHaveNoUsers) {
  EXPECT_EQ(differenceText(edgeOf({}, {}), edgeOf({dscpRule(1, 1, "red")}, {})),
            "rules\n"
            "  + 1 of edge on no interface: ipv4 dscp 1, actionVrf red\n");
}

TEST(ConfigurationDifference, AnInterfaceHasItsVrfAndItsPolicies) {
  const Configuration before =
      OpenConfigBuilder().vrf("red").intf("red", "e1").intf("red", "e2").configuration();
  const Configuration after = OpenConfigBuilder()
                                  .vrf("red")
                                  .intf("red", "e1")
                                  .intf("DEFAULT", "e3")
                                  .policy("edge", {}, {"e2"})
                                  .configuration();
  EXPECT_EQ(differenceText(before, after),
            "interfaces\n"
            "  ~ e2: VRF red -> VRF default, policy edge\n"
            "  + e3: VRF default\n"
            "policies\n"
            "  + edge: VRF selection policy\n");
}

TEST(ConfigurationDifference, APolicyOfAnotherInstanceHasItsName) {
  const auto builder = [] { return OpenConfigBuilder().vrf("red"); };
  EXPECT_EQ(differenceText(builder().configuration(),
                           builder()
                               .policy("edge", {ruleOf(1, "", {}, toDiscard())}, {"e1"}, "red")
                               .configuration()),
            "interfaces\n"
            "  + e1: VRF default, policy red: edge\n"
            "policies\n"
            "  + red: edge: VRF selection policy\n"
            "rules\n"
            "  + 1 of red: edge on e1: any, discard\n");
}

TEST(ConfigurationDifference, InstancesAndFallbackVrfsComeGoAndChange) {
  const Configuration before =
      OpenConfigBuilder().vrf("red", "blue").vrf("blue").vrf("old", "red").configuration();
  const Configuration after =
      OpenConfigBuilder().vrf("red", "DEFAULT").vrf("blue", "red").vrf("a b").configuration();
  EXPECT_EQ(differenceText(before, after),
            "instances\n"
            "  + 'a b'\n"
            "  - old\n"
            "fallback VRFs\n"
            "  + blue: red\n"
            "  - old: red\n"
            "  ~ red: blue -> default\n");
}

TEST(ConfigurationDifference, RoutesComeGoAndChange) {
  const Configuration before = OpenConfigBuilder()
                                   .gateway("DEFAULT", "10.0.0.0/8", "192.0.2.1")
                                   .route("DEFAULT", "192.0.2.0/24", "e1")
                                   .configuration();
  const Configuration after = OpenConfigBuilder()
                                  .route("DEFAULT", "10.0.0.0/8", "e2")
                                  .dropRoute("DEFAULT", "2001:db8::/32")
                                  .configuration();
  EXPECT_EQ(differenceText(before, after),
            "routes\n"
            "  ~ default 10.0.0.0/8: via 192.0.2.1 -> via e2\n"
            "  - default 192.0.2.0/24: via e1\n"
            "  + default 2001:db8::/32: drop\n");
}

TEST(ConfigurationDifference, AnIndexOfANextHopIsNoDifference) {
  Configuration before = OpenConfigBuilder().route("DEFAULT", "10.0.0.0/8", "e1").configuration();
  Configuration after = before;
  after.networkInstances.front().staticRoutes.front().nextHops.front().index = "other";
  EXPECT_TRUE(differenceOf(before, after).isEmpty());
}

TEST(ConfigurationDifference, PrefixSetsComeGoAndChange) {
  const auto prefix = [](const char* text) { return parseIpPrefix(text).value(); };
  Configuration before;
  before.prefixSets = {{"A", IpFamily::v4, {prefix("10.0.0.0/8"), prefix("9.0.0.0/8")}, {}},
                       {"B", IpFamily::v4, {}, {}}};
  Configuration after;
  after.prefixSets = {
      {"A", IpFamily::v4, {prefix("9.0.0.0/8"), prefix("10.0.0.0/8")}, {prefix("10.1.0.0/16")}},
      {"B", IpFamily::v6, {prefix("2001:db8::/32")}, {}}};
  EXPECT_EQ(differenceText(before, after),
            "prefix sets\n"
            "  ~ ipv4 A: 9.0.0.0/8, 10.0.0.0/8 -> 9.0.0.0/8, 10.0.0.0/8 except 10.1.0.0/16\n"
            "  - ipv4 B: none\n"
            "  + ipv6 B: 2001:db8::/32\n");
}

// The prefixes 10.0.FIRST.0/24 and so on, with COMMAS between them.
std::string prefixesText(unsigned first, unsigned count, const char* comma) {
  std::string text;
  for (unsigned number = first; number < first + count; ++number)
    text +=
        (text.empty() ? "10.0." : std::string(comma) + "10.0.") + std::to_string(number) + ".0/24";
  return text;
}

Configuration withSetOf(unsigned first, unsigned count, const std::vector<std::string>& excluded) {
  PrefixSet set{"pods", IpFamily::v4, {}, {}};
  for (unsigned number = first; number < first + count; ++number)
    set.prefixes.push_back(parseIpPrefix(prefixesText(number, 1, "")).value());
  for (const std::string& prefix : excluded)
    set.excluded.push_back(parseIpPrefix(prefix).value());
  return {{}, {set}};
}

TEST(ConfigurationDifference, ALongPrefixSetIsCut) {
  EXPECT_EQ(differenceText({}, withSetOf(0, 64, {})),
            "prefix sets\n  + ipv4 pods: " + prefixesText(0, 64, ", ") + "\n");
  EXPECT_EQ(differenceText({}, withSetOf(0, 66, {})),
            "prefix sets\n  + ipv4 pods: " + prefixesText(0, 64, ", ") + ",... and 2 more\n");
}

TEST(ConfigurationDifference, OfALongPrefixSetOnlyTheChangeIsShown) {
  EXPECT_EQ(differenceText(withSetOf(0, 66, {"10.0.1.0/32"}), withSetOf(1, 67, {"10.0.1.1/32"})),
            "prefix sets\n"
            "  ~ ipv4 pods: 66 -> 67 prefixes; added 10.0.66.0/24, 10.0.67.0/24; removed "
            "10.0.0.0/24; excepted 10.0.1.1/32; no longer excepted 10.0.1.0/32\n");
  EXPECT_EQ(differenceText(withSetOf(0, 100, {}), withSetOf(100, 65, {})),
            "prefix sets\n  ~ ipv4 pods: 100 -> 65 prefixes; added " + prefixesText(100, 64, ", ") +
                ",... and 1 more; removed " + prefixesText(0, 64, ", ") + ",... and 36 more\n");
}

// A rule for every second port from 1.
Configuration withPorts(std::size_t ports) {
  Configuration configuration = edgeOf({dscpRule(10, 1, "red")});
  RuleMatch& match = configuration.networkInstances.at(0).policies.at(0).rules.at(0).match;
  for (std::size_t number = ports; number-- > 0;) {
    const auto port = static_cast<std::uint16_t>(1 + 2 * number);
    match.sourcePorts.push_back({port, port});
  }
  return configuration;
}

TEST(ConfigurationDifference, ALongListOfAMatchIsCut) {
  std::string ports = "1";
  for (unsigned port = 3; port < 128; port += 2)
    ports += ',' + std::to_string(port);
  const std::string rule = "  ~ 10 of edge on e1: ipv4 dscp 1 source-port " + ports;
  EXPECT_EQ(differenceText(withPorts(64), withPorts(66)),
            "rules\n" + rule + ", actionVrf red -> ipv4 dscp 1 source-port " + ports +
                " (and 2 more of source-port), actionVrf red\n");
  Configuration other = withPorts(66);
  other.networkInstances[0].policies[0].rules[0].match.sourcePorts[0] = {500, 500};
  EXPECT_EQ(differenceText(withPorts(66), other),
            "rules\n" + rule +
                " (and 2 more of source-port), actionVrf red -> other values that are not shown\n");
}

TEST(ConfigurationDifference, ManyNextHopsAreCut) {
  const auto withNextHops = [](unsigned count) {
    Configuration configuration = edgeOf({});
    StaticRoute route{*parseIpPrefix("10.0.0.0/8"), {}};
    for (unsigned number = 0; number < count; ++number)
      route.nextHops.push_back({"", std::nullopt, "e" + std::to_string(number), false});
    configuration.networkInstances.at(0).staticRoutes = {route};
    return configuration;
  };
  const std::string text = differenceText(withNextHops(0), withNextHops(67));
  EXPECT_TRUE(text.ends_with("via e62, via e63,... and 3 more\n")) << text;
}

TEST(ConfigurationDifference, EachFieldOfAMatchIsADifference) {
  const RuleMatch full{IpFamily::v4, 6,    8,        {10, 9},  {},       {},        "S", "D",
                       64,           1500, {{1, 2}}, {{7, 7}}, {{8, 9}}, {{18, 2}}, true};
  Configuration before = edgeOf({dscpRule(10, 1, "red")});
  Configuration after = before;
  const auto matchOf = [](Configuration& configuration) -> RuleMatch& {
    return configuration.networkInstances.front().policies.front().rules.front().match;
  };
  matchOf(before) = {};
  matchOf(after) = full;
  EXPECT_EQ(differenceText(before, after),
            "rules\n"
            "  ~ 10 of edge on e1: any, actionVrf red -> ipv4 protocol 6 dscp 8 dscp-set 9,10 "
            "source-set S destination-set D hop-limit 64 length 1500 fragment-offset 1..2 "
            "source-port 7 destination-port 8..9 tcp-flags syn+!ack fragment, actionVrf red\n");
}

TEST(ConfigurationDifference, TheJsonHasTheSameDifferences) {
  const Configuration before = OpenConfigBuilder().vrf("red").configuration();
  const Configuration after = OpenConfigBuilder()
                                  .vrf("red", "DEFAULT")
                                  .route("red", "10.0.0.0/8", "e1")
                                  .policy("edge", {dscpRule(10, 1, "red")}, {"e1"})
                                  .configuration();
  EXPECT_EQ(oneLine(toJson(differenceOf(before, after))),
            R"({"equal":false,"instances":[],"prefixSets":[],"interfaces":[{"change":"added",)"
            R"("interface":"e1","before":null,"after":{"vrfName":"default","policy":)"
            R"({"networkInstance":"default","policy":"edge"},"forwardingPolicy":null}}],)"
            R"("fallbacks":[{"change":"added","vrfName":"red","before":null,"after":"default"}],)"
            R"("routes":[{"change":"added","vrfName":"red","prefix":"10.0.0.0/8","before":null,)"
            R"("after":[{"address":"","interface":"e1","drops":false}]}],)"
            R"("policies":[{"change":"added","networkInstance":"default","policy":"edge",)"
            R"("before":null,"after":"vrfSelection"}],)"
            R"("rules":[{"networkInstance":"default","policy":"edge","interfaces":["e1"],)"
            R"("rules":[{"change":"added","before":null,"after":{"rule":10,"match":"ipv4 dscp 1",)"
            R"("action":{"vrfName":"red","fallbackVrfName":"","postDecapVrfName":"",)"
            R"("action":"actionVrf"}}}]}],)"
            R"("actions":[{"change":"added","vrfName":"red","fallbackVrfName":"",)"
            R"("postDecapVrfName":"","action":"actionVrf","before":null,"after":1}]})");
}

TEST(ConfigurationDifference, TheJsonNamesAMovedRule) {
  const auto json =
      toJson(differenceOf(edgeOf({dscpRule(10, 1, "red")}), edgeOf({dscpRule(20, 1, "red")})));
  EXPECT_EQ(json["rules"][0]["rules"][0]["change"], "moved");
  EXPECT_EQ(json["rules"][0]["rules"][0]["before"]["rule"], 10);
  EXPECT_EQ(json["rules"][0]["rules"][0]["after"]["rule"], 20);
}

}  // namespace
}  // namespace ZelAgent
