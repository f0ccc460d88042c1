#include "tests/agent/features/WrongInputs.h"

#include <algorithm>
#include <map>

namespace ZelAgent {
namespace {

using nlohmann::json;

constexpr const char* rightText = R"({
"openconfig-defined-sets:defined-sets": {
  "ipv4-prefix-sets": {"ipv4-prefix-set": [{"name": "S4",
    "config": {"name": "S4", "prefix": ["198.18.0.0/15"], "exclude-prefix": ["198.18.5.0/24"]}}]},
  "ipv6-prefix-sets": {"ipv6-prefix-set": [{"name": "S6",
    "config": {"name": "S6", "prefix": ["2001:db8::/32"]}}]},
  "port-sets": {"port-set": [{"name": "web",
    "config": {"name": "web", "port": [80, "8000..8079"], "exclude-port": [8001]}}]}},
"openconfig-network-instance:network-instances": {"network-instance": [
  {"name": "DEFAULT",
   "config": {"name": "DEFAULT", "type": "openconfig-network-instance-types:DEFAULT_INSTANCE"},
   "policy-forwarding": {
     "policies": {"policy": [
       {"policy-id": "P", "config": {"policy-id": "P", "type": "VRF_SELECTION_POLICY"},
        "rules": {"rule": [
          {"sequence-id": 10, "config": {"sequence-id": 10},
           "ipv4": {"config": {"protocol": "openconfig-packet-match-types:IP_TCP", "dscp": 10,
             "source-address-prefix-set": "S4", "destination-address": "203.0.113.0/24",
             "hop-limit": 64, "length": 1500}},
           "transport": {"config": {"source-port": "1024..65535", "destination-port-set": "web",
             "detail-mode": "EXPLICIT", "explicit-detail-match-mode": "ALL",
             "explicit-tcp-flags": ["openconfig-packet-match-types:TCP_SYN"]}},
           "action": {"config": {"network-instance": "red"}}},
          {"sequence-id": 20, "config": {"sequence-id": 20},
           "ipv4": {"config": {"protocol": 4, "dscp-set": [10, 18]}},
           "action": {"config": {"decap-network-instance": "red",
             "decap-fallback-network-instance": "red", "post-decap-network-instance": "DEFAULT"}}},
          {"sequence-id": 30, "config": {"sequence-id": 30},
           "ipv6": {"config": {"source-address": "2001:db8:1::/48",
             "destination-address-prefix-set": "S6"}},
           "action": {"config": {"network-instance": "red"}}},
          {"sequence-id": 40, "config": {"sequence-id": 40},
           "ipv4": {"config": {"fragment-offsets": ["1..99", 200]}},
           "action": {"config": {"discard": true}}},
          {"sequence-id": 50, "config": {"sequence-id": 50},
           "action": {"config": {"network-instance": "DEFAULT"}}}]}}]},
     "interfaces": {"interface": [{"interface-id": "b1",
       "config": {"interface-id": "b1", "apply-vrf-selection-policy": "P"},
       "interface-ref": {"config": {"interface": "e1", "subinterface": 7}}}]}}},
  {"name": "red",
   "config": {"name": "red", "type": "openconfig-network-instance-types:L3VRF",
     "fallback-network-instance": "DEFAULT"},
   "interfaces": {"interface": [{"id": "e2.5",
     "config": {"id": "e2.5", "interface": "e2", "subinterface": 5}}]},
   "protocols": {"protocol": [{"identifier": "STATIC", "name": "s",
     "config": {"identifier": "STATIC", "name": "s"},
     "static-routes": {"static": [{"prefix": "10.0.0.0/8", "config": {"prefix": "10.0.0.0/8"},
       "next-hops": {"next-hop": [{"index": "0", "config": {"index": "0", "next-hop": "192.0.2.1"},
         "interface-ref": {"config": {"interface": "e9", "subinterface": 3}}}]}}]}}]}}
]}})";

const std::map<std::string, std::string> words{
    {"$NI", "/openconfig-network-instance:network-instances/network-instance"},
    {"$DEFAULT", "$NI/0"},
    {"$RED", "$NI/1"},
    {"$IF", "$RED/interfaces/interface/0"},
    {"$PROTOCOL", "$RED/protocols/protocol/0"},
    {"$ROUTE", "$PROTOCOL/static-routes/static/0"},
    {"$HOP", "$ROUTE/next-hops/next-hop/0"},
    {"$PF", "$DEFAULT/policy-forwarding"},
    {"$POLICY", "$PF/policies/policy/0"},
    {"$TCP", "$POLICY/rules/rule/0"},
    {"$DECAP", "$POLICY/rules/rule/1"},
    {"$V6", "$POLICY/rules/rule/2"},
    {"$DROP", "$POLICY/rules/rule/3"},
    {"$ANY", "$POLICY/rules/rule/4"},
    {"$BIND", "$PF/interfaces/interface/0"},
    {"$SETS", "/openconfig-defined-sets:defined-sets"},
    {"$SET4", "$SETS/ipv4-prefix-sets/ipv4-prefix-set/0"},
    {"$SET6", "$SETS/ipv6-prefix-sets/ipv6-prefix-set/0"},
    {"$PORTS", "$SETS/port-sets/port-set/0"},
};

std::string spelled(std::string place) {
  while (place.substr(0, 1) == "$") {
    const auto end = place.find('/');
    place.replace(0, end, words.at(place.substr(0, end)));
  }
  return place;
}

const std::map<std::string, std::vector<std::string>> keysOfLists{
    {"network-instance", {"name"}},
    {"interface", {"id", "interface-id"}},
    {"protocol", {"identifier", "name"}},
    {"static", {"prefix"}},
    {"next-hop", {"index"}},
    {"policy", {"policy-id"}},
    {"rule", {"sequence-id"}},
    {"ipv4-prefix-set", {"name"}},
    {"ipv6-prefix-set", {"name"}},
    {"port-set", {"name"}}};

std::string shown(const json& key) {
  return key.is_string() ? key.get<std::string>() : key.dump();
}

std::string keysOf(const std::string& list, const json& entry) {
  const auto keys = keysOfLists.find(list);
  if (keys == keysOfLists.end() || !entry.is_object()) return {};
  std::string text;
  for (const std::string& key : keys->second) {
    if (entry.contains(key)) text += '[' + key + '=' + shown(entry.at(key)) + ']';
  }
  return text;
}

// "/a/list[key=1]/b": as messages name the place. An entry without its key is named by its number.
std::string pathOfPlace(const json& document, const std::string& pointer) {
  std::string path;
  std::string list;
  const json* value = &document;
  std::size_t at = 1;
  while (at <= pointer.size()) {
    const std::size_t end = std::min(pointer.find('/', at), pointer.size());
    const std::string token = pointer.substr(at, end - at);
    at = end + 1;
    const bool isArray = value != nullptr && value->is_array();
    if (value != nullptr) {
      const bool isThere = isArray ? std::stoul(token) < value->size() : value->contains(token);
      value = isThere ? (isArray ? &(*value)[std::stoul(token)] : &(*value)[token]) : nullptr;
    }
    if (!isArray) {
      list = token.substr(token.find(':') == std::string::npos ? 0 : token.find(':') + 1);
      path += '/' + list;
      continue;
    }
    const std::string keys = value == nullptr ? "" : keysOf(list, *value);
    path += keys.empty() ? '[' + std::to_string(std::stoul(token) + 1) + ']' : keys;
  }
  return path.empty() ? "/" : path;
}

constexpr const char* name101 =
    "\"nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"
    "nnnnnn"
    "nnn\"";

constexpr const char* object = "must be an object";
constexpr const char* array = "must be an array";
constexpr const char* text = "must be a string";
constexpr const char* flag = "true or false";
constexpr const char* empty = "must not be empty";
constexpr const char* tooLong = "at most 100 bytes";
constexpr const char* whole32 = "0 to 4294967295";
constexpr const char* dscps = "0 to 63";
constexpr const char* protocols = "0 to 255";
constexpr const char* bytes = "0 to 255";
constexpr const char* lengths = "0 to 65535";
constexpr const char* offsets = "0 to 8191";
constexpr const char* portsAre = "0 to 65535";
constexpr const char* ipv4Prefix = "IPv4 prefix";
constexpr const char* ipv6Prefix = "IPv6 prefix";
constexpr const char* differs = "differ";
constexpr const char* twice = "twice";
constexpr const char* lacks = "lacks its member";
constexpr const char* unknown = "";  // only the path is sure

}  // namespace

const std::vector<WrongInput>& wrongInputs() {
  static const std::vector<WrongInput> inputs{
      // Containers and lists that are something else.
      {"/openconfig-network-instance:network-instances", "5", object},
      {"/openconfig-network-instance:network-instances", "null", object},
      {"/openconfig-network-instance:network-instances", "[]", object},
      {"$NI", "{}", array},
      {"$NI", "\"red\"", array},
      {"$NI/2", "\"blue\"", object},
      {"$NI/2", "[]", object},
      {"$NI/2", "null", object},
      {"$RED/config", "[]", object},
      {"$RED/config", "null", object},
      {"$RED/interfaces", "1", object},
      {"$RED/interfaces/interface", "{}", array},
      {"$IF", "7", object},
      {"$IF/config", "\"e2\"", object},
      {"$RED/protocols", "[]", object},
      {"$RED/protocols/protocol", "1", array},
      {"$PROTOCOL/static-routes", "[]", object},
      {"$PROTOCOL/static-routes/static", "{}", array},
      {"$ROUTE/config", "7", object},
      {"$ROUTE/next-hops", "[]", object},
      {"$ROUTE/next-hops/next-hop", "\"192.0.2.1\"", array},
      {"$HOP", "\"192.0.2.1\"", object},
      {"$HOP/config", "3", object},
      {"$HOP/interface-ref", "\"e9\"", object},
      {"$HOP/interface-ref/config", "[]", object},
      {"$PF", "[]", object},
      {"$PF/policies", "1", object},
      {"$PF/policies/policy", "{}", array},
      {"$POLICY", "\"P\"", object},
      {"$POLICY/config", "1", object},
      {"$POLICY/rules", "[]", object},
      {"$POLICY/rules/rule", "{}", array},
      {"$TCP", "10", object},
      {"$TCP/config", "10", object},
      {"$TCP/ipv4", "4", object},
      {"$TCP/ipv4", "null", object},
      {"$TCP/ipv4/config", "[]", object},
      {"$V6/ipv6", "true", object},
      {"$V6/ipv6/config", "null", object},
      {"$TCP/transport", "[]", object},
      {"$TCP/transport/config", "80", object},
      {"$TCP/action", "\"discard\"", object},
      {"$TCP/action/config", "[]", object},
      {"$PF/interfaces", "1", object},
      {"$PF/interfaces/interface", "1", array},
      {"$BIND", "\"e1\"", object},
      {"$BIND/config", "\"P\"", object},
      {"$BIND/interface-ref", "\"e1\"", object},
      {"$BIND/interface-ref/config", "7", object},
      {"$SETS", "[]", object},
      {"$SETS/ipv4-prefix-sets", "1", object},
      {"$SETS/ipv4-prefix-sets/ipv4-prefix-set", "{}", array},
      {"$SETS/ipv6-prefix-sets", "[]", object},
      {"$SETS/port-sets/port-set", "\"web\"", array},
      {"$PORTS/config", "[80]", object},

      // Leaves of a wrong type.
      {"$RED/config/name", "7", text},
      {"$RED/config/type", "4", text},
      {"$RED/config/type", "null", text},
      {"$RED/config/fallback-network-instance", "null", text},
      {"$RED/config/fallback-network-instance", "{\"name\": \"DEFAULT\"}", text},
      {"$IF/config/interface", "2", text},
      {"$IF/config/subinterface", "\"five\"", whole32},
      {"$IF/config/subinterface", "true", whole32},
      {"$PROTOCOL/config/name", "1", text},
      {"$ROUTE/config/prefix", "10", text},
      {"$HOP/config/index", "0", text},
      {"$HOP/config/next-hop", "3221225985", text},
      {"$HOP/config/next-hop", "[\"192.0.2.1\"]", text},
      {"$HOP/interface-ref/config/interface", "9", text},
      {"$HOP/interface-ref/config/subinterface", "[3]", whole32},
      {"$POLICY/config/policy-id", "1", text},
      {"$POLICY/config/type", "0", text},
      {"$TCP/config/sequence-id", "\"ten\"", whole32},
      {"$TCP/ipv4/config/protocol", "true", protocols},
      {"$TCP/ipv4/config/protocol", "[6]", protocols},
      {"$TCP/ipv4/config/dscp", "\"AF11\"", dscps},
      {"$TCP/ipv4/config/dscp", "[10]", dscps},
      {"$DECAP/ipv4/config/dscp-set", "10", array},
      {"$DECAP/ipv4/config/dscp-set/1", "\"AF21\"", dscps},
      {"$TCP/ipv4/config/source-address-prefix-set", "[\"S4\"]", text},
      {"$TCP/ipv4/config/destination-address", "203", text},
      {"$TCP/ipv4/config/hop-limit", "\"sixty\"", bytes},
      {"$TCP/ipv4/config/length", "[1500]", lengths},
      {"$TCP/transport/config/source-port", "[1024]", portsAre},
      {"$TCP/transport/config/source-port", "true", portsAre},
      {"$TCP/transport/config/destination-port-set", "80", text},
      {"$TCP/transport/config/detail-mode", "1", text},
      {"$TCP/transport/config/explicit-detail-match-mode", "true", text},
      {"$TCP/transport/config/explicit-tcp-flags", "\"TCP_SYN\"", array},
      {"$TCP/transport/config/explicit-tcp-flags/0", "2", text},
      {"$TCP/action/config/network-instance", "[\"red\"]", text},
      {"$DECAP/action/config/decap-network-instance", "1", text},
      {"$DECAP/action/config/decap-fallback-network-instance", "null", text},
      {"$DECAP/action/config/post-decap-network-instance", "{}", text},
      {"$DROP/action/config/discard", "\"true\"", flag},
      {"$DROP/action/config/discard", "1", flag},
      {"$DROP/action/config/discard", "null", flag},
      {"$DROP/ipv4/config/fragment-offsets", "\"ANY\"", array},
      {"$DROP/ipv4/config/fragment-offsets/0", "true", offsets},
      {"$BIND/config/apply-vrf-selection-policy", "[\"P\"]", text},
      {"$BIND/config/apply-forwarding-policy", "7", text},
      {"$BIND/interface-ref/config/subinterface", "\"seven\"", whole32},
      {"$SET4/config/prefix", "\"198.18.0.0/15\"", array},
      {"$SET4/config/prefix/0", "198", text},
      {"$SET4/config/exclude-prefix", "{}", array},
      {"$PORTS/config/port", "80", array},
      {"$PORTS/config/port/0", "null", portsAre},

      // Values out of their range, or of no meaning.
      {"$IF/config/subinterface", "4294967296", whole32},
      {"$IF/config/subinterface", "-1", whole32},
      {"$IF/config/subinterface", "1.5", whole32},
      {"$TCP/ipv4/config/protocol", "256", protocols},
      {"$TCP/ipv4/config/protocol", "-1", protocols},
      {"$TCP/ipv4/config/protocol", "6.5", protocols},
      {"$TCP/ipv4/config/dscp", "64", dscps},
      {"$TCP/ipv4/config/dscp", "-1", dscps},
      {"$TCP/ipv4/config/dscp", "18446744073709551616", dscps},
      {"$DECAP/ipv4/config/dscp-set/0", "64", dscps},
      {"$TCP/ipv4/config/hop-limit", "256", bytes},
      {"$TCP/ipv4/config/hop-limit", "-1", bytes},
      {"$TCP/ipv4/config/length", "65536", lengths},
      {"$DROP/ipv4/config/fragment-offsets/1", "8192", offsets},
      {"$DROP/ipv4/config/fragment-offsets/0", "\"1..8192\"", offsets},
      {"$DROP/ipv4/config/fragment-offsets/0", "\"99..1\"", unknown},
      {"$DROP/ipv4/config/fragment-offsets/0", "\"1-99\"", offsets},
      {"$DROP/ipv4/config/fragment-offsets/0", "\"ALL\"", offsets},
      {"$TCP/transport/config/source-port", "65536", portsAre},
      {"$TCP/transport/config/source-port", "-1", portsAre},
      {"$TCP/transport/config/source-port", "\"1024-2048\"", portsAre},
      {"$TCP/transport/config/source-port", "\"1024..\"", portsAre},
      {"$TCP/transport/config/source-port", "\"..1024\"", portsAre},
      {"$TCP/transport/config/source-port", "\"1024..65536\"", portsAre},
      {"$TCP/transport/config/source-port", "\"2048..1024\"", unknown},
      {"$TCP/transport/config/source-port", "\"any\"", portsAre},
      {"$TCP/transport/config/source-port", "\"\"", portsAre},
      {"$PORTS/config/port/1", "\"8079..8000\"", unknown},
      {"$PORTS/config/port/1", "\"http\"", portsAre},
      {"$PORTS/config/exclude-port/0", "70000", portsAre},
      {"$TCP/ipv4/config/destination-address", "\"203.0.113.0\"", ipv4Prefix},
      {"$TCP/ipv4/config/destination-address", "\"203.0.113.0/33\"", ipv4Prefix},
      {"$TCP/ipv4/config/destination-address", "\"203.0.113/24\"", ipv4Prefix},
      {"$TCP/ipv4/config/destination-address", "\"203.0.113.256/24\"", ipv4Prefix},
      {"$TCP/ipv4/config/destination-address", "\"2001:db8::/32\"", ipv4Prefix},
      {"$TCP/ipv4/config/destination-address", "\"\"", ipv4Prefix},
      {"$V6/ipv6/config/source-address", "\"10.0.0.0/8\"", ipv6Prefix},
      {"$V6/ipv6/config/source-address", "\"2001:db8::/129\"", ipv6Prefix},
      {"$V6/ipv6/config/source-address", "\"2001:db8::g/64\"", ipv6Prefix},
      {"$SET4/config/prefix/0", "\"2001:db8::/32\"", ipv4Prefix},
      {"$SET6/config/prefix/0", "\"0.0.0.0/0\"", ipv6Prefix},
      {"$SET4/config/exclude-prefix/0", "\"198.18.5.0/\"", ipv4Prefix},
      {"$HOP/config/next-hop", "\"192.0.2.300\"", "IP address or DROP"},
      {"$HOP/config/next-hop", "\"192.0.2.1/32\"", "IP address or DROP"},
      {"$HOP/config/next-hop", "\"drop\"", "IP address or DROP"},
      {"$HOP/config/next-hop", "\"\"", "IP address or DROP"},
      {"$DECAP/ipv4/config/dscp-set", "[10, 18, 10]", twice, "$DECAP/ipv4/config/dscp-set/2"},

      // Identities and words that the model does not have there.
      {"$TCP/ipv4/config/protocol", "\"TCP\"", "IP_IN_IP"},
      {"$TCP/ipv4/config/protocol", "\"tcp\"", "IP_IN_IP"},
      {"$TCP/ipv4/config/protocol", "\"vendor:IP_TCP\"", "IP_IN_IP"},
      {"$TCP/ipv4/config/protocol", "\"openconfig-packet-match-types:TCP_SYN\"", "IP_IN_IP"},
      {"$TCP/ipv4/config/protocol", "\"\"", "IP_IN_IP"},
      {"$TCP/transport/config/explicit-tcp-flags/0", "\"SYN\"", "TCP_SYN"},
      {"$TCP/transport/config/explicit-tcp-flags/0", "\"openconfig-packet-match-types:IP_TCP\"",
       "TCP_SYN"},
      {"$TCP/transport/config/detail-mode", "\"MANUAL\"", "EXPLICIT"},
      {"$TCP/transport/config/detail-mode", "\"explicit\"", "EXPLICIT"},
      {"$TCP/transport/config/explicit-detail-match-mode", "\"NONE\"", "ALL"},

      // Names.
      {"$RED/name", "\"\"", empty},
      {"$RED/config/fallback-network-instance", "\"\"", empty},
      {"$RED/config/fallback-network-instance", name101, tooLong},
      {"$IF/config/interface", "\"\"", empty},
      {"$IF/config/interface", name101, tooLong},
      {"$HOP/interface-ref/config/interface", name101, tooLong},
      {"$TCP/action/config/network-instance", "\"\"", empty},
      {"$TCP/action/config/network-instance", name101, tooLong},
      {"$DECAP/action/config/decap-network-instance", name101, tooLong},
      {"$DECAP/action/config/post-decap-network-instance", "\"\"", empty},
      {"$BIND/config/apply-vrf-selection-policy", "\"\"", empty},
      {"$BIND/interface-ref/config/interface", "\"\"", empty},

      // Keys that are absent, or that their copy contradicts.
      {"$RED/name", nullptr, lacks, "$NI/1?"},
      {"$IF/id", nullptr, lacks, "$RED/interfaces/interface/0?"},
      {"$PROTOCOL/name", nullptr, lacks, "$RED/protocols/protocol/0?"},
      {"$ROUTE/prefix", nullptr, lacks, "$PROTOCOL/static-routes/static/0?"},
      {"$HOP/index", nullptr, lacks, "$ROUTE/next-hops/next-hop/0?"},
      {"$POLICY/policy-id", nullptr, lacks, "$PF/policies/policy/0?"},
      {"$TCP/sequence-id", nullptr, lacks, "$POLICY/rules/rule/0?"},
      {"$BIND/interface-id", nullptr, lacks, "$PF/interfaces/interface/0?"},
      {"$SET4/name", nullptr, lacks, "$SETS/ipv4-prefix-sets/ipv4-prefix-set/0?"},
      {"$RED/config/name", "\"blue\"", differs},
      {"$IF/config/id", "\"e3\"", differs},
      {"$ROUTE/config/prefix", "\"10.0.0.0/9\"", differs},
      {"$HOP/config/index", "\"1\"", differs},
      {"$POLICY/config/policy-id", "\"Q\"", differs},
      {"$TCP/config/sequence-id", "11", differs},
      {"$BIND/config/interface-id", "\"e1\"", differs},
      {"$SET4/config/name", "\"S5\"", differs},
      {"$PORTS/config/name", "\"mail\"", differs},

      // Entries that stand twice.
      {"$NI/2", R"({"name": "red", "config": {"name": "red", "type": "L3VRF"}})", twice},
      {"$NI/2", R"({"name": "default", "config": {"name": "default", "type": "DEFAULT_INSTANCE"}})",
       twice},
      {"$RED/interfaces/interface/1",
       R"({"id": "e2.5", "config": {"id": "e2.5", "interface": "e3"}})", twice},
      {"$RED/interfaces/interface/1",
       R"({"id": "other", "config": {"id": "other", "interface": "e2", "subinterface": 5}})",
       "e2.5"},
      {"$PROTOCOL/static-routes/static/1",
       R"({"prefix": "10.0.0.0/8", "next-hops": {"next-hop": [{"index": "0", "config": {"next-hop": "192.0.2.2"}}]}})",
       twice},
      {"$ROUTE/next-hops/next-hop/1", R"({"index": "0", "config": {"next-hop": "192.0.2.2"}})",
       twice},
      {"$PF/policies/policy/1",
       R"({"policy-id": "P", "config": {"policy-id": "P", "type": "VRF_SELECTION_POLICY"}})",
       twice},
      {"$POLICY/rules/rule/5",
       R"({"sequence-id": 40, "config": {"sequence-id": 40}, "action": {"config": {"discard": true}}})",
       twice},
      {"$PF/interfaces/interface/1",
       R"({"interface-id": "b1", "config": {"apply-vrf-selection-policy": "P"}, "interface-ref": {"config": {"interface": "e3"}}})",
       twice},
      {"$PF/interfaces/interface/1",
       R"({"interface-id": "e1.7", "config": {"apply-vrf-selection-policy": "P"}})", "e1.7"},
      {"$SETS/ipv4-prefix-sets/ipv4-prefix-set/1",
       R"({"name": "S4", "config": {"name": "S4", "prefix": ["0.0.0.0/0"]}})", twice},
      {"$SETS/port-sets/port-set/1", R"({"name": "web", "config": {"name": "web", "port": [443]}})",
       twice},
      {"$TCP/ipv4/config/openconfig-packet-match:dscp", "10", twice},

      // Members that contradict each other, or need another one.
      {"$TCP/ipv6", R"({"config": {"dscp": 10}})", "both", "$TCP"},
      {"$TCP/action/config/decap-network-instance", "\"red\"", "both", "$TCP/action/config"},
      {"$TCP/action/config/discard", "true", "both", "$TCP/action/config"},
      {"$DECAP/action/config/decap-fallback-network-instance", nullptr, lacks},
      {"$DECAP/action/config/post-decap-network-instance", nullptr, lacks},
      {"$DECAP/action/config/decap-network-instance", nullptr, lacks},
      {"$DECAP/action/config/network-instance", "\"red\"", "both", "$DECAP/action/config"},
      {"$TCP/ipv4/config/source-address-prefix-set", "\"S5\"", "S5"},
      {"$TCP/ipv4/config/source-address-prefix-set", "\"S6\"", "S6"},
      {"$TCP/ipv4/config/source-address-prefix-set", "\"web\"", "web"},
      {"$V6/ipv6/config/destination-address-prefix-set", "\"S4\"", "S4"},
      {"$TCP/transport/config/destination-port-set", "\"S4\"", "S4"},
      {"$TCP/transport/config/destination-port-set", "\"mail\"", "mail"},
      {"$DECAP/transport", R"({"config": {"destination-port": 80}})", "protocol",
       "$DECAP/transport/config/destination-port"},
      {"$V6/transport", R"({"config": {"source-port": 80}})", "protocol",
       "$V6/transport/config/source-port"},
      {"$ANY/transport", R"({"config": {"source-port": 80}})", "protocol",
       "$ANY/transport/config/source-port"},
      {"$BIND/config/apply-vrf-selection-policy", "\"Q\"", "Q"},
      {"$BIND/config/apply-forwarding-policy", "\"P\"", "P"},
      {"$BIND/config/apply-forwarding-policy", "\"Q\"", "Q"},
      {"$BIND/interface-ref/config/interface", nullptr, "interface",
       "$BIND/interface-ref/config/subinterface"},
      {"$IF/config/interface", nullptr, "interface", "$IF/config/subinterface"},
      {"$RED/config/type", nullptr, lacks},
      {"$ROUTE/next-hops", nullptr, "next-hop", "$ROUTE"},

      // Members of a rule, or of a set that a rule names, that nobody knows.
      {"$TCP/ipv5", "{\"config\": {\"dscp\": 1}}", unknown},
      {"$TCP/l2", "{\"config\": {\"ethertype\": 2048}}", unknown},
      {"$TCP/config/priority", "7", unknown},
      {"$TCP/ipv4/icmpv4", "{\"config\": {\"type\": \"ECHO\"}}", unknown},
      {"$TCP/ipv4/dscp", "10", unknown},
      {"$TCP/ipv4/config/source-adress", "\"10.0.0.0/8\"", unknown},
      {"$TCP/ipv4/config/Dscp", "10", unknown},
      {"$TCP/ipv4/config/source-flow-label", "1", unknown},
      {"$TCP/ipv4/config/vendor:tenant", "5", unknown},
      {"$V6/ipv6/config/fragment-offsets", "[1]", unknown},
      {"$V6/ipv6/config/flow-label", "7", unknown},
      {"$TCP/transport/config/port", "80", unknown},
      {"$TCP/transport/tcp", "{}", unknown},
      {"$TCP/action/config/next-hop", "\"192.0.2.1\"", unknown},
      {"$TCP/action/config/decapsulate-gre", "true", unknown},
      {"$TCP/action/config/network-instances", "\"red\"", unknown},
      {"$TCP/action/encapsulate-gre", "{\"config\": {\"identifying-prefix\": \"10.0.0.0/8\"}}",
       unknown},
      {"$SET4/config/prefixes", "[\"10.0.0.0/8\"]", unknown},
      {"$SET4/config/exclude-prefixes", "[\"10.0.0.0/8\"]", unknown},
      {"$PORTS/config/exclude-ports", "[80]", unknown},
  };
  return inputs;
}

json rightConfiguration() {
  return json::parse(rightText);
}

json changed(const WrongInput& input) {
  json document = rightConfiguration();
  const std::string pointer = spelled(input.at);
  json step{{"op", input.value == nullptr ? "remove" : "add"}, {"path", pointer}};
  if (input.value != nullptr) {
    step["value"] = json::parse(input.value);
    // `add` would insert into an array.
    if (document.contains(json::json_pointer(pointer))) step["op"] = "replace";
  }
  return document.patch(json::array({step}));
}

std::string expectedPath(const WrongInput& input) {
  const json document = changed(input);
  if (input.path != nullptr) {
    std::string pointer = spelled(input.path);
    if (pointer.back() != '?') return pathOfPlace(document, pointer);
    pointer.pop_back();
    const std::string list = pointer.substr(0, pointer.rfind('/'));
    const auto number = std::stoul(pointer.substr(pointer.rfind('/') + 1));
    return pathOfPlace(document, list) + '[' + std::to_string(number + 1) + ']';
  }
  std::string pointer = spelled(input.at);
  if (input.value == nullptr) pointer.erase(pointer.rfind('/'));
  const std::string path = pathOfPlace(document, pointer);
  const std::string name = pointer.substr(pointer.rfind('/') + 1);
  // A member with a prefix is named as it stands where that is the mistake.
  return name.find(':') != std::string::npos && pointer.rfind('/') != 0
             ? path.substr(0, path.rfind('/') + 1) + name
             : path;
}

}  // namespace ZelAgent
