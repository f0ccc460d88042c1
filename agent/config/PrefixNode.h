#pragma once

#include <optional>

#include "agent/config/IpPrefix.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

/// A prefix of the family. Records an error for any other value.
[[nodiscard]] std::optional<IpPrefix> readPrefixOf(IpFamily family, const JsonNode& node);

/// A prefix of either family.
[[nodiscard]] std::optional<IpPrefix> readPrefix(const JsonNode& node);

}  // namespace ZelAgent
