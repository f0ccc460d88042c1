#include "chips/interface/DropReason.h"

#include <array>
#include <ostream>

namespace Chips {
namespace {

struct Texts {
  std::string_view name;
  std::string_view text;
};

constexpr std::array<Texts, dropReasons> texts{{
    {"malformed", "the IP header is malformed"},
    {"badChecksum", "the checksum of the IPv4 header is wrong"},
    {"discardedByRule", "the rule discards it"},
    {"intfClosed", "the rules of the policy do not fit the chip, so the interface is closed"},
    {"noVrfResource", "the action of the rule has no resource on the chip"},
    {"noVrfId", "no VRF that it was to be looked up in has a hardware id"},
    {"noRoute", "no VRF that it was looked up in has a route"},
    {"dropRoute", "the route drops it"},
    {"decapDisabled", "the route decapsulates, which is not enabled"},
    {"notATunnel", "the route decapsulates, and the packet is not IP in IPv4"},
    {"fragmentedTunnel", "the route decapsulates, and the packet is a fragment"},
    {"innerMalformed", "the packet inside the tunnel is malformed"},
    {"congestion", "the tunnel met congestion, and the packet inside cannot carry the mark"},
    {"nestedDecap", "a second route decapsulates; only one tunnel is taken off"},
    {"ttlExpired", "its time to live is over"},
}};

}  // namespace

std::string_view nameOf(DropReason reason) noexcept {
  return texts[static_cast<std::size_t>(reason)].name;
}

std::string_view textOf(DropReason reason) noexcept {
  return texts[static_cast<std::size_t>(reason)].text;
}

std::ostream& operator<<(std::ostream& stream, DropReason reason) {
  return stream << nameOf(reason);
}

}  // namespace Chips
