#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "PolicyMap/ClassMatch.h"
#include "chips/soft/packet/PacketHeader.h"

namespace SoftChip {

/// A field that a rule compares. Fields are compared in this order.
enum class RuleField : std::uint8_t { family, protocol, dscp, source, destination };

/// "family", "protocol", "dscp", "source-address" or "destination-address".
[[nodiscard]] std::string_view nameOf(RuleField field) noexcept;

/// The first field in which the header does not match. Nothing if the header matches.
[[nodiscard]] std::optional<RuleField> firstDifference(const PolicyMap::ClassMatch& match,
                                                       const PacketHeader& header) noexcept;

}  // namespace SoftChip
