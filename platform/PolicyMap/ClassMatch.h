#pragma once

#include <cstdint>
#include <optional>

#include "Ip/Prefix.h"

namespace PolicyMap {

/// What the outer header of a packet must be for a class map to match it. An absent field is a
/// wildcard; without a family every packet matches.
///
/// Precondition: without a family there is no other field, and prefixes are of the family.
struct ClassMatch {
  std::optional<Ip::Family> family;
  std::optional<std::uint8_t> protocol;
  /// Bit n is set where DSCP n matches; without a bit no packet does.
  std::optional<std::uint64_t> dscps;
  std::optional<Ip::Prefix> source;
  std::optional<Ip::Prefix> destination;

  bool operator==(const ClassMatch&) const = default;
};

}  // namespace PolicyMap
