#include "agent/model/differences/ConfigurationDifference.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "agent/config/RuleMatchText.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

template <class Key, class Value>
Differences<Key, Value> differencesOf(std::map<Key, Value> before, std::map<Key, Value> after) {
  Differences<Key, Value> differences;
  for (auto& [key, value] : before) {
    const auto other = after.find(key);
    if (other == after.end()) {
      differences[key].before = std::move(value);
    } else if (other->second != value) {
      differences[key] = {std::move(value), std::move(other->second)};
    }
  }
  for (auto& [key, value] : after) {
    if (!before.contains(key)) differences[key].after = std::move(value);
  }
  return differences;
}

std::map<std::string, std::monostate> instancesOf(const Configuration& configuration) {
  std::map<std::string, std::monostate> instances;
  for (const NetworkInstance& instance : configuration.networkInstances)
    instances[instance.name];
  return instances;
}

std::map<std::string, std::string> fallbacksOf(const Configuration& configuration) {
  std::map<std::string, std::string> fallbacks;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    if (!instance.fallback.empty()) fallbacks.emplace(instance.name, instance.fallback);
  }
  return fallbacks;
}

std::optional<PolicyName> policyNameOf(const NetworkInstance& instance, const std::string& id) {
  if (id.empty()) return std::nullopt;
  return PolicyName{instance.name, id};
}

std::map<std::string, InterfaceSettings> interfacesOf(const Configuration& configuration) {
  std::map<std::string, InterfaceSettings> interfaces;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const std::string& interface : instance.interfaces)
      interfaces[interface].vrf = instance.name;
    for (const PolicyBinding& binding : instance.policyBindings) {
      InterfaceSettings& settings = interfaces[binding.interface];
      settings.vrfSelectionPolicy = policyNameOf(instance, binding.policyId);
      settings.forwardingPolicy = policyNameOf(instance, binding.forwardingPolicyId);
    }
  }
  for (auto& [name, settings] : interfaces) {
    if (settings.vrf.empty()) settings.vrf = defaultVrfName;
  }
  return interfaces;
}

std::vector<NextHop> withoutIndexes(std::vector<NextHop> nextHops) {
  for (NextHop& nextHop : nextHops)
    nextHop.index.clear();
  return nextHops;
}

using Routes = std::map<ConfigurationDifference::RouteName, std::vector<NextHop>>;

Routes routesOf(const Configuration& configuration) {
  Routes routes;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const StaticRoute& route : instance.staticRoutes)
      routes.emplace(std::pair(instance.name, route.prefix), withoutIndexes(route.nextHops));
  }
  return routes;
}

std::vector<IpPrefix> sorted(std::vector<IpPrefix> prefixes) {
  std::sort(prefixes.begin(), prefixes.end());
  return prefixes;
}

std::map<ConfigurationDifference::PrefixSetName, AddressSet> prefixSetsOf(
    const Configuration& configuration) {
  std::map<ConfigurationDifference::PrefixSetName, AddressSet> sets;
  for (const PrefixSet& set : configuration.prefixSets) {
    sets.emplace(std::pair(set.family, set.name),
                 AddressSet{sorted(set.prefixes), sorted(set.excluded)});
  }
  return sets;
}

std::map<PolicyName, PolicyType> policiesOf(const Configuration& configuration) {
  std::map<PolicyName, PolicyType> policies;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const Policy& policy : instance.policies)
      policies.emplace(PolicyName{instance.name, policy.policyId}, policy.type);
  }
  return policies;
}

// A policy with the interfaces that use it.
struct AppliedPolicy {
  const Policy* policy = nullptr;
  std::vector<std::string> interfaces;
};

using AppliedPolicies = std::map<PolicyName, AppliedPolicy>;

AppliedPolicies appliedPoliciesOf(const Configuration& configuration) {
  AppliedPolicies policies;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const Policy& policy : instance.policies)
      policies[{instance.name, policy.policyId}].policy = &policy;
    for (const PolicyBinding& binding : instance.policyBindings) {
      for (const std::string& id : {binding.policyId, binding.forwardingPolicyId}) {
        const auto found = policies.find({instance.name, id});
        if (found != policies.end()) found->second.interfaces.push_back(binding.interface);
      }
    }
  }
  for (auto& [name, policy] : policies)
    std::sort(policy.interfaces.begin(), policy.interfaces.end());
  return policies;
}

std::map<VrfAction, std::size_t> usersOf(const AppliedPolicies& policies) {
  std::map<VrfAction, std::size_t> users;
  for (const auto& [name, applied] : policies) {
    if (applied.interfaces.empty()) continue;
    for (const Rule& rule : applied.policy->rules) {
      if (const auto action = vrfActionOf(rule.action)) users[*action] += applied.interfaces.size();
    }
  }
  return users;
}

struct ActionWords {
  std::string operator()(const NoAction& /*action*/) const { return "none"; }
  std::string operator()(const Discard& /*action*/) const { return "discard"; }
  std::string operator()(const LookUp& action) const { return "look-up " + toWord(action.vrf); }
  std::string operator()(const Decapsulate& action) const {
    return "decap " + toWord(action.decapVrf) + ' ' + toWord(action.fallbackVrf) + ' ' +
           toWord(action.postDecapVrf);
  }
};

// Equal for rules with the same match and action, and for no others.
std::string contentOf(const Rule& rule) {
  return toText(rule.match) + " do " + std::visit(ActionWords(), rule.action);
}

bool doTheSame(const Rule& a, const Rule& b) {
  return (a.match == b.match && a.action == b.action) || contentOf(a) == contentOf(b);
}

using RulesBySequence = std::map<std::uint32_t, const Rule*>;

RulesBySequence bySequence(const Policy* policy) {
  RulesBySequence rules;
  if (policy == nullptr) return rules;
  for (const Rule& rule : policy->rules)
    rules.emplace(rule.sequenceId, &rule);
  return rules;
}

void removeEqual(RulesBySequence& before, RulesBySequence& after) {
  for (auto rule = before.begin(); rule != before.end();) {
    const auto same = after.find(rule->first);
    if (same == after.end() || !doTheSame(*rule->second, *same->second)) {
      ++rule;
      continue;
    }
    after.erase(same);
    rule = before.erase(rule);
  }
}

// Takes the rules that have moved from both, and adds them to `differences`.
void takeMoved(RulesBySequence& before, RulesBySequence& after,
               std::vector<Difference<Rule>>& differences) {
  std::multimap<std::string, const Rule*> byContent;
  for (const auto& [sequence, rule] : before)
    byContent.emplace(contentOf(*rule), rule);
  for (auto rule = after.begin(); rule != after.end();) {
    const auto moved = byContent.find(contentOf(*rule->second));
    if (moved == byContent.end()) {
      ++rule;
      continue;
    }
    differences.push_back({*moved->second, *rule->second});
    before.erase(moved->second->sequenceId);
    byContent.erase(moved);
    rule = after.erase(rule);
  }
}

// A rule that moved to the number of a removed rule comes before that one.
std::pair<std::uint32_t, bool> placeOf(const Difference<Rule>& difference) {
  const bool isRemoved = !difference.after;
  return {(isRemoved ? difference.before : difference.after)->sequenceId, isRemoved};
}

std::vector<Difference<Rule>> rulesThatDiffer(const Policy* before, const Policy* after) {
  RulesBySequence rulesBefore = bySequence(before);
  RulesBySequence rulesAfter = bySequence(after);
  removeEqual(rulesBefore, rulesAfter);
  std::vector<Difference<Rule>> differences;
  takeMoved(rulesBefore, rulesAfter, differences);
  for (const auto& [sequence, rule] : rulesBefore) {
    const auto other = rulesAfter.find(sequence);
    if (other == rulesAfter.end()) {
      differences.push_back({*rule, std::nullopt});
    } else {
      differences.push_back({*rule, *other->second});
      rulesAfter.erase(other);
    }
  }
  for (const auto& [sequence, rule] : rulesAfter)
    differences.push_back({std::nullopt, *rule});
  std::sort(differences.begin(), differences.end(),
            [](const auto& a, const auto& b) { return placeOf(a) < placeOf(b); });
  return differences;
}

std::map<PolicyName, PolicyDifference> rulesThatDiffer(const AppliedPolicies& before,
                                                       const AppliedPolicies& after) {
  std::map<PolicyName, PolicyDifference> differences;
  const auto compare = [&](const PolicyName& name, const AppliedPolicy& from,
                           const AppliedPolicy& to) {
    auto rules = rulesThatDiffer(from.policy, to.policy);
    const AppliedPolicy& present = to.policy == nullptr ? from : to;
    if (!rules.empty()) differences[name] = {present.interfaces, std::move(rules)};
  };
  for (const auto& [name, policy] : before) {
    const auto other = after.find(name);
    compare(name, policy, other == after.end() ? AppliedPolicy() : other->second);
  }
  for (const auto& [name, policy] : after) {
    if (!before.contains(name)) compare(name, {}, policy);
  }
  return differences;
}

}  // namespace

bool ConfigurationDifference::isEmpty() const noexcept {
  return instances.empty() && fallbacks.empty() && interfaces.empty() && routes.empty() &&
         prefixSets.empty() && policies.empty() && rules.empty() && actions.empty();
}

ConfigurationDifference differenceOf(const Configuration& before, const Configuration& after) {
  const AppliedPolicies appliedBefore = appliedPoliciesOf(before);
  const AppliedPolicies appliedAfter = appliedPoliciesOf(after);
  return {differencesOf(instancesOf(before), instancesOf(after)),
          differencesOf(fallbacksOf(before), fallbacksOf(after)),
          differencesOf(interfacesOf(before), interfacesOf(after)),
          differencesOf(routesOf(before), routesOf(after)),
          differencesOf(prefixSetsOf(before), prefixSetsOf(after)),
          differencesOf(policiesOf(before), policiesOf(after)),
          rulesThatDiffer(appliedBefore, appliedAfter),
          differencesOf(usersOf(appliedBefore), usersOf(appliedAfter))};
}

}  // namespace ZelAgent
