#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "PolicyMap/NumberRange.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

inline constexpr std::uint16_t mostPort = 65535;
inline constexpr std::uint16_t mostFragmentOffset = 8191;

/// A number, "FIRST..LAST", or ANY for all numbers. Records an error for any other value, or for a
/// number above `most`.
[[nodiscard]] std::optional<PolicyMap::NumberRange> readRange(const JsonNode& node,
                                                              std::uint16_t most);

/// The numbers of `ranges` that are in none of `excluded`, in ascending order and without overlap.
[[nodiscard]] std::vector<PolicyMap::NumberRange> without(
    std::vector<PolicyMap::NumberRange> ranges, std::vector<PolicyMap::NumberRange> excluded);

}  // namespace ZelAgent
