#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Ip/Prefix.h"
#include "agent/model/events/EventLine.h"
#include "chips/packet/PacketHeader.h"

namespace ZelAgent {

/// What a packet is made from.
struct PacketFields {
  Ip::Address source;
  Ip::Address destination;  // of the same family
  std::uint8_t protocol = Chips::protocolUdp;
  std::uint8_t dscp = 0;  // at most 63
  std::uint8_t ecn = 0;   // at most 3
  std::uint8_t ttl = 64;
  /// In units of eight bytes, at most 8191. With it the packet is a fragment: the first one at 0,
  /// otherwise the last one.
  std::optional<std::uint16_t> fragmentOffset{};
  std::vector<std::uint8_t> payload = std::vector<std::uint8_t>(8);
};

/// An IPv4 packet without options, or an IPv6 packet without extension headers except that of a
/// fragment. Its lengths and the checksum of its IP header are right. Precondition: the payload has
/// at most `Limits::payloadBytes` bytes.
[[nodiscard]] std::vector<std::uint8_t> buildPacket(const PacketFields& fields);

/// The bytes of the packet that the rest of the line describes. Throws an `EventError`.
///
///     ipv4|ipv6 SOURCE to DESTINATION [FIELD VALUE]... [carrying PACKET]
///     hex BYTES
///
/// A FIELD is protocol, dscp, ecn, ttl, length, fragment-offset, source-port, destination-port or
/// tcp-flags. The value of tcp-flags is the set flags with commas between them, or "none".
///
/// The packet is well formed unless it is given as bytes. The default of `protocol` is that of the
/// carried packet, 6 with TCP flags, and otherwise 17. The default of `ttl` is 64. For IPv6 it is
/// the hop limit. With ports or TCP flags the packet has a UDP header of eight bytes or a TCP
/// header of twenty, whose checksum is 0. Otherwise a packet that carries no other packet carries
/// eight zero bytes. Zero bytes follow up to `length`, which includes the IP header.
[[nodiscard]] std::vector<std::uint8_t> readPacket(EventLine& line);

/// The words that may follow DESTINATION: each FIELD, then "carrying".
[[nodiscard]] std::vector<std::string> packetKeywords();

}  // namespace ZelAgent
