// Why: an operator who asks where a packet goes describes the packet, and does not draw its bytes.
// Always: a packet that is read is well formed, with right lengths and checksums, unless it is
// given as bytes. How it is written:
//
//   ipv4|ipv6 SOURCE to DESTINATION [protocol N] [dscp N] [ecn N] [ttl N] [carrying PACKET]
//   hex BYTES
//
// Without `protocol` it is that of the packet it carries, otherwise 17; `ttl` is 64, and stands for
// the hop limit, too. What carries no packet carries eight bytes of zeros.
#pragma once

#include <cstdint>
#include <vector>

#include "agent/model/events/EventLine.h"

namespace ZelAgent {

// The bytes of the packet that the rest of the line describes. Throws an EventError.
[[nodiscard]] std::vector<std::uint8_t> readPacket(EventLine& line);

}  // namespace ZelAgent
