#pragma once

#include <bit>
#include <cstdint>

#include "Ip/Prefix.h"

namespace Chips {

/// An address as two numbers, which is faster to search by than an array of bytes.
///
/// The first bit of the address is the highest of `high`. Bits beyond those of the family are zero.
struct AddressBits {
  std::uint64_t high = 0;
  std::uint64_t low = 0;

  /// The `width` bits from `at` on. Zeros follow the last bit. Precondition: `at` is below 128, and
  /// `width` from 1 to 63.
  [[nodiscard]] constexpr unsigned from(unsigned at, unsigned width) const noexcept {
    return static_cast<unsigned>(shiftedBy(at).high >> (64 - width));
  }
  /// The first `at` bits of these, then the lowest `width` bits of `bits`, then zeros.
  /// Precondition: as for `from`.
  [[nodiscard]] constexpr AddressBits withAt(unsigned at, unsigned bits,
                                             unsigned width) const noexcept {
    const std::uint64_t added = std::uint64_t{bits} << (64 - width);
    if (at >= 64) {
      const std::uint64_t kept = at == 64 ? 0 : low >> (128 - at) << (128 - at);
      return {high, kept | added >> (at - 64)};
    }
    const std::uint64_t kept = at == 0 ? 0 : high >> (64 - at) << (64 - at);
    return {kept | added >> at, at == 0 ? 0 : added << (64 - at)};
  }
  /// How many bits both begin with.
  [[nodiscard]] constexpr unsigned common(const AddressBits& other) const noexcept {
    if (high != other.high) return static_cast<unsigned>(std::countl_zero(high ^ other.high));
    return 64 + static_cast<unsigned>(std::countl_zero(low ^ other.low));
  }
  friend bool operator==(const AddressBits&, const AddressBits&) = default;

 private:
  [[nodiscard]] constexpr AddressBits shiftedBy(unsigned count) const noexcept {
    if (count == 0) return *this;
    if (count >= 64) return {low << (count - 64), 0};
    return {high << count | low >> (64 - count), low << count};
  }
};

[[nodiscard]] constexpr AddressBits bitsOf(const Ip::Address& address) noexcept {
  AddressBits bits;
  for (unsigned at = 0; at < 8; ++at) {
    bits.high = bits.high << 8 | address.bytes[at];
    bits.low = bits.low << 8 | address.bytes[at + 8];
  }
  return bits;
}

}  // namespace Chips
