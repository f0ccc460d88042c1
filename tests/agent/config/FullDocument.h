// A right document that has every leaf that is read, and the place of each of its values.
#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {

inline const nlohmann::json& fullDocument() {
  static const auto document = nlohmann::json::parse(R"({"network-instances": {"network-instance": [
    {"name": "DEFAULT", "config": {"name": "DEFAULT", "type": "DEFAULT_INSTANCE"},
     "policy-forwarding": {
       "policies": {"policy": [{"policy-id": "P",
         "config": {"policy-id": "P", "type": "VRF_SELECTION_POLICY"},
         "rules": {"rule": [
           {"sequence-id": 10, "config": {"sequence-id": 10},
            "ipv4": {"config": {"protocol": 4, "dscp": 1, "dscp-set": [1, 2],
                                "source-address": "10.0.0.0/8",
                                "destination-address": "192.0.2.0/24"}},
            "action": {"config": {"network-instance": "red"}}},
           {"sequence-id": 20, "config": {"sequence-id": 20},
            "ipv6": {"config": {"protocol": 41, "dscp": 3, "dscp-set": [3, 4],
                                "source-address": "2001:db8::/32",
                                "destination-address": "2001:db8:1::/48"}},
            "action": {"config": {"decap-network-instance": "red",
                                  "decap-fallback-network-instance": "red",
                                  "post-decap-network-instance": "DEFAULT"}}},
           {"sequence-id": 30, "config": {"sequence-id": 30},
            "action": {"config": {"discard": true}}}]}},
        {"policy-id": "F",
         "config": {"policy-id": "F", "type": "PBR_POLICY"},
         "rules": {"rule": [
           {"sequence-id": 40, "config": {"sequence-id": 40},
            "ipv4": {"config": {"protocol": 6, "hop-limit": 64, "length": 1500,
                                "fragment-offsets": [0, "4..7"],
                                "source-address-prefix-set": "S",
                                "destination-address-prefix-set": "S"}},
            "transport": {"config": {"source-port": "1..9", "destination-port": 443,
                                     "detail-mode": "EXPLICIT",
                                     "explicit-detail-match-mode": "ALL",
                                     "explicit-tcp-flags": ["TCP_SYN", "TCP_ACK"]}},
            "action": {"config": {"network-instance": "red"}}},
           {"sequence-id": 50, "config": {"sequence-id": 50},
            "ipv6": {"config": {"protocol": 17, "hop-limit": 63, "length": 1400,
                                "source-address-prefix-set": "S",
                                "destination-address-prefix-set": "S"}},
            "transport": {"config": {"source-port-set": "W", "destination-port-set": "W",
                                     "detail-mode": "BUILTIN", "builtin-detail": "FRAGMENT"}},
            "action": {"config": {"discard": true}}}]}}]},
       "interfaces": {"interface": [
         {"interface-id": "b1",
          "config": {"interface-id": "b1", "apply-vrf-selection-policy": "P",
                     "apply-forwarding-policy": "F", "enabled": true},
          "interface-ref": {"config": {"interface": "e1", "subinterface": 1}}}]}}},
    {"name": "red",
     "config": {"name": "red", "type": "L3VRF", "enabled": true,
                "fallback-network-instance": "DEFAULT"},
     "interfaces": {"interface": [
       {"id": "i2",
        "config": {"id": "i2", "interface": "e2", "subinterface": 2, "enabled": true}}]},
     "protocols": {"protocol": [{"identifier": "STATIC", "name": "s",
       "config": {"identifier": "STATIC", "name": "s", "enabled": true},
       "static-routes": {"static": [{"prefix": "203.0.113.0/24",
         "config": {"prefix": "203.0.113.0/24"},
         "next-hops": {"next-hop": [{"index": "0",
           "config": {"index": "0", "next-hop": "192.0.2.1"},
           "interface-ref": {"config": {"interface": "e3", "subinterface": 3}}}]}}]}}]}}
  ]},
  "defined-sets": {
    "ipv4-prefix-sets": {"ipv4-prefix-set": [{"name": "S", "config": {"name": "S",
      "prefix": ["10.0.0.0/8"], "exclude-prefix": ["10.9.0.0/16"]}}]},
    "ipv6-prefix-sets": {"ipv6-prefix-set": [{"name": "S", "config": {"name": "S",
      "prefix": ["2001:db8::/32"], "exclude-prefix": ["2001:db8:9::/48"]}}]},
    "port-sets": {"port-set": [{"name": "W", "config": {"name": "W",
      "port": [80, "90..99"], "exclude-port": [95]}}]}}})");
  return document;
}

inline std::vector<Rule> forwardingRules() {
  Rule v4{40, {}, LookUp{"red"}};
  v4.match.family = IpFamily::v4;
  v4.match.protocol = std::uint8_t{6};
  v4.match.hopLimit = std::uint8_t{64};
  v4.match.length = std::uint16_t{1500};
  v4.match.fragmentOffsets = {{0, 0}, {4, 7}};
  v4.match.sourceSet = v4.match.destinationSet = "S";
  v4.match.sourcePorts = {{1, 9}};
  v4.match.destinationPorts = {{443, 443}};
  v4.match.tcpFlags = {{18, 18}};
  Rule v6{50, {}, Discard{}};
  v6.match.family = IpFamily::v6;
  v6.match.protocol = std::uint8_t{17};
  v6.match.hopLimit = std::uint8_t{63};
  v6.match.length = std::uint16_t{1400};
  v6.match.sourceSet = v6.match.destinationSet = "S";
  v6.match.sourcePorts = v6.match.destinationPorts = {{80, 80}, {90, 94}, {96, 99}};
  v6.match.fragmentOffsets = {{1, 8191}};
  return {v4, v6};
}

// What the reader makes of it.
inline Configuration fullConfiguration() {
  RuleMatch v4;
  v4.family = IpFamily::v4;
  v4.protocol = std::uint8_t{4};
  v4.dscp = std::uint8_t{1};
  v4.dscpSet = {1, 2};
  v4.source = parseIpPrefix("10.0.0.0/8");
  v4.destination = parseIpPrefix("192.0.2.0/24");
  RuleMatch v6;
  v6.family = IpFamily::v6;
  v6.protocol = std::uint8_t{41};
  v6.dscp = std::uint8_t{3};
  v6.dscpSet = {3, 4};
  v6.source = parseIpPrefix("2001:db8::/32");
  v6.destination = parseIpPrefix("2001:db8:1::/48");
  NetworkInstance byDefault;
  byDefault.name = "default";
  byDefault.type = InstanceType::defaultInstance;
  byDefault.policies = {{"P",
                         {{10, v4, LookUp{"red"}},
                          {20, v6, Decapsulate{"red", "red", "default"}},
                          {30, {}, Discard{}}}}};
  byDefault.policies.push_back({"F", forwardingRules(), PolicyType::forwarding});
  byDefault.policyBindings = {{"e1.1", "P", "F"}};
  NetworkInstance red;
  red.name = "red";
  red.fallback = "default";
  red.interfaces = {"e2.2"};
  red.staticRoutes = {
      {*parseIpPrefix("203.0.113.0/24"), {{"0", parseIpAddress("192.0.2.1"), "e3.3", false}}}};
  return {{byDefault, red},
          {{"S", IpFamily::v4, {*parseIpPrefix("10.0.0.0/8")}, {*parseIpPrefix("10.9.0.0/16")}},
           {"S",
            IpFamily::v6,
            {*parseIpPrefix("2001:db8::/32")},
            {*parseIpPrefix("2001:db8:9::/48")}}}};
}

// A place in the document is a JSON pointer. It may begin with one of these words.
inline std::string pointerOf(std::string place) {
  const std::string instance = "/network-instances/network-instance/";
  const std::string forwarding = instance + "0/policy-forwarding";
  const std::string rule = forwarding + "/policies/policy/0/rules/rule/";
  const std::string protocol = instance + "1/protocols/protocol/0";
  const std::pair<std::string, std::string> words[] = {
      {"$DEFAULT", instance + '0'},
      {"$RED", instance + '1'},
      {"$INTERFACE", instance + "1/interfaces/interface/0"},
      {"$PROTOCOL", protocol},
      {"$ROUTE", protocol + "/static-routes/static/0"},
      {"$HOP", protocol + "/static-routes/static/0/next-hops/next-hop/0"},
      {"$POLICY", forwarding + "/policies/policy/0"},
      {"$RULE10", rule + '0'},
      {"$RULE20", rule + '1'},
      {"$RULE30", rule + '2'},
      {"$RULE40", forwarding + "/policies/policy/1/rules/rule/0"},
      {"$RULE50", forwarding + "/policies/policy/1/rules/rule/1"},
      {"$V4SET", "/defined-sets/ipv4-prefix-sets/ipv4-prefix-set/0"},
      {"$V6SET", "/defined-sets/ipv6-prefix-sets/ipv6-prefix-set/0"},
      {"$PORTSET", "/defined-sets/port-sets/port-set/0"},
      {"$BINDING", forwarding + "/interfaces/interface/0"},
  };
  for (const auto& [word, pointer] : words) {
    if (place.starts_with(word + '/') || place == word) return pointer + place.substr(word.size());
  }
  return place;
}

inline nlohmann::json::json_pointer toPointer(const std::string& place) {
  return nlohmann::json::json_pointer(pointerOf(place));
}

// A wrong value as a message shows it.
inline std::string shownValue(const nlohmann::json& value) {
  if (value.is_object()) return "an object";
  if (value.is_array()) return "an array";
  if (value.is_string()) return inQuotes(value.get<std::string>());
  return value.dump();
}

// The keys of an entry of the list. None for an array that is no list.
inline std::vector<std::string> keysOf(const std::string& list, const nlohmann::json& entry) {
  if (list == "network-instance" || list.ends_with("-prefix-set") || list == "port-set") {
    return entry.is_object() ? std::vector<std::string>{"name"} : std::vector<std::string>{};
  }
  if (list == "protocol") return {"identifier", "name"};
  if (list == "static") return {"prefix"};
  if (list == "next-hop") return {"index"};
  if (list == "policy") return {"policy-id"};
  if (list == "rule") return {"sequence-id"};
  if (list == "interface") return {entry.contains("interface-id") ? "interface-id" : "id"};
  return {};
}

// The place as a message shows it: entries by their keys, values of other arrays from 1.
inline std::string pathOf(const nlohmann::json& document, const std::string& place) {
  std::string path;
  std::string name;
  const nlohmann::json* value = &document;
  std::string pointer = pointerOf(place);
  while (!pointer.empty()) {
    const std::size_t end = std::min(pointer.find('/', 1), pointer.size());
    const std::string step = pointer.substr(1, end - 1);
    pointer.erase(0, end);
    if (!value->is_array()) {
      value = &value->at(step);
      path += '/' + step;
      name = step;
      continue;
    }
    value = &value->at(std::stoul(step));
    const std::vector<std::string> keys = keysOf(name, *value);
    if (keys.empty()) path += '[' + std::to_string(std::stoul(step) + 1) + ']';
    for (const std::string& key : keys) {
      const nlohmann::json& shown = value->at(key);
      path +=
          '[' + key + '=' +
          (shown.is_string() ? printable(shown.get_ref<const std::string&>()) : shownValue(shown)) +
          ']';
    }
  }
  return path;
}

// The path of the schema: without keys, with the names of all members.
inline std::string schemaPathOf(const std::string& place) {
  std::string path;
  std::string pointer = pointerOf(place);
  while (!pointer.empty()) {
    const std::size_t end = std::min(pointer.find('/', 1), pointer.size());
    const std::string step = pointer.substr(1, end - 1);
    pointer.erase(0, end);
    if (step.find_first_not_of("0123456789") != std::string::npos) path += '/' + step;
  }
  return path;
}

// The places of the value and of all values inside it.
inline void addPlaces(std::vector<std::string>& places, const nlohmann::json& value,
                      const std::string& place) {
  places.push_back(place);
  if (value.is_object()) {
    for (const auto& [name, member] : value.items())
      addPlaces(places, member, place + '/' + name);
  } else if (value.is_array()) {
    for (std::size_t i = 0; i < value.size(); ++i)
      addPlaces(places, value[i], place + '/' + std::to_string(i));
  }
}

inline std::vector<std::string> allPlaces() {
  std::vector<std::string> places;
  addPlaces(places, fullDocument(), "");
  return places;
}

// The lines that say why the document is refused. Empty if it is not.
inline std::string refusalOf(const nlohmann::json& document, Leniency leniency = Leniency::strict) {
  try {
    (void)readOpenConfig(document.dump(), "f.json", leniency);
    return "";
  } catch (const ConfigError& error) {
    return error.what();
  }
}

// Puts the value at a place of the document. A new member, or an entry behind the last, is added.
struct Change {
  Change(std::string at, nlohmann::json to) : place(std::move(at)), value(std::move(to)) {}

  std::string place;
  nlohmann::json value;  // A discarded value removes the member or the entry.
};

inline Change without(const std::string& place) {
  return {place, nlohmann::json(nlohmann::json::value_t::discarded)};
}

inline void apply(nlohmann::json& document, const Change& change) {
  const auto pointer = toPointer(change.place);
  if (!change.value.is_discarded()) {
    document[pointer] = change.value;
    return;
  }
  nlohmann::json& parent = document.at(pointer.parent_pointer());
  if (parent.is_array()) {
    parent.erase(std::stoul(pointer.back()));
  } else {
    parent.erase(pointer.back());
  }
}

inline nlohmann::json fullDocumentWith(const std::vector<Change>& changes) {
  nlohmann::json document = fullDocument();
  for (const Change& change : changes)
    apply(document, change);
  return document;
}

}  // namespace ZelAgent
