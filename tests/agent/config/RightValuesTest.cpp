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
        {"$RULE40/action/config/network-instance", longestName},
        {"$RULE20/action/config/decap-network-instance", longestName},
        {"$RULE20/action/config/decap-fallback-network-instance", longestName}},
       [](C& c) {
         redOf(c).name = longestName;
         policyOf(c).rules[0].action = LookUp{longestName};
         c.networkInstances[0].policies[1].rules[0].action = LookUp{longestName};
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
      {"DisabledInterface",
       {{"$INTERFACE/config/enabled", false}},
       [](C& c) {
         c.otherInterfaces = {redOf(c).interfaces.at(0)};
         redOf(c).interfaces.clear();
       }},
      {"DefaultInstanceOfAnotherName",
       {{"$DEFAULT/name", "main"}, {"$DEFAULT/config/name", "main"}},
       [](C& c) { c.defaultName = "main"; }},
      {"ReferenceToTheDefaultInstanceByItsConfiguredName",
       {{"$DEFAULT/name", "main"},
        {"$DEFAULT/config/name", "main"},
        {"$RED/config/fallback-network-instance", "main"}},
       [](C& c) { c.defaultName = "main"; }},
      {"DefaultInstanceWithoutItsType", {without("$DEFAULT/config/type")}, noEffect},
      {"DefaultInstanceOfTheOtherNameWithoutItsType",
       {{"$DEFAULT/name", "default"}, without("$DEFAULT/config/type")},
       noEffect},
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
       {{"$RULE10/ipv4/config/dscp", 0}, without("$RULE10/ipv4/config/dscp-set")},
       [](C& c) {
         matchV4(c).dscp = std::uint8_t{0};
         matchV4(c).dscpSet.clear();
       }},
      {"LastDscp",
       {{"$RULE10/ipv4/config/dscp", 63}, without("$RULE10/ipv4/config/dscp-set")},
       [](C& c) {
         matchV4(c).dscp = std::uint8_t{63};
         matchV4(c).dscpSet.clear();
       }},
      {"NoDscp",
       {without("$RULE10/ipv4/config/dscp")},
       [](C& c) { matchV4(c).dscp = std::nullopt; }},
      {"DscpSetInItsOrder",
       {{"$RULE10/ipv4/config/dscp-set", {63, 1, 7}}},
       [](C& c) {
         matchV4(c).dscpSet = {63, 1, 7};
       }},
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

RuleMatch& matchTcp(C& configuration) {
  return configuration.networkInstances.at(0).policies.at(1).rules.at(0).match;
}

RuleMatch& matchUdp(C& configuration) {
  return configuration.networkInstances.at(0).policies.at(1).rules.at(1).match;
}

std::vector<RightValue> forwardingRows() {
  const std::string tcpConfig = "$RULE40/transport/config";
  const std::string udpConfig = "$RULE50/transport/config";
  const std::string prefix = "openconfig-packet-match-types:";
  return {
      {"PolicyOfTheModelsDefaultType",
       {without("$DEFAULT/policy-forwarding/policies/policy/1/config/type")},
       noEffect},
      {"ForwardingTypeWithPrefix",
       {{"$DEFAULT/policy-forwarding/policies/policy/1/config/type",
         "openconfig-policy-forwarding:PBR_POLICY"}},
       noEffect},
      {"LastHopLimit",
       {{"$RULE40/ipv4/config/hop-limit", 255}},
       [](C& c) { matchTcp(c).hopLimit = std::uint8_t{255}; }},
      {"LastLength",
       {{"$RULE40/ipv4/config/length", 65535}},
       [](C& c) { matchTcp(c).length = std::uint16_t{65535}; }},
      {"AnyFragment",
       {{"$RULE40/ipv4/config/fragment-offsets", {"ANY"}}},
       [](C& c) {
         matchTcp(c).fragmentOffsets.clear();
         matchTcp(c).isFragment = true;
       }},
      {"AllFragmentOffsets",
       {{"$RULE40/ipv4/config/fragment-offsets", {"0..8191", 8191}}},
       [](C& c) {
         matchTcp(c).fragmentOffsets = {{0, 8191}, {8191, 8191}};
       }},
      {"PrefixBesidePrefixSet",
       {{"$RULE40/ipv4/config/source-address", "10.0.0.0/24"}},
       [](C& c) { matchTcp(c).source = parseIpPrefix("10.0.0.0/24"); }},
      {"AnyPort",
       {{tcpConfig + "/source-port", "ANY"}},
       [](C& c) { matchTcp(c).sourcePorts = {}; }},
      {"AnyPortWithPrefix",
       {{tcpConfig + "/source-port", prefix + "ANY"}},
       [](C& c) { matchTcp(c).sourcePorts = {}; }},
      {"FirstAndLastPort",
       {{tcpConfig + "/source-port", 0}, {tcpConfig + "/destination-port", 65535}},
       [](C& c) {
         matchTcp(c).sourcePorts = {{0, 0}};
         matchTcp(c).destinationPorts = {{65535, 65535}};
       }},
      {"RangeOfOnePort",
       {{tcpConfig + "/source-port", "7..7"}},
       [](C& c) {
         matchTcp(c).sourcePorts = {{7, 7}};
       }},
      {"PortsOfTcpByIdentity", {{"$RULE40/ipv4/config/protocol", prefix + "IP_TCP"}}, noEffect},
      {"AnyOfTheFlags",
       {{tcpConfig + "/explicit-detail-match-mode", "ANY"}},
       [](C& c) {
         matchTcp(c).tcpFlags = {{2, 2}, {16, 16}};
       }},
      {"EachFlagHasItsBit",
       {{tcpConfig + "/explicit-detail-match-mode", prefix + "ANY"},
        {tcpConfig + "/explicit-tcp-flags",
         {"TCP_FIN", "TCP_SYN", "TCP_RST", "TCP_PSH", prefix + "TCP_ACK", "TCP_URG", "TCP_ECE",
          "TCP_CWR"}}},
       [](C& c) {
         matchTcp(c).tcpFlags = {{1, 1},   {2, 2},   {4, 4},   {8, 8},
                                 {16, 16}, {32, 32}, {64, 64}, {128, 128}};
       }},
      {"InitialSegments",
       {{tcpConfig, {{"detail-mode", "BUILTIN"}, {"builtin-detail", "TCP_INITIAL"}}}},
       [](C& c) {
         matchTcp(c).sourcePorts.clear();
         matchTcp(c).destinationPorts.clear();
         matchTcp(c).tcpFlags = {{18, 2}};
       }},
      {"SegmentsOfEstablishedConnections",
       {{tcpConfig, {{"detail-mode", "BUILTIN"}, {"builtin-detail", "TCP_ESTABLISHED"}}}},
       [](C& c) {
         matchTcp(c).sourcePorts.clear();
         matchTcp(c).destinationPorts.clear();
         matchTcp(c).tcpFlags = {{16, 16}, {4, 4}};
       }},
      {"FragmentsOfAnyProtocol",
       {without("$RULE50/ipv6/config/protocol"), without(udpConfig + "/source-port-set"),
        without(udpConfig + "/destination-port-set")},
       [](C& c) {
         matchUdp(c).protocol = std::nullopt;
         matchUdp(c).sourcePorts.clear();
         matchUdp(c).destinationPorts.clear();
       }},
      {"NoTransport",
       {without("$RULE50/transport")},
       [](C& c) {
         matchUdp(c).sourcePorts.clear();
         matchUdp(c).destinationPorts.clear();
         matchUdp(c).fragmentOffsets.clear();
       }},
      {"SetWithoutExclusions",
       {without("$V6SET/config/exclude-prefix"), {"$V4SET/config/exclude-prefix", json::array()}},
       [](C& c) {
         c.prefixSets[0].excluded.clear();
         c.prefixSets[1].excluded.clear();
       }},
      {"PortsOfASetAreJoined",
       {{"$PORTSET/config/port", {"10..20", 5, "15..30", 6}},
        without("$PORTSET/config/exclude-port")},
       [](C& c) {
         matchUdp(c).sourcePorts = matchUdp(c).destinationPorts = {{5, 6}, {10, 30}};
       }},
      {"AnyPortOfASetButSome",
       {{"$PORTSET/config/port", {"ANY"}},
        {"$PORTSET/config/exclude-port", {"0..9", 65535, "100..199", "150..160"}}},
       [](C& c) {
         matchUdp(c).sourcePorts = matchUdp(c).destinationPorts = {{10, 99}, {200, 65534}};
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
      {"BindingWithoutForwardingPolicy",
       {without("$BINDING/config/apply-forwarding-policy")},
       [](C& c) { bindingOf(c).forwardingPolicyId = ""; }},
      {"BindingWithoutConfig",
       {without("$BINDING/config")},
       [](C& c) {
         bindingOf(c).policyId = "";
         bindingOf(c).forwardingPolicyId = "";
       }},
      {"DisabledBinding",
       {{"$BINDING/config/enabled", false}},
       [](C& c) {
         c.otherInterfaces = {bindingOf(c).interface};
         c.networkInstances[0].policyBindings.clear();
       }},
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
  for (const auto& rows : {instanceRows(), routeRows(), ruleRows(), forwardingRows(), actionRows()})
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
