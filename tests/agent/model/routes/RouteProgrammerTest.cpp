// The chip's tables follow the routes of VRFs, their ids, and their prefix lengths in exact match.
#include "agent/model/routes/RouteProgrammer.h"
#include "chips/soft/SoftRouteTables.h"

#include <gtest/gtest.h>

#include "tests/agent/model/routes/RouteTexts.h"

namespace ZelAgent {
namespace {

using Routing::Hardware::PrefixLensInExactMatch;

class RouteProgrammerTest : public ::testing::Test {
 protected:
  void vrfIdIs(const std::string& vrf, std::uint32_t id) {
    routeStatus_->vrfStatusIs(vrf)->vrfIdIs(id);
  }

  void configure(const std::map<std::string, std::vector<StaticRoute>>& routes) {
    Configuration configuration;
    for (const auto& [vrf, routesOfVrf] : routes) {
      NetworkInstance& instance = configuration.networkInstances.emplace_back();
      instance.name = vrf;
      instance.staticRoutes = routesOfVrf;
    }
    programmer_.configuredIs(configuration);
    programmer_.program();
  }

  // "PREFIX ROUTE", with a "*" for exact match, or "miss".
  std::string lookUp(std::uint32_t vrfId, const std::string& address,
                     const std::vector<unsigned char>& exactMatchLens = {}) {
    const auto hit = chip_.lookUp(vrfId, parseIpAddress(address).value(), exactMatchLens);
    if (!hit) return "miss";
    const auto texts = shown({{hit->prefix, *hit->route}});
    return texts.begin()->first + ' ' + texts.begin()->second + (hit->exactMatch ? " *" : "");
  }

  const Mox::Ptr<Routing::Hardware::RouteStatus> routeStatus_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
  const Mox::Ptr<Routing6::Hardware::RouteStatus> routeStatusV6_ =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Chips::SoftRouteTables chip_;
  RouteProgrammer programmer_{chip_, {nullptr, routeStatus_, routeStatusV6_}};
};

TEST_F(RouteProgrammerTest, RoutesAreInTheTableOfTheIdOfTheirVrf) {
  vrfIdIs("red", 2);
  vrfIdIs("blue", 3);
  configure({{"red", {routeOf("10.0.0.0/8", {"via e1"})}},
             {"blue", {routeOf("10.0.0.0/8", {"via e2"}), routeOf("2001:db8::/32", {"drop"})}}});
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "10.0.0.0/8 via e1");
  EXPECT_EQ(lookUp(3, "10.1.1.1"), "10.0.0.0/8 via e2");
  EXPECT_EQ(lookUp(3, "2001:db8::1"), "2001:db8::/32 drop");
  EXPECT_EQ(lookUp(2, "2001:db8::1"), "miss");
  EXPECT_EQ(chip_.routes(), 3U);
}

TEST_F(RouteProgrammerTest, AVrfWithoutAnIdHasNoTable) {
  vrfIdIs("red", 0);
  configure({{"red", {routeOf("10.0.0.0/8", {"via e1"})}},
             {"absent", {routeOf("10.0.0.0/8", {"via e1"})}}});
  EXPECT_EQ(chip_.routes(), 0U);
  vrfIdIs("red", 2);
  programmer_.program();
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "10.0.0.0/8 via e1");
  EXPECT_EQ(chip_.routes(), 1U);
}

TEST_F(RouteProgrammerTest, ATableFollowsTheIdOfItsVrf) {
  vrfIdIs("red", 2);
  configure({{"red", {routeOf("10.0.0.0/8", {"via e1"})}}});
  vrfIdIs("red", 7);
  programmer_.program();
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "miss");
  EXPECT_EQ(lookUp(7, "10.1.1.1"), "10.0.0.0/8 via e1");
  vrfIdIs("red", 0);
  programmer_.program();
  EXPECT_EQ(chip_.routes(), 0U);
  vrfIdIs("red", 7);
  programmer_.program();
  EXPECT_EQ(lookUp(7, "10.1.1.1"), "10.0.0.0/8 via e1");
  routeStatus_->vrfStatusDel("red");
  programmer_.program();
  EXPECT_EQ(chip_.routes(), 0U);
}

TEST_F(RouteProgrammerTest, VrfsThatSwapIdsSwapTables) {
  vrfIdIs("red", 2);
  vrfIdIs("blue", 3);
  configure({{"red", {routeOf("10.0.0.0/8", {"via e1"})}},
             {"blue", {routeOf("10.0.0.0/8", {"via e2"})}}});
  vrfIdIs("red", 3);
  vrfIdIs("blue", 2);
  programmer_.program();
  EXPECT_EQ(lookUp(3, "10.1.1.1"), "10.0.0.0/8 via e1");
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "10.0.0.0/8 via e2");
}

TEST_F(RouteProgrammerTest, VrfsThatShareAnIdShareATableInWhichTheLaterNameWins) {
  vrfIdIs("a", 2);
  vrfIdIs("b", 2);
  configure({{"a", {routeOf("10.0.0.0/8", {"via e1"}), routeOf("172.16.0.0/16", {"via e1"})}},
             {"b", {routeOf("10.0.0.0/8", {"via e2"}), routeOf("192.0.2.0/24", {"via e2"})}}});
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "10.0.0.0/8 via e2");
  EXPECT_EQ(lookUp(2, "172.16.1.1"), "172.16.0.0/16 via e1");
  EXPECT_EQ(lookUp(2, "192.0.2.1"), "192.0.2.0/24 via e2");
  vrfIdIs("b", 3);
  programmer_.program();
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "10.0.0.0/8 via e1");
  EXPECT_EQ(lookUp(2, "192.0.2.1"), "miss");
  EXPECT_EQ(lookUp(3, "10.1.1.1"), "10.0.0.0/8 via e2");
  EXPECT_EQ(chip_.routes(), 4U);
}

TEST_F(RouteProgrammerTest, LengthsInExactMatchAreHeldThere) {
  vrfIdIs("red", 2);
  configure({{"red",
              {routeOf("10.1.0.0/16", {"via e1"}), routeOf("10.0.0.0/8", {"via e2"}),
               routeOf("2001:db8::/32", {"via e3"})}}});
  const auto lengths = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  lengths->prefixLenIs(16);
  routeStatus_->vrfPrefixLensInExactMatchIs(lengths);
  programmer_.program();
  EXPECT_EQ(lookUp(2, "10.1.1.1", {16}), "10.1.0.0/16 via e1 *");
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "10.0.0.0/8 via e2");
  EXPECT_EQ(lookUp(2, "2001:db8::1"), "2001:db8::/32 via e3");
  const auto lengthsV6 = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  lengthsV6->prefixLenIs(32);
  routeStatusV6_->vrfPrefixLensInExactMatchIs(lengthsV6);
  routeStatus_->vrfPrefixLensInExactMatchDel("red");
  programmer_.program();
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "10.1.0.0/16 via e1");
  EXPECT_EQ(lookUp(2, "2001:db8::1", {32}), "2001:db8::/32 via e3 *");
  EXPECT_EQ(lookUp(2, "2001:db8::1"), "miss");
}

TEST_F(RouteProgrammerTest, ALengthInExactMatchHoldsAlsoForRoutesThatComeLater) {
  vrfIdIs("red", 2);
  const auto lengths = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  lengths->prefixLenIs(8);
  routeStatus_->vrfPrefixLensInExactMatchIs(lengths);
  configure({{"red", {}}});
  programmer_.routeIs("red", prefixOf("10.0.0.0/8"), decapRoute());
  programmer_.program();
  EXPECT_EQ(lookUp(2, "10.1.1.1", {8}), "10.0.0.0/8 decap *");
}

TEST_F(RouteProgrammerTest, RoutesOfEventsNeedNoConfiguredVrf) {
  programmer_.routeIs("late", prefixOf("10.0.0.0/8"), via("e1"));
  programmer_.program();
  EXPECT_EQ(chip_.routes(), 0U);
  vrfIdIs("late", 9);
  programmer_.program();
  EXPECT_EQ(lookUp(9, "10.1.1.1"), "10.0.0.0/8 via e1");
  EXPECT_TRUE(programmer_.routeDel("late", prefixOf("10.0.0.0/8")));
  EXPECT_FALSE(programmer_.routeDel("late", prefixOf("10.0.0.0/8")));
  EXPECT_FALSE(programmer_.routeDel("nowhere", prefixOf("10.0.0.0/8")));
  programmer_.program();
  EXPECT_EQ(chip_.routes(), 0U);
}

TEST_F(RouteProgrammerTest, AConfigurationTakesItsOwnRoutesBackOnly) {
  vrfIdIs("red", 2);
  configure({{"red", {routeOf("10.0.0.0/8", {"via e1"})}}});
  programmer_.routeIs("red", prefixOf("172.16.0.0/16"), decapRoute());
  programmer_.program();
  configure({});
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "miss");
  EXPECT_EQ(lookUp(2, "172.16.1.1"), "172.16.0.0/16 decap");
}

TEST_F(RouteProgrammerTest, ClearingTakesEverythingOffTheChip) {
  vrfIdIs("red", 2);
  configure({{"red", {routeOf("10.0.0.0/8", {"via e1"})}}});
  programmer_.routeIs("red", prefixOf("172.16.0.0/16"), decapRoute());
  programmer_.program();
  programmer_.clear();
  EXPECT_EQ(chip_.routes(), 0U);
  programmer_.program();
  EXPECT_EQ(chip_.routes(), 0U);
}

TEST_F(RouteProgrammerTest, AChangeOfOneRouteTouchesNoOther) {
  vrfIdIs("red", 2);
  vrfIdIs("blue", 3);
  const std::vector<StaticRoute> ofBlue{routeOf("10.0.0.0/8", {"via e9"})};
  configure({{"red", {routeOf("10.0.0.0/8", {"via e1"}), routeOf("172.16.0.0/16", {"via e2"})}},
             {"blue", ofBlue}});
  // Whoever touched these again would put them right.
  chip_.routeIs(2, prefixOf("172.16.0.0/16"), via("marked"));
  chip_.routeIs(3, prefixOf("10.0.0.0/8"), via("marked"));
  configure({{"red", {routeOf("10.0.0.0/8", {"via e7"}), routeOf("172.16.0.0/16", {"via e2"})}},
             {"blue", ofBlue}});
  EXPECT_EQ(lookUp(2, "10.1.1.1"), "10.0.0.0/8 via e7");
  programmer_.routeIs("red", prefixOf("192.0.2.0/24"), decapRoute());
  programmer_.program();
  EXPECT_EQ(lookUp(2, "192.0.2.1"), "192.0.2.0/24 decap");
  EXPECT_TRUE(programmer_.routeDel("red", prefixOf("192.0.2.0/24")));
  programmer_.program();
  EXPECT_EQ(lookUp(2, "192.0.2.1"), "miss");
  EXPECT_EQ(lookUp(2, "172.16.1.1"), "172.16.0.0/16 via marked");
  EXPECT_EQ(lookUp(3, "10.1.1.1"), "10.0.0.0/8 via marked");
}

}  // namespace
}  // namespace ZelAgent
