// Every way in which a well-formed document can be wrong, each made by one change to a right one,
// with the whole message. Read by the tests of the reader and by those of the agent.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <utility>

namespace ZelAgent {

inline nlohmann::json rightDocument() {
  return nlohmann::json::parse(R"({"network-instances": {"network-instance": [
    {"name": "DEFAULT", "config": {"name": "DEFAULT", "type": "DEFAULT_INSTANCE"},
     "policy-forwarding": {
       "policies": {"policy": [{"policy-id": "P",
         "config": {"policy-id": "P", "type": "VRF_SELECTION_POLICY"},
         "rules": {"rule": [
           {"sequence-id": 10, "config": {"sequence-id": 10},
            "ipv4": {"config": {"protocol": 4, "dscp": 1, "dscp-set": [1, 2],
                                "source-address": "10.0.0.0/8"}},
            "action": {"config": {"network-instance": "red"}}},
           {"sequence-id": 20, "config": {"sequence-id": 20},
            "action": {"config": {"decap-network-instance": "red",
                                  "decap-fallback-network-instance": "red",
                                  "post-decap-network-instance": "DEFAULT"}}}]}}]},
       "interfaces": {"interface": [
         {"interface-id": "e1", "config": {"interface-id": "e1", "apply-vrf-selection-policy": "P"}}]}}},
    {"name": "red", "config": {"name": "red", "type": "L3VRF"},
     "interfaces": {"interface": [{"id": "e2", "config": {"id": "e2", "interface": "e2"}}]},
     "protocols": {"protocol": [{"identifier": "STATIC", "name": "s",
       "static-routes": {"static": [{"prefix": "10.0.0.0/8",
         "next-hops": {"next-hop": [{"index": "0", "config": {"next-hop": "192.0.2.1"}}]}}]}}]}}
  ]}})");
}

struct BadInput {
  const char* name;
  // A JSON patch. Its paths begin with $INSTANCES, $POLICY, $RULE10, $RULE20,
  // $BINDING or $ROUTE.
  const char* change;
  const char* message;  // may hold the same words, for the paths that messages give

  friend std::ostream& operator<<(std::ostream& stream, const BadInput& input) {
    return stream << input.name;
  }
};

inline constexpr std::pair<const char*, std::pair<const char*, const char*>> places[] = {
    {"$INSTANCES", {"/network-instances/network-instance", "/network-instances/network-instance"}},
    {"$POLICY",
     {"/network-instances/network-instance/0/policy-forwarding/policies/policy/0",
      "/network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/"
      "policy[policy-id=P]"}},
    {"$RULE10",
     {"/network-instances/network-instance/0/policy-forwarding/policies/policy/0/rules/rule/0",
      "/network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/"
      "policy[policy-id=P]/rules/rule[sequence-id=10]"}},
    {"$RULE20",
     {"/network-instances/network-instance/0/policy-forwarding/policies/policy/0/rules/rule/1",
      "/network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/"
      "policy[policy-id=P]/rules/rule[sequence-id=20]"}},
    {"$BINDING",
     {"/network-instances/network-instance/0/policy-forwarding/interfaces/interface/0",
      "/network-instances/network-instance[name=DEFAULT]/policy-forwarding/interfaces/"
      "interface[interface-id=e1]"}},
    {"$ROUTE",
     {"/network-instances/network-instance/1/protocols/protocol/0/static-routes/static/0",
      "/network-instances/network-instance[name=red]/protocols/"
      "protocol[identifier=STATIC][name=s]/static-routes/static[prefix=10.0.0.0/8]"}},
};

inline std::string spellOut(std::string text, bool asPointer) {
  for (const auto& [word, forms] : places) {
    const std::string form = asPointer ? forms.first : forms.second;
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at)) {
      text.replace(at, std::string(word).size(), form);
    }
  }
  return text;
}

inline constexpr BadInput badInputs[] = {
    {"TopIsNoObject", R"([{"op": "replace", "path": "", "value": []}])",
     "/: must be an object, not an array"},
    {"NothingConfigured", R"([{"op": "remove", "path": "/network-instances"}])",
     "/: lacks its member \"network-instances\""},
    {"ContainerIsNoObject", R"([{"op": "replace", "path": "/network-instances", "value": 5}])",
     "/network-instances: must be an object, not 5"},
    {"ListIsNoArray", R"([{"op": "replace", "path": "$INSTANCES", "value": {}}])",
     "$INSTANCES: must be an array of objects, not an object"},
    {"EntryIsNoObject", R"([{"op": "add", "path": "$INSTANCES/-", "value": "red"}])",
     "$INSTANCES[3]: must be an object, not \"red\""},
    {"KeyIsLacking", R"([{"op": "remove", "path": "$INSTANCES/1/name"}])",
     "$INSTANCES[2]: lacks its member \"name\""},
    {"MemberWithAndWithoutPrefix",
     R"([{"op": "add", "path": "$INSTANCES/1/openconfig-network-instance:name", "value": "red"}])",
     "$INSTANCES[name=red]/openconfig-network-instance:name: is given twice, with and without its "
     "module prefix; give each member once"},
    {"KeyDiffersFromItsCopy",
     R"([{"op": "replace", "path": "$INSTANCES/1/config/name", "value": "blue"}])",
     "$INSTANCES[name=red]/config/name: must repeat the list key \"red\", not differ from it"},
    {"RuleNumberDiffersFromItsCopy",
     R"([{"op": "replace", "path": "$RULE10/config/sequence-id", "value": 11}])",
     "$RULE10/config/sequence-id: must repeat the list key 10, not differ from it"},
    {"NameIsNoString", R"([{"op": "replace", "path": "$INSTANCES/1/name", "value": 7}])",
     "$INSTANCES[name=7]/name: must be a string, not 7"},
    {"NameIsEmpty", R"([{"op": "replace", "path": "$INSTANCES/1/name", "value": ""}])",
     "$INSTANCES[name=]/name: must not be empty"},
    {"DefaultInstanceTwice",
     R"([{"op": "copy", "from": "$INSTANCES/0", "path": "$INSTANCES/-"},
         {"op": "replace", "path": "$INSTANCES/2/name", "value": "default"},
         {"op": "remove", "path": "$INSTANCES/2/policy-forwarding"}])",
     "$INSTANCES[name=default]: is given twice; each key may stand once in its list"},
    {"InstanceTwice",
     R"([{"op": "copy", "from": "$INSTANCES/1", "path": "$INSTANCES/-"},
         {"op": "remove", "path": "$INSTANCES/2/interfaces"}])",
     "$INSTANCES[name=red]: is given twice; each key may stand once in its list"},
    {"TypeIsLacking", R"([{"op": "remove", "path": "$INSTANCES/1/config/type"}])",
     "$INSTANCES[name=red]/config: lacks its member \"type\""},
    {"ConfigIsLacking", R"([{"op": "remove", "path": "$INSTANCES/1/config"}])",
     "$INSTANCES[name=red]/config: lacks its member \"type\""},
    {"TwoDefaultInstances",
     R"([{"op": "replace", "path": "$INSTANCES/1/config/type", "value": "DEFAULT_INSTANCE"}])",
     "$INSTANCES[name=red]/config/type: must be L3VRF; the default instance is "
     "\"DEFAULT\""},
    {"DefaultIsNoDefaultInstance",
     R"([{"op": "replace", "path": "$INSTANCES/0/config/type", "value": "L3VRF"}])",
     "$INSTANCES[name=DEFAULT]/config/type: must be DEFAULT_INSTANCE for the instance called "
     "\"DEFAULT\""},
    {"FallbackIsNoString",
     R"([{"op": "add", "path": "$INSTANCES/1/config/fallback-network-instance", "value": null}])",
     "$INSTANCES[name=red]/config/fallback-network-instance: must be a string, not null"},
    {"InterfaceIdTwice",
     R"([{"op": "add", "path": "$INSTANCES/1/interfaces/interface/-",
          "value": {"id": "e2", "config": {"interface": "e3"}}}])",
     "$INSTANCES[name=red]/interfaces/interface[id=e2]: is given twice; each key may stand once in "
     "its list"},
    {"InterfaceInTwoVrfs",
     R"([{"op": "copy", "from": "$INSTANCES/1/interfaces", "path": "$INSTANCES/0/interfaces"}])",
     "$INSTANCES[name=red]/interfaces/interface[id=e2]: binds interface \"e2\" again, which "
     "$INSTANCES[name=DEFAULT]/interfaces/interface[id=e2] does; bind it once"},
    {"SubinterfaceWithoutInterface",
     R"([{"op": "replace", "path": "$INSTANCES/1/interfaces/interface/0/config",
          "value": {"subinterface": 1}}])",
     "$INSTANCES[name=red]/interfaces/interface[id=e2]/config/subinterface: must stand beside "
     "\"interface\""},
    {"SubinterfaceIsNoNumber",
     R"([{"op": "add", "path": "$INSTANCES/1/interfaces/interface/0/config/subinterface",
          "value": "1"}])",
     "$INSTANCES[name=red]/interfaces/interface[id=e2]/config/subinterface: must be a whole number "
     "from 0 to 4294967295, not \"1\""},
    {"RoutePrefixIsNone", R"([{"op": "replace", "path": "$ROUTE/prefix", "value": "10.0.0.0"}])",
     "$INSTANCES[name=red]/protocols/protocol[identifier=STATIC][name=s]/static-routes/"
     "static[prefix=10.0.0.0]/prefix: must be an IPv4 or IPv6 prefix such as \"192.0.2.0/24\", "
     "not \"10.0.0.0\""},
    {"RouteTwiceInOtherWords",
     R"([{"op": "copy", "from": "$ROUTE", "path": "$INSTANCES/1/protocols/protocol/0/static-routes/static/-"},
         {"op": "replace", "path": "$INSTANCES/1/protocols/protocol/0/static-routes/static/1/prefix",
          "value": "10.9.9.9/8"}])",
     "$INSTANCES[name=red]/protocols/protocol[identifier=STATIC][name=s]/static-routes/"
     "static[prefix=10.9.9.9/8]: is given twice; each key may stand once in its list"},
    {"ProtocolTwice",
     R"([{"op": "copy", "from": "$INSTANCES/1/protocols/protocol/0",
          "path": "$INSTANCES/1/protocols/protocol/-"}])",
     "$INSTANCES[name=red]/protocols/protocol[identifier=STATIC][name=s]: is given twice; each key "
     "may stand once in its list"},
    {"RouteWithoutNextHop", R"([{"op": "remove", "path": "$ROUTE/next-hops"}])",
     "$ROUTE: must have at least one next-hop"},
    {"NextHopTwice",
     R"([{"op": "copy", "from": "$ROUTE/next-hops/next-hop/0", "path": "$ROUTE/next-hops/next-hop/-"}])",
     "$ROUTE/next-hops/next-hop[index=0]: is given twice; each key may stand once in its list"},
    {"NextHopIsNoAddress",
     R"([{"op": "replace", "path": "$ROUTE/next-hops/next-hop/0/config/next-hop", "value": "nowhere"}])",
     "$ROUTE/next-hops/next-hop[index=0]/config/next-hop: must be an IP address or DROP, not "
     "\"nowhere\""},
    {"NextHopGoesNowhere",
     R"([{"op": "remove", "path": "$ROUTE/next-hops/next-hop/0/config/next-hop"}])",
     "$ROUTE/next-hops/next-hop[index=0]: must have a \"next-hop\" in its config, or an "
     "\"interface-ref\""},
    {"NextHopDropsByAnInterface",
     R"([{"op": "replace", "path": "$ROUTE/next-hops/next-hop/0", "value": {"index": "0",
          "config": {"next-hop": "DROP"}, "interface-ref": {"config": {"interface": "e9"}}}}])",
     "$ROUTE/next-hops/next-hop[index=0]/interface-ref: must be absent where the next hop is DROP"},
    {"PolicyTwice",
     R"([{"op": "copy", "from": "$POLICY",
          "path": "$INSTANCES/0/policy-forwarding/policies/policy/-"}])",
     "$POLICY: is given twice; each key may stand once in its list"},
    {"PolicyTypeIsAnother",
     R"([{"op": "replace", "path": "$POLICY/config/type", "value": "PBR_POLICY"}])",
     "$BINDING/config/apply-vrf-selection-policy: must be a policy of type VRF_SELECTION_POLICY, "
     "not \"P\" of type PBR_POLICY"},
    {"RuleNumberTwice",
     R"([{"op": "replace", "path": "$RULE20/sequence-id", "value": 10},
         {"op": "replace", "path": "$RULE20/config/sequence-id", "value": 10}])",
     "$RULE10: is given twice; each key may stand once in its list"},
    {"RuleNumberIsTooLarge",
     R"([{"op": "replace", "path": "$RULE20/sequence-id", "value": 4294967296}])",
     "$POLICY/rules/rule[sequence-id=4294967296]/sequence-id: must be a whole number from 0 to "
     "4294967295, not 4294967296"},
    {"RuleNumberIsNegative", R"([{"op": "replace", "path": "$RULE20/sequence-id", "value": -1}])",
     "$POLICY/rules/rule[sequence-id=-1]/sequence-id: must be a whole number from 0 to 4294967295, "
     "not -1"},
    {"RuleNumberIsNotWhole", R"([{"op": "replace", "path": "$RULE20/sequence-id", "value": 20.5}])",
     "$POLICY/rules/rule[sequence-id=20.5]/sequence-id: must be a whole number from 0 to "
     "4294967295, not 20.5"},
    {"BothFamilies", R"([{"op": "add", "path": "$RULE10/ipv6", "value": {}}])",
     "$RULE10: has both \"ipv4\" and \"ipv6\"; give at most one of them"},
    {"ProtocolIsTooLarge",
     R"([{"op": "replace", "path": "$RULE10/ipv4/config/protocol", "value": 256}])",
     "$RULE10/ipv4/config/protocol: must be a number from 0 to 255 or an identity such as "
     "IP_IN_IP, not 256"},
    {"ProtocolIsUnknown",
     R"([{"op": "replace", "path": "$RULE10/ipv4/config/protocol", "value": "IP_CARRIER_PIGEON"}])",
     "$RULE10/ipv4/config/protocol: must be a number from 0 to 255 or an identity such as "
     "IP_IN_IP, not \"IP_CARRIER_PIGEON\""},
    {"DscpIsTooLarge", R"([{"op": "replace", "path": "$RULE10/ipv4/config/dscp", "value": 64}])",
     "$RULE10/ipv4/config/dscp: must be a whole number from 0 to 63, not 64"},
    {"DscpSetIsNoArray",
     R"([{"op": "replace", "path": "$RULE10/ipv4/config/dscp-set", "value": 1}])",
     "$RULE10/ipv4/config/dscp-set: must be an array, not 1"},
    {"DscpSetHoldsAWrongValue",
     R"([{"op": "replace", "path": "$RULE10/ipv4/config/dscp-set", "value": [1, "2"]}])",
     "$RULE10/ipv4/config/dscp-set[2]: must be a whole number from 0 to 63, not \"2\""},
    {"DscpSetHoldsAValueTwice",
     R"([{"op": "replace", "path": "$RULE10/ipv4/config/dscp-set", "value": [1, 2, 1]}])",
     "$RULE10/ipv4/config/dscp-set[3]: is given twice; each value may stand once"},
    {"PrefixOfTheOtherFamily",
     R"([{"op": "replace", "path": "$RULE10/ipv4/config/source-address", "value": "2001:db8::/32"}])",
     "$RULE10/ipv4/config/source-address: must be an IPv4 prefix such as \"192.0.2.0/24\", not "
     "\"2001:db8::/32\""},
    {"ActionOfBothKinds",
     R"([{"op": "add", "path": "$RULE20/action/config/network-instance", "value": "red"}])",
     "$RULE20/action/config: has both \"network-instance\" and a decapsulation; give one of them"},
    {"ActionThatAlsoDiscards",
     R"([{"op": "add", "path": "$RULE10/action/config/discard", "value": true}])",
     "$RULE10/action/config: has both \"discard\" and a network instance; give one of them"},
    {"DecapWithoutFallback",
     R"([{"op": "remove", "path": "$RULE20/action/config/decap-fallback-network-instance"}])",
     "$RULE20/action/config: lacks its member \"decap-fallback-network-instance\""},
    {"DecapWithoutPostDecap",
     R"([{"op": "remove", "path": "$RULE20/action/config/post-decap-network-instance"}])",
     "$RULE20/action/config: lacks its member \"post-decap-network-instance\""},
    {"DecapWithoutItsVrf",
     R"([{"op": "remove", "path": "$RULE20/action/config/decap-network-instance"}])",
     "$RULE20/action/config: lacks its member \"decap-network-instance\""},
    {"DiscardIsNoFlag",
     R"([{"op": "add", "path": "$RULE10/action/config/discard", "value": "true"}])",
     "$RULE10/action/config/discard: must be true or false, not \"true\""},
    {"BindingTwice",
     R"([{"op": "copy", "from": "$BINDING",
          "path": "$INSTANCES/0/policy-forwarding/interfaces/interface/-"}])",
     "$BINDING: is given twice; each key may stand once in its list"},
    {"BindingOfOneInterfaceByTwoNames",
     R"([{"op": "add", "path": "$INSTANCES/0/policy-forwarding/interfaces/interface/-", "value":
          {"interface-id": "other", "interface-ref": {"config": {"interface": "e1"}}}}])",
     "$INSTANCES[name=DEFAULT]/policy-forwarding/interfaces/interface[interface-id=other]: binds "
     "interface \"e1\" again, which $BINDING does; bind it once"},
    {"BindingNamesAnUnknownPolicy",
     R"([{"op": "replace", "path": "$BINDING/config/apply-vrf-selection-policy", "value": "Q"}])",
     "$BINDING/config/apply-vrf-selection-policy: must be a policy of the same network instance, "
     "not \"Q\""},
};

// The right document with the change of `input` made.
inline nlohmann::json documentOf(const BadInput& input) {
  return rightDocument().patch(nlohmann::json::parse(spellOut(input.change, /*asPointer=*/true)));
}

// What is said about it, after the name of the file.
inline std::string messageOf(const BadInput& input) {
  return spellOut(input.message, /*asPointer=*/false);
}

}  // namespace ZelAgent
