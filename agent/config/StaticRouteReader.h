// Why: static routes are what the tables of a VRF hold; they are read apart from the rest because
// their part of the model is deep.
// Always: each prefix stands once in a network instance, and each route has a way to go.
#pragma once

#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

// The static routes of a network-instance entry.
[[nodiscard]] std::vector<StaticRoute> readStaticRoutes(const JsonObject& instance);

}  // namespace ZelAgent
