#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Blinklog/Site.h"
#include "Blinklog/Slot.h"

/// What stands where in a file that holds a ring, as docs/trace-ring.md tells: a header, a table of
/// sites, and the slots. All numbers are in the byte order of the machine that wrote them.
namespace Blinklog::RingFileFormat {

inline constexpr std::array<char, 8> magic{'B', 'l', 'i', 'n', 'k', 'l', 'o', 'g'};
inline constexpr std::uint32_t byteOrder = 0x01020304;
inline constexpr std::uint32_t version = 1;
inline constexpr std::size_t headerBytes = 4096;
inline constexpr std::size_t siteTableBytes = std::size_t{252} * 1024;
inline constexpr std::size_t slotsOffset = headerBytes + siteTableBytes;
inline constexpr std::uint32_t mostSlots = 65536;
/// Bytes of one row of the table.
inline constexpr std::size_t mostSiteBytes = 4096;

struct Header {
  std::array<char, 8> magic = RingFileFormat::magic;
  std::uint32_t byteOrder = RingFileFormat::byteOrder;
  std::uint32_t version = RingFileFormat::version;
  std::uint32_t siteTableBytes = RingFileFormat::siteTableBytes;
  std::uint32_t slotBytes = Slot::bytes;
  std::uint32_t slots = 0;
  /// Rows of the table; the site of a slot is the number of one of them. Raised after the row is
  /// written.
  std::uint32_t sites = 0;
  /// Sites for which the table had no room; their numbers follow those of the rows.
  std::uint32_t sitesLeftOut = 0;
  std::uint32_t process = 0;
  /// Seconds since 1970 when the file was made.
  std::uint64_t madeAt = 0;
};
static_assert(sizeof(Header) == 48);

[[nodiscard]] constexpr std::size_t fileBytes(std::size_t slots) noexcept {
  return slotsOffset + slots * Slot::bytes;
}

/// A row of the table: line, level and the number of fragments, then path, function and fragments,
/// each behind its length; all numbers have four bytes.
[[nodiscard]] std::string toRow(const Site& site);

}  // namespace Blinklog::RingFileFormat
