// What an agent promises about its chip at any time.
#pragma once

#include <string>

#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

// After each change, for each action that is used:
//
//   its status is success   its resource is there and has the program of the current facts
//   its status is a failure the chip has a reason now: there is no free resource, a VRF has no id,
//                           or a planned fault has refused the last request
//
// No interface lacks its rules while there is room for all of them beside those that the chip
// holds. The rules that are shown as on the chip are there, and no others. The counted users of an
// action are its rules on the chip.
//
// Returns what is broken; empty if nothing is.
[[nodiscard]] std::string brokenPromise(ForwardingAgent& agent);

// An action or a rule that is not on the chip; empty if there is none.
[[nodiscard]] std::string missing(ForwardingAgent& agent);

}  // namespace ZelAgent
