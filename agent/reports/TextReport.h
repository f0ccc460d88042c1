// Why: an operator reads what the agent did in a terminal.
// Always: one table row per action and one line for the chip; names are shown printable, absent
// ones as "-".
#pragma once

#include <iosfwd>
#include <string>

#include "agent/model/forwarding/AgentState.h"

namespace ZelAgent {

void writeTextReport(std::ostream& out, const std::string& title, const AgentState& state);

}  // namespace ZelAgent
