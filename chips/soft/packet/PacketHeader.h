// Why: rules and lookups ask the same few things of a packet, whatever its family and however many
// options or extension headers it carries.
// Always: a plain value, made from bytes that were checked; the lengths lie within these bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Ip/Prefix.h"

namespace SoftChip {

// A packet is a fragment when it is not the whole of what its sender sent.
struct FragmentFacts {
  std::uint16_t offset = 0;  // in units of eight bytes
  bool more = false;

  [[nodiscard]] bool isFragment() const noexcept { return offset != 0 || more; }
  friend bool operator==(const FragmentFacts&, const FragmentFacts&) = default;
};

struct PacketHeader {
  Ip::Family family = Ip::Family::v4;
  Ip::Address source;
  Ip::Address destination;
  // IPv4: that of the header. IPv6: the first next header that is not hop-by-hop options, routing,
  // destination options or fragment; behind a fragment header that is not of the first fragment
  // there are no further headers to look at.
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
