// Why: tools that read entities by their types must know which there are in this process.
// Always: every module that is registered at this moment, in the order of registration.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

[[nodiscard]] CommandOutput showTypes(const CommandCall& call);

}  // namespace ZelAgent
