#pragma once

#include <cstdint>
#include <optional>

#include "Ip/Prefix.h"

namespace PolicyMap {

/// The outer header fields that a class map matches. An absent field matches any value. Without a
/// family every packet matches.
///
/// Precondition: without a family there is no other field, and prefixes are of the family.
struct ClassMatch {
  std::optional<Ip::Family> family;
  std::optional<std::uint8_t> protocol;
  /// Bit n is set if DSCP n matches. With no bit set no packet matches.
  std::optional<std::uint64_t> dscps;
  std::optional<Ip::Prefix> source;
  std::optional<Ip::Prefix> destination;

  bool operator==(const ClassMatch&) const = default;
};

}  // namespace PolicyMap
