#pragma once

#include <array>
#include <compare>
#include <cstdint>

namespace Ip {

/// An address family.
enum class Family : std::uint8_t { v4, v6 };

/// The length of an address in bits.
[[nodiscard]] constexpr unsigned addressBits(Family family) noexcept {
  return family == Family::v4 ? 32 : 128;
}

/// An IPv4 or IPv6 address, in network byte order. Bytes after those of the family are zero, so
/// that equal addresses are equal values.
struct Address {
  Family family = Family::v4;
  std::array<std::uint8_t, 16> bytes{};

  auto operator<=>(const Address&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

/// The address with all bits after the first `length` cleared. Precondition: `length` is at most
/// `addressBits(address.family)`.
[[nodiscard]] constexpr Address firstBits(Address address, unsigned length) noexcept {
  unsigned byte = length / 8;
  if (length % 8 != 0) {
    address.bytes[byte] &= static_cast<std::uint8_t>(0xff00U >> (length % 8));
    ++byte;
  }
  for (; byte < address.bytes.size(); ++byte)
    address.bytes[byte] = 0;
  return address;
}

/// The addresses that have the same first bits. The bits of `address` after `length` are zero, so
/// that equal prefixes are equal values.
struct Prefix {
  Address address;
  std::uint8_t length = 0;

  [[nodiscard]] constexpr bool contains(const Address& candidate) const noexcept {
    return candidate.family == address.family && firstBits(candidate, length) == address;
  }

  auto operator<=>(const Prefix&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

}  // namespace Ip
