// Why: hardware needs one resource per distinct VRF action, while configurations speak of rules and
// interfaces. This says which actions a configuration needs, and who uses each.
// Always: a user is a pair of an interface and a rule of the policy applied to it; rules of
// policies that are applied nowhere have no users; `discard` and rules without an action need no
// VRF action.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "PolicyMap/RuleAction.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"
#include "agent/config/Configuration.h"

namespace ZelAgent {

using ZelVrfSelectionPolicy::VrfAction;

struct ActionUser {
  std::string interface;
  std::string networkInstance;  // where the policy stands
  std::string policyId;
  std::uint32_t sequenceId = 0;

  auto operator<=>(const ActionUser&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

using ActionUsers = std::map<VrfAction, std::set<ActionUser>>;

// The VRF action that a rule of this action uses; nothing for an action that needs none.
[[nodiscard]] std::optional<VrfAction> vrfActionOf(const PolicyMap::RuleAction& action);

[[nodiscard]] ActionUsers usersOfActions(const Configuration& configuration);

}  // namespace ZelAgent
