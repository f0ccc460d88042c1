#include "agent/config/PolicyReader.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "agent/config/ActionReader.h"
#include "agent/config/MatchReader.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

const std::string vrfSelectionType = "VRF_SELECTION_POLICY";
const std::string forwardingType = "PBR_POLICY";

std::optional<std::uint32_t> readSequenceId(const JsonNode& node) {
  const auto number = node.asNumber(0, std::numeric_limits<std::uint32_t>::max());
  if (!number) return std::nullopt;
  return static_cast<std::uint32_t>(*number);
}

class RulesReader final {
 public:
  RulesReader(const InstanceNames& names, const DefinedSets& sets, Progress& progress)
      : names_(names), sets_(sets), progress_(progress) {}

  [[nodiscard]] std::vector<Rule> read(const JsonObject& policy) {
    std::vector<Rule> rules;
    for (const JsonNode& node : policy.list("rules", "rule")) {
      if (auto rule = readRule(node)) rules.push_back(*std::move(rule));
      progress_.step();
    }
    std::sort(rules.begin(), rules.end(),
              [](const Rule& a, const Rule& b) { return a.sequenceId < b.sequenceId; });
    return rules;
  }

 private:
  // Nothing if the rule is left out.
  std::optional<Rule> readRule(const JsonNode& node) {
    const std::size_t before = node.findings().problems();
    const JsonObject entry(node);
    const auto number = readKey(entry, entry.child("config"), "sequence-id", readSequenceId);
    numbers_.add(number, node);
    Rule rule{number.value_or(0), readMatch(entry, sets_), readAction(entry, names_)};
    if (node.findings().problems() != before) return std::nullopt;
    return rule;
  }

  const InstanceNames& names_;
  const DefinedSets& sets_;
  Progress& progress_;
  UniqueKeys<std::uint32_t> numbers_;
};

// The type of the policy, which may be one that is not read. Nothing for a wrong value.
std::optional<std::string> typeOf(const JsonNode& policy) {
  const JsonValue* const config = peek(policy.value(), {"config"});
  const bool isWrong = config != nullptr && config->as<JsonValue::Object>() == nullptr;
  if (isWrong || peek(policy.value(), {"config", "type"}) != nullptr) {
    return peekIdentity(policy, {"config", "type"});
  }
  return forwardingType;
}

bool isRead(const std::string& type) {
  return type == vrfSelectionType || type == forwardingType;
}

Policy readPolicy(const JsonNode& node, UniqueKeys<std::string>& ids, RulesReader rules) {
  const JsonObject entry(node);
  const JsonObject config = entry.child("config");
  const auto id = readKey(entry, config, "policy-id", readName);
  ids.add(id, node);
  const JsonNode* const type = config.find("type");
  const auto identity = type == nullptr ? std::nullopt : type->asIdentity();
  return {id.value_or(""), rules.read(entry),
          identity == vrfSelectionType ? PolicyType::vrfSelection : PolicyType::forwarding};
}

void skipPolicy(const JsonNode& node, const std::string& type, const std::optional<std::string>& id,
                UniqueKeys<std::string>& ids) {
  ids.add(id, node);
  node.warn("is a policy of type " + inQuotes(type) + "; only " + vrfSelectionType + " and " +
            forwardingType + " are read, ignored");
}

}  // namespace

ReadPolicies readPolicies(const JsonObject& policyForwarding, const InstanceNames& names,
                          const DefinedSets& sets, Progress& progress) {
  ReadPolicies read;
  UniqueKeys<std::string> ids;
  const Findings& findings = policyForwarding.node().findings();
  const std::size_t before = findings.problems();
  const auto entries = policyForwarding.list("policies", "policy");
  read.hasUnreadable = findings.problems() != before;
  for (const JsonNode& node : entries) {
    const auto type = typeOf(node);
    if (!type || isRead(*type)) {
      read.policies.push_back(readPolicy(node, ids, RulesReader(names, sets, progress)));
      read.types[read.policies.back().policyId] = type;
    } else {
      const auto id = peekText(node, {"policy-id"});
      skipPolicy(node, *type, id, ids);
      if (id) read.types[*id] = type;
    }
  }
  if (read.types.contains("")) read.hasUnreadable = true;
  return read;
}

std::optional<PolicyBinding> BindingReader::read(const JsonNode& node,
                                                 UniqueKeys<std::string>& ids) const {
  const JsonObject entry(node);
  const JsonObject config = entry.child("config");
  checkEnabled(config);
  const auto id = readKey(entry, config, "interface-id", readName);
  const bool isNew = ids.add(id, node);
  const std::string interface = readInterface(entry.child("interface-ref").child("config"));
  PolicyBinding binding{interface,
                        readApplied(config, "apply-vrf-selection-policy", vrfSelectionType),
                        readApplied(config, "apply-forwarding-policy", forwardingType)};
  if (!isNew) return std::nullopt;
  if (interface.empty()) binding.interface = *id;
  return binding;
}

std::string BindingReader::readApplied(const JsonObject& config, const char* leaf,
                                       const std::string& type) const {
  const JsonNode* const node = config.find(leaf);
  if (node == nullptr) return {};
  const auto id = readName(*node);
  if (!id) return {};
  const auto policy = policies_.types.find(*id);
  if (policy == policies_.types.end()) {
    if (!policies_.hasUnreadable) {
      node->refuseExpecting("a policy of the same network instance");
    }
    return {};
  }
  if (policy->second.value_or(type) == type) return *id;
  node->refuse("must be a policy of type " + type + ", not " + node->shown() + " of type " +
               printable(*policy->second));
  return {};
}

}  // namespace ZelAgent
