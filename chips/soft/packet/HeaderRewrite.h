// Why: a packet that is forwarded or decapsulated leaves with another time to live or congestion
// mark, and all else as it came, options included.
// Always: the IPv4 checksum follows every change, so a right one stays right.
#pragma once

#include <cstdint>
#include <span>

namespace SoftChip {

// Precondition of all: the packet has been parsed without a fault.

// IPv4: the time to live. IPv6: the hop limit.
void ttlIs(std::span<std::uint8_t> packet, std::uint8_t ttl) noexcept;

// Takes one from the time to live. False, and the packet as before, when none would be left.
[[nodiscard]] bool ttlDown(std::span<std::uint8_t> packet) noexcept;

// The two bits of explicit congestion notification.
void ecnIs(std::span<std::uint8_t> packet, std::uint8_t ecn) noexcept;

}  // namespace SoftChip
