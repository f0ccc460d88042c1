// What a reader finds: several errors, what a lenient reader leaves out, and foreign entries.
#include "agent/config/Findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/agent/config/FullDocument.h"

namespace ZelAgent {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

ReadConfiguration readLeniently(const json& document) {
  return readOpenConfig(document.dump(), "f.json", Leniency::lenient);
}

Texts warningsOf(const json& document) {
  return readOpenConfig(document.dump(), "f.json").warnings;
}

std::string lineOf(const json& document, const std::string& place, const std::string& what) {
  return "f.json: " + pathOf(document, place) + ": " + what;
}

Texts linesOf(const std::string& text) {
  Texts lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

TEST(SeveralErrors, AreOneLineEachInTheOrderOfTheDocument) {
  const std::string document = R"({"network-instances": {"network-instance": [
    {"policy-forwarding": {"interfaces": {"interface": [
       {"interface-id": "e1", "config": {"apply-vrf-selection-policy": "Q"}}]}},
     "config": {"type": 5, "fallback-network-instance": ""},
     "name": "red"}]},
    "defined-sets": {"port-sets": {"port-set": [{"name": "W", "config": {"port": [65536]}}]}}})";
  const std::string red = "f.json: /network-instances/network-instance[name=red]/";
  try {
    (void)readOpenConfig(document, "f.json");
    FAIL() << "was read without an error";
  } catch (const ConfigError& error) {
    EXPECT_THAT(
        linesOf(error.what()),
        ElementsAre(red + "policy-forwarding/interfaces/interface[interface-id=e1]/config/"
                          "apply-vrf-selection-policy: must be a policy of the same network "
                          "instance, not \"Q\"",
                    red + "config/type: must be a string, not 5",
                    red + "config/fallback-network-instance: must not be empty",
                    "f.json: /defined-sets/port-sets/port-set[name=W]/config/port[1]: must be a "
                    "number from 0 to 65535, \"FIRST..LAST\" or ANY, not 65536"));
  }
}

// A document with that many rules, each with a wrong DSCP.
json documentWithErrors(unsigned count) {
  json rules = json::array();
  for (unsigned number = 1; number <= count; ++number)
    rules.push_back({{"sequence-id", number}, {"ipv4", {{"config", {{"dscp", 64}}}}}});
  return fullDocumentWith({{"$POLICY/rules/rule", rules}});
}

TEST(SeveralErrors, AreAtMostFiftyAndTheNumberOfTheOthers) {
  const Texts fifty = linesOf(refusalOf(documentWithErrors(50)));
  EXPECT_EQ(fifty.size(), 50U);
  EXPECT_THAT(fifty.back(), HasSubstr("rule[sequence-id=50]/ipv4/config/dscp: must be a whole"));
  const Texts more = linesOf(refusalOf(documentWithErrors(51)));
  ASSERT_EQ(more.size(), 51U);
  EXPECT_EQ(more[49], fifty.back());
  EXPECT_EQ(more[50], "f.json: ... and 1 more error");
  EXPECT_EQ(linesOf(refusalOf(documentWithErrors(62))).back(), "f.json: ... and 12 more errors");
}

TEST(SeveralErrors, CarryTheWarningsOfTheFile) {
  const json document = fullDocumentWith({{"$RED/mtu", 5}, {"$RED/config/type", 5}});
  try {
    (void)readOpenConfig(document.dump(), "f.json");
    FAIL() << "was read without an error";
  } catch (const ConfigError& error) {
    EXPECT_THAT(error.warnings(),
                ElementsAre(lineOf(document, "$RED/mtu", "unknown member, ignored")));
  }
}

TEST(SeveralWarnings, AreAtMostThousandAndTheNumberOfTheOthers) {
  json document = fullDocument();
  for (unsigned number = 0; number < 1002; ++number)
    document["unknown" + std::to_string(number)] = 1;
  const Texts warnings = warningsOf(document);
  EXPECT_EQ(warnings.size(), 1001U);
  EXPECT_EQ(warnings.back(), "f.json: ... and 2 more warnings");
}

struct Unsupported {
  const char* place;
  json value;
  std::size_t rule;  // its place in the policy P
};

TEST(LenientReader, LeavesOutTheRuleWithAnythingThatIsNotSupported) {
  const Unsupported rows[] = {
      {"$RULE10/l2", json::object(), 0},
      {"$RULE10/description-of", "x", 0},
      {"$RULE10/config/name", "x", 0},
      {"$RULE10/ipv4/config/ttl", 5, 0},
      {"$RULE20/ipv6/icmpv6", json::object(), 1},
      {"$RULE20/ipv6/config/source-flow-label", 5, 1},
      {"$RULE10/transport", {{"config", {{"vendor:vni", 5}}}}, 0},
      {"$RULE30/action/encapsulate-gre", json::object(), 2},
      {"$RULE30/action/config/next-hop", "192.0.2.1", 2},
      {"$RULE10/action/config/decapsulate-gre", true, 0},
  };
  for (const Unsupported& row : rows) {
    const json document = fullDocumentWith({{row.place, row.value}});
    Configuration expected = fullConfiguration();
    auto& rules = expected.networkInstances[0].policies[0].rules;
    rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(row.rule));
    const ReadConfiguration read = readLeniently(document);
    EXPECT_TRUE(read.configuration == expected) << row.place;
    ASSERT_EQ(read.warnings.size(), 1U) << row.place;
    EXPECT_EQ(read.warnings[0], refusalOf(document) + "; the rule is left out");
  }
}

TEST(LenientReader, StillRefusesWrongValues) {
  const json document = fullDocumentWith({{"$RULE10/ipv4/config/dscp", 64}, {"$RULE20/l2", 1}});
  EXPECT_EQ(
      refusalOf(document, Leniency::lenient),
      lineOf(document, "$RULE10/ipv4/config/dscp", "must be a whole number from 0 to 63, not 64"));
}

TEST(LenientReader, LeavesOutTheRulesThatNameASetWithSomethingUnsupported) {
  const json document = fullDocumentWith({{"$PORTSET/config/vendor:except", {80}}});
  Configuration expected = fullConfiguration();
  expected.networkInstances[0].policies[1].rules.pop_back();
  const ReadConfiguration read = readLeniently(document);
  EXPECT_TRUE(read.configuration == expected);
  const std::string names = "names port-set \"W\", which is not supported; the rule is left out";
  EXPECT_THAT(read.warnings,
              ElementsAre(lineOf(document, "$PORTSET/config/vendor:except",
                                 "is not supported; supported here: exclude-port, name or port; "
                                 "rules that name the set are left out"),
                          lineOf(document, "$RULE50/transport/config/destination-port-set", names),
                          lineOf(document, "$RULE50/transport/config/source-port-set", names)));
}

// `count` ports with a gap of `gap` ports between them.
json portsWithGaps(unsigned count, unsigned gap) {
  json ports = json::array();
  for (unsigned number = 0; number < count; ++number)
    ports.push_back(1 + number * (gap + 1));
  return ports;
}

TEST(PortSet, WithTooManyRangesIsOneErrorHoweverManyRulesNameIt) {
  const json document = fullDocumentWith(
      {{"$PORTSET/config/port", portsWithGaps(300, 1)}, without("$PORTSET/config/exclude-port")});
  EXPECT_EQ(refusalOf(document),
            lineOf(document, "$PORTSET/config/port",
                   "must have at most 256 ranges, where ports beside each other are one range, "
                   "not 300"));
}

TEST(PortSet, WithTooManyRangesLeavesOutItsRulesIfTheReaderIsLenient) {
  const json document = fullDocumentWith(
      {{"$PORTSET/config/port", portsWithGaps(300, 1)}, without("$PORTSET/config/exclude-port")});
  Configuration expected = fullConfiguration();
  expected.networkInstances[0].policies[1].rules.pop_back();
  const ReadConfiguration read = readLeniently(document);
  EXPECT_TRUE(read.configuration == expected);
  EXPECT_EQ(read.warnings.size(), 3U);
}

TEST(PortSet, HasPortsBesideEachOtherAsOneRange) {
  const json document = fullDocumentWith(
      {{"$PORTSET/config/port", portsWithGaps(30000, 0)}, without("$PORTSET/config/exclude-port")});
  const auto read = readOpenConfig(document.dump(), "f.json").configuration;
  const std::vector<PolicyMap::NumberRange> all{{1, 30000}};
  EXPECT_EQ(read.networkInstances.at(0).policies.at(1).rules.at(1).match.sourcePorts, all);
}

TEST(PortSet, OfAWrongPortIsNotAlsoEmpty) {
  const json document =
      fullDocumentWith({{"$PORTSET/config/port", {"x", 7}}, {"$PORTSET/config/exclude-port", {7}}});
  EXPECT_THAT(linesOf(refusalOf(document)), ElementsAre(HasSubstr("/port[1]: must be a number")));
}

TEST(PrefixSet, OfAWrongPrefixIsNotAlsoEmpty) {
  const json document = fullDocumentWith({{"$V4SET/config/prefix", {"x", "10.0.0.0/8"}},
                                          {"$V4SET/config/exclude-prefix", {"10.0.0.0/8"}}});
  EXPECT_THAT(linesOf(refusalOf(document)), ElementsAre(HasSubstr("/prefix[1]: must be an IPv4")));
}

TEST(LenientReader, ReadsARightDocumentAsTheStrictOneDoes) {
  EXPECT_TRUE(readLeniently(fullDocument()).configuration == fullConfiguration());
  EXPECT_EQ(readLeniently(fullDocument()).warnings, Texts{});
}

TEST(ForeignInstance, IsSkippedWithOneWarning) {
  const json document =
      fullDocumentWith({{"/network-instances/network-instance/2",
                         json::parse(R"({"name": "bridge", "config": {"name": "bridge",
                        "type": "openconfig-network-instance-types:L2VSI", "mtu": 5},
                        "vlans": {}, "interfaces": 7})")}});
  EXPECT_THAT(warningsOf(document),
              ElementsAre(lineOf(document, "/network-instances/network-instance/2",
                                 "is an instance of type \"L2VSI\"; only DEFAULT_INSTANCE and "
                                 "L3VRF are read, ignored")));
  EXPECT_TRUE(readLeniently(document).configuration == fullConfiguration());
}

TEST(ForeignInstance, HasANameOfItsOwn) {
  const json document = fullDocumentWith({{"/network-instances/network-instance/2",
                                           {{"name", "red"}, {"config", {{"type", "L2VSI"}}}}}});
  EXPECT_EQ(refusalOf(document), lineOf(document, "/network-instances/network-instance/2",
                                        "is given twice; each key may stand once in its list"));
}

TEST(DisabledInstance, IsAsIfItWereNotConfigured) {
  const json document = fullDocumentWith({{"$RED/config/enabled", false}, {"$RED/mtu", 3}});
  const json absent = fullDocumentWith({without("$RED")});
  const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
  EXPECT_TRUE(read.configuration == readOpenConfig(absent.dump(), "f.json").configuration);
  EXPECT_EQ(read.warnings, warningsOf(absent));
  EXPECT_EQ(read.warnings.size(), 4U);
}

TEST(DisabledInstance, IsNotTheDefaultInstance) {
  const json disabled =
      json::parse(R"({"name": "old", "config": {"type": "DEFAULT_INSTANCE", "enabled": false}})");
  for (const char* const name : {"DEFAULT", "main"}) {
    json document = fullDocumentWith({{"$DEFAULT/name", name},
                                      {"$DEFAULT/config/name", name},
                                      {"$RED/config/fallback-network-instance", name},
                                      {"$RULE20/action/config/post-decap-network-instance", name}});
    json& instances = document["network-instances"]["network-instance"];
    instances.insert(instances.begin(), disabled);
    const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
    Configuration expected = fullConfiguration();
    if (name == std::string("main")) expected.defaultName = "main";
    EXPECT_TRUE(read.configuration == expected) << name;
    EXPECT_THAT(read.warnings, IsEmpty()) << name;
  }
}

TEST(ForeignPolicy, IsSkippedWithOneWarningUnlessItIsApplied) {
  const Change foreign{"$DEFAULT/policy-forwarding/policies/policy/2",
                       json::parse(R"({"policy-id": "M", "odd": 1, "rules": 5, "config":
                         {"type": "openconfig-policy-forwarding:MATCH_ACTION_POLICY"}})")};
  const json document = fullDocumentWith({foreign});
  EXPECT_THAT(warningsOf(document),
              ElementsAre(lineOf(document, foreign.place,
                                 "is a policy of type \"MATCH_ACTION_POLICY\"; only "
                                 "VRF_SELECTION_POLICY and PBR_POLICY are read, ignored")));
  EXPECT_TRUE(readLeniently(document).configuration == fullConfiguration());
  const std::string leaf = "$BINDING/config/apply-forwarding-policy";
  const json applied = fullDocumentWith({foreign, {leaf, "M"}});
  EXPECT_EQ(refusalOf(applied),
            lineOf(applied, leaf,
                   "must be a policy of type PBR_POLICY, not \"M\" of type MATCH_ACTION_POLICY"));
}

TEST(ForeignPolicy, WithoutAnIdHidesNoUnknownPolicy) {
  const std::string leaf = "$BINDING/config/apply-forwarding-policy";
  const json document = fullDocumentWith({{"$DEFAULT/policy-forwarding/policies/policy/2",
                                           {{"config", {{"type", "MATCH_ACTION_POLICY"}}}}},
                                          {leaf, "missing"}});
  EXPECT_EQ(
      refusalOf(document),
      lineOf(document, leaf, "must be a policy of the same network instance, not \"missing\""));
}

TEST(ForeignNextHop, IsLeftOutWithOneWarningAndItsRouteIfItHasNoOther) {
  const std::string what =
      "only an IP address, an interface or DROP is read; the next hop is ignored, and its route "
      "if it has no other";
  for (const char* const kind :
       {"LOCAL_LINK", "openconfig-local-routing:LOCAL_LINK", "vendor:LOCAL_LINK"}) {
    const json alone = fullDocumentWith({{"$HOP/config/next-hop", kind}, {"$HOP/odd", 1}});
    Configuration expected = fullConfiguration();
    expected.networkInstances[1].staticRoutes.clear();
    EXPECT_TRUE(readLeniently(alone).configuration == expected);
    EXPECT_THAT(warningsOf(alone), ElementsAre(lineOf(alone, "$HOP", what)));
  }
  const json beside =
      fullDocumentWith({{"$ROUTE/next-hops/next-hop/1",
                         {{"index", "1"}, {"config", {{"nh-network-instance", "red"}}}}}});
  EXPECT_TRUE(readLeniently(beside).configuration == fullConfiguration());
  EXPECT_THAT(warningsOf(beside), ElementsAre(lineOf(beside, "$ROUTE/next-hops/next-hop/1", what)));
}

TEST(ForeignNextHop, IsOneInAnotherInstance) {
  for (const char* const leaf : {"nh-network-instance", "next-network-instance"}) {
    const json document = fullDocumentWith(
        {{"$ROUTE/next-hops/next-hop/1", {{"index", "1"}, {"config", {{leaf, "red"}}}}}});
    EXPECT_TRUE(readLeniently(document).configuration == fullConfiguration()) << leaf;
    EXPECT_THAT(warningsOf(document), ::testing::SizeIs(1)) << leaf;
  }
}

TEST(ForeignNextHop, OfAGroupLeavesItsRouteOut) {
  const json document = fullDocumentWith(
      {without("$ROUTE/next-hops"), {"$ROUTE/next-hop-group", {{"config", {{"name", "G"}}}}}});
  Configuration expected = fullConfiguration();
  expected.networkInstances[1].staticRoutes.clear();
  EXPECT_TRUE(readLeniently(document).configuration == expected);
  EXPECT_THAT(warningsOf(document),
              ElementsAre(lineOf(document, "$ROUTE",
                                 "only next-hops are read; the route, which has a next-hop-group, "
                                 "is left out")));
}

TEST(DisabledProtocol, HasNoRoutes) {
  const std::string enabled = "$PROTOCOL/config/enabled";
  Configuration expected = fullConfiguration();
  EXPECT_TRUE(readLeniently(fullDocumentWith({{enabled, true}})).configuration == expected);
  expected.networkInstances[1].staticRoutes.clear();
  const json disabled = fullDocumentWith({{enabled, false}});
  EXPECT_TRUE(readLeniently(disabled).configuration == expected);
  EXPECT_THAT(warningsOf(disabled), ElementsAre());
}

TEST(MisspeltDrop, IsAnErrorThatNamesIt) {
  for (const char* const way :
       {"DORP", "DROPP", "DRP", "drop", "Drop", "DROP ", "openconfig-local-routing:DROPS",
        "openconfig-local-routing:drop", "vendor:drop", "oc-loc-rt:DROP", "oc-loc-rt:DROPP"}) {
    const json document =
        fullDocumentWith({{"$HOP/config/next-hop", way}, without("$HOP/interface-ref")});
    EXPECT_EQ(refusalOf(document), lineOf(document, "$HOP/config/next-hop",
                                          "must be an IP address or DROP, not " + json(way).dump() +
                                              "; did you mean 'DROP'?"));
  }
}

TEST(DocumentWithoutInstances, IsRightAndEmpty) {
  EXPECT_TRUE(readOpenConfig(R"({"network-instances": {}})", "f").configuration == Configuration{});
}

TEST(WrappedDocument, IsReadAsTheDocument) {
  const json document = fullDocument();
  const json rows[] = {
      {{"path", ""}, {"val", document}},
      {{"path", "/"}, {"val", document}},
      {{"val", document}, {"path", "anything"}},
  };
  for (const json& row : rows) {
    EXPECT_TRUE(readOpenConfig(row.dump(), "f").configuration == fullConfiguration());
    EXPECT_EQ(warningsOf(row), Texts{});
  }
}

TEST(WrappedDocument, MayHaveTheInstancesAtTheTop) {
  const json whole = json::parse(R"({"network-instances": {"network-instance": [
      {"name": "default"}, {"name": "red", "config": {"type": "L3VRF"}}]}})");
  const json instances = whole["network-instances"];
  const Configuration expected = readOpenConfig(whole.dump(), "f").configuration;
  ASSERT_EQ(expected.networkInstances.size(), 2U);
  const json prefixed{
      {"openconfig-network-instance:network-instance", instances["network-instance"]}};
  for (const json& row :
       {instances, prefixed, json{{"path", "/network-instances"}, {"val", instances}},
        json{{"path", "openconfig-network-instance:network-instances"}, {"val", prefixed}}}) {
    EXPECT_TRUE(readOpenConfig(row.dump(), "f").configuration == expected) << row;
    EXPECT_EQ(warningsOf(row), Texts{});
  }
}

TEST(WrappedDocument, MayBeAnInnerPartAtItsPath) {
  const json row = json::parse(R"({
      "path": "/network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies",
      "val": {"policy": [{"policy-id": "P/1", "rules": {"rule": [{"sequence-id": "x"}]}}]}})");
  EXPECT_EQ(refusalOf(row),
            "f.json: /network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/"
            "policy[policy-id=P/1]/rules/rule[sequence-id=x]/sequence-id: must be a whole number "
            "from 0 to 4294967295, not \"x\"");
  const json rule = json::parse(R"({"val": {"action": {"config": {"discard": true}}}, "path":
      "network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/policy[policy-id=P/1]/rules/rule[sequence-id=7]"})");
  const auto read = readOpenConfig(rule.dump(), "f").configuration;
  EXPECT_EQ(read.networkInstances.at(0).policies.at(0).policyId, "P/1");
  EXPECT_EQ(read.networkInstances.at(0).policies.at(0).rules.at(0).sequenceId, 7U);
}

TEST(WrappedDocument, HasAPathThatCanBeRead) {
  for (const json& path : {json(5), json("/a[b"), json("/a[b]"), json("/a[b=c]d")}) {
    const json document{{"path", path}, {"val", json::object()}};
    EXPECT_EQ(refusalOf(document),
              "f.json: /path: must be a path such as \"/network-instances\" or "
              "\"/network-instances/network-instance[name=red]\"");
  }
}

TEST(WrappedDocument, HasAtMostAsManyStepsAsADocumentHasLevels) {
  std::string path;
  for (int step = 0; step < 101; ++step)
    path += "/a";
  EXPECT_EQ(refusalOf({{"path", path}, {"val", json::object()}}),
            "f.json: /path: must have at most 100 steps, not 101");
}

TEST(WrappedDocument, RepeatsTheKeysOfThePath) {
  const std::string path = "/network-instances/network-instance[name=red]";
  const json config{{"type", "L3VRF"}};
  EXPECT_EQ(refusalOf({{"path", path}, {"val", {{"name", "blue"}, {"config", config}}}}),
            "f.json: /val/name: must repeat the key \"red\" of the path, not differ from it");
  const json right{{"path", path}, {"val", {{"name", "red"}, {"config", config}}}};
  EXPECT_EQ(readOpenConfig(right.dump(), "f.json").configuration.networkInstances.at(0).name,
            "red");
}

TEST(WrappedDocument, HasNoMemberBesideItsPathAndValue) {
  const json right{{"path", "/"}, {"val", fullDocument()}};
  for (const char* const name : {"delete", "vendor:odd\n"}) {
    json document = right;
    document[name] = json::object();
    EXPECT_EQ(refusalOf(document),
              "f.json: /" + printable(name) +
                  ": must not stand beside \"path\" and \"val\", which are a whole document");
  }
}

TEST(WrappedDocument, HasBackslashesInFrontOfBracketsAndBackslashesOfKeys) {
  const std::string name = R"(a]b\c/[d)";
  const json document{{"path", R"(/network-instances/network-instance[name=a\]b\\c/[d])"},
                      {"val", {{"config", {{"name", name}, {"type", "L3VRF"}}}}}};
  const auto read = readOpenConfig(document.dump(), "f.json").configuration;
  ASSERT_EQ(read.networkInstances.size(), 1U);
  EXPECT_EQ(read.networkInstances[0].name, name);
}

TEST(WrappedDocument, HasNoPathThatEndsInsideOfAKey) {
  for (const char* const path : {R"(/a[b=c\])", R"(/a[b=c\)", R"(/a[b=c]\)", R"(/a[b\=c])"}) {
    EXPECT_THAT(refusalOf({{"path", path}, {"val", json::object()}}),
                HasSubstr("/path: must be a path such as"))
        << path;
  }
}

TEST(WrappedDocument, IsNoPartOfARule) {
  const std::string rule =
      "network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/"
      "policy[policy-id=P]/rules/openconfig-any:rule[sequence-id=7]";
  for (const char* const part : {"/action", "/ipv4/config", "/ipv4/config/dscp", "/unknown"}) {
    EXPECT_EQ(refusalOf({{"path", rule + part}, {"val", json::object()}}),
              "f.json: /path: must end at the rule \"" + rule +
                  "\" or above it; a rule is read as a whole");
  }
}

}  // namespace
}  // namespace ZelAgent
