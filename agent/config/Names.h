// Why: names of network instances, policies and interfaces obey the same rules wherever they stand.
// Always: a name that is read is not empty and has at most 100 bytes; an instance's name is the
// system's VRF name.
#pragma once

#include <string>

#include "agent/config/JsonNode.h"

namespace ZelAgent {

[[nodiscard]] std::string readName(const JsonNode& node);

// The VRF name of a network instance: "default" for DEFAULT, any other name as it stands.
[[nodiscard]] std::string readVrfName(const JsonNode& node);

// The interface of a container with `interface` and `subinterface`: "Ethernet1", or "Ethernet1.7"
// where a subinterface other than 0 is given; empty where neither is.
[[nodiscard]] std::string readInterface(const JsonObject& reference);

}  // namespace ZelAgent
