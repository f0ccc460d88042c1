// Why: what a chip does to a packet is checked by other code than that which did it.
// Always: reads no byte outside of the packet.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Fuzz {

using PacketBytes = std::span<const std::uint8_t>;

// Makes the checksums of the IPv4 header and of one right behind it right, where there are such:
// fuzzers hardly ever guess one.
void mendChecksums(std::span<std::uint8_t> packet);

// That `left` is a whole IP packet of the right length and checksum, and, but for time to live,
// congestion mark and checksum, all of the packet that arrived; or, `decapsulated`, of that inside
// of it. Its time to live is by one below that of what arrived.
void checkLeft(PacketBytes left, PacketBytes arrived, bool decapsulated);

}  // namespace Fuzz
