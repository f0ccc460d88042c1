// Why: what the library did before anybody asked is in the ring of the process.
// Always: the last messages, oldest first; asking writes none.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

[[nodiscard]] CommandOutput showTrace(const CommandCall& call);

}  // namespace ZelAgent
