// Why: headers hold numbers high byte first, wherever they lie.
// Always: the bytes named are within the span; that is the caller's to see to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace SoftChip {

[[nodiscard]] inline std::uint16_t wordAt(std::span<const std::uint8_t> bytes,
                                          std::size_t at) noexcept {
  return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}

inline void wordAtIs(std::span<std::uint8_t> bytes, std::size_t at, std::uint16_t word) noexcept {
  bytes[at] = static_cast<std::uint8_t>(word >> 8);
  bytes[at + 1] = static_cast<std::uint8_t>(word);
}

}  // namespace SoftChip
