// Why: whatever befalls an agent, some things hold of it when all is done.
// Always: changes nothing; what does not hold ends the run.
#pragma once

#include <string>
#include <string_view>

#include "agent/model/forwarding/ForwardingAgent.h"

namespace Fuzz {

// The users that are counted are the rules that the chip holds; an action has users exactly while
// it has a status; and the chip has resources for such actions only.
void checkAgent(const ZelAgent::ForwardingAgent& agent, const SoftChip::SoftVrfHelper& chip);

// What an error says is one printable line that begins with `place`.
void checkError(std::string_view what, std::string_view place);

// A configuration that the events and commands of fuzzers may name: reading just any file is not
// for them. Which one depends on what they name.
[[nodiscard]] std::string configurationFor(const std::string& named);

}  // namespace Fuzz
