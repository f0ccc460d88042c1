// Why: a chip is told by which interface a packet leaves, while routes name gateways, and come from
// a configuration and from events.
// Always: a route of an event stands in front of the configured one of its prefix. The next hop of
// a route is the first of its list that can be used: DROP, one with an interface, or a gateway that
// the longest other route which contains it can be used for. A gateway that is reached only by way
// of itself cannot be used, and where gateways go in a circle that has several ways out any of them
// may be taken; a route without a next hop that can be used is not there.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "agent/config/Configuration.h"
#include "chips/soft/RouteTables.h"

namespace ZelAgent {

// The routes of one VRF.
class RoutingTable final {
 public:
  using Routes = std::map<IpPrefix, SoftChip::Route>;

  // These are the configured routes; whether that changes anything.
  bool configuredIs(const std::vector<StaticRoute>& routes);
  void routeIs(const IpPrefix& prefix, const SoftChip::Route& route);
  // Takes the route of an event back; whether there was one.
  bool routeDel(const IpPrefix& prefix);

  // The routes as a chip takes them.
  [[nodiscard]] Routes resolved() const;

 private:
  using Resolved = std::optional<SoftChip::Route>;
  // Routes that cannot be used so many gateways deep: none is tried twice, whatever leads to it.
  using Unusable = std::set<std::pair<IpPrefix, unsigned>>;

  [[nodiscard]] Resolved resolve(const IpPrefix& prefix, unsigned depth, Unusable& unusable) const;
  [[nodiscard]] Resolved resolve(const NextHop& nextHop, const IpPrefix& of, unsigned depth,
                                 Unusable& unusable) const;
  [[nodiscard]] std::optional<IpPrefix> longestFor(const IpAddress& address,
                                                   const IpPrefix& except) const;
  [[nodiscard]] bool has(const IpPrefix& prefix) const;

  std::map<IpPrefix, std::vector<NextHop>> configured_;
  std::map<IpPrefix, SoftChip::Route> fromEvents_;
};

}  // namespace ZelAgent
