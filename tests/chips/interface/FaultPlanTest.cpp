#include "chips/interface/FaultPlan.h"

#include <gtest/gtest.h>

namespace Chips {
namespace {

TEST(FaultPlan, PlansNothingByItself) {
  FaultPlan plan;
  EXPECT_FALSE(plan.takeFault("red"));
}

TEST(FaultPlan, FailsTheNextOperationsOfAVrfOnly) {
  FaultPlan plan;
  plan.vrfFaultsIs("red", 2);
  EXPECT_FALSE(plan.takeFault("blue"));
  EXPECT_TRUE(plan.takeFault("red"));
  EXPECT_TRUE(plan.takeFault("red"));
  EXPECT_FALSE(plan.takeFault("red"));
}

TEST(FaultPlan, FailsTheNextOperationsOfAny) {
  FaultPlan plan;
  plan.anyFaultsIs(2);
  EXPECT_TRUE(plan.takeFault("red"));
  EXPECT_TRUE(plan.takeFault("blue"));
  EXPECT_FALSE(plan.takeFault("red"));
}

TEST(FaultPlan, UsesTheFaultsOfTheVrfFirst) {
  FaultPlan plan;
  plan.vrfFaultsIs("red", 1);
  plan.anyFaultsIs(1);
  EXPECT_TRUE(plan.takeFault("red"));
  EXPECT_TRUE(plan.takeFault("blue"));
  EXPECT_FALSE(plan.takeFault("red"));
}

TEST(FaultPlan, ANewPlanReplacesTheOld) {
  FaultPlan plan;
  plan.vrfFaultsIs("red", 5);
  plan.vrfFaultsIs("red", 0);
  plan.anyFaultsIs(5);
  plan.anyFaultsIs(0);
  EXPECT_FALSE(plan.takeFault("red"));
}

}  // namespace
}  // namespace Chips
