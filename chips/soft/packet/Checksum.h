// Why: an IPv4 header carries a checksum that is tested on arrival and follows every change.
// Always: what `checksumOf` gives is right to be stored in a header whose checksum field is zero,
// and is 0 for a header that holds its right checksum.
#pragma once

#include <cstdint>
#include <span>

namespace SoftChip {

// The Internet checksum: the complement of the one's complement sum of the 16-bit words, in host
// order. An odd last byte is the high half of a word.
[[nodiscard]] std::uint16_t checksumOf(std::span<const std::uint8_t> bytes) noexcept;

// What the checksum becomes when one 16-bit word that it covers changes.
[[nodiscard]] std::uint16_t checksumAfter(std::uint16_t checksum, std::uint16_t oldWord,
                                          std::uint16_t newWord) noexcept;

}  // namespace SoftChip
