// After any history of changes the resolved routes are those that a search of all routes finds.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"
#include "tests/agent/model/routes/RouteTexts.h"

namespace ZelAgent {
namespace {

using Chips::Route;
using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

// Resolves every route from the start, and searches a list for each gateway.
class WholeTable final {
 public:
  void configuredIs(std::vector<StaticRoute> routes) { configured_ = std::move(routes); }
  void routeIs(const IpPrefix& prefix, const Route& route) { fromEvents_[prefix] = route; }
  bool routeDel(const IpPrefix& prefix) { return fromEvents_.erase(prefix) != 0; }

  [[nodiscard]] RoutingTable::Routes resolved() const {
    RoutingTable::Routes routes = fromEvents_;
    for (const StaticRoute& route : configured_) {
      if (const auto found = resolve(route.prefix, 0)) routes.emplace(route.prefix, *found);
    }
    return routes;
  }

 private:
  [[nodiscard]] std::optional<Route> resolve(const IpPrefix& prefix, int gateways) const {
    if (const auto route = fromEvents_.find(prefix); route != fromEvents_.end()) {
      return route->second;
    }
    const auto configured =
        std::find_if(configured_.begin(), configured_.end(),
                     [&](const StaticRoute& route) { return route.prefix == prefix; });
    for (const NextHop& nextHop : configured->nextHops) {
      if (nextHop.drops) return Route{Route::Kind::drop, {}};
      if (!nextHop.interface.empty()) return Route{Route::Kind::egress, nextHop.interface};
      const auto via = longestFor(*nextHop.address, prefix);
      if (!via || gateways == 8) continue;
      if (const auto route = resolve(*via, gateways + 1)) return route;
    }
    return std::nullopt;
  }

  [[nodiscard]] std::optional<IpPrefix> longestFor(const IpAddress& gateway,
                                                   const IpPrefix& except) const {
    std::optional<IpPrefix> longest;
    const auto consider = [&](const IpPrefix& prefix) {
      if (prefix == except || !prefix.contains(gateway)) return;
      if (!longest || prefix.length > longest->length) longest = prefix;
    };
    for (const auto& [prefix, route] : fromEvents_)
      consider(prefix);
    for (const StaticRoute& route : configured_)
      consider(route.prefix);
    return longest;
  }

  std::vector<StaticRoute> configured_;
  RoutingTable::Routes fromEvents_;
};

// Few addresses, so that most gateways are in some prefix, and many prefixes are in others.
class RandomRoutes final {
 public:
  explicit RandomRoutes(std::uint32_t seed) : random_(seed) {}

  [[nodiscard]] unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

  [[nodiscard]] IpAddress address() {
    IpAddress address;
    if (below(3) == 0) address.family = IpFamily::v6;
    address.bytes[0] = 10;
    address.bytes[3] = static_cast<std::uint8_t>(below(16));
    return address;
  }

  [[nodiscard]] IpPrefix prefix() {
    const unsigned length = below(8) == 0 ? 8 * below(2) : 28 + below(5);
    return {Ip::firstBits(address(), length), static_cast<std::uint8_t>(length)};
  }

  [[nodiscard]] std::vector<StaticRoute> configuration() {
    std::map<IpPrefix, StaticRoute> routes;
    for (unsigned count = 4 + below(24); count-- > 0;) {
      StaticRoute route{prefix(), {}};
      for (unsigned nextHops = 1 + below(2); nextHops-- > 0;)
        route.nextHops.push_back(nextHop());
      routes.emplace(route.prefix, route);
    }
    std::vector<StaticRoute> list;
    for (const auto& [prefix, route] : routes)
      list.push_back(route);
    return list;
  }

 private:
  [[nodiscard]] NextHop nextHop() {
    if (below(8) == 0)
      return nextHopOf(below(2) == 0 ? "drop" : "via e" + std::to_string(below(4)));
    NextHop gateway;
    gateway.address = address();
    return gateway;
  }

  std::mt19937 random_;
};

TEST(RandomRoutes, EveryChangeResolvesAsTheWholeTableDoes) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomRoutes random(seed.value());
  for (std::size_t round = 0; round < randomRounds(30); ++round) {
    RoutingTable table;
    WholeTable whole;
    for (int step = 0; step < 40; ++step) {
      const RoutingTable::Routes before = table.resolved();
      table.changesDelAll();
      const IpPrefix prefix = random.prefix();
      const unsigned kind = random.below(20);
      if (step == 0 || kind == 0) {
        const std::vector<StaticRoute> routes = random.configuration();
        table.configuredIs(routes);
        whole.configuredIs(routes);
      } else if (kind < 10) {
        const Route route = via("e" + std::to_string(random.below(3)));
        table.routeIs(prefix, route);
        whole.routeIs(prefix, route);
      } else {
        ASSERT_EQ(table.routeDel(prefix), whole.routeDel(prefix));
      }
      const RoutingTable::Routes wanted = whole.resolved();
      ASSERT_EQ(shown(table.resolved()), shown(wanted));
      RoutingTable::Prefixes changes;
      for (const auto* routes : {&before, &wanted}) {
        for (const auto& [changed, route] : *routes) {
          const auto old = before.find(changed);
          const auto now = wanted.find(changed);
          if (old == before.end() || now == wanted.end() || old->second != now->second) {
            changes.insert(changed);
          }
        }
      }
      ASSERT_EQ(table.changes(), changes);
    }
  }
}

}  // namespace
}  // namespace ZelAgent
