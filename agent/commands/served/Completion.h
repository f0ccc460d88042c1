// Why: nobody wants to spell out commands and names that the daemon knows.
// Always: what is offered begins with what is typed, is sorted, and can stand in the line as it is.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

// What the last word of the line may become; after a blank, what may stand there. Names of VRFs
// are those that the agent knows.
[[nodiscard]] std::vector<std::string> completionsOf(std::string_view line, ForwardingAgent& agent);

}  // namespace ZelAgent
