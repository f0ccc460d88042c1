// Why: the daemon is learnt by asking it.
// Always: everything in the table of commands is told, and nothing else.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

// A line per form that begins with the words given.
[[nodiscard]] CommandOutput help(const CommandCall& call);

// A line per completion; as JSON an array.
[[nodiscard]] CommandOutput complete(const CommandCall& call);

}  // namespace ZelAgent
