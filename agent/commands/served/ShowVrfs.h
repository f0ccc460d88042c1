// Why: an action waits for its VRFs, so the first question is what the agent knows of them.
// Always: every VRF that the agent has heard of has one row.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

[[nodiscard]] CommandOutput showVrfs(const CommandCall& call);

}  // namespace ZelAgent
