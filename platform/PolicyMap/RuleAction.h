#pragma once

#include "L3/VrfName.h"
#include "PolicyMap/ActionType.h"

namespace PolicyMap {

/// The action of a rule on the packets that it matches. Names that the type does not use are empty.
struct RuleAction {
  ActionType type = ActionType::none;
  L3::VrfName vrfName;
  L3::VrfName fallbackVrfName;
  L3::VrfName postDecapVrfName;

  bool operator==(const RuleAction&) const = default;
};

}  // namespace PolicyMap
