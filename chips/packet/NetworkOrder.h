#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Chips {

/// The 16-bit number at the place, high byte first. Precondition of both functions: the bytes are
/// within the span.
[[nodiscard]] inline std::uint16_t wordAt(std::span<const std::uint8_t> bytes,
                                          std::size_t at) noexcept {
  return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}

/// Stores a 16-bit number at the place, high byte first.
inline void wordAtIs(std::span<std::uint8_t> bytes, std::size_t at, std::uint16_t word) noexcept {
  bytes[at] = static_cast<std::uint8_t>(word >> 8);
  bytes[at + 1] = static_cast<std::uint8_t>(word);
}

}  // namespace Chips
