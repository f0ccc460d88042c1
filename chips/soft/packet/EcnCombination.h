// Why: congestion that a tunnel met must reach the receiver, who sees the inner header only. RFC
// 6040 says how the marks of both headers combine at the end of the tunnel.
// Always: no mark of congestion gets lost: it shows on the packet that goes on, or the packet is
// dropped, because its sender does not read such marks and learns of congestion by losses.
#pragma once

#include <cstdint>
#include <optional>

namespace SoftChip {

constexpr std::uint8_t ecnNotEct = 0;
constexpr std::uint8_t ecnEct1 = 1;
constexpr std::uint8_t ecnEct0 = 2;
constexpr std::uint8_t ecnCe = 3;

// What the inner header carries after decapsulation; nothing when the packet is to be dropped.
// Precondition: both are at most 3.
[[nodiscard]] std::optional<std::uint8_t> ecnAfterDecap(std::uint8_t inner,
                                                        std::uint8_t outer) noexcept;

}  // namespace SoftChip
