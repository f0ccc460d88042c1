#include "agent/config/PathTable.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace ZelAgent {
namespace {

using enum PathType;
using enum Presence;

struct Leaf {
  std::string_view name;
  PathType type;
  Presence presence;
  std::string_view example;
  std::string_view meaning;
};

// The leaves of one container.
struct Section {
  std::string container;
  std::vector<Leaf> leaves;
};

const std::string instance = "/network-instances/network-instance[name]";
const std::string route =
    instance + "/protocols/protocol[identifier][name]/static-routes/static[prefix]";
const std::string nextHopEntry = route + "/next-hops/next-hop[index]";
const std::string policy = instance + "/policy-forwarding/policies/policy[policy-id]";
const std::string rule = policy + "/rules/rule[sequence-id]";
const std::string binding = instance + "/policy-forwarding/interfaces/interface[interface-id]";

std::vector<Section> instanceSections() {
  return {
      {instance + "/config",
       {
           {"name", name, keyCopy, R"("red")", "the name of the VRF"},
           {"type", identity, optional, R"("L3VRF")",
            "DEFAULT_INSTANCE or L3VRF; may be absent where the name is DEFAULT or default"},
           {"enabled", flag, optional, "true",
            "false: the instance is not used, as if it were not in the file"},
           {"fallback-network-instance", name, optional, R"("blue")",
            "the VRF in which a lookup goes on that finds no route in this one"},
       }},
      {instance + "/interfaces/interface[id]/config",
       {
           {"id", name, keyCopy, R"("Ethernet4")",
            "the interface, unless interface gives another name"},
           {"interface", name, optional, R"("Ethernet4")", "the interface of the VRF"},
           {"subinterface", number, optional, "100",
            "the subinterface; 0 is the interface without a number"},
           {"enabled", flag, optional, "true", "false: the entry is not used"},
       }},
      {instance + "/protocols/protocol[identifier][name]/config",
       {
           {"identifier", identity, keyCopy, R"("STATIC")", "STATIC: the entry has static routes"},
           {"name", text, keyCopy, R"("static")", "any name"},
           {"enabled", flag, optional, "true",
            "false: the static routes of the entry are not used"},
       }},
      {route + "/config",
       {
           {"prefix", prefix, keyCopy, R"("192.0.2.0/24")", "the destination of the route"},
       }},
      {nextHopEntry + "/config",
       {
           {"index", text, keyCopy, R"("0")", "any name"},
           {"next-hop", PathType::nextHop, optional, R"("198.51.100.1")",
            "the address of the next hop, or DROP"},
       }},
      {nextHopEntry + "/interface-ref/config",
       {
           {"interface", name, optional, R"("Ethernet12")", "the interface by which packets leave"},
           {"subinterface", number, optional, "7", "its subinterface"},
       }},
  };
}

// The members that `ipv4` and `ipv6` share.
std::vector<Leaf> headerLeaves(std::string_view prefixExample) {
  return {
      {"protocol", protocol, optional, R"("IP_IN_IP")", "the protocol, or the next header"},
      {"dscp", number, optional, "46", "the DSCP, from 0 to 63"},
      {"dscp-set", numberList, optional, "[46, 48]", "one of these DSCPs"},
      {"source-address", prefix, optional, prefixExample, "the source is in the prefix"},
      {"source-address-prefix-set", name, optional, R"("servers")",
       "the source is in the prefix set of the family"},
      {"destination-address", prefix, optional, prefixExample, "the destination is in the prefix"},
      {"destination-address-prefix-set", name, optional, R"("servers")",
       "the destination is in the prefix set of the family"},
      {"hop-limit", number, optional, "64", "the time to live, from 0 to 255"},
      {"length", number, optional, "1500",
       "the length of the packet with its IP header, from 0 to 65535"},
  };
}

std::vector<Leaf> ipv4Leaves() {
  std::vector<Leaf> leaves = headerLeaves(R"("10.30.0.0/16")");
  leaves.push_back({"fragment-offsets", fragmentsList, optional, R"([1, "100..8191"])",
                    "one of these offsets, in units of 8 bytes; ANY: any fragment"});
  return leaves;
}

std::vector<Section> ruleSections() {
  return {
      {policy + "/config",
       {
           {"policy-id", name, keyCopy, R"("by-source")", "the name of the policy"},
           {"type", identity, optional, R"("VRF_SELECTION_POLICY")",
            "VRF_SELECTION_POLICY, or PBR_POLICY, which is also the type where it is absent"},
       }},
      {rule + "/config",
       {
           {"sequence-id", number, keyCopy, "10",
            "the place of the rule; rules are tried in ascending order"},
       }},
      {rule + "/ipv4/config", ipv4Leaves()},
      {rule + "/ipv6/config", headerLeaves(R"("2001:db8::/32")")},
      {rule + "/transport/config",
       {
           {"source-port", port, optional, R"("1024..65535")", "the source port is one of these"},
           {"source-port-set", name, optional, R"("web")", "the source port is in the port set"},
           {"destination-port", port, optional, "443", "the destination port is one of these"},
           {"destination-port-set", name, optional, R"("web")",
            "the destination port is in the port set"},
           {"detail-mode", identity, optional, R"("EXPLICIT")",
            "EXPLICIT: by explicit-tcp-flags; BUILTIN: by builtin-detail"},
           {"explicit-detail-match-mode", identity, optional, R"("ALL")",
            "ALL: all of the flags are set; ANY: one or more of them"},
           {"explicit-tcp-flags", identityList, optional, R"(["TCP_SYN"])", "the flags"},
           {"builtin-detail", identity, optional, R"("TCP_INITIAL")",
            "TCP_INITIAL: SYN without ACK; TCP_ESTABLISHED: ACK or RST; FRAGMENT: any fragment "
            "but the first"},
       }},
      {rule + "/action/config",
       {
           {"network-instance", name, optional, R"("guests")", "look the packet up in this VRF"},
           {"decap-network-instance", name, optional, R"("decap")",
            "look the packet up in this VRF, whose routes may decapsulate it"},
           {"decap-fallback-network-instance", name, optional, R"("DEFAULT")",
            "look the packet up in this VRF when the decap VRF has no route"},
           {"post-decap-network-instance", name, optional, R"("DEFAULT")",
            "look the inner packet up in this VRF"},
           {"discard", flag, optional, "true", "true: drop the packet"},
           {"count", text, skipped, R"("hits")", "no effect on where a packet goes"},
           {"log", flag, skipped, "true", "no effect on where a packet goes"},
       }},
  };
}

std::vector<Section> bindingSections() {
  return {
      {binding + "/config",
       {
           {"interface-id", name, keyCopy, R"("Ethernet1")",
            "the interface, unless interface-ref gives another name"},
           {"apply-vrf-selection-policy", name, optional, R"("by-source")",
            "the VRF selection policy of the interface"},
           {"apply-forwarding-policy", name, optional, R"("by-port")",
            "the forwarding policy, for packets that the VRF selection policy does not match"},
           {"enabled", flag, optional, "true", "false: the entry is not used"},
       }},
      {binding + "/interface-ref/config",
       {
           {"interface", name, optional, R"("Ethernet1")", "the interface"},
           {"subinterface", number, optional, "7", "its subinterface"},
       }},
  };
}

Section prefixSetSection(const std::string& family, std::string_view example,
                         std::string_view excluded) {
  return {"/defined-sets/" + family + "-prefix-sets/" + family + "-prefix-set[name]/config",
          {
              {"name", name, keyCopy, R"("servers")", "the name of the prefix set"},
              {"prefix", prefixList, required, example, "the prefixes of the set"},
              {"exclude-prefix", prefixList, optional, excluded,
               "prefixes whose addresses are not in the set"},
          }};
}

std::vector<Section> setSections() {
  return {
      prefixSetSection("ipv4", R"(["10.0.0.0/8"])", R"(["10.9.0.0/16"])"),
      prefixSetSection("ipv6", R"(["2001:db8::/32"])", R"(["2001:db8:9::/48"])"),
      {"/defined-sets/port-sets/port-set[name]/config",
       {
           {"name", name, keyCopy, R"("web")", "the name of the port set"},
           {"port", portList, required, R"([80, "8000..8999"])", "the ports of the set"},
           {"exclude-port", portList, optional, "[8443]", "ports that are not in the set"},
       }},
  };
}

std::vector<ConfigPath> makePaths() {
  std::vector<ConfigPath> paths;
  for (const auto& sections :
       {instanceSections(), ruleSections(), bindingSections(), setSections()}) {
    for (const Section& section : sections) {
      for (const Leaf& leaf : section.leaves)
        paths.push_back({section.container + '/' + std::string(leaf.name), leaf.type, leaf.presence,
                         leaf.example, leaf.meaning});
    }
  }
  return paths;
}

// "static[prefix]" is the list "static" with the key "prefix".
void addKeys(PathNode& list, std::string_view keys) {
  while (!keys.empty()) {
    const std::size_t end = keys.find(']');
    const std::string key(keys.substr(1, end - 1));
    if (list.members.try_emplace(key).second) list.keys.push_back(key);
    keys.remove_prefix(end + 1);
  }
}

UnknownMembers unknownMembersAt(std::string_view name, UnknownMembers ofParent) {
  if (ofParent != UnknownMembers::ignored) return ofParent;
  if (name == "rule") return UnknownMembers::spoilTheRule;
  return name.ends_with("-set") ? UnknownMembers::spoilTheSet : ofParent;
}

// Returns the node of the step, which is made if it is new.
PathNode& addStep(PathNode& parent, std::string_view step) {
  const std::size_t bracket = std::min(step.find('['), step.size());
  const std::string name(step.substr(0, bracket));
  const auto [member, isNew] = parent.members.try_emplace(name);
  PathNode& node = member->second;
  if (isNew) node.unknown = unknownMembersAt(name, parent.unknown);
  addKeys(node, step.substr(bracket));
  return node;
}

PathNode makeTree() {
  PathNode root;
  for (const ConfigPath& row : configPaths()) {
    PathNode* node = &root;
    std::string_view rest = row.path;
    while (!rest.empty()) {
      rest.remove_prefix(1);
      const std::size_t end = std::min(rest.find('/'), rest.size());
      node = &addStep(*node, rest.substr(0, end));
      rest.remove_prefix(end);
    }
  }
  return root;
}

}  // namespace

const std::vector<ConfigPath>& configPaths() {
  static const std::vector<ConfigPath> paths = makePaths();
  return paths;
}

std::string_view toText(PathType type) {
  constexpr std::array<std::string_view, 14> texts{"name",
                                                   "text",
                                                   "true or false",
                                                   "number",
                                                   "identity",
                                                   "prefix",
                                                   "address",
                                                   "number or identity",
                                                   "port",
                                                   "array of numbers",
                                                   "array of identities",
                                                   "array of prefixes",
                                                   "array of ports",
                                                   "array of offsets"};
  return texts.at(static_cast<std::size_t>(type));
}

const PathNode& pathTree() {
  static const PathNode root = makeTree();
  return root;
}

}  // namespace ZelAgent
