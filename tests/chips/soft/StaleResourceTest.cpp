// A packet takes only what was programmed: what of the facts has not reached the chip shows in
// where packets go, until it does.
#include <gtest/gtest.h>

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "tests/chips/soft/ForwardWorld.h"

namespace Chips {
namespace {

using Routing::Hardware::PrefixLensInExactMatch;
using Told = ForwardWorld::Told;
using ZelVrfSelectionPolicy::VrfSm;

class StaleResourceTest : public ::testing::Test {
 protected:
  StaleResourceTest() {
    for (const char* const vrf : {"default", "red", "blue", "green"})
      world_.vrfIs(vrf);
    world_.routes->vrfPrefixLensInExactMatchIs("red");
    vrfSm_ = VrfSm::VrfSmIs(users_, statuses_, world_.chip, world_.fallbacks, world_.routes,
                            world_.routesV6);
    world_.ruleWithoutResourceIs("in", always(action_));
    world_.routeIs("red", "10.1.2.0/24", "red24");
    world_.routeIs("red", "10.0.0.0/8", "red8");
    world_.routeIs("blue", "0.0.0.0/0", "blue1");
    world_.routeIs("green", "0.0.0.0/0", "green1");
  }
  void use() { users_->vrfRefCountInc(resourceOf(action_), 1); }
  [[nodiscard]] std::string where() { return world_.where("10.1.2.3"); }

  ForwardWorld world_;
  const PolicyMap::RuleAction action_ = lookUpIn("red");
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users_ = ZelVrfSelectionPolicy::vrfHwConfigFactory();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses_ =
      ZelVrfSelectionPolicy::vrfHwStatusFactory();
  Mox::Ptr<VrfSm> vrfSm_;
};

TEST_F(StaleResourceTest, PacketsAreDroppedUntilTheActionHasUsers) {
  EXPECT_EQ(where(), "noVrfResource");
  use();
  EXPECT_EQ(where(), "red24");
  users_->vrfRefCountDec(resourceOf(action_), 1);
  EXPECT_EQ(where(), "noVrfResource");
}

TEST_F(StaleResourceTest, AFailedCreationDropsUntilARetrySucceeds) {
  world_.chip->faultPlan().anyFaultsIs(1);
  use();
  EXPECT_EQ(where(), "noVrfResource");
  world_.fallbackIs("red", "blue");
  EXPECT_EQ(where(), "red24");
}

TEST_F(StaleResourceTest, AFullChipDrops) {
  world_.chip->capacityIs(0);
  use();
  EXPECT_EQ(where(), "noVrfResource");
}

TEST_F(StaleResourceTest, AFailedUpdateMissesRoutesThatMovedToExactMatch) {
  use();
  world_.chip->faultPlan().vrfFaultsIs("red", 1);
  world_.exactMatchLenIs("red", 24);
  EXPECT_EQ(where(), "red8");
  world_.fallbackIs("red", "blue");  // has the action programmed again
  EXPECT_EQ(where(), "red24");
}

TEST_F(StaleResourceTest, ReplacedPrefixLengthsDoNotReachTheChip) {
  use();
  auto lengths = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  lengths->prefixLenIs(24);
  world_.routes->vrfPrefixLensInExactMatchIs(lengths);
  world_.exactMatchLenIs("red", 24, Told::tablesOnly);
  EXPECT_EQ(where(), "red8");
  lengths->prefixLenIs(16);
  EXPECT_EQ(where(), "red24");
}

TEST_F(StaleResourceTest, AFailedUpdateKeepsTheOldFallback) {
  world_.fallbackIs("red", "blue");
  use();
  EXPECT_EQ(world_.where("20.0.0.1"), "blue1");
  world_.chip->faultPlan().anyFaultsIs(1);
  world_.fallbackIs("red", "green");
  EXPECT_EQ(world_.where("20.0.0.1"), "blue1");
  ASSERT_EQ(world_.chip->updateVrf(resourceOf(action_)), ZelVrfSelectionPolicy::HwStatus());
  EXPECT_EQ(world_.where("20.0.0.1"), "green1");
}

TEST_F(StaleResourceTest, AnIdThatIsGoneStaysProgrammed) {
  use();
  const std::uint32_t id = world_.routes->vrfStatus("red")->vrfId();
  world_.vrfIdIs("red", 0);
  EXPECT_EQ(where(), "red24");
  world_.tables.vrfDel(id);
  EXPECT_EQ(where(), "noRoute");
}

TEST_F(StaleResourceTest, AFailedUpdateKeepsTheOldDecapFlags) {
  world_.routeIs("red", "198.51.100.0/24", "decap");
  use();
  world_.chip->faultPlan().anyFaultsIs(1);
  world_.routes->decapNhEnabledIs(true);
  TestPacket inner;
  inner.destination = "10.9.9.9";
  EXPECT_EQ(world_.where(TestPacket().around(inner)), "decapDisabled");
  world_.routeIs("default", "0.0.0.0/0", "own");
  world_.routes->decapNhFallbackEnabledIs(true);
  EXPECT_EQ(world_.where(TestPacket().around(inner)), "own");
}

}  // namespace
}  // namespace Chips
