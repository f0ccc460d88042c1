#pragma once

#include <cstdint>
#include <span>

namespace Chips {

// Changes of a packet that is forwarded or decapsulated. All else stays as it is, options included.
// The IPv4 checksum follows each change, so a right one stays right. Precondition of all: the
// packet has been parsed without a fault.

/// Sets the time to live (IPv4) or the hop limit (IPv6).
void ttlIs(std::span<std::uint8_t> packet, std::uint8_t ttl) noexcept;

/// Subtracts one from the time to live. Returns false and changes nothing if that would be 0.
[[nodiscard]] bool ttlDown(std::span<std::uint8_t> packet) noexcept;

/// Sets the two bits of explicit congestion notification.
void ecnIs(std::span<std::uint8_t> packet, std::uint8_t ecn) noexcept;

}  // namespace Chips
