#pragma once

#include <iosfwd>

#include "agent/model/forwarding/AgentState.h"

namespace ZelAgent {

/// Prints one line for each rule and each action that is configured and not programmed on the chip:
///
///     not programmed: rule 10 of edge on Ethernet1: the rules do not fit ...
///     not programmed: actionVrf red: the chip had no free VRF resource ...
void writeMissing(std::ostream& err, const AgentState& state, const RuleStates& rules);

}  // namespace ZelAgent
