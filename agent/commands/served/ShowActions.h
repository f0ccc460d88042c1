// Why: an operator asks what `run` shows after each configuration, of the agent as it is now.
// Always: nothing is changed.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

// The table below the file that is in force; as JSON the members of a report.
[[nodiscard]] CommandOutput showActions(const CommandCall& call);

}  // namespace ZelAgent
