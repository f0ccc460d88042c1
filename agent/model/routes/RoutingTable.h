#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "agent/config/Configuration.h"
#include "chips/interface/Route.h"

namespace ZelAgent {

/// The routes of one VRF, from the configuration and from events, resolved to routes of a chip.
///
/// A route of an event hides the configured route to the same prefix. The next hop of a route is
/// the first usable one of its list. Usable are DROP, a next hop with an interface, and a gateway
/// whose longest other matching route has a usable next hop. A gateway that is reached only through
/// itself, or behind more than eight gateways, is not usable. If gateways form a loop with several
/// exits, any exit may be taken. A route without a usable next hop is absent.
///
/// A change of one route resolves again only that route and the routes that reach it by gateways. A
/// change of the configuration resolves all routes.
class RoutingTable final {
 public:
  using Routes = std::map<IpPrefix, Chips::Route>;
  using Prefixes = std::set<IpPrefix>;
  using Configured = std::map<IpPrefix, std::vector<NextHop>>;

  /// Replaces the configured routes.
  void configuredIs(const std::vector<StaticRoute>& routes);
  void routeIs(const IpPrefix& prefix, const Chips::Route& route);
  /// Removes the route of an event. Returns whether there was one.
  bool routeDel(const IpPrefix& prefix);

  [[nodiscard]] const Configured& configured() const noexcept { return configured_; }
  [[nodiscard]] const Routes& fromEvents() const noexcept { return fromEvents_; }
  /// Why no next hop of the configured route is usable: one reason for each. Precondition: it is
  /// not resolved.
  [[nodiscard]] std::string whyUnresolved(const IpPrefix& prefix) const;
  /// The prefixes of all routes, of those without a usable next hop too.
  [[nodiscard]] Prefixes prefixes() const;
  /// The routes for the chip.
  [[nodiscard]] const Routes& resolved() const noexcept { return resolved_; }
  /// The prefixes whose resolved routes have changed since the last `changesDelAll`.
  [[nodiscard]] const Prefixes& changes() const noexcept { return changes_; }
  void changesDelAll() noexcept { changes_.clear(); }

 private:
  using Resolved = std::optional<Chips::Route>;
  // Prefixes without a usable next hop, each with the number of gateways before it. With these no
  // prefix is tried twice behind the same number of gateways.
  using Unusable = std::set<std::pair<IpPrefix, unsigned>>;

  // A configured route has a gateway, and `via` is the longest other prefix that contains the
  // gateway. The order makes the uses of one prefix, and of gateways in a part of it, a range.
  struct Use {
    std::optional<IpPrefix> via;  // none if no prefix contains the gateway
    IpAddress gateway;
    IpPrefix route;

    auto operator<=>(const Use&) const = default;  // NOLINT(modernize-use-nullptr): misread
  };

  void findUses();
  void moveUsesTo(const IpPrefix& added);
  void moveUsesFrom(const IpPrefix& removed);
  // The prefix, and the configured routes that reach it by gateways.
  [[nodiscard]] Prefixes dependents(const IpPrefix& prefix) const;
  void resolveAgain(const Prefixes& prefixes);

  [[nodiscard]] Resolved resolve(const IpPrefix& prefix, unsigned depth, Unusable& unusable) const;
  [[nodiscard]] Resolved resolve(const NextHop& nextHop, const IpPrefix& of, unsigned depth,
                                 Unusable& unusable) const;
  [[nodiscard]] std::optional<IpPrefix> longestFor(const IpAddress& address,
                                                   const IpPrefix& except) const;
  [[nodiscard]] bool has(const IpPrefix& prefix) const;
  [[nodiscard]] std::string whyUnusable(const NextHop& nextHop, const IpPrefix& of) const;

  Configured configured_;
  Routes fromEvents_;
  std::set<Use> uses_;  // those of all configured routes
  Routes resolved_;
  Prefixes changes_;
};

}  // namespace ZelAgent
