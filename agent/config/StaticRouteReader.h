#pragma once

#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

/// The static routes of a network-instance entry. Each prefix occurs once, and each route has at
/// least one next hop.
[[nodiscard]] std::vector<StaticRoute> readStaticRoutes(const JsonObject& instance);

}  // namespace ZelAgent
