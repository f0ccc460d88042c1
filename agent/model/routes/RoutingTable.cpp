#include "agent/model/routes/RoutingTable.h"

namespace ZelAgent {
namespace {

using SoftChip::Route;

// The most gateways on the way to a next hop. A longer chain counts as a loop.
constexpr unsigned deepestGateway = 8;

}  // namespace

bool RoutingTable::configuredIs(const std::vector<StaticRoute>& routes) {
  std::map<IpPrefix, std::vector<NextHop>> next;
  for (const StaticRoute& route : routes)
    next.emplace(route.prefix, route.nextHops);
  const bool changes = next != configured_;
  configured_ = std::move(next);
  return changes;
}

void RoutingTable::routeIs(const IpPrefix& prefix, const Route& route) {
  fromEvents_[prefix] = route;
}

bool RoutingTable::routeDel(const IpPrefix& prefix) {
  return fromEvents_.erase(prefix) != 0;
}

RoutingTable::Routes RoutingTable::resolved() const {
  Routes routes = fromEvents_;
  Unusable unusable;
  for (const auto& [prefix, nextHops] : configured_) {
    if (routes.contains(prefix)) continue;
    if (const Resolved route = resolve(prefix, 0, unusable)) routes.emplace(prefix, *route);
  }
  return routes;
}

RoutingTable::Resolved RoutingTable::resolve(const IpPrefix& prefix, unsigned depth,
                                             Unusable& unusable) const {
  const auto fromEvent = fromEvents_.find(prefix);
  if (fromEvent != fromEvents_.end()) return fromEvent->second;
  if (unusable.contains({prefix, depth})) return std::nullopt;
  for (const NextHop& nextHop : configured_.at(prefix)) {
    if (Resolved route = resolve(nextHop, prefix, depth, unusable)) return route;
  }
  unusable.emplace(prefix, depth);
  return std::nullopt;
}

RoutingTable::Resolved RoutingTable::resolve(const NextHop& nextHop, const IpPrefix& of,
                                             unsigned depth, Unusable& unusable) const {
  if (nextHop.drops) return Route{Route::Kind::drop, {}};
  if (!nextHop.interface.empty()) return Route{Route::Kind::egress, nextHop.interface};
  if (depth == deepestGateway) return std::nullopt;
  const auto prefix = longestFor(*nextHop.address, of);
  return prefix ? resolve(*prefix, depth + 1, unusable) : std::nullopt;
}

std::optional<IpPrefix> RoutingTable::longestFor(const IpAddress& address,
                                                 const IpPrefix& except) const {
  for (unsigned length = addressBits(address.family) + 1; length-- > 0;) {
    const IpPrefix prefix{Ip::firstBits(address, length), static_cast<std::uint8_t>(length)};
    if (prefix != except && has(prefix)) return prefix;
  }
  return std::nullopt;
}

bool RoutingTable::has(const IpPrefix& prefix) const {
  return fromEvents_.contains(prefix) || configured_.contains(prefix);
}

}  // namespace ZelAgent
