// Why: the agent hears of a VRF from its configuration, from the hardware, and from whatever names
// it: actions, fallbacks, prefix lengths. Whoever lists VRFs wants all of them.
// Always: each is there once, the default VRF first and then in the order of their names.
#pragma once

#include <set>

#include "L3/VrfName.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

[[nodiscard]] std::set<L3::VrfName> configuredVrfs(const ForwardingAgent& agent);
[[nodiscard]] std::set<L3::VrfName> knownVrfs(ForwardingAgent& agent);

}  // namespace ZelAgent
