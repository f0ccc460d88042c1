#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "PolicyMap/AclMatch.h"
#include "chips/packet/PacketHeader.h"

namespace Chips {

/// A field that a rule compares. Fields are compared in this order.
enum class RuleField : std::uint8_t {
  family,
  protocol,
  dscp,
  source,
  destination,
  sourceSet,
  destinationSet,
  hopLimit,
  length,
  fragment,
  fragmentOffset,
  sourcePort,
  destinationPort,
  tcpFlags,
};

/// For example "protocol" or "source-address".
[[nodiscard]] std::string_view nameOf(RuleField field) noexcept;

/// The first field in which the header does not match. Nothing if the header matches.
[[nodiscard]] std::optional<RuleField> firstDifference(const PolicyMap::AclMatch& match,
                                                       const PacketHeader& header) noexcept;

}  // namespace Chips
