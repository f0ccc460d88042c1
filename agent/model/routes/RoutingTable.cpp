#include "agent/model/routes/RoutingTable.h"

#include <cstdint>

#include "agent/language/Limits.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

using Chips::Route;

// Whether the next hop can be used only if its gateway is reached.
bool isGateway(const NextHop& nextHop) {
  return !nextHop.drops && nextHop.interface.empty();
}

}  // namespace

void RoutingTable::configuredIs(const std::vector<StaticRoute>& routes) {
  std::map<IpPrefix, std::vector<NextHop>> next;
  for (const StaticRoute& route : routes)
    next.emplace(route.prefix, route.nextHops);
  if (next == configured_) return;
  Prefixes affected;
  for (const auto& [prefix, route] : resolved_)
    affected.insert(prefix);
  for (const auto& [prefix, nextHops] : next)
    affected.insert(prefix);
  configured_ = std::move(next);
  findUses();
  resolveAgain(affected);
}

void RoutingTable::routeIs(const IpPrefix& prefix, const Route& route) {
  const bool isNew = !has(prefix);
  fromEvents_[prefix] = route;
  if (isNew) moveUsesTo(prefix);
  resolveAgain(dependents(prefix));
}

bool RoutingTable::routeDel(const IpPrefix& prefix) {
  if (fromEvents_.erase(prefix) == 0) return false;
  const Prefixes affected = dependents(prefix);
  if (!has(prefix)) moveUsesFrom(prefix);
  resolveAgain(affected);
  return true;
}

void RoutingTable::findUses() {
  uses_.clear();
  for (const auto& [prefix, nextHops] : configured_) {
    for (const NextHop& nextHop : nextHops) {
      if (!isGateway(nextHop)) continue;
      uses_.insert({longestFor(*nextHop.address, prefix), *nextHop.address, prefix});
    }
  }
}

// The moved gateways were reached by a shorter prefix, or not at all.
void RoutingTable::moveUsesTo(const IpPrefix& added) {
  const auto moveFrom = [&](const std::optional<IpPrefix>& via) {
    auto use = uses_.lower_bound({via, added.address, {}});
    while (use != uses_.end() && use->via == via && added.contains(use->gateway)) {
      const Use moved{added, use->gateway, use->route};
      use = uses_.erase(use);
      uses_.insert(moved);
    }
  };
  moveFrom(std::nullopt);
  for (std::uint8_t length = 0; length < added.length; ++length)
    moveFrom(IpPrefix{Ip::firstBits(added.address, length), length});
}

void RoutingTable::moveUsesFrom(const IpPrefix& removed) {
  for (auto use = uses_.lower_bound({removed, {}, {}});
       use != uses_.end() && use->via == removed;) {
    const Use moved{longestFor(use->gateway, use->route), use->gateway, use->route};
    use = uses_.erase(use);
    uses_.insert(moved);
  }
}

RoutingTable::Prefixes RoutingTable::dependents(const IpPrefix& prefix) const {
  Prefixes all{prefix};
  std::vector<IpPrefix> furthest{prefix};
  for (unsigned gateways = 0; gateways < Limits::gateways; ++gateways) {
    std::vector<IpPrefix> next;
    for (const IpPrefix& via : furthest) {
      for (auto use = uses_.lower_bound({via, {}, {}}); use != uses_.end() && use->via == via;
           ++use) {
        if (all.insert(use->route).second) next.push_back(use->route);
      }
    }
    furthest = std::move(next);
  }
  return all;
}

void RoutingTable::resolveAgain(const Prefixes& prefixes) {
  Unusable unusable;
  for (const IpPrefix& prefix : prefixes) {
    const Resolved route = has(prefix) ? resolve(prefix, 0, unusable) : std::nullopt;
    const auto present = resolved_.find(prefix);
    if (present == resolved_.end() ? !route : route == present->second) continue;
    changes_.insert(prefix);
    if (route) {
      resolved_.insert_or_assign(prefix, *route);
    } else {
      resolved_.erase(present);
    }
  }
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
  if (!isGateway(nextHop)) return Route{Route::Kind::egress, nextHop.interface};
  if (depth == Limits::gateways) return std::nullopt;
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

std::string RoutingTable::whyUnresolved(const IpPrefix& prefix) const {
  std::vector<std::string> reasons;
  for (const NextHop& nextHop : configured_.at(prefix))
    reasons.push_back(whyUnusable(nextHop, prefix));
  return reasons.empty() ? "it has no next hop" : joined(reasons, "; ");
}

std::string RoutingTable::whyUnusable(const NextHop& nextHop, const IpPrefix& of) const {
  const std::string gateway = toText(*nextHop.address);
  const auto via = longestFor(*nextHop.address, of);
  if (!via) return "no other route to " + gateway;
  if (!resolved_.contains(*via))
    return "the route " + toText(*via) + " to " + gateway + " is not resolved";
  return gateway + " is reached only through " + toText(of) + " or behind more than " +
         std::to_string(Limits::gateways) + " gateways";
}

RoutingTable::Prefixes RoutingTable::prefixes() const {
  Prefixes prefixes;
  for (const auto& [prefix, route] : fromEvents_)
    prefixes.insert(prefix);
  for (const auto& [prefix, nextHops] : configured_)
    prefixes.insert(prefix);
  return prefixes;
}

bool RoutingTable::has(const IpPrefix& prefix) const {
  return fromEvents_.contains(prefix) || configured_.contains(prefix);
}

}  // namespace ZelAgent
