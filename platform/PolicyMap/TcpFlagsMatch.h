#pragma once

#include <compare>
#include <cstdint>

namespace PolicyMap {

/// Values of some of the flags in a TCP header. Flags have their bits of the header: FIN is 1, SYN
/// is 2, and so on to CWR, which is 128. Precondition: `value` has no bit that `mask` does not
/// have.
struct TcpFlagsMatch {
  std::uint8_t mask = 0;   // the flags that count
  std::uint8_t value = 0;  // those of them that must be set; the others must be clear

  [[nodiscard]] constexpr bool matches(std::uint8_t flags) const noexcept {
    return (flags & mask) == value;
  }

  auto operator<=>(const TcpFlagsMatch&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

}  // namespace PolicyMap
