#include "agent/config/PolicyReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

namespace ZelAgent {
namespace {

constexpr std::uint64_t maxDscp = 63;

constexpr std::array<std::pair<const char*, std::uint8_t>, 10> protocolIdentities{{
    {"IP_ICMP", 1},
    {"IP_IGMP", 2},
    {"IP_IN_IP", 4},
    {"IP_TCP", 6},
    {"IP_UDP", 17},
    {"IP_RSVP", 46},
    {"IP_GRE", 47},
    {"IP_AUTH", 51},
    {"IP_PIM", 103},
    {"IP_L2TP", 115},
}};

std::uint8_t parseProtocol(const JsonNode& node) {
  constexpr const char* expected = "a number from 0 to 255 or an identity such as IP_IN_IP";
  if (node.value().is_number_unsigned() && node.value().get<std::uint64_t>() <= 255) {
    return node.value().get<std::uint8_t>();
  }
  if (!node.value().is_string()) node.failExpecting(expected);
  const std::string identity = node.asIdentity();
  const auto found =
      std::find_if(protocolIdentities.begin(), protocolIdentities.end(),
                   [&identity](const auto& known) { return identity == known.first; });
  if (found == protocolIdentities.end()) node.failExpecting(expected);
  return found->second;
}

std::vector<std::uint8_t> parseDscpSet(const JsonNode& node) {
  std::vector<std::uint8_t> set;
  for (const JsonNode& element : node.elements()) {
    const auto dscp = static_cast<std::uint8_t>(element.asNumber(0, maxDscp));
    if (std::find(set.begin(), set.end(), dscp) != set.end()) {
      element.fail("is given twice; each value may stand once");
    }
    set.push_back(dscp);
  }
  return set;
}

IpPrefix parsePrefixOf(IpFamily family, const JsonNode& node) {
  const auto prefix = parseIpPrefix(node.asText());
  if (!prefix || prefix->address.family != family) {
    node.failExpecting(family == IpFamily::v4 ? "an IPv4 prefix such as \"192.0.2.0/24\""
                                              : "an IPv6 prefix such as \"2001:db8::/32\"");
  }
  return *prefix;
}

RuleMatch readHeader(const JsonNode& node, IpFamily family) {
  const JsonObject header(node, {"config"});
  const JsonObject config = header.child(
      "config", {"protocol", "dscp", "dscp-set", "source-address", "destination-address"});
  RuleMatch match;
  match.family = family;
  if (const JsonNode* const protocol = config.find("protocol")) {
    match.protocol = parseProtocol(*protocol);
  }
  if (const JsonNode* const dscp = config.find("dscp")) {
    match.dscp = static_cast<std::uint8_t>(dscp->asNumber(0, maxDscp));
  }
  if (const JsonNode* const set = config.find("dscp-set")) match.dscpSet = parseDscpSet(*set);
  if (const JsonNode* const source = config.find("source-address")) {
    match.source = parsePrefixOf(family, *source);
  }
  if (const JsonNode* const destination = config.find("destination-address")) {
    match.destination = parsePrefixOf(family, *destination);
  }
  return match;
}

RuleMatch readMatch(const JsonObject& rule) {
  const JsonNode* const ipv4 = rule.find("ipv4");
  const JsonNode* const ipv6 = rule.find("ipv6");
  if (ipv4 != nullptr && ipv6 != nullptr) {
    rule.node().fail("has both \"ipv4\" and \"ipv6\"; give at most one of them");
  }
  if (ipv4 != nullptr) return readHeader(*ipv4, IpFamily::v4);
  if (ipv6 != nullptr) return readHeader(*ipv6, IpFamily::v6);
  return {};
}

constexpr const char* lookUpLeaf = "network-instance";
constexpr const char* decapLeaf = "decap-network-instance";
constexpr const char* fallbackLeaf = "decap-fallback-network-instance";
constexpr const char* postDecapLeaf = "post-decap-network-instance";

class ActionReader final {
 public:
  ActionReader(const JsonObject& rule, std::vector<InstanceReference>& references)
      : config_(
            rule.child("action", {"config"})
                .child("config", {lookUpLeaf, decapLeaf, fallbackLeaf, postDecapLeaf, "discard"})),
        references_(references) {}

  [[nodiscard]] RuleAction read() const {
    const bool looksUp = has(lookUpLeaf);
    const bool decapsulates = has(decapLeaf) || has(fallbackLeaf) || has(postDecapLeaf);
    const JsonNode* const discard = config_.find("discard");
    const bool discards = discard != nullptr && discard->asFlag();
    if (looksUp && decapsulates) {
      config_.node().fail("has both \"network-instance\" and a decapsulation; give one of them");
    }
    if (discards && (looksUp || decapsulates)) {
      config_.node().fail("has both \"discard\" and a network instance; give one of them");
    }
    if (discards) return Discard{};
    if (looksUp) return LookUp{vrf(lookUpLeaf)};
    if (decapsulates) return Decapsulate{vrf(decapLeaf), vrf(fallbackLeaf), vrf(postDecapLeaf)};
    return NoAction{};
  }

 private:
  [[nodiscard]] bool has(const char* leaf) const { return config_.find(leaf) != nullptr; }

  [[nodiscard]] std::string vrf(const char* leaf) const {
    const JsonNode& node = config_.at(leaf);
    std::string name = readVrfName(node);
    references_.push_back({node, name});
    return name;
  }

  JsonObject config_;
  std::vector<InstanceReference>& references_;
};

std::uint32_t parseSequenceId(const JsonNode& node) {
  return static_cast<std::uint32_t>(node.asNumber(0, std::numeric_limits<std::uint32_t>::max()));
}

Rule readRule(const JsonNode& node, std::vector<InstanceReference>& references) {
  const JsonObject entry(node, {"sequence-id", "config", "ipv4", "ipv6", "action"});
  const JsonObject config = entry.child("config", {"sequence-id"});
  Rule rule;
  rule.sequenceId = readKey(entry, config, "sequence-id", parseSequenceId);
  rule.match = readMatch(entry);
  rule.action = ActionReader(entry, references).read();
  return rule;
}

void checkType(const JsonNode& type) {
  if (type.asIdentity() != "VRF_SELECTION_POLICY") type.failExpecting("VRF_SELECTION_POLICY");
}

Policy readPolicy(const JsonNode& node, std::vector<InstanceReference>& references) {
  const JsonObject entry(node, {"policy-id", "config", "rules"});
  const JsonObject config = entry.child("config", {"policy-id", "type"});
  Policy policy;
  policy.policyId = readKey(entry, config, "policy-id", readName);
  checkType(config.at("type"));
  UniqueKeys<std::uint32_t> numbers;
  for (const JsonNode& rule : entry.list("rules", "rule", {"sequence-id"})) {
    policy.rules.push_back(readRule(rule, references));
    numbers.add(policy.rules.back().sequenceId, rule);
  }
  std::sort(policy.rules.begin(), policy.rules.end(),
            [](const Rule& a, const Rule& b) { return a.sequenceId < b.sequenceId; });
  return policy;
}

}  // namespace

std::vector<Policy> readPolicies(const JsonObject& policyForwarding,
                                 std::vector<InstanceReference>& references) {
  std::vector<Policy> policies;
  UniqueKeys<std::string> ids;
  for (const JsonNode& policy : policyForwarding.list("policies", "policy", {"policy-id"})) {
    policies.push_back(readPolicy(policy, references));
    ids.add(policies.back().policyId, policy);
  }
  return policies;
}

}  // namespace ZelAgent
