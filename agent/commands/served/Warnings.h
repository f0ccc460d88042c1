// Why: a configuration may be taken and still have something to be said about it.
// Always: warnings are told in the answer to the command that applied the configuration.
#pragma once

#include <string>
#include <vector>

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

// The output with a line in front for each warning, or with the member `warnings`.
[[nodiscard]] CommandOutput withWarnings(const CommandCall& call,
                                         const std::vector<std::string>& warnings,
                                         CommandOutput output);

}  // namespace ZelAgent
