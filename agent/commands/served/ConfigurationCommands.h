// Why: whoever changes the daemon's file wants it to be taken, and to see whether it was.
// Always: a file that is wrong changes nothing that is in force.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

[[nodiscard]] CommandOutput showConfig(const CommandCall& call);

// Answers as `show actions` does, with the warnings of the file in front; as JSON they are the
// member `warnings`. A ConfigError says what is wrong with the file.
[[nodiscard]] CommandOutput reload(const CommandCall& call);

}  // namespace ZelAgent
