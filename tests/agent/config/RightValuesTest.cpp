// Each value that is right has its effect, and no other.
#include <gtest/gtest.h>

#include <set>

#include "tests/agent/config/FullDocument.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

NetworkInstance& redOf(Configuration& configuration) {
  return configuration.networkInstances.at(1);
}

Policy& policyOf(Configuration& configuration) {
  return configuration.networkInstances.at(0).policies.at(0);
}

RuleMatch& matchV4(Configuration& configuration) {
  return policyOf(configuration).rules.at(0).match;
}

RuleMatch& matchV6(Configuration& configuration) {
  return policyOf(configuration).rules.at(1).match;
}

NextHop& hopOf(Configuration& configuration) {
  return redOf(configuration).staticRoutes.at(0).nextHops.at(0);
}

PolicyBinding& bindingOf(Configuration& configuration) {
  return configuration.networkInstances.at(0).policyBindings.at(0);
}

struct RightValue {
  const char* name;
  std::vector<Change> changes;
  void (*effect)(Configuration&);

  friend std::ostream& operator<<(std::ostream& stream, const RightValue& value) {
    return stream << value.name;
  }
};

void noEffect(Configuration& /*configuration*/) {}

using C = Configuration;

const std::string longestName(100, 'n');

std::vector<RightValue> instanceRows() {
  const std::string prefixed = "openconfig-network-instance-types:";
  return {
      {"LongestInstanceName",
       {{"$RED/name", longestName},
        {"$RED/config/name", longestName},
        {"$RULE10/action/config/network-instance", longestName},
        {"$RULE20/action/config/decap-network-instance", longestName},
        {"$RULE20/action/config/decap-fallback-network-instance", longestName}},
       [](C& c) {
         redOf(c).name = longestName;
         policyOf(c).rules[0].action = LookUp{longestName};
         policyOf(c).rules[1].action = Decapsulate{longestName, longestName, "default"};
       }},
      {"DefaultInstanceByItsOtherName",
       {{"$DEFAULT/name", "default"}, {"$DEFAULT/config/name", "default"}},
       noEffect},
      {"DefaultInstanceWhoseCopyHasTheOtherName", {{"$DEFAULT/config/name", "default"}}, noEffect},
      {"DefaultType", {{"$DEFAULT/config/type", prefixed + "DEFAULT_INSTANCE"}}, noEffect},
      {"L3VrfType", {{"$RED/config/type", prefixed + "L3VRF"}}, noEffect},
      {"TypeWithAnyOpenConfigPrefix", {{"$RED/config/type", "openconfig-:L3VRF"}}, noEffect},
      {"NoFallback",
       {without("$RED/config/fallback-network-instance")},
       [](C& c) { redOf(c).fallback = ""; }},
      {"FallbackByTheOtherName", {{"$RED/config/fallback-network-instance", "default"}}, noEffect},
      {"FallbackToItself",
       {{"$RED/config/fallback-network-instance", "red"}},
       [](C& c) { redOf(c).fallback = "red"; }},
      {"NoInterfaces", {without("$RED/interfaces")}, [](C& c) { redOf(c).interfaces.clear(); }},
      {"NoInterfaceInTheContainer",
       {without("$RED/interfaces/interface")},
       [](C& c) { redOf(c).interfaces.clear(); }},
      {"EmptyListOfInterfaces",
       {{"$RED/interfaces/interface", json::array()}},
       [](C& c) { redOf(c).interfaces.clear(); }},
      {"InterfaceByItsId",
       {without("$INTERFACE/config")},
       [](C& c) { redOf(c).interfaces = {"i2"}; }},
      {"InterfaceWithoutSubinterface",
       {without("$INTERFACE/config/subinterface")},
       [](C& c) { redOf(c).interfaces = {"e2"}; }},
      {"InterfaceOfSubinterface0",
       {{"$INTERFACE/config/subinterface", 0}},
       [](C& c) { redOf(c).interfaces = {"e2"}; }},
      {"InterfaceOfTheLastSubinterface",
       {{"$INTERFACE/config/subinterface", 4294967295}},
       [](C& c) { redOf(c).interfaces = {"e2.4294967295"}; }},
      {"LongestInterface",
       {{"$INTERFACE/config/interface", std::string(98, 'n')}},
       [](C& c) { redOf(c).interfaces = {std::string(98, 'n') + ".2"}; }},
      {"TwoInterfaces",
       {{"$RED/interfaces/interface/1", {{"id", "i4"}}}},
       [](C& c) {
         redOf(c).interfaces = {"e2.2", "i4"};
       }},
      {"TwoSubinterfacesOfOneInterface",
       {{"$RED/interfaces/interface/1",
         {{"id", "i4"}, {"config", {{"interface", "e2"}, {"subinterface", 3}}}}}},
       [](C& c) {
         redOf(c).interfaces = {"e2.2", "e2.3"};
       }},
  };
}

std::vector<RightValue> routeRows() {
  return {
      {"NoProtocols", {without("$RED/protocols")}, [](C& c) { redOf(c).staticRoutes.clear(); }},
      {"NoRoutes",
       {without("$PROTOCOL/static-routes")},
       [](C& c) { redOf(c).staticRoutes.clear(); }},
      {"StaticWithPrefix", {{"$PROTOCOL/identifier", "openconfig-policy-types:STATIC"}}, noEffect},
      {"StaticCopyWithPrefix",
       {{"$PROTOCOL/config/identifier", "openconfig-policy-types:STATIC"}},
       noEffect},
      {"EmptyNameOfAProtocol", {{"$PROTOCOL/name", ""}, {"$PROTOCOL/config/name", ""}}, noEffect},
      {"TwoStaticProtocolsOfDifferentNames",
       {{"$RED/protocols/protocol/1", {{"identifier", "STATIC"}, {"name", "t"}}}},
       noEffect},
      {"ShortestPrefix",
       {{"$ROUTE/prefix", "0.0.0.0/0"}, without("$ROUTE/config")},
       [](C& c) { redOf(c).staticRoutes[0].prefix = *parseIpPrefix("0.0.0.0/0"); }},
      {"LongestPrefix",
       {{"$ROUTE/prefix", "203.0.113.1/32"}, without("$ROUTE/config")},
       [](C& c) { redOf(c).staticRoutes[0].prefix = *parseIpPrefix("203.0.113.1/32"); }},
      {"ShortestPrefixOfIpv6",
       {{"$ROUTE/prefix", "::/0"}, without("$ROUTE/config")},
       [](C& c) { redOf(c).staticRoutes[0].prefix = *parseIpPrefix("::/0"); }},
      {"LongestPrefixOfIpv6",
       {{"$ROUTE/prefix", "2001:db8::1/128"}, without("$ROUTE/config")},
       [](C& c) { redOf(c).staticRoutes[0].prefix = *parseIpPrefix("2001:db8::1/128"); }},
      {"PrefixWithBitsBehindItsLength", {{"$ROUTE/prefix", "203.0.113.9/24"}}, noEffect},
      {"CopyWithBitsBehindItsLength", {{"$ROUTE/config/prefix", "203.0.113.9/24"}}, noEffect},
      {"EmptyIndex",
       {{"$HOP/index", ""}, {"$HOP/config/index", ""}},
       [](C& c) { hopOf(c).index = ""; }},
      {"AddressOfIpv6",
       {{"$HOP/config/next-hop", "2001:db8::7"}},
       [](C& c) { hopOf(c).address = parseIpAddress("2001:db8::7"); }},
      {"AddressWithoutInterface",
       {without("$HOP/interface-ref")},
       [](C& c) { hopOf(c).interface = ""; }},
      {"InterfaceWithoutAddress",
       {without("$HOP/config/next-hop")},
       [](C& c) { hopOf(c).address = std::nullopt; }},
      {"InterfaceWithoutConfig",
       {without("$HOP/config")},
       [](C& c) { hopOf(c).address = std::nullopt; }},
      {"Drop",
       {{"$HOP/config/next-hop", "DROP"}, without("$HOP/interface-ref")},
       [](C& c) {
         hopOf(c) = {"0", std::nullopt, "", true};
       }},
      {"DropWithPrefix",
       {{"$HOP/config/next-hop", "openconfig-local-routing:DROP"}, without("$HOP/interface-ref")},
       [](C& c) {
         hopOf(c) = {"0", std::nullopt, "", true};
       }},
      {"DropWithAnEmptyInterfaceRef",
       {{"$HOP/config/next-hop", "DROP"}, {"$HOP/interface-ref", json::object()}},
       [](C& c) {
         hopOf(c) = {"0", std::nullopt, "", true};
       }},
      {"NextHopOfSubinterface0",
       {{"$HOP/interface-ref/config/subinterface", 0}},
       [](C& c) { hopOf(c).interface = "e3"; }},
      {"NextHopOfTheLastSubinterface",
       {{"$HOP/interface-ref/config/subinterface", 4294967295}},
       [](C& c) { hopOf(c).interface = "e3.4294967295"; }},
      {"TwoNextHopsInTheirOrder",
       {{"$ROUTE/next-hops/next-hop/1", {{"index", "00"}, {"config", {{"next-hop", "DROP"}}}}}},
       [](C& c) {
         redOf(c).staticRoutes[0].nextHops.push_back({"00", std::nullopt, "", true});
       }},
      {"TwoRoutesInTheirOrder",
       {{"$PROTOCOL/static-routes/static/1",
         json::parse(R"({"prefix": "203.0.113.0/25", "next-hops": {"next-hop": [
                         {"index": "0", "config": {"next-hop": "192.0.2.9"}}]}})")}},
       [](C& c) {
         redOf(c).staticRoutes.push_back(
             {*parseIpPrefix("203.0.113.0/25"), {{"0", parseIpAddress("192.0.2.9"), "", false}}});
       }},
  };
}

std::vector<RightValue> ruleRows() {
  return {
      {"NoPolicyForwarding",
       {without("$DEFAULT/policy-forwarding")},
       [](C& c) {
         c.networkInstances[0].policies.clear();
         c.networkInstances[0].policyBindings.clear();
       }},
      {"NoRules", {without("$POLICY/rules")}, [](C& c) { policyOf(c).rules.clear(); }},
      {"LongestPolicyId",
       {{"$POLICY/policy-id", longestName},
        {"$POLICY/config/policy-id", longestName},
        {"$BINDING/config/apply-vrf-selection-policy", longestName}},
       [](C& c) {
         policyOf(c).policyId = longestName;
         bindingOf(c).policyId = longestName;
       }},
      {"PolicyTypeWithPrefix",
       {{"$POLICY/config/type", "openconfig-policy-forwarding:VRF_SELECTION_POLICY"}},
       noEffect},
      {"FirstSequenceId",
       {{"$RULE10/sequence-id", 0}, {"$RULE10/config/sequence-id", 0}},
       [](C& c) { policyOf(c).rules[0].sequenceId = 0; }},
      {"LastSequenceIdIsTriedLast",
       {{"$RULE10/sequence-id", 4294967295}, {"$RULE10/config/sequence-id", 4294967295}},
       [](C& c) {
         auto& rules = policyOf(c).rules;
         rules[0].sequenceId = 4294967295;
         rules = {rules[1], rules[2], rules[0]};
       }},
      {"FirstProtocol",
       {{"$RULE10/ipv4/config/protocol", 0}},
       [](C& c) { matchV4(c).protocol = std::uint8_t{0}; }},
      {"LastProtocol",
       {{"$RULE10/ipv4/config/protocol", 255}},
       [](C& c) { matchV4(c).protocol = std::uint8_t{255}; }},
      {"NoProtocol",
       {without("$RULE10/ipv4/config/protocol")},
       [](C& c) { matchV4(c).protocol = std::nullopt; }},
      {"FirstDscp",
       {{"$RULE10/ipv4/config/dscp", 0}},
       [](C& c) { matchV4(c).dscp = std::uint8_t{0}; }},
      {"LastDscp",
       {{"$RULE10/ipv4/config/dscp", 63}},
       [](C& c) { matchV4(c).dscp = std::uint8_t{63}; }},
      {"NoDscp",
       {without("$RULE10/ipv4/config/dscp")},
       [](C& c) { matchV4(c).dscp = std::nullopt; }},
      {"DscpSetInItsOrder",
       {{"$RULE10/ipv4/config/dscp-set", {63, 0, 7}}},
       [](C& c) {
         matchV4(c).dscpSet = {63, 0, 7};
       }},
      {"EmptyDscpSet",
       {{"$RULE10/ipv4/config/dscp-set", json::array()}},
       [](C& c) { matchV4(c).dscpSet.clear(); }},
      {"NoDscpSet",
       {without("$RULE10/ipv4/config/dscp-set")},
       [](C& c) { matchV4(c).dscpSet.clear(); }},
      {"SourceOfAnyAddress",
       {{"$RULE10/ipv4/config/source-address", "0.0.0.0/0"}},
       [](C& c) { matchV4(c).source = parseIpPrefix("0.0.0.0/0"); }},
      {"SourceOfOneAddress",
       {{"$RULE10/ipv4/config/source-address", "10.1.2.3/32"}},
       [](C& c) { matchV4(c).source = parseIpPrefix("10.1.2.3/32"); }},
      {"NoSource",
       {without("$RULE10/ipv4/config/source-address")},
       [](C& c) { matchV4(c).source = std::nullopt; }},
      {"NoDestination",
       {without("$RULE10/ipv4/config/destination-address")},
       [](C& c) { matchV4(c).destination = std::nullopt; }},
      {"OnlyTheFamily",
       {without("$RULE10/ipv4/config")},
       [](C& c) {
         matchV4(c) = {};
         matchV4(c).family = IpFamily::v4;
       }},
      {"NoMatch", {without("$RULE10/ipv4")}, [](C& c) { matchV4(c) = {}; }},
      {"FirstValuesOfIpv6",
       {{"$RULE20/ipv6/config/protocol", 0},
        {"$RULE20/ipv6/config/dscp", 0},
        {"$RULE20/ipv6/config/dscp-set", {0}},
        {"$RULE20/ipv6/config/source-address", "::/0"},
        {"$RULE20/ipv6/config/destination-address", "::/0"}},
       [](C& c) {
         matchV6(c) = {IpFamily::v6, std::uint8_t{0},       std::uint8_t{0},
                       {0},          parseIpPrefix("::/0"), parseIpPrefix("::/0")};
       }},
      {"LastValuesOfIpv6",
       {{"$RULE20/ipv6/config/protocol", 255},
        {"$RULE20/ipv6/config/dscp", 63},
        {"$RULE20/ipv6/config/dscp-set", {63}},
        {"$RULE20/ipv6/config/source-address", "2001:db8::1/128"},
        {"$RULE20/ipv6/config/destination-address", "2001:db8::2/128"}},
       [](C& c) {
         matchV6(c) = {IpFamily::v6,
                       std::uint8_t{255},
                       std::uint8_t{63},
                       {63},
                       parseIpPrefix("2001:db8::1/128"),
                       parseIpPrefix("2001:db8::2/128")};
       }},
      {"OnlyTheFamilyIpv6",
       {{"$RULE20/ipv6", json::object()}},
       [](C& c) {
         matchV6(c) = {};
         matchV6(c).family = IpFamily::v6;
       }},
  };
}

std::vector<RightValue> actionRows() {
  return {
      {"NoActionContainer",
       {without("$RULE10/action")},
       [](C& c) { policyOf(c).rules[0].action = NoAction{}; }},
      {"NoActionConfig",
       {without("$RULE10/action/config")},
       [](C& c) { policyOf(c).rules[0].action = NoAction{}; }},
      {"NoActionLeaf",
       {without("$RULE10/action/config/network-instance")},
       [](C& c) { policyOf(c).rules[0].action = NoAction{}; }},
      {"LookUpInTheDefaultInstance",
       {{"$RULE10/action/config/network-instance", "DEFAULT"}},
       [](C& c) { policyOf(c).rules[0].action = LookUp{"default"}; }},
      {"LookUpThatDoesNotDiscard", {{"$RULE10/action/config/discard", false}}, noEffect},
      {"DecapsulationThatDoesNotDiscard", {{"$RULE20/action/config/discard", false}}, noEffect},
      {"NoDiscard",
       {{"$RULE30/action/config/discard", false}},
       [](C& c) { policyOf(c).rules[2].action = NoAction{}; }},
      {"DecapInTheDefaultInstance",
       {{"$RULE20/action/config/decap-network-instance", "default"}},
       [](C& c) {
         policyOf(c).rules[1].action = Decapsulate{"default", "red", "default"};
       }},
      {"DecapFallbackInTheDefaultInstance",
       {{"$RULE20/action/config/decap-fallback-network-instance", "DEFAULT"}},
       [](C& c) {
         policyOf(c).rules[1].action = Decapsulate{"red", "default", "default"};
       }},
      {"PostDecapInAnotherInstance",
       {{"$RULE20/action/config/post-decap-network-instance", "red"}},
       [](C& c) {
         policyOf(c).rules[1].action = Decapsulate{"red", "red", "red"};
       }},
      {"NoBinding",
       {without("$DEFAULT/policy-forwarding/interfaces")},
       [](C& c) { c.networkInstances[0].policyBindings.clear(); }},
      {"BindingWithoutPolicy",
       {without("$BINDING/config/apply-vrf-selection-policy")},
       [](C& c) { bindingOf(c).policyId = ""; }},
      {"BindingWithoutConfig",
       {without("$BINDING/config")},
       [](C& c) { bindingOf(c).policyId = ""; }},
      {"BindingByItsId",
       {without("$BINDING/interface-ref")},
       [](C& c) { bindingOf(c).interface = "b1"; }},
      {"BindingByItsIdWithAnEmptyReference",
       {{"$BINDING/interface-ref/config", json::object()}},
       [](C& c) { bindingOf(c).interface = "b1"; }},
      {"BindingOfSubinterface0",
       {{"$BINDING/interface-ref/config/subinterface", 0}},
       [](C& c) { bindingOf(c).interface = "e1"; }},
      {"BindingOfTheLastSubinterface",
       {{"$BINDING/interface-ref/config/subinterface", 4294967295}},
       [](C& c) { bindingOf(c).interface = "e1.4294967295"; }},
      {"TwoBindingsOfOnePolicy",
       {{"$DEFAULT/policy-forwarding/interfaces/interface/1",
         {{"interface-id", "b2"}, {"config", {{"apply-vrf-selection-policy", "P"}}}}}},
       [](C& c) {
         c.networkInstances[0].policyBindings.push_back({"b2", "P"});
       }},
  };
}

std::vector<RightValue> rightValues() {
  std::vector<RightValue> all{{"TheFullDocument", {}, noEffect}};
  for (const auto& rows : {instanceRows(), routeRows(), ruleRows(), actionRows()})
    all.insert(all.end(), rows.begin(), rows.end());
  return all;
}

class RightValueTest : public ::testing::TestWithParam<RightValue> {};

TEST_P(RightValueTest, HasItsEffectAndNoOther) {
  Configuration expected = fullConfiguration();
  GetParam().effect(expected);
  const ReadConfiguration read =
      readOpenConfig(fullDocumentWith(GetParam().changes).dump(), "f.json");
  EXPECT_TRUE(read.configuration == expected);
  EXPECT_EQ(read.warnings, std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Each, RightValueTest, ::testing::ValuesIn(rightValues()),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ZelAgent
