#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "Blinklog/Site.h"

namespace Blinklog {

/// One message as a ring keeps it, in memory and in a file alike.
///
/// Invariant: `sequence` is the number of the message only while all of it is in the slot. It is
/// taken away before anything else of the slot is written and set after everything else was, so a
/// process that is killed in between leaves a slot that says itself that it holds no message.
struct Slot {
  static constexpr std::size_t bytes = 256;
  static constexpr std::uint64_t noMessage = ~std::uint64_t{0};

  std::uint64_t sequence = noMessage;
  SiteId site = 0;
  std::uint32_t size = 0;  // of the arguments that are kept
  std::array<std::byte, bytes - 16> arguments;
};
static_assert(sizeof(Slot) == Slot::bytes);

/// Stands before a text among the arguments: how many bytes of it are kept, and whether there were
/// more. Numbers and booleans are four bytes each.
struct TextHeader {
  std::uint16_t kept;
  std::uint16_t cut;
};

/// The fragments of `site` with the arguments in their places; "..." for what was cut.
[[nodiscard]] std::string textOf(const Site& site, std::span<const std::byte> arguments);

/// Whether the arguments are such as a message of that site leaves: each whole, up to one behind
/// which nothing is.
[[nodiscard]] bool areWhole(const Site& site, std::span<const std::byte> arguments) noexcept;

}  // namespace Blinklog
