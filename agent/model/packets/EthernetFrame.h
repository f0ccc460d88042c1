// Why: captures of Ethernet carry packets inside frames, and captures of raw IP do not.
// Always: reads no byte outside of the frame.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace ZelAgent {

// The IP packet in the frame, with any padding behind it, below any number of VLAN tags; nothing
// where the frame carries something else.
[[nodiscard]] std::optional<std::span<const std::uint8_t>> ipPacketIn(
    std::span<const std::uint8_t> frame) noexcept;

}  // namespace ZelAgent
