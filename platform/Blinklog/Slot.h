#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "Blinklog/Site.h"

namespace Blinklog {

/// One message in a ring. The layout is the same in memory and in a file.
///
/// Invariant: `sequence` is the number of the message only while the message is complete. It is
/// reset before the other members are written, and set after them. So a process that is killed in
/// between leaves a slot that is marked as empty.
struct Slot {
  static constexpr std::size_t bytes = 256;
  static constexpr std::uint64_t noMessage = ~std::uint64_t{0};
  /// The site of a message whose beginning was lost with a file.
  static constexpr SiteId noSite = ~SiteId{0};

  std::uint64_t sequence = noMessage;
  SiteId site = 0;
  std::uint32_t size = 0;  // of the arguments, in bytes
  std::uint64_t time = 0;  // monotonic, in nanoseconds
  std::array<std::byte, bytes - 24> arguments;
};
static_assert(sizeof(Slot) == Slot::bytes);

/// Precedes a text among the arguments: the number of bytes that are kept, and whether the text was
/// cut. Numbers and booleans have four bytes and no header.
struct TextHeader {
  std::uint16_t kept;
  std::uint16_t cut;
};

/// The fragments of `site` with the arguments inserted, and "..." after a text that was cut.
[[nodiscard]] std::string textOf(const Site& site, std::span<const std::byte> arguments);

/// Whether `arguments` can be those of a message of `site`: each argument is complete, and at most
/// the last ones are missing.
[[nodiscard]] bool areComplete(const Site& site, std::span<const std::byte> arguments) noexcept;

}  // namespace Blinklog
