// Why: packets are made from a description in one place, for whoever wants to send one through the
// chip.
// Always: lengths and checksums of what is made are right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Ip/Prefix.h"

namespace ZelAgent {

inline constexpr std::uint8_t protocolUdp = 17;
// Of a packet of either family.
inline constexpr std::size_t longestPayload = 65535 - 20;

struct PacketFields {
  Ip::Address source;
  Ip::Address destination;  // of the same family
  std::uint8_t protocol = protocolUdp;
  std::uint8_t dscp = 0;  // at most 63
  std::uint8_t ecn = 0;   // at most 3
  std::uint8_t ttl = 64;
  std::vector<std::uint8_t> payload = std::vector<std::uint8_t>(8);
};

// An IPv4 packet without options, or an IPv6 packet without extension headers. Precondition: the
// payload is at most the longest.
[[nodiscard]] std::vector<std::uint8_t> buildPacket(const PacketFields& fields);

}  // namespace ZelAgent
