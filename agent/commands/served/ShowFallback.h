// Why: a fallback may have been moved since it was configured, and the cycle that makes is seen
// only when all of them stand together.
// Always: the graph is that of the fallbacks and actions of this moment.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

[[nodiscard]] CommandOutput showFallback(const CommandCall& call);

}  // namespace ZelAgent
