// How routes that name gateways become routes by interfaces.
#include "agent/model/routes/RoutingTable.h"

#include <gtest/gtest.h>

#include "tests/agent/model/routes/RouteTexts.h"

namespace ZelAgent {
namespace {

using Texts = std::map<std::string, std::string>;

Texts resolved(const std::vector<StaticRoute>& routes) {
  RoutingTable table;
  table.configuredIs(routes);
  return shown(table.resolved());
}

TEST(RoutingTable, IsEmptyAtFirst) {
  EXPECT_TRUE(RoutingTable().resolved().empty());
}

TEST(RoutingTable, ANextHopWithAnInterfaceLeavesByIt) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"via e1"}), routeOf("2001:db8::/32", {"via e2"})}),
            (Texts{{"10.0.0.0/8", "via e1"}, {"2001:db8::/32", "via e2"}}));
}

TEST(RoutingTable, ANextHopWithAnInterfaceAndAnAddressLeavesByTheInterface) {
  StaticRoute route = routeOf("10.0.0.0/8", {"192.0.2.1"});
  route.nextHops.front().interface = "e1";
  EXPECT_EQ(resolved({route, routeOf("192.0.2.0/24", {"via e9"})}),
            (Texts{{"10.0.0.0/8", "via e1"}, {"192.0.2.0/24", "via e9"}}));
}

TEST(RoutingTable, DropDrops) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"drop"})}), (Texts{{"10.0.0.0/8", "drop"}}));
}

TEST(RoutingTable, AGatewayIsReachedByTheLongestOtherRouteThatContainsIt) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"192.0.2.1"}), routeOf("0.0.0.0/0", {"via e1"}),
                      routeOf("192.0.2.0/24", {"via e2"}), routeOf("192.0.2.0/30", {"via e3"}),
                      routeOf("192.0.2.0/32", {"via e4"})}),
            (Texts{{"10.0.0.0/8", "via e3"},
                   {"0.0.0.0/0", "via e1"},
                   {"192.0.2.0/24", "via e2"},
                   {"192.0.2.0/30", "via e3"},
                   {"192.0.2.0/32", "via e4"}}));
}

TEST(RoutingTable, AGatewayOfTheOtherFamilyIsReachedByItsFamily) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"2001:db8::1"}), routeOf("2001:db8::/64", {"via e6"}),
                      routeOf("0.0.0.0/0", {"via e4"})})
                .at("10.0.0.0/8"),
            "via e6");
}

TEST(RoutingTable, AGatewayWithinItsOwnPrefixIsReachedByAnotherRoute) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"10.1.1.1"}), routeOf("0.0.0.0/0", {"via e1"})})
                .at("10.0.0.0/8"),
            "via e1");
}

TEST(RoutingTable, AGatewayBehindADroppingRouteDrops) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"192.0.2.1"}), routeOf("192.0.2.0/24", {"drop"})})
                .at("10.0.0.0/8"),
            "drop");
}

TEST(RoutingTable, GatewaysMayBeReachedByWayOfGateways) {
  EXPECT_EQ(
      resolved({routeOf("10.0.0.0/8", {"172.16.0.1"}), routeOf("172.16.0.0/16", {"192.0.2.1"}),
                routeOf("192.0.2.0/24", {"via e1"})}),
      (Texts{{"10.0.0.0/8", "via e1"}, {"172.16.0.0/16", "via e1"}, {"192.0.2.0/24", "via e1"}}));
}

TEST(RoutingTable, ARouteWhoseGatewayIsNotReachedIsNotThere) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"192.0.2.1"}), routeOf("172.16.0.0/16", {"via e1"})}),
            (Texts{{"172.16.0.0/16", "via e1"}}));
}

TEST(RoutingTable, ARouteThatIsReachedOnlyByItselfIsNotThere) {
  EXPECT_TRUE(resolved({routeOf("10.0.0.0/8", {"10.1.1.1"})}).empty());
}

TEST(RoutingTable, RoutesThatAreReachedByEachOtherAreNotThere) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"172.16.0.1"}), routeOf("172.16.0.0/16", {"10.0.0.1"}),
                      routeOf("192.0.2.0/24", {"via e1"})}),
            (Texts{{"192.0.2.0/24", "via e1"}}));
}

// Trying every way through these would take longer than anybody waits.
TEST(RoutingTable, ManyNextHopsInACircleAreSeenToBeOne) {
  StaticRoute there{prefixOf("10.0.0.0/8"), {}};
  StaticRoute back{prefixOf("172.16.0.0/16"), {}};
  for (int host = 1; host <= 64; ++host) {
    there.nextHops.push_back(nextHopOf("172.16.0." + std::to_string(host)));
    back.nextHops.push_back(nextHopOf("10.0.0." + std::to_string(host)));
  }
  EXPECT_TRUE(resolved({there, back}).empty());
}

TEST(RoutingTable, ACircleOfThreeIsLeftByASecondNextHop) {
  EXPECT_EQ(
      resolved({routeOf("10.0.0.0/8", {"172.16.0.1"}), routeOf("172.16.0.0/16", {"192.0.2.1"}),
                routeOf("192.0.2.0/24", {"10.0.0.1", "via e1"})}),
      (Texts{{"10.0.0.0/8", "via e1"}, {"172.16.0.0/16", "via e1"}, {"192.0.2.0/24", "via e1"}}));
}

// A prefix for each number, and an address in it.
struct ChainFamily {
  std::string before;
  std::string afterOfPrefix;
  std::string afterOfAddress;

  [[nodiscard]] std::string prefix(int number) const {
    return before + std::to_string(number + 1) + afterOfPrefix;
  }
  [[nodiscard]] std::string address(int number) const {
    return before + std::to_string(number + 1) + afterOfAddress;
  }
};
const ChainFamily chainV4{"10.", ".0.0/16", ".0.1"};
const ChainFamily chainV6{"2001:db8:", "::/48", "::1"};

// Routes 0 to `gateways`. Each names a gateway in the next one, and the last leaves by e1. Routes
// with an even number are of one family, the others of the other one.
std::vector<StaticRoute> chainOf(int gateways, const ChainFamily& even, const ChainFamily& odd) {
  const auto family = [&](int number) -> const ChainFamily& {
    return number % 2 == 0 ? even : odd;
  };
  std::vector<StaticRoute> routes;
  for (int number = 0; number < gateways; ++number) {
    routes.push_back(
        routeOf(family(number).prefix(number), {family(number + 1).address(number + 1)}));
  }
  routes.push_back(routeOf(family(gateways).prefix(gateways), {"via e1"}));
  return routes;
}

TEST(RoutingTable, ARouteMayHaveEightGatewaysOnItsWay) {
  for (const auto& [even, odd] :
       {std::pair(chainV4, chainV4), std::pair(chainV6, chainV6), std::pair(chainV4, chainV6)}) {
    const Texts routes = resolved(chainOf(8, even, odd));
    EXPECT_EQ(routes.size(), 9U);
    EXPECT_EQ(routes.at(even.prefix(0)), "via e1");
  }
}

TEST(RoutingTable, OnlyTheRouteWithNineGatewaysOnItsWayIsNotThere) {
  for (const auto& [even, odd] :
       {std::pair(chainV4, chainV4), std::pair(chainV6, chainV6), std::pair(chainV4, chainV6)}) {
    const Texts routes = resolved(chainOf(9, even, odd));
    EXPECT_EQ(routes.size(), 9U);
    EXPECT_FALSE(routes.contains(even.prefix(0)));
    EXPECT_EQ(routes.at(odd.prefix(1)), "via e1");
  }
}

TEST(RoutingTable, ANextHopWithNineGatewaysOnItsWayIsPassedOver) {
  for (const ChainFamily& family : {chainV4, chainV6}) {
    std::vector<StaticRoute> routes = chainOf(9, family, family);
    routes.front().nextHops.push_back(nextHopOf("via e2"));
    EXPECT_EQ(resolved(routes).at(family.prefix(0)), "via e2");
    EXPECT_EQ(resolved(routes).at(family.prefix(1)), "via e1");
  }
}

TEST(RoutingTable, OfSeveralNextHopsTheFirstThatCanBeUsedIsTaken) {
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"192.0.2.1", "172.16.0.1", "via e9"}),
                      routeOf("172.16.0.0/16", {"via e1"})})
                .at("10.0.0.0/8"),
            "via e1");
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"via e1", "drop"})}).at("10.0.0.0/8"), "via e1");
  EXPECT_EQ(resolved({routeOf("10.0.0.0/8", {"drop", "via e1"})}).at("10.0.0.0/8"), "drop");
}

TEST(RoutingTable, ARouteOfAnEventStandsInFrontOfTheConfiguredOne) {
  RoutingTable table;
  table.configuredIs({routeOf("10.0.0.0/8", {"via e1"})});
  table.routeIs(prefixOf("10.0.0.0/8"), decapRoute());
  EXPECT_EQ(shown(table.resolved()), (Texts{{"10.0.0.0/8", "decap"}}));
  EXPECT_TRUE(table.routeDel(prefixOf("10.0.0.0/8")));
  EXPECT_EQ(shown(table.resolved()), (Texts{{"10.0.0.0/8", "via e1"}}));
}

TEST(RoutingTable, AGatewayIsReachedByRoutesOfEventsToo) {
  RoutingTable table;
  table.configuredIs({routeOf("10.0.0.0/8", {"192.0.2.1"}), routeOf("192.0.2.0/24", {"via e1"})});
  table.routeIs(prefixOf("192.0.2.0/24"), via("e2"));
  EXPECT_EQ(shown(table.resolved()), (Texts{{"10.0.0.0/8", "via e2"}, {"192.0.2.0/24", "via e2"}}));
  table.routeIs(prefixOf("192.0.2.1/32"), via("e3"));
  EXPECT_EQ(shown(table.resolved()).at("10.0.0.0/8"), "via e3");
}

TEST(RoutingTable, RoutesOfEventsOutliveConfigurations) {
  RoutingTable table;
  table.routeIs(prefixOf("10.0.0.0/8"), decapRoute());
  table.configuredIs({routeOf("172.16.0.0/16", {"via e1"})});
  table.configuredIs({});
  EXPECT_EQ(shown(table.resolved()), (Texts{{"10.0.0.0/8", "decap"}}));
}

TEST(RoutingTable, ChangesArePrefixesWhoseResolvedRoutesDiffer) {
  RoutingTable table;
  table.configuredIs({routeOf("10.0.0.0/8", {"192.0.2.1"}), routeOf("172.16.0.0/16", {"via e1"}),
                      routeOf("198.51.100.0/24", {"203.0.113.1"})});
  table.changesDelAll();
  table.routeIs(prefixOf("192.0.2.0/24"), via("e2"));
  EXPECT_EQ(table.changes(),
            (RoutingTable::Prefixes{prefixOf("10.0.0.0/8"), prefixOf("192.0.2.0/24")}));
  table.changesDelAll();
  table.routeIs(prefixOf("192.0.2.0/24"), via("e2"));
  EXPECT_TRUE(table.changes().empty());
}

TEST(RoutingTable, OnlyRoutesOfEventsAreTakenBack) {
  RoutingTable table;
  table.configuredIs({routeOf("10.0.0.0/8", {"via e1"})});
  EXPECT_FALSE(table.routeDel(prefixOf("10.0.0.0/8")));
  table.routeIs(prefixOf("10.0.0.0/8"), via("e2"));
  EXPECT_TRUE(table.routeDel(prefixOf("10.0.0.0/8")));
  EXPECT_FALSE(table.routeDel(prefixOf("10.0.0.0/8")));
}

}  // namespace
}  // namespace ZelAgent
