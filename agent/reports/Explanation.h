// Why: `zel-agent explain` and the daemon tell one packet's way alike.
// Always: the packet is counted like any other.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/WayReport.h"

namespace ZelAgent {

// Sends the packet in by the interface; gives its way.
[[nodiscard]] WayReport explain(ForwardingAgent& agent, const std::string& interface,
                                std::span<const std::uint8_t> packet);

}  // namespace ZelAgent
