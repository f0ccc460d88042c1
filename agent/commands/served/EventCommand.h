// Why: whatever can befall the agent in a story can befall it while it serves.
// Always: a line is read and played exactly as in a file of events.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

[[nodiscard]] CommandOutput playEvent(const CommandCall& call);

}  // namespace ZelAgent
