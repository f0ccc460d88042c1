#pragma once

#include <cstddef>
#include <cstdint>

#include "Ip/Prefix.h"

namespace SoftChip {

/// The place of a fragment in the packet that was sent. A whole packet has offset 0, and `more` is
/// false.
struct FragmentFacts {
  std::uint16_t offset = 0;  // in units of eight bytes
  bool more = false;

  [[nodiscard]] bool isFragment() const noexcept { return offset != 0 || more; }
  friend bool operator==(const FragmentFacts&, const FragmentFacts&) = default;
};

/// The fields of a packet that rules and lookups use. They are the same for both families, with and
/// without options and extension headers. A header is made from checked bytes. Its lengths lie
/// within these bytes.
struct PacketHeader {
  Ip::Family family = Ip::Family::v4;
  Ip::Address source;
  Ip::Address destination;
  /// IPv4: that of the header. IPv6: the first next header that is not hop-by-hop options, routing,
  /// destination options or fragment. No header is read behind the fragment header of a fragment
  /// that is not the first.
  std::uint8_t protocol = 0;
  std::uint8_t dscp = 0;
  std::uint8_t ecn = 0;
  std::uint8_t ttl = 0;          // IPv6: the hop limit
  std::size_t headerLength = 0;  // up to the upper layer: with options and extension headers
  std::size_t totalLength = 0;   // with the header
  FragmentFacts fragment;

  friend bool operator==(const PacketHeader&, const PacketHeader&) = default;
};

}  // namespace SoftChip
