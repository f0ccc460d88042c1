#include "agent/model/policies/VrfActions.h"

#include <optional>
#include <variant>

namespace ZelAgent {
namespace {

using PolicyMap::ActionType;

void addUsersOf(const NetworkInstance& instance, const PolicyBinding& binding, ActionUsers& users) {
  for (const Policy& policy : instance.policies) {
    if (policy.policyId != binding.policyId && policy.policyId != binding.forwardingPolicyId)
      continue;
    for (const Rule& rule : policy.rules) {
      if (const auto action = vrfActionOf(rule.action)) {
        users[*action].insert({binding.interface, instance.name, policy.policyId, rule.sequenceId});
      }
    }
  }
}

}  // namespace

std::optional<VrfAction> vrfActionOf(const ZelAgent::RuleAction& action) {
  if (const auto* const lookUp = std::get_if<LookUp>(&action)) {
    return VrfAction(lookUp->vrf, ActionType::vrf);
  }
  if (const auto* const decapsulate = std::get_if<Decapsulate>(&action)) {
    VrfAction vrfAction(decapsulate->decapVrf, ActionType::decapVrf);
    vrfAction.fallbackVrfNameIs(decapsulate->fallbackVrf);
    vrfAction.postDecapVrfNameIs(decapsulate->postDecapVrf);
    return vrfAction;
  }
  return std::nullopt;
}

std::optional<VrfAction> vrfActionOf(const PolicyMap::RuleAction& action) {
  if (action.type != ActionType::vrf && action.type != ActionType::decapVrf) return std::nullopt;
  VrfAction vrfAction(action.vrfName, action.type);
  vrfAction.fallbackVrfNameIs(action.fallbackVrfName);
  vrfAction.postDecapVrfNameIs(action.postDecapVrfName);
  return vrfAction;
}

ActionUsers usersOfActions(const Configuration& configuration) {
  ActionUsers users;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const PolicyBinding& binding : instance.policyBindings) {
      addUsersOf(instance, binding, users);
    }
  }
  return users;
}

}  // namespace ZelAgent
