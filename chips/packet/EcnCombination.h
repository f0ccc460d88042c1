#pragma once

#include <cstdint>
#include <optional>

namespace Chips {

constexpr std::uint8_t ecnNotEct = 0;
constexpr std::uint8_t ecnEct1 = 1;
constexpr std::uint8_t ecnEct0 = 2;
constexpr std::uint8_t ecnCe = 3;

/// The congestion mark of the inner header after decapsulation, by RFC 6040. Nothing if the packet
/// is to be dropped.
///
/// No mark of congestion is lost. The packet carries it, or is dropped because its sender does not
/// read such marks and notices congestion by losses.
///
/// Precondition: both are at most 3.
[[nodiscard]] std::optional<std::uint8_t> ecnAfterDecap(std::uint8_t inner,
                                                        std::uint8_t outer) noexcept;

}  // namespace Chips
