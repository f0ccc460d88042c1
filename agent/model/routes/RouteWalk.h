#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "agent/model/routes/RouteProgrammer.h"

namespace ZelAgent {

/// A route of a routing table, and what became of it.
struct RouteState {
  enum class Origin : std::uint8_t { configured, event };
  enum class Result : std::uint8_t { programmed, hidden, unresolved, notProgrammed };

  std::string vrf;
  IpPrefix prefix;
  Origin origin = Origin::configured;
  std::vector<NextHop> nextHops;         // of a configured route, in their order
  std::optional<Chips::Route> resolved;  // none for a hidden and for an unresolved route
  Result result = Result::programmed;
  std::string reason;  // empty if it is programmed
};

using RouteStates = std::vector<RouteState>;

/// Which routes are read. Without a VRF, those of all. Without a prefix, all; otherwise those to
/// the prefix and to prefixes that it contains.
struct RouteFilter {
  std::optional<std::string> vrf;
  std::optional<IpPrefix> prefix;
};

/// Reads routes in parts, by VRF and prefix. If an event hides a configured route, its own route
/// comes first.
///
/// A route is read as it is at that time. A route that exists all the time is read exactly once.
class RouteWalk final {
 public:
  /// `routes` must outlive this.
  RouteWalk(const RouteProgrammer& routes, RouteFilter filter);

  /// Adds the routes to the next prefixes, which are at most so many. Returns false after the last.
  bool read(RouteStates& states, std::size_t mostPrefixes);

 private:
  [[nodiscard]] std::optional<IpPrefix> nextPrefix(const RoutingTable& table) const;
  void addRoutes(RouteStates& states, const RoutingTable& table, const IpPrefix& prefix) const;
  // Returns false after the last VRF.
  bool moveToNextVrf();

  const RouteProgrammer& routes_;
  RouteFilter filter_;
  std::string vrf_;
  std::optional<IpPrefix> last_;  // that was read of the VRF
};

}  // namespace ZelAgent
