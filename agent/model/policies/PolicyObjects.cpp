#include "agent/model/policies/PolicyObjects.h"

#include <variant>

#include "Mox/QuotedString.h"
#include "agent/config/IpPrefix.h"

namespace ZelAgent {
namespace {

using PolicyMap::ActionType;
using PolicyMap::ClassMatch;

// Both parts are quoted, so no two policies have the same name.
Velo::String policyMapName(const std::string& networkInstance, const std::string& policyId) {
  return Mox::quoted(networkInstance) + ' ' + Mox::quoted(policyId);
}

std::optional<std::uint64_t> dscpsOf(const RuleMatch& match) {
  std::optional<std::uint64_t> dscps;
  for (const std::uint8_t dscp : match.dscpSet)
    dscps = dscps.value_or(0) | std::uint64_t{1} << dscp;
  if (match.dscp) dscps = dscps.value_or(~std::uint64_t{0}) & std::uint64_t{1} << *match.dscp;
  return dscps;
}

ClassMatch classMatchOf(const RuleMatch& match) {
  return {match.family, match.protocol, dscpsOf(match), match.source, match.destination};
}

struct ToRuleAction {
  PolicyMap::RuleAction operator()(const NoAction& /*action*/) const { return {}; }
  PolicyMap::RuleAction operator()(const Discard& /*action*/) const {
    return {ActionType::discard, {}, {}, {}};
  }
  PolicyMap::RuleAction operator()(const LookUp& action) const {
    return {ActionType::vrf, action.vrf, {}, {}};
  }
  PolicyMap::RuleAction operator()(const Decapsulate& action) const {
    return {ActionType::decapVrf, action.decapVrf, action.fallbackVrf, action.postDecapVrf};
  }
};

PolicyMap::PolicyMapRules rulesOf(const Policy& policy, PolicyObjects& objects) {
  PolicyMap::PolicyMapRules rules;
  for (const Rule& rule : policy.rules) {
    const ClassMatch match = classMatchOf(rule.match);
    const Velo::String classMap = toText(match);
    objects.classMaps.emplace(classMap, match);
    rules.push_back({rule.sequenceId, classMap, std::visit(ToRuleAction(), rule.action)});
  }
  return rules;
}

std::string toText(std::uint64_t dscps) {
  std::string text;
  for (unsigned dscp = 0; dscp < 64; ++dscp) {
    if ((dscps >> dscp & 1) == 0) continue;
    if (!text.empty()) text += ',';
    text += std::to_string(dscp);
  }
  return text.empty() ? "none" : text;
}

}  // namespace

PolicyObjects policyObjectsOf(const Configuration& configuration) {
  PolicyObjects objects;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const Policy& policy : instance.policies) {
      const Velo::String name = policyMapName(instance.name, policy.policyId);
      objects.origins.emplace(name, PolicyOrigin{instance.name, policy.policyId});
      objects.policyMaps.emplace(name, rulesOf(policy, objects));
    }
    for (const PolicyBinding& binding : instance.policyBindings) {
      if (binding.policyId.empty()) continue;
      const Velo::String name = policyMapName(instance.name, binding.policyId);
      objects.intfs.emplace(binding.interface,
                            PolicyMap::IntfPolicy{PolicyMap::IntfKind::routed, name});
    }
  }
  return objects;
}

std::string toText(const PolicyMap::ClassMatch& match) {
  if (!match.family) return "any";
  std::string text = toText(*match.family);
  if (match.protocol) text += " protocol " + std::to_string(*match.protocol);
  if (match.dscps) text += " dscp " + toText(*match.dscps);
  if (match.source) text += " source " + toText(*match.source);
  if (match.destination) text += " destination " + toText(*match.destination);
  return text;
}

}  // namespace ZelAgent
