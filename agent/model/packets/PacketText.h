#pragma once

#include <cstdint>
#include <vector>

#include "Ip/Prefix.h"
#include "agent/model/events/EventLine.h"

namespace ZelAgent {

inline constexpr std::uint8_t protocolUdp = 17;

/// What a packet is made from.
struct PacketFields {
  Ip::Address source;
  Ip::Address destination;  // of the same family
  std::uint8_t protocol = protocolUdp;
  std::uint8_t dscp = 0;  // at most 63
  std::uint8_t ecn = 0;   // at most 3
  std::uint8_t ttl = 64;
  std::vector<std::uint8_t> payload = std::vector<std::uint8_t>(8);
};

/// An IPv4 packet without options, or an IPv6 packet without extension headers. Its lengths and
/// checksums are right. Precondition: the payload has at most `Limits::payloadBytes` bytes.
[[nodiscard]] std::vector<std::uint8_t> buildPacket(const PacketFields& fields);

/// The bytes of the packet that the rest of the line describes. Throws an `EventError`.
///
///     ipv4|ipv6 SOURCE to DESTINATION [protocol N] [dscp N] [ecn N] [ttl N] [carrying PACKET]
///     hex BYTES
///
/// The packet is well formed unless it is given as bytes. The default of `protocol` is that of the
/// carried packet, or 17 without one. The default of `ttl` is 64. For IPv6 it is the hop limit. A
/// packet that carries no other packet carries eight zero bytes.
[[nodiscard]] std::vector<std::uint8_t> readPacket(EventLine& line);

}  // namespace ZelAgent
