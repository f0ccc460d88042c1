// Why: nothing of a packet may be believed before it is checked: every length is somebody else's.
// Always: reads no byte outside of those that it is given; a header is given exactly when no fault
// is.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "chips/soft/packet/PacketHeader.h"

namespace SoftChip {

enum class HeaderFault : std::uint8_t {
  none,
  tooShort,               // for the fixed header of its version
  badVersion,             // neither 4 nor 6
  badHeaderLength,        // less than the fixed header, or beyond the bytes
  badTotalLength,         // less than the header
  totalLengthBeyond,      // the bytes
  extensionHeaderBeyond,  // the total length
  badChecksum,
};

// For operators, for example "the total length is beyond the end of the packet"; empty for none.
[[nodiscard]] std::string_view textOf(HeaderFault fault) noexcept;

struct ParsedHeader {
  std::optional<PacketHeader> header;
  HeaderFault fault = HeaderFault::none;
};

// The first header of the packet. Bytes beyond its total length are not part of it.
[[nodiscard]] ParsedHeader parse(std::span<const std::uint8_t> packet) noexcept;

}  // namespace SoftChip
