#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "PolicyMap/ClassMatch.h"
#include "PolicyMap/RuleAction.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "agent/model/policies/VrfActions.h"
#include "chips/interface/ChipVrfHelper.h"
#include "chips/interface/PacketCounter.h"

namespace ZelAgent {

/// One VRF action: its users, its status, and its resource on the chip.
struct ActionState {
  VrfAction action;
  std::uint32_t users = 0;      // as counted for the library
  std::set<ActionUser> usedBy;  // empty in a snapshot without lists of users
  ZelVrfSelectionPolicy::HwStatus status;
  std::optional<Chips::VrfResource> resource;  // none if the chip has none
  Chips::VrfProgram currentProgram;            // what the chip would program now

  /// Whether the chip would program the resource differently now.
  [[nodiscard]] bool resourceIsStale() const {
    return resource && resource->program != currentProgram;
  }
};

/// A rule as it is configured.
struct ConfiguredRule {
  PolicyMap::SharedClassMatch match;
  PolicyMap::RuleAction action;
};

/// A rule of a policy on an interface that it is applied to.
struct RuleState {
  ActionUser user;
  ConfiguredRule rule;
  /// Its place among the interface's rules on the chip. None if the chip does not hold it.
  std::optional<std::size_t> place;
  std::string reason;  // why the chip does not hold it
  Chips::PacketCounter counter;
  /// Whether it is a rule of an earlier policy, which the chip holds since it refused the present
  /// one.
  bool isPrevious = false;
  /// Whether a change in progress has reached the rules of its interface. It then has no place and
  /// no reason, and it is not known whether the chip holds it.
  bool isBeingChanged = false;
};

using RuleStates = std::vector<RuleState>;

/// How far the rules of an interface were read.
///
/// It names the last rule that was read, by its sequence. So a rule that exists all the time is
/// read exactly once, whatever changes between two reads.
struct RuleCursor {
  bool isInPrevious = false;       // the rules of the applied policy were all read
  std::uint64_t nextSequence = 0;  // the lowest one that was not read

  bool operator==(const RuleCursor&) const = default;
};

/// Whether a snapshot has the users of each action. That is an entry for each rule of the chip.
enum class UserLists : bool { none, all };

/// How many rules of an interface the chip holds, and how many rules of its policy it does not.
struct RuleCounts {
  std::size_t programmed = 0;
  std::size_t refused = 0;
  bool isClosed = false;  // all packets of the interface are dropped
};

/// The use of the chip's rule entries.
struct RuleTableState {
  std::uint32_t capacity = 0;
  std::size_t used = 0;
  std::size_t mostUsed = 0;  // at one time
  std::size_t refused = 0;   // rules of applied policies that the chip does not hold
};

struct ChipState {
  std::uint32_t capacity = 0;
  std::uint32_t used = 0;
  Chips::HookCounts hookCounts;
};

/// A snapshot of the agent at one moment, from the tables and the chip and not from the
/// configuration. Actions are in the order of their names.
struct AgentState {
  std::vector<ActionState> actions;
  ChipState chip;
  RuleTableState ruleTable;
};

/// Whether the action is not programmed on the chip.
[[nodiscard]] inline bool hasFailed(const ActionState& action) {
  return action.status.status() == ZelVrfSelectionPolicy::ProgrammingResult::programmingFailure;
}

/// Whether any action is not programmed on the chip.
[[nodiscard]] inline bool hasFailedAction(const AgentState& state) {
  return std::any_of(state.actions.begin(), state.actions.end(), hasFailed);
}

/// Whether all actions and all rules of applied policies are programmed on the chip.
[[nodiscard]] inline bool isProgrammed(const AgentState& state) {
  return !hasFailedAction(state) && state.ruleTable.refused == 0;
}

}  // namespace ZelAgent
