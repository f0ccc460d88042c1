// What the chip was last asked to program, and which actions depend on a VRF.
#include "chips/programs/AskedPrograms.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "chips/soft/SoftVrfHelper.h"

namespace Chips {
namespace {

using PolicyMap::ActionType;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ZelVrfSelectionPolicy::VrfAction;

class AskedProgramsTest : public ::testing::Test {
 protected:
  AskedProgramsTest() {
    std::uint32_t id = 0;
    for (const char* const vrf : {"default", "red", "blue", "green", "grey"})
      routes_->vrfStatusIs(vrf)->vrfIdIs(++id);
    fallbacks_->fallbackVrfIs("red", "default");
    decap_.fallbackVrfNameIs("green");
    decap_.postDecapVrfNameIs("grey");
  }
  [[nodiscard]] const std::set<VrfAction>& actionsWith(const char* vrf) {
    return chip_->askedPrograms().actionsWith(vrf);
  }

  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbacks_ =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<SoftVrfHelper> chip_ = Mox::makeActivePtr<SoftVrfHelper>(
      Velo::String("chip"), ProgramInputs{fallbacks_, routes_, nullptr}, 10U);
  VrfAction red_{"red", ActionType::vrf};
  VrfAction decap_{"blue", ActionType::decapVrf};
};

TEST_F(AskedProgramsTest, AnActionDependsOnTheVrfsOfAllItsWalks) {
  (void)chip_->createVrf(red_);
  (void)chip_->createVrf(decap_);
  EXPECT_THAT(actionsWith("red"), ElementsAre(red_));
  EXPECT_THAT(actionsWith("default"), ElementsAre(red_));
  EXPECT_THAT(actionsWith("blue"), ElementsAre(decap_));
  EXPECT_THAT(actionsWith("green"), ElementsAre(decap_));
  EXPECT_THAT(actionsWith("grey"), ElementsAre(decap_));
  EXPECT_THAT(actionsWith("nowhere"), IsEmpty());
}

TEST_F(AskedProgramsTest, AnUpdateChangesWhatAnActionDependsOn) {
  (void)chip_->createVrf(red_);
  (void)chip_->createVrf(decap_);
  fallbacks_->fallbackVrfIs("red", "green");
  EXPECT_THAT(actionsWith("default"), ElementsAre(red_));
  (void)chip_->updateVrf(red_);
  EXPECT_THAT(actionsWith("default"), IsEmpty());
  EXPECT_THAT(actionsWith("green"), ElementsAre(decap_, red_));
}

TEST_F(AskedProgramsTest, ADeletedActionDependsOnNothing) {
  (void)chip_->createVrf(red_);
  chip_->deleteVrf(red_);
  EXPECT_THAT(actionsWith("red"), IsEmpty());
  EXPECT_EQ(chip_->askedPrograms().program(red_), nullptr);
  EXPECT_FALSE(chip_->isOutOfDate(red_));
}

TEST_F(AskedProgramsTest, ARefusedRequestCountsAsOne) {
  chip_->faultPlan().anyFaultsIs(1);
  (void)chip_->createVrf(red_);
  EXPECT_EQ(chip_->resource(red_), nullptr);
  EXPECT_THAT(actionsWith("red"), ElementsAre(red_));
  EXPECT_FALSE(chip_->isOutOfDate(red_));
  routes_->vrfStatus("default")->vrfIdIs(99);
  EXPECT_TRUE(chip_->isOutOfDate(red_));
  (void)chip_->updateVrf(red_);
  EXPECT_FALSE(chip_->isOutOfDate(red_));
}

TEST_F(AskedProgramsTest, AFactOfAVrfThatIsOnNoWalkMakesNothingOutOfDate) {
  (void)chip_->createVrf(red_);
  routes_->vrfStatus("blue")->vrfIdIs(99);
  EXPECT_FALSE(chip_->isOutOfDate(red_));
  routes_->decapNhEnabledIs(true);
  EXPECT_TRUE(chip_->isOutOfDate(red_));
}

}  // namespace
}  // namespace Chips
