#include "tests/agent/features/ReferenceRoutes.h"

#include <algorithm>

namespace ZelAgent {

bool covers(const IpPrefix& prefix, const IpAddress& address) {
  if (prefix.address.family != address.family) return false;
  const unsigned whole = prefix.length / 8U;
  for (unsigned byte = 0; byte < whole; ++byte) {
    if (prefix.address.bytes[byte] != address.bytes[byte]) return false;
  }
  const unsigned rest = prefix.length % 8U;
  return rest == 0 ||
         prefix.address.bytes[whole] >> (8 - rest) == address.bytes[whole] >> (8 - rest);
}

void ReferenceRoutes::set(const ReferenceRoute& route) {
  takeBack(route.prefix);
  fromEvents_.push_back(route);
}

void ReferenceRoutes::takeBack(const IpPrefix& prefix) {
  std::erase_if(fromEvents_, [&](const ReferenceRoute& route) { return route.prefix == prefix; });
}

ReferenceTable ReferenceRoutes::usable() const {
  ReferenceTable table;
  for (const IpPrefix& prefix : prefixes()) {
    const auto route = resolve(prefix, {});
    if (route) table.push_back({prefix, route->way, route->interface});
  }
  return table;
}

std::vector<IpPrefix> ReferenceRoutes::prefixes() const {
  std::vector<IpPrefix> prefixes;
  for (const ReferenceRoute& route : fromEvents_)
    prefixes.push_back(route.prefix);
  for (const StaticRoute& route : configured_) {
    if (std::find(prefixes.begin(), prefixes.end(), route.prefix) == prefixes.end()) {
      prefixes.push_back(route.prefix);
    }
  }
  return prefixes;
}

// `passed` are the prefixes that lead here by their gateways.
std::optional<ReferenceRoute> ReferenceRoutes::resolve(const IpPrefix& prefix,
                                                       Passed passed) const {
  for (const ReferenceRoute& route : fromEvents_) {
    if (route.prefix == prefix) return route;
  }
  if (!passed.insert(prefix).second) return {};
  for (const StaticRoute& route : configured_) {
    if (route.prefix != prefix) continue;
    for (const NextHop& nextHop : route.nextHops) {
      if (nextHop.drops) return ReferenceRoute{prefix, ReferenceWay::drops, ""};
      if (!nextHop.interface.empty()) {
        return ReferenceRoute{prefix, ReferenceWay::leaves, nextHop.interface};
      }
      if (const auto reached = reach(nextHop.address.value(), prefix, passed)) return reached;
    }
  }
  return {};
}

std::optional<ReferenceRoute> ReferenceRoutes::reach(const IpAddress& gateway, const IpPrefix& from,
                                                     const Passed& passed) const {
  std::optional<IpPrefix> longest;
  for (const IpPrefix& prefix : prefixes()) {
    if (prefix == from || !covers(prefix, gateway)) continue;
    if (!longest || prefix.length > longest->length) longest = prefix;
  }
  if (!longest) return {};
  return resolve(*longest, passed);
}

const ReferenceRoute* longestFor(const IpAddress& address, const ReferenceTable& table,
                                 const std::set<std::uint8_t>& inExactMatch,
                                 const std::set<std::uint8_t>& askedFor) {
  const ReferenceRoute* longest = nullptr;
  for (const ReferenceRoute& route : table) {
    const std::uint8_t length = route.prefix.length;
    if (inExactMatch.contains(length) && !askedFor.contains(length)) continue;
    if (!covers(route.prefix, address)) continue;
    if (longest == nullptr || length > longest->prefix.length) longest = &route;
  }
  return longest;
}

}  // namespace ZelAgent
