#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>

namespace Chips {

/// Why a packet was dropped. A packet is dropped for one reason. The names are stable, since
/// reports and counters contain them.
enum class DropReason : std::uint8_t {
  malformed,         // the packet that arrived has no valid header
  badChecksum,       // the IPv4 header that arrived has a wrong checksum
  discardedByRule,   // the action of the rule is `discard`
  intfClosed,        // no rule matched, and the interface is closed
  noVrfResource,     // the rule's action has no resource on the chip
  noVrfId,           // no VRF of the lookup has a hardware id
  noRoute,           // no VRF of the lookup has a route
  dropRoute,         // the route drops
  decapDisabled,     // a decapsulating route while decapsulation is off
  notATunnel,        // a decapsulating route for a packet that is no tunnel
  fragmentedTunnel,  // a decapsulating route for a fragment of a tunnel packet
  innerMalformed,    // the packet in the tunnel is not of the kind that its protocol says
  congestion,        // the tunnel marked congestion, and the inner packet cannot carry the mark
  nestedDecap,       // a decapsulating route for a packet that was decapsulated
  ttlExpired,        // the time to live would be 0 at the egress
};

constexpr std::size_t dropReasons = static_cast<std::size_t>(DropReason::ttlExpired) + 1;

/// The name of the value: "malformed" and so on.
[[nodiscard]] std::string_view nameOf(DropReason reason) noexcept;
/// For operators: one clause that says what was wrong.
[[nodiscard]] std::string_view textOf(DropReason reason) noexcept;
std::ostream& operator<<(std::ostream& stream, DropReason reason);

}  // namespace Chips
