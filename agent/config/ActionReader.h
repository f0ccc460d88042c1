#pragma once

#include "agent/config/Configuration.h"
#include "agent/config/InstanceNames.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

/// What the rule entry does, by its container `action`. An action is of one kind and complete.
[[nodiscard]] RuleAction readAction(const JsonObject& rule, const InstanceNames& names);

}  // namespace ZelAgent
