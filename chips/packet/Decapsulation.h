#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "chips/packet/HeaderParser.h"

namespace Chips {

constexpr std::uint8_t protocolIpv4 = 4;   // IPv4 in IP
constexpr std::uint8_t protocolIpv6 = 41;  // IPv6 in IP

enum class DecapFault : std::uint8_t {
  none,
  notATunnel,      // not IPv4 with protocol 4 or 41
  fragmented,      // the outer packet is a fragment, so the inner one is incomplete
  innerMalformed,  // `innerFault` says why
  congestion,      // the tunnel marked congestion, and the inner packet cannot carry the mark
};

/// The packet inside a tunnel, as it is forwarded after the end of the tunnel. It has the time to
/// live of the outer header, the congestion marks of both, and is otherwise unchanged.
struct Decapsulation {
  DecapFault fault = DecapFault::none;
  HeaderFault innerFault = HeaderFault::none;  // none, too, when its version is not the protocol's
  PacketHeader arrived;                        // the inner header in the tunnel
  PacketHeader header;                         // and as it is forwarded
  std::vector<std::uint8_t> packet;            // empty unless `fault` is none
};

/// Precondition: `outer` was parsed from `packet`.
[[nodiscard]] Decapsulation decapsulate(std::span<const std::uint8_t> packet,
                                        const PacketHeader& outer);

}  // namespace Chips
