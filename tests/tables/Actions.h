#pragma once

#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy::Testing {

// The actions that the tables of these tests hold.
inline const VrfAction red("red", PolicyMap::ActionType::vrf);
inline const VrfAction blue("blue", PolicyMap::ActionType::vrf);
inline const VrfAction green("green", PolicyMap::ActionType::vrf);

}  // namespace ZelVrfSelectionPolicy::Testing
