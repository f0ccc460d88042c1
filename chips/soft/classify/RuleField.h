// Why: who asks why a rule did not take a packet wants to hear of one field, not of a bare no.
// Always: fields are compared in the order in which they are declared here.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "PolicyMap/ClassMatch.h"
#include "chips/soft/packet/PacketHeader.h"

namespace SoftChip {

enum class RuleField : std::uint8_t { family, protocol, dscp, source, destination };

// "family", "protocol", "dscp", "source-address" or "destination-address".
[[nodiscard]] std::string_view nameOf(RuleField field) noexcept;

// The first field by which the match does not match the header; nothing when it matches.
[[nodiscard]] std::optional<RuleField> firstDifference(const PolicyMap::ClassMatch& match,
                                                       const PacketHeader& header) noexcept;

}  // namespace SoftChip
