// Checks of forwarded packets, without use of the code that forwards them. They read no byte
// outside of the packet.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Fuzz {

using PacketBytes = std::span<const std::uint8_t>;

// Corrects the checksum of an IPv4 header at the front, and of a second one right behind it. A
// fuzzer rarely finds a correct checksum by itself.
void correctChecksums(std::span<std::uint8_t> packet);

// Checks that `left` is a complete IP packet with the correct length and checksum. It must equal
// the packet that arrived, or the packet inside it if `decapsulated`, except for time to live,
// congestion mark and checksum. Its time to live must be one less than that of `arrived`.
void checkLeft(PacketBytes left, PacketBytes arrived, bool decapsulated);

}  // namespace Fuzz
