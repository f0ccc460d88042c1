// Why: a table has no room for what a resource was programmed with, and that is where it shows
// what of a stale one is stale.
// Always: two lines per resource, in the order of their actions; below a stale one, a third with
// what the chip would program now.
#pragma once

#include <iosfwd>

#include "agent/model/forwarding/AgentState.h"

namespace ZelAgent {

void writeResourceReport(std::ostream& out, const AgentState& state);

}  // namespace ZelAgent
