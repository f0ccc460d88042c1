// Why: a packet that is lost is lost for one reason, and operators count and read it.
// Always: names are stable: they are shown, counted by and compared with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>

namespace SoftChip {

enum class DropReason : std::uint8_t {
  malformed,         // the header that arrived is none
  badChecksum,       // of the IPv4 header that arrived
  discardedByRule,   // the rule says so
  noVrfResource,     // the rule's action has no resource on the chip
  noVrfId,           // none of the VRFs that were to be looked in has a hardware id
  noRoute,           // none of them has a route
  dropRoute,         // the route says so
  decapDisabled,     // a decapsulating route, which the chip must not use
  notATunnel,        // a decapsulating route, and nothing to decapsulate
  fragmentedTunnel,  // a decapsulating route, and only a part of what is to be decapsulated
  innerMalformed,    // what is inside the tunnel is no packet of the kind that it is said to be
  congestion,        // met in the tunnel by a packet that cannot carry the mark
  nestedDecap,       // a decapsulating route for what came out of a tunnel
  ttlExpired,        // of the header that was to leave
};

constexpr std::size_t dropReasons = static_cast<std::size_t>(DropReason::ttlExpired) + 1;

// The name as in the source: "malformed" and so on.
[[nodiscard]] std::string_view nameOf(DropReason reason) noexcept;
// For operators: one clause that says what was wrong.
[[nodiscard]] std::string_view textOf(DropReason reason) noexcept;
std::ostream& operator<<(std::ostream& stream, DropReason reason);

}  // namespace SoftChip
