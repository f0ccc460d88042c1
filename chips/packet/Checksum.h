#pragma once

#include <cstdint>
#include <span>

namespace Chips {

/// The Internet checksum: the complement of the one's complement sum of the 16-bit words, in host
/// order. An odd last byte is the high half of a word. For a header with a zero checksum field it
/// is the value to store. For a header with its right checksum it is 0.
[[nodiscard]] std::uint16_t checksumOf(std::span<const std::uint8_t> bytes) noexcept;

/// What the checksum becomes when one 16-bit word that it covers changes.
[[nodiscard]] std::uint16_t checksumAfter(std::uint16_t checksum, std::uint16_t oldWord,
                                          std::uint16_t newWord) noexcept;

}  // namespace Chips
