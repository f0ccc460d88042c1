// More of what rules can match: prefix sets, ports, TCP flags, fragments, lengths and hop limits;
// and second policies of interfaces.
#pragma once

#include "tests/agent/features/RandomWorld.h"

namespace ZelAgent {

// Adds them to the rules and interfaces of the configuration.
void addMatches(RandomChoices& choices, Configuration& configuration);

}  // namespace ZelAgent
