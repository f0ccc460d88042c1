// Every object of the library that was made is given back.

#include <string_view>

#include "Quarry/Slab.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"
#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

constexpr std::string_view typeNames[] = {
    "ZelVrfSelectionPolicy::VrfHwConfig",
    "ZelVrfSelectionPolicy::VrfHwStatus",
    "ZelVrfSelectionPolicy::PolicySmMounts",
    "ZelVrfSelectionPolicy::DependentVrfInfo",
    "ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm",
    "ZelVrfSelectionPolicy::VrfSm",
    "ZelVrfSelectionPolicy::VrfSm::MoxRoutingHwRouteStatus",
    "ZelVrfSelectionPolicy::VrfSm::MoxRouting6HwRouteStatus",
    "ZelVrfSelectionPolicy::VrfSm::VrfInstanceSm",
    "ZelVrfSelectionPolicy::VrfSm::NestedSm_VrfPrefixLensInExactMatch",
    "ZelVrfSelectionPolicy::VrfSm::NestedSm_VrfPrefixLensInExactMatchV6",
};

std::size_t live(std::string_view typeName) {
  const Quarry::Slab* slab = Quarry::Slab::find(typeName);
  return slab == nullptr ? 0 : slab->live();
}

class VrfSmLiveObjects : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    users = nullptr;
    statuses = nullptr;
    for (const std::string_view type : typeNames)
      ASSERT_EQ(live(type), 0U) << type;
    users = vrfHwConfigFactory();
    statuses = vrfHwStatusFactory();
  }

  void putEverythingInPlace() {
    resourcesAre({red, blue});
    fallback->fallbackVrfIs("red", "blue");
    for (const char* vrf : {"red", "blue"}) {
      routes->vrfStatusIs(vrf);
      routes->vrfPrefixLensInExactMatchIs(vrf);
      routes6->vrfPrefixLensInExactMatchIs(vrf);
    }
  }
  // The tables and all that the library made.
  void dropEverything() {
    vrfSm = nullptr;
    top = nullptr;
    mounts = nullptr;
    users = nullptr;
    statuses = nullptr;
  }
  static void expectNothingLives() {
    for (const std::string_view type : typeNames)
      EXPECT_EQ(live(type), 0U) << type;
  }

  Mox::Ptr<PolicySmMounts> mounts;
  Mox::Ptr<ZelVrfSelectionPolicySm> top;
};

TEST_F(VrfSmLiveObjects, OfEveryTypeLiveWhileInUseAndNoneAfterwards) {
  putEverythingInPlace();
  mounts = policySmMountsFactory();
  top = zelVrfSelectionPolicySmFactory(nullptr, mounts, chip, fallback, routes, routes6);
  ASSERT_NE(top->vrfSmIs(users, statuses, chip, fallback, routes, routes6), nullptr);
  for (const std::string_view type : typeNames)
    EXPECT_GT(live(type), 0U) << type;
  EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm::VrfInstanceSm"), 2U);
  dropEverything();
  expectNothingLives();
}

TEST_F(VrfSmLiveObjects, NoneLivesAfterAStartThatFailed) {
  putEverythingInPlace();
  routes6->vrfPrefixLensInExactMatchIs(std::string(101, 'n'));
  EXPECT_THROW(start(), std::range_error);
  EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm"), 0U);
  dropEverything();
  expectNothingLives();
}

TEST_F(VrfSmLiveObjects, NoneLivesAfterTheLastReferenceWentInAHook) {
  putEverythingInPlace();
  start();
  chip->onCreate = [this](const VrfAction&) {
    vrfSm = nullptr;
    return HwStatus();
  };
  users->vrfRefCountIs(green, 1);
  EXPECT_EQ(vrfSm, nullptr);
  dropEverything();
  expectNothingLives();
}

TEST_F(VrfSmLiveObjects, AVrfThatGoesLeavesNoMachineBehind) {
  putEverythingInPlace();
  start();
  routes->vrfStatusDelAll();
  routes->vrfPrefixLensInExactMatchDelAll();
  routes6->vrfPrefixLensInExactMatchDelAll();
  fallback->fallbackVrfDelAll();
  EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm::VrfInstanceSm"), 0U);
  EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm::NestedSm_VrfPrefixLensInExactMatch"), 0U);
  EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm::NestedSm_VrfPrefixLensInExactMatchV6"), 0U);
  EXPECT_EQ(live("ZelVrfSelectionPolicy::DependentVrfInfo"), 0U);
  dropEverything();
  expectNothingLives();
}

TEST_F(VrfSmLiveObjects, RebuildingAgainAndAgainKeepsOneMachineAlive) {
  putEverythingInPlace();
  for (int build = 0; build < 5; ++build) {
    vrfSm = newVrfSm();
    EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm"), 1U);
    EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm::VrfInstanceSm"), 2U);
  }
  dropEverything();
  expectNothingLives();
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
