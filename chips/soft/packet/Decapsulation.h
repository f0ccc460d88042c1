// Why: a route may end a tunnel: what goes on then is the packet inside.
// Always: the inner packet gets the outer time to live, the congestion marks of both, and keeps all
// else; a packet that cannot be decapsulated is left alone.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "chips/soft/packet/HeaderParser.h"

namespace SoftChip {

constexpr std::uint8_t protocolIpv4 = 4;   // IPv4 in IP
constexpr std::uint8_t protocolIpv6 = 41;  // IPv6 in IP

enum class DecapFault : std::uint8_t {
  none,
  notATunnel,      // not IPv4 with protocol 4 or 41
  fragmented,      // the outer packet is a fragment: the inner one is not whole
  innerMalformed,  // `innerFault` says why
  congestion,      // met on the way by a packet that cannot carry the mark
};

struct Decapsulation {
  DecapFault fault = DecapFault::none;
  HeaderFault innerFault = HeaderFault::none;  // none, too, when its version is not the protocol's
  PacketHeader arrived;                        // the inner header as it came
  PacketHeader header;                         // and as it goes on
  std::vector<std::uint8_t> packet;            // goes on; empty unless `fault` is none
};

// Precondition: `outer` is the header that was parsed from `packet`.
[[nodiscard]] Decapsulation decapsulate(std::span<const std::uint8_t> packet,
                                        const PacketHeader& outer);

}  // namespace SoftChip
