#pragma once

#include "agent/config/Configuration.h"
#include "agent/config/DefinedSets.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

/// What the rule entry matches, by its containers `ipv4`, `ipv6` and `transport`.
///
/// Fields that contradict each other, or that need another field, are errors.
[[nodiscard]] RuleMatch readMatch(const JsonObject& rule, const DefinedSets& sets);

}  // namespace ZelAgent
