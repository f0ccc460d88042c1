#include "agent/model/routes/RouteWalk.h"

#include <algorithm>
#include <utility>

namespace ZelAgent {
namespace {

using Origin = RouteState::Origin;
using Result = RouteState::Result;

bool contains(const IpPrefix& prefix, const IpPrefix& part) {
  return part.length >= prefix.length && prefix.contains(part.address);
}

// The key of the map after `last`; if there was none, the first one that is not below `first`.
template <class Map>
std::optional<IpPrefix> keyAfter(const Map& map, const std::optional<IpPrefix>& last,
                                 const std::optional<IpPrefix>& first) {
  auto next = map.begin();
  if (last) {
    next = map.upper_bound(*last);
  } else if (first) {
    next = map.lower_bound(*first);
  }
  return next == map.end() ? std::nullopt : std::optional(next->first);
}

// Sets the result of a route that is resolved or not, and not hidden.
void setResult(RouteState& state, const RoutingTable& table, const RouteProgrammer& routes) {
  const auto resolved = table.resolved().find(state.prefix);
  const std::uint32_t vrfId = routes.vrfId(state.vrf);
  if (resolved == table.resolved().end()) {
    state.result = Result::unresolved;
    state.reason = table.whyUnresolved(state.prefix);
    return;
  }
  state.resolved = resolved->second;
  const Chips::Route* const onChip = routes.programmed(vrfId, state.prefix);
  if (vrfId != 0 && onChip != nullptr && *onChip == resolved->second) return;
  state.result = Result::notProgrammed;
  state.reason = vrfId == 0 ? "the VRF has no hardware id"
                 : onChip == nullptr
                     ? "the chip was not asked yet"
                     : "a VRF with the same hardware id has another route to the prefix";
}

}  // namespace

RouteWalk::RouteWalk(const RouteProgrammer& routes, RouteFilter filter)
    : routes_(routes), filter_(std::move(filter)), vrf_(filter_.vrf.value_or("")) {}

bool RouteWalk::read(RouteStates& states, std::size_t mostPrefixes) {
  for (std::size_t left = mostPrefixes; left > 0;) {
    const auto table = routes_.tables().find(vrf_);
    const auto prefix = table == routes_.tables().end() ? std::nullopt : nextPrefix(table->second);
    if (prefix) {
      addRoutes(states, table->second, *prefix);
      last_ = prefix;
      --left;
    } else if (!moveToNextVrf()) {
      return false;
    }
  }
  return true;
}

// Prefixes that a prefix contains are the first ones that are not below it.
std::optional<IpPrefix> RouteWalk::nextPrefix(const RoutingTable& table) const {
  const auto configured = keyAfter(table.configured(), last_, filter_.prefix);
  const auto fromEvent = keyAfter(table.fromEvents(), last_, filter_.prefix);
  auto next = configured ? configured : fromEvent;
  if (configured && fromEvent) next = std::min(*configured, *fromEvent);
  if (next && filter_.prefix && !contains(*filter_.prefix, *next)) return std::nullopt;
  return next;
}

void RouteWalk::addRoutes(RouteStates& states, const RoutingTable& table,
                          const IpPrefix& prefix) const {
  const bool isFromEvent = table.fromEvents().contains(prefix);
  const auto configured = table.configured().find(prefix);
  if (isFromEvent) {
    RouteState& state = states.emplace_back();
    state.vrf = vrf_;
    state.prefix = prefix;
    state.origin = Origin::event;
    setResult(state, table, routes_);
  }
  if (configured == table.configured().end()) return;
  RouteState& state = states.emplace_back();
  state.vrf = vrf_;
  state.prefix = prefix;
  state.nextHops = configured->second;
  if (!isFromEvent) return setResult(state, table, routes_);
  state.result = Result::hidden;
  state.reason = "an event has set another route to the prefix";
}

// No VRF has the empty name, where a walk of all begins.
bool RouteWalk::moveToNextVrf() {
  if (filter_.vrf) return false;
  const auto next = routes_.tables().upper_bound(vrf_);
  if (next == routes_.tables().end()) return false;
  vrf_ = next->first;
  last_.reset();
  return true;
}

}  // namespace ZelAgent
