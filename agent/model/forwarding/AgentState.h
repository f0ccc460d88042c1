// Why: what the agent shows is the same whether it is shown as a table, as JSON or over a socket.
// Always: a plain snapshot, taken from the tables and the chip at one moment and not from the
// configuration; actions come in the order of their names.
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

struct ActionState {
  VrfAction action;
  std::uint32_t users = 0;  // the count that the library was told
  std::set<ActionUser> usedBy;
  ZelVrfSelectionPolicy::HwStatus status;
  std::optional<SoftChip::VrfResource> resource;  // none where the chip has made none
  SoftChip::VrfProgram currentProgram;            // what the chip would program now

  // Whether the chip has a resource that it would program otherwise now.
  [[nodiscard]] bool resourceIsStale() const {
    return resource && resource->program != currentProgram;
  }
};

// A rule of a policy on an interface that it is applied to.
struct RuleState {
  ActionUser user;
  PolicyMap::AclRule rule;
  // Among the rules that the chip holds for the interface; none where it does not hold this one.
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

struct AgentState {
  std::vector<ActionState> actions;
  ChipState chip;
};

// Whether the chip has reported for any action that it is not programmed.
[[nodiscard]] inline bool hasFailedAction(const AgentState& state) {
  for (const ActionState& action : state.actions) {
    if (action.status.status() == ZelVrfSelectionPolicy::ProgrammingResult::programmingFailure) {
      return true;
    }
  }
  return false;
}

}  // namespace ZelAgent
