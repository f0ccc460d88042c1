// Why: an action is named in many lines that are read by people, and its string form is long.
// Always: one line that holds every field which is set, names as words of event files:
// "actionVrf red", "actionDecapVrf decap fallback transit post-decap default".
#pragma once

#include <string>

#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {

[[nodiscard]] std::string toText(const VrfAction& action);

}  // namespace ZelAgent
