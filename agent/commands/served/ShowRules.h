// Why: an operator asks which rules the chip holds, who uses an action because of them, and what
// they have been good for.
// Always: nothing is changed.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

// As RuleReport.h and CounterReport.h tell.
[[nodiscard]] CommandOutput showRules(const CommandCall& call);
[[nodiscard]] CommandOutput showUsers(const CommandCall& call);
[[nodiscard]] CommandOutput showCounters(const CommandCall& call);

}  // namespace ZelAgent
