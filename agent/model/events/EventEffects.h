// Why: an event is played to see what it causes.
// Always: calls are in the order in which the chip had them; status changes are those that are left
// when the event is done, in the order of their actions.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "agent/model/policies/VrfActions.h"
#include "chips/soft/HookCall.h"

namespace ZelAgent {

struct StatusChange {
  VrfAction action;
  std::optional<ZelVrfSelectionPolicy::HwStatus> before;  // none: the action had no status
  std::optional<ZelVrfSelectionPolicy::HwStatus> after;   // none: it has none any more

  bool operator==(const StatusChange&) const = default;
};

struct EventEffects {
  std::vector<SoftChip::HookCall> calls;
  std::vector<StatusChange> statusChanges;
  std::vector<std::string> warnings;  // of a configuration that was read
};

}  // namespace ZelAgent
