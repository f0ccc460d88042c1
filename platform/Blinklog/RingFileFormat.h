#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Blinklog/RingClock.h"
#include "Blinklog/Site.h"
#include "Blinklog/Slot.h"

/// The layout of a file that holds a ring: a header, a table of sites, and the slots.
/// docs/trace-ring.md describes it. All numbers are in the byte order of the machine that wrote
/// them.
namespace Blinklog::RingFileFormat {

/// The first bytes of the file.
inline constexpr std::array<char, 8> magic{'B', 'l', 'i', 'n', 'k', 'l', 'o', 'g'};
inline constexpr std::uint32_t byteOrder = 0x01020304;
/// Increment it with every change of the layout.
inline constexpr std::uint32_t version = 2;
inline constexpr std::size_t headerBytes = 4096;
inline constexpr std::size_t siteTableBytes = std::size_t{252} * 1024;
inline constexpr std::size_t slotsOffset = headerBytes + siteTableBytes;
inline constexpr std::uint32_t maxSlots = 65536;
/// Maximum size of one row of the table.
inline constexpr std::size_t maxSiteBytes = 4096;

/// The header, at the beginning of the file.
struct Header {
  std::array<char, 8> magic = RingFileFormat::magic;
  std::uint32_t byteOrder = RingFileFormat::byteOrder;
  std::uint32_t version = RingFileFormat::version;
  std::uint32_t siteTableBytes = RingFileFormat::siteTableBytes;
  std::uint32_t slotBytes = Slot::bytes;
  std::uint32_t slots = 0;
  /// Number of rows of the table. The site of a slot is the number of a row. It is incremented
  /// after the row is written.
  std::uint32_t sites = 0;
  /// Number of sites that did not fit into the table. Their numbers follow those of the rows.
  std::uint32_t sitesLeftOut = 0;
  std::uint32_t process = 0;
  /// Time of creation of the file, in seconds since 1970.
  std::uint64_t madeAt = 0;
  /// The clocks when the ring was made, by which the times of its messages are converted.
  ClockPair start;
};
static_assert(sizeof(Header) == 64);

/// The size of a file with that number of slots.
[[nodiscard]] constexpr std::size_t fileBytes(std::size_t slots) noexcept {
  return slotsOffset + slots * Slot::bytes;
}

/// A row of the table: line, level and number of fragments, then path, function and fragments, each
/// after its length. All numbers have four bytes.
[[nodiscard]] std::string toRow(const Site& site);

}  // namespace Blinklog::RingFileFormat
