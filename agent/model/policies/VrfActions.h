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

/// A user of a VRF action: an interface, and a rule of the policy that is applied to it.
struct ActionUser {
  std::string interface;
  std::string networkInstance;  // of the policy
  std::string policyId;
  std::uint32_t sequenceId = 0;

  auto operator<=>(const ActionUser&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

using ActionUsers = std::map<VrfAction, std::set<ActionUser>>;

/// The VRF action that a rule with this action uses. Nothing for `none` and `discard`.
[[nodiscard]] std::optional<VrfAction> vrfActionOf(const PolicyMap::RuleAction& action);
[[nodiscard]] std::optional<VrfAction> vrfActionOf(const ZelAgent::RuleAction& action);

/// Which VRF actions the configuration needs, and who uses each. Rules of policies that are applied
/// to no interface have no users.
[[nodiscard]] ActionUsers usersOfActions(const Configuration& configuration);

}  // namespace ZelAgent
