#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "Ip/Prefix.h"

namespace Chips {

/// The place of a fragment in the packet that was sent. A whole packet has offset 0, and `more` is
/// false.
struct FragmentFacts {
  std::uint16_t offset = 0;  // in units of eight bytes
  bool more = false;

  [[nodiscard]] bool isFragment() const noexcept { return offset != 0 || more; }
  friend bool operator==(const FragmentFacts&, const FragmentFacts&) = default;
};

constexpr std::uint8_t protocolTcp = 6;
constexpr std::uint8_t protocolUdp = 17;

/// The ports of a TCP or UDP packet.
struct Ports {
  std::uint16_t source = 0;
  std::uint16_t destination = 0;

  friend bool operator==(const Ports&, const Ports&) = default;
};

/// The fields of a packet that rules and lookups use. They are the same for both families, with and
/// without options and extension headers. A header is made from checked bytes. Its lengths lie
/// within these bytes.
struct PacketHeader {
  Ip::Family family = Ip::Family::v4;
  Ip::Address source;
  Ip::Address destination;
  /// IPv4: that of the header. IPv6: the first next header that is not hop-by-hop options, routing,
  /// destination options or fragment, which may have any order. No header is read behind the
  /// fragment header of a fragment that is not the first. A second fragment header is not read
  /// either, and the protocol is 44: what is behind it may be the middle of a packet.
  std::uint8_t protocol = 0;
  std::uint8_t dscp = 0;
  std::uint8_t ecn = 0;
  std::uint8_t ttl = 0;          // IPv6: the hop limit
  std::size_t headerLength = 0;  // up to the upper layer: with options and extension headers
  std::size_t totalLength = 0;   // with the header
  FragmentFacts fragment;
  /// Absent unless the packet is TCP or UDP, is not a fragment behind the first, and has the bytes.
  std::optional<Ports> ports;
  /// Absent unless the packet has ports, is TCP, and has the bytes.
  std::optional<std::uint8_t> tcpFlags;

  friend bool operator==(const PacketHeader&, const PacketHeader&) = default;
};

}  // namespace Chips
