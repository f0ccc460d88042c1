#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "chips/packet/PacketHeader.h"

namespace Chips {

/// What is wrong with a header.
enum class HeaderFault : std::uint8_t {
  none,
  tooShort,               // fewer bytes than the fixed header of the version
  badVersion,             // neither 4 nor 6
  badHeaderLength,        // less than the fixed header, or more than the bytes
  badTotalLength,         // less than the header
  totalLengthBeyond,      // more than the bytes
  extensionHeaderBeyond,  // an extension header ends beyond the total length
  badChecksum,
};

/// For operators, for example "the total length is beyond the end of the packet"; empty for none.
[[nodiscard]] std::string_view textOf(HeaderFault fault) noexcept;

/// Either a header or a fault.
struct ParsedHeader {
  std::optional<PacketHeader> header;
  HeaderFault fault = HeaderFault::none;
};

/// Checks and reads the first header of the packet. Reads no byte outside of the span. Bytes beyond
/// the total length of the packet are not part of it.
[[nodiscard]] ParsedHeader parse(std::span<const std::uint8_t> packet) noexcept;

}  // namespace Chips
