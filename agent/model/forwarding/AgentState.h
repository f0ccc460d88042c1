#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "agent/model/policies/VrfActions.h"
#include "chips/soft/SoftAclHelper.h"
#include "chips/soft/SoftVrfHelper.h"

namespace ZelAgent {

/// One VRF action: its users, its status, and its resource on the chip.
struct ActionState {
  VrfAction action;
  std::uint32_t users = 0;  // as counted for the library
  std::set<ActionUser> usedBy;
  ZelVrfSelectionPolicy::HwStatus status;
  std::optional<SoftChip::VrfResource> resource;  // none if the chip has none
  SoftChip::VrfProgram currentProgram;            // what the chip would program now

  /// Whether the chip would program the resource differently now.
  [[nodiscard]] bool resourceIsStale() const {
    return resource && resource->program != currentProgram;
  }
};

/// A rule of a policy on an interface that it is applied to.
struct RuleState {
  ActionUser user;
  PolicyMap::AclRule rule;
  /// Its place among the interface's rules on the chip. None if the chip does not hold it.
  std::optional<std::size_t> place;
  std::string reason;  // why the chip does not hold it
  SoftChip::RuleCounter counter;
};

using RuleStates = std::vector<RuleState>;

struct ChipState {
  std::uint32_t capacity = 0;
  std::uint32_t used = 0;
  SoftChip::HookCounts hookCounts;
};

/// A snapshot of the agent at one moment, from the tables and the chip and not from the
/// configuration. Actions are in the order of their names.
struct AgentState {
  std::vector<ActionState> actions;
  ChipState chip;
};

/// Whether any action is not programmed on the chip.
[[nodiscard]] inline bool hasFailedAction(const AgentState& state) {
  for (const ActionState& action : state.actions) {
    if (action.status.status() == ZelVrfSelectionPolicy::ProgrammingResult::programmingFailure) {
      return true;
    }
  }
  return false;
}

}  // namespace ZelAgent
