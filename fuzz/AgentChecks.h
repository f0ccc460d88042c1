// Checks of an agent that hold after every event. They change nothing. A check that fails ends the
// run.
#pragma once

#include <string>
#include <string_view>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/model/fresh/KeptFacts.h"
#include "tests/agent/model/fresh/VisibleState.h"

namespace Fuzz {

// Checks that the counted users are the rules that the chip holds, that exactly the actions with
// users have a status, that the chip has resources for such actions only, and that the resource of
// an action that is shown as programmed is up to date.
void checkAgent(const ZelAgent::ForwardingAgent& agent, const Chips::ChipVrfHelper& chip);

// Checks that the agent has these facts, and that all of the scope is as in a new agent with these
// facts. Routes are looked up by the addresses in the configuration in force.
void checkAsFresh(ZelAgent::ServedAgent& agent, const ZelAgent::KeptFacts& facts,
                  ZelAgent::Scope scope);

// Checks that the message of an error is one printable line that begins with `place`.
void checkError(std::string_view what, std::string_view place);

// The path of a configuration that a fuzzer may read instead of the file `named`. A fuzzer must not
// read arbitrary files. The choice depends on `named`.
[[nodiscard]] std::string configurationFor(const std::string& named);

}  // namespace Fuzz
