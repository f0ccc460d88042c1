// A route event costs what it changes, however many other routes there are.
#include <gtest/gtest.h>

#include "agent/model/routes/RouteProgrammer.h"
#include "chips/soft/SoftRouteTables.h"
#include "tests/agent/model/routes/RouteTexts.h"
#include "tests/platform/Allocations.h"

namespace ZelAgent {
namespace {

// The allocations of one route event, while the VRF has this many routes of each of three kinds:
// with a gateway that is not reached, with a gateway that is reached, and of events.
std::size_t allocationsOfAnEvent(unsigned routes) {
  const auto status = Routing::Hardware::RouteStatus::RouteStatusIs();
  status->vrfStatusIs("red")->vrfIdIs(2);
  Chips::SoftRouteTables chip;
  RouteProgrammer programmer(chip,
                             {nullptr, status, Routing6::Hardware::RouteStatus::RouteStatusIs()});
  Configuration configuration;
  NetworkInstance& red = configuration.networkInstances.emplace_back();
  red.name = "red";
  red.staticRoutes.push_back(routeOf("172.16.0.0/16", {"via e1"}));
  for (unsigned number = 0; number < routes; ++number) {
    const std::string rest = std::to_string(number) + ".0/24";
    red.staticRoutes.push_back(routeOf("10.0." + rest, {"192.0.2.1"}));
    red.staticRoutes.push_back(routeOf("10.1." + rest, {"172.16.0.1"}));
    programmer.routeIs("red", prefixOf("10.2." + rest), via("e1"));
  }
  programmer.configuredIs(configuration);
  programmer.program();
  const std::size_t before = PlatformTests::allocations();
  programmer.routeIs("red", prefixOf("10.3.0.0/24"), via("e1"));
  programmer.program();
  return PlatformTests::allocations() - before;
}

TEST(RouteEventCost, IsTheSameWithManyOtherRoutes) {
  EXPECT_EQ(allocationsOfAnEvent(200), allocationsOfAnEvent(2));
}

}  // namespace
}  // namespace ZelAgent
