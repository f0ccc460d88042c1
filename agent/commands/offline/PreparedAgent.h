// Why: packets are sent through an agent that a configuration, and events after it, have put into
// some state.
// Always: the agent is given when all of it was applied; otherwise a ConfigError or EventError is
// thrown.
#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

// VRF resources that a chip has unless something else is said.
inline constexpr std::uint32_t usualChipCapacity = 1024;

// Warnings go to `err`, a line each.
[[nodiscard]] std::unique_ptr<ForwardingAgent> prepareAgent(
    const std::string& configuration, const std::optional<std::string>& events, std::ostream& err);

}  // namespace ZelAgent
