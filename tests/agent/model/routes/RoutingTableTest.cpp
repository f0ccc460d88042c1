// How routes that name gateways become routes by interfaces.
#include "agent/model/routes/RoutingTable.h"

#include <gtest/gtest.h>

#include "tests/agent/model/routes/RouteTexts.h"

namespace ZelAgent {
namespace {

using Texts = std::map<std::string, std::string>;

Texts resolved(const std::vector<StaticRoute>& routes) {
  RoutingTable table;
  (void)table.configuredIs(routes);
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
  (void)table.configuredIs({routeOf("10.0.0.0/8", {"via e1"})});
  table.routeIs(prefixOf("10.0.0.0/8"), decapRoute());
  EXPECT_EQ(shown(table.resolved()), (Texts{{"10.0.0.0/8", "decap"}}));
  EXPECT_TRUE(table.routeDel(prefixOf("10.0.0.0/8")));
  EXPECT_EQ(shown(table.resolved()), (Texts{{"10.0.0.0/8", "via e1"}}));
}

TEST(RoutingTable, AGatewayIsReachedByRoutesOfEventsToo) {
  RoutingTable table;
  (void)table.configuredIs(
      {routeOf("10.0.0.0/8", {"192.0.2.1"}), routeOf("192.0.2.0/24", {"via e1"})});
  table.routeIs(prefixOf("192.0.2.0/24"), via("e2"));
  EXPECT_EQ(shown(table.resolved()), (Texts{{"10.0.0.0/8", "via e2"}, {"192.0.2.0/24", "via e2"}}));
  table.routeIs(prefixOf("192.0.2.1/32"), via("e3"));
  EXPECT_EQ(shown(table.resolved()).at("10.0.0.0/8"), "via e3");
}

TEST(RoutingTable, RoutesOfEventsOutliveConfigurations) {
  RoutingTable table;
  table.routeIs(prefixOf("10.0.0.0/8"), decapRoute());
  EXPECT_TRUE(table.configuredIs({routeOf("172.16.0.0/16", {"via e1"})}));
  EXPECT_TRUE(table.configuredIs({}));
  EXPECT_EQ(shown(table.resolved()), (Texts{{"10.0.0.0/8", "decap"}}));
}

TEST(RoutingTable, TellsWhetherAConfigurationChangesAnything) {
  RoutingTable table;
  EXPECT_FALSE(table.configuredIs({}));
  EXPECT_TRUE(table.configuredIs({routeOf("10.0.0.0/8", {"via e1"})}));
  EXPECT_FALSE(table.configuredIs({routeOf("10.0.0.0/8", {"via e1"})}));
  EXPECT_TRUE(table.configuredIs({routeOf("10.0.0.0/8", {"via e2"})}));
  EXPECT_TRUE(table.configuredIs({routeOf("10.0.0.0/9", {"via e2"})}));
}

TEST(RoutingTable, OnlyRoutesOfEventsAreTakenBack) {
  RoutingTable table;
  (void)table.configuredIs({routeOf("10.0.0.0/8", {"via e1"})});
  EXPECT_FALSE(table.routeDel(prefixOf("10.0.0.0/8")));
  table.routeIs(prefixOf("10.0.0.0/8"), via("e2"));
  EXPECT_TRUE(table.routeDel(prefixOf("10.0.0.0/8")));
  EXPECT_FALSE(table.routeDel(prefixOf("10.0.0.0/8")));
}

}  // namespace
}  // namespace ZelAgent
