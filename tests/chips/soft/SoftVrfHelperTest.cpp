#include "chips/soft/SoftVrfHelper.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace Chips {
namespace {

using PolicyMap::ActionType;
using VrfSelectionPolicy::VrfSelectionFallbackVrf;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;

// "programmedInHw", or "REASON: DESCRIPTION".
std::string textOf(const HwStatus& status) {
  if (status == HwStatus()) return "programmedInHw";
  std::ostringstream text;
  EXPECT_EQ(stringValue(status.status()).str(), "programmingFailure");
  text << status.failureReason() << ": " << status.failureDescription();
  return text.str();
}

std::string noId(const std::string& vrf) {
  return "failureVrfResourceAlloc: VRF \"" + vrf +
         "\" has no hardware VRF id; the action is programmed when it gets one";
}

constexpr const char* exhausted =
    "failureVrfResourceExhausted: the chip had no free VRF resource; the action is programmed when "
    "it gets one";

constexpr const char* fault =
    "failureVrfResourceAlloc: the chip refused the request (a planned fault); it is repeated after "
    "a pause";

class SoftVrfHelperTest : public ::testing::Test {
 protected:
  void SetUp() override {
    idIs("red", 1);
    idIs("blue", 2);
    idIs("green", 3);
  }
  void idIs(const char* vrf, std::uint32_t id) {
    routes_->vrfStatusIs(L3::VrfName(vrf))->vrfIdIs(id);
  }
  [[nodiscard]] std::uint32_t indexOf(const VrfAction& action) const {
    const VrfResource* const resource = chip_->resource(action);
    return resource == nullptr ? 0 : resource->index;
  }
  [[nodiscard]] bool isCurrent(const VrfAction& action) const {
    const VrfResource* const resource = chip_->resource(action);
    return resource != nullptr && resource->program == chip_->currentProgram(action);
  }

  Mox::Ptr<VrfSelectionFallbackVrf> fallbacks_ =
      VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routesV6_ =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<SoftVrfHelper> chip_ = Mox::makeActivePtr<SoftVrfHelper>(
      Velo::String("chip"), ProgramInputs{fallbacks_, routes_, routesV6_}, 2U);
  const VrfAction red_{"red", ActionType::vrf};
  const VrfAction blue_{"blue", ActionType::vrf};
  const VrfAction green_{"green", ActionType::vrf};
};

TEST_F(SoftVrfHelperTest, KnowsItsNameAndInputs) {
  EXPECT_EQ(chip_->nameString(), Velo::String("chip"));
  EXPECT_EQ(chip_->vrfFallbackConfig().get(), fallbacks_.get());
  EXPECT_EQ(chip_->routingHwRouteStatus().get(), routes_.get());
  EXPECT_EQ(chip_->routing6HwRouteStatus().get(), routesV6_.get());
}

TEST_F(SoftVrfHelperTest, CreatesAResourceByTheFactsOfTheMoment) {
  EXPECT_EQ(textOf(chip_->createVrf(red_)), "programmedInHw");
  ASSERT_NE(chip_->resource(red_), nullptr);
  std::ostringstream text;
  text << *chip_->resource(red_);
  EXPECT_EQ(text.str(),
            "resource 1: look up red(1) v4=[] v6=[]; fallback none; post-decap none; decap-nh off; "
            "decap-nh-fallback off");
  EXPECT_EQ(chip_->resource(blue_), nullptr);
}

TEST_F(SoftVrfHelperTest, AResourceStaysStaleUntilItIsUpdated) {
  (void)chip_->createVrf(red_);
  fallbacks_->fallbackVrfIs("red", "blue");
  EXPECT_FALSE(isCurrent(red_));
  EXPECT_EQ(textOf(chip_->updateVrf(red_)), "programmedInHw");
  EXPECT_TRUE(isCurrent(red_));
  EXPECT_EQ(indexOf(red_), 1U);
}

TEST_F(SoftVrfHelperTest, AVrfWithoutAnIdFailsAndAnUpdateMendsIt) {
  idIs("red", 0);
  EXPECT_EQ(textOf(chip_->createVrf(red_)), noId("red"));
  EXPECT_EQ(chip_->resource(red_), nullptr);
  EXPECT_EQ(textOf(chip_->updateVrf(red_)), noId("red"));
  idIs("red", 5);
  EXPECT_EQ(textOf(chip_->updateVrf(red_)), "programmedInHw");
  EXPECT_TRUE(isCurrent(red_));
}

TEST_F(SoftVrfHelperTest, AVrfWithoutAStatusHasNoId) {
  routes_->vrfStatusDel("red");
  EXPECT_EQ(textOf(chip_->createVrf(red_)), noId("red"));
}

TEST_F(SoftVrfHelperTest, EachVrfThatAnActionNamesNeedsAnId) {
  VrfAction action("red", ActionType::decapVrf);
  action.fallbackVrfNameIs("nowhere");
  action.postDecapVrfNameIs("nor-there");
  EXPECT_EQ(textOf(chip_->createVrf(action)), noId("nowhere"));
  idIs("nowhere", 8);
  EXPECT_EQ(textOf(chip_->updateVrf(action)), noId("nor-there"));
  idIs("nor-there", 9);
  EXPECT_EQ(textOf(chip_->updateVrf(action)), "programmedInHw");
}

TEST_F(SoftVrfHelperTest, ADescriptionHasOddBytesOfNamesEscaped) {
  const VrfAction odd("two\nlines", ActionType::vrf);
  EXPECT_EQ(textOf(chip_->createVrf(odd)), noId("two\\nlines"));
}

TEST_F(SoftVrfHelperTest, AConfiguredFallbackNeedsNoId) {
  fallbacks_->fallbackVrfIs("red", "nowhere");
  EXPECT_EQ(textOf(chip_->createVrf(red_)), "programmedInHw");
}

TEST_F(SoftVrfHelperTest, ALostIdReleasesTheResource) {
  (void)chip_->createVrf(red_);
  (void)chip_->createVrf(blue_);
  routes_->vrfStatusDel("red");
  EXPECT_EQ(textOf(chip_->updateVrf(red_)), noId("red"));
  EXPECT_EQ(chip_->resource(red_), nullptr);
  EXPECT_EQ(textOf(chip_->createVrf(green_)), "programmedInHw");
  EXPECT_EQ(indexOf(green_), 1U);
}

TEST_F(SoftVrfHelperTest, AFullTableFailsAndAnUpdateMendsItWhenThereIsRoom) {
  (void)chip_->createVrf(red_);
  (void)chip_->createVrf(blue_);
  EXPECT_EQ(textOf(chip_->createVrf(green_)), exhausted);
  EXPECT_EQ(textOf(chip_->updateVrf(green_)), exhausted);
  chip_->deleteVrf(red_);
  EXPECT_EQ(textOf(chip_->updateVrf(green_)), "programmedInHw");
  EXPECT_EQ(indexOf(green_), 1U);
}

TEST_F(SoftVrfHelperTest, AFullTableStillUpdatesWhatItHolds) {
  chip_->capacityIs(1);
  (void)chip_->createVrf(red_);
  EXPECT_EQ(textOf(chip_->updateVrf(red_)), "programmedInHw");
}

TEST_F(SoftVrfHelperTest, CapacityChangesWhileRunning) {
  (void)chip_->createVrf(red_);
  (void)chip_->createVrf(blue_);
  chip_->capacityIs(1);
  EXPECT_EQ(chip_->capacity(), 1U);
  EXPECT_EQ(chip_->resources().size(), 2U);
  EXPECT_EQ(textOf(chip_->updateVrf(blue_)), "programmedInHw");
  EXPECT_EQ(textOf(chip_->createVrf(green_)), exhausted);
  chip_->deleteVrf(red_);
  EXPECT_EQ(textOf(chip_->updateVrf(green_)), exhausted);
  chip_->capacityIs(2);
  EXPECT_EQ(textOf(chip_->updateVrf(green_)), "programmedInHw");
}

TEST_F(SoftVrfHelperTest, ActionsThatDifferInOneFieldHaveResourcesOfTheirOwn) {
  VrfAction decap("red", ActionType::decapVrf);
  (void)chip_->createVrf(red_);
  (void)chip_->createVrf(decap);
  EXPECT_EQ(indexOf(red_), 1U);
  EXPECT_EQ(indexOf(decap), 2U);
  chip_->deleteVrf(red_);
  EXPECT_EQ(indexOf(decap), 2U);
}

TEST_F(SoftVrfHelperTest, DeletingAnUnknownActionIsHarmless) {
  (void)chip_->createVrf(red_);
  chip_->deleteVrf(blue_);
  EXPECT_EQ(chip_->resources().size(), 1U);
  EXPECT_EQ(chip_->hookCounts().deletes, 1U);
}

TEST_F(SoftVrfHelperTest, APlannedFaultFailsACreationAndAnUpdateMendsIt) {
  chip_->faultPlan().vrfFaultsIs("red", 1);
  EXPECT_EQ(textOf(chip_->createVrf(red_)), fault);
  EXPECT_EQ(chip_->resource(red_), nullptr);
  EXPECT_EQ(textOf(chip_->updateVrf(red_)), "programmedInHw");
}

TEST_F(SoftVrfHelperTest, APlannedFaultLeavesAnUpdatedResourceAsItWas) {
  (void)chip_->createVrf(red_);
  routes_->decapNhEnabledIs(true);
  chip_->faultPlan().anyFaultsIs(1);
  EXPECT_EQ(textOf(chip_->updateVrf(red_)), fault);
  EXPECT_EQ(indexOf(red_), 1U);
  EXPECT_FALSE(isCurrent(red_));
}

TEST_F(SoftVrfHelperTest, DeletionsDoNotFail) {
  (void)chip_->createVrf(red_);
  chip_->faultPlan().vrfFaultsIs("red", 1);
  chip_->deleteVrf(red_);
  EXPECT_TRUE(chip_->resources().empty());
  EXPECT_EQ(textOf(chip_->createVrf(red_)), fault);
}

TEST_F(SoftVrfHelperTest, CountsCallsAndFailures) {
  (void)chip_->createVrf(red_);
  (void)chip_->createVrf(blue_);
  (void)chip_->createVrf(green_);
  (void)chip_->updateVrf(green_);
  (void)chip_->updateVrf(red_);
  chip_->deleteVrf(red_);
  EXPECT_EQ(chip_->hookCounts(), (HookCounts{3, 2, 1, 2}));
}

TEST_F(SoftVrfHelperTest, TellsOfEachCallInOrderWithItsOutcome) {
  std::vector<HookCall> calls;
  chip_->hookObserverIs([&calls](const HookCall& call) { calls.push_back(call); });
  (void)chip_->createVrf(red_);
  chip_->faultPlan().vrfFaultsIs("red", 1);
  (void)chip_->updateVrf(red_);
  (void)chip_->updateVrf(red_);
  chip_->deleteVrf(red_);
  chip_->deleteVrf(blue_);
  const std::vector<HookCall> expected = {{Hook::createVrf, red_, false},
                                          {Hook::updateVrf, red_, true},
                                          {Hook::updateVrf, red_, false},
                                          {Hook::deleteVrf, red_, false},
                                          {Hook::deleteVrf, blue_, false}};
  EXPECT_EQ(calls, expected);
}

TEST_F(SoftVrfHelperTest, TellsOnlyTheLastObserverUntilThereIsNone) {
  int first = 0;
  int second = 0;
  chip_->hookObserverIs([&first](const HookCall&) { ++first; });
  (void)chip_->createVrf(red_);
  chip_->hookObserverIs([&second](const HookCall&) { ++second; });
  (void)chip_->updateVrf(red_);
  chip_->hookObserverIs({});
  (void)chip_->updateVrf(red_);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);
}

TEST_F(SoftVrfHelperTest, TellsWhenTheResourceIsInPlace) {
  bool present = false;
  chip_->hookObserverIs(
      [&](const HookCall& call) { present = chip_->resource(call.action) != nullptr; });
  (void)chip_->createVrf(red_);
  EXPECT_TRUE(present);
  chip_->deleteVrf(red_);
  EXPECT_FALSE(present);
}

TEST_F(SoftVrfHelperTest, AStaleResourceShowsWhatItWasProgrammedWith) {
  const auto shown = [](const auto& value) {
    std::ostringstream text;
    text << value;
    return text.str();
  };
  (void)chip_->createVrf(red_);
  fallbacks_->fallbackVrfIs("red", "blue");
  fallbacks_->fallbackVrfIs("blue", "green");
  routes_->vrfPrefixLensInExactMatchIs("green")->prefixLenIs(24);
  routesV6_->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(64);
  routes_->decapNhFallbackEnabledIs(true);
  EXPECT_EQ(shown(*chip_->resource(red_)),
            "resource 1: look up red(1) v4=[] v6=[]; fallback none; post-decap none; decap-nh off; "
            "decap-nh-fallback off");
  EXPECT_EQ(shown(chip_->currentProgram(red_)),
            "look up red(1) v4=[] v6=[64] > blue(2) v4=[] v6=[] > green(3) v4=[24] v6=[]; "
            "fallback none; post-decap none; decap-nh off; decap-nh-fallback on");
  (void)chip_->updateVrf(red_);
  EXPECT_EQ(shown(*chip_->resource(red_)), "resource 1: " + shown(chip_->currentProgram(red_)));
}

TEST_F(SoftVrfHelperTest, IndexesAreReusedLowestFirst) {
  chip_->capacityIs(9);
  const VrfAction others[] = {{"red", ActionType::decapVrf}, {"blue", ActionType::decapVrf}};
  for (const VrfAction& action : {red_, blue_, green_})
    (void)chip_->createVrf(action);
  chip_->deleteVrf(blue_);
  chip_->deleteVrf(red_);
  EXPECT_EQ(textOf(chip_->createVrf(others[0])), "programmedInHw");
  EXPECT_EQ(textOf(chip_->createVrf(others[1])), "programmedInHw");
  (void)chip_->createVrf(red_);
  EXPECT_EQ(indexOf(others[0]), 1U);
  EXPECT_EQ(indexOf(others[1]), 2U);
  EXPECT_EQ(indexOf(green_), 3U);
  EXPECT_EQ(indexOf(red_), 4U);
}

}  // namespace
}  // namespace Chips
