// What an agent gets by the one header of the library: complete types for everything that its
// functions return. Nothing else of the library or the platform may be included here.

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"

#include <gtest/gtest.h>

namespace {

using namespace ZelVrfSelectionPolicy;

/// Succeeds always.
class Chip final : public VrfHelper {
 public:
  Chip(const VrfSm::FallbackConfigPtr& fallback, const VrfSm::RouteStatusPtr& routes,
       const VrfSm::RouteStatus6Ptr& routes6)
      : VrfHelper("chip", fallback, routes, routes6) {}
  HwStatus createVrf(const VrfAction& /*action*/) override { return {}; }
  HwStatus updateVrf(const VrfAction& /*action*/) override { return {}; }
  void deleteVrf(const VrfAction& /*action*/) override {}
};

// One VRF "red" with everything, which falls back to "blue".
class UmbrellaHeader : public ::testing::Test {
 protected:
  UmbrellaHeader() {
    routes->vrfStatusIs("red")->vrfIdIs(7);
    routes->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(24);
    routes6->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(64);
    fallback->fallbackVrfIs("red", "blue");
    top->vrfSmIs(users, statuses, chip, fallback, routes, routes6);
  }

  VrfSm& vrfSm() { return *top->vrfSm(); }

  Mox::Ptr<VrfHwConfig> users = vrfHwConfigFactory();
  Mox::Ptr<VrfHwStatus> statuses = vrfHwStatusFactory();
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<VrfHelper> chip = Mox::makePtr<Chip>(fallback, routes, routes6);
  Mox::Ptr<PolicySmMounts> mounts = policySmMountsFactory();
  Mox::Ptr<ZelVrfSelectionPolicySm> top =
      zelVrfSelectionPolicySmFactory(nullptr, mounts, chip, fallback, routes, routes6);
};

TEST_F(UmbrellaHeader, GivesTheInputsOfTheTopObject) {
  EXPECT_EQ(top->policyHelper(), nullptr);
  EXPECT_EQ(top->policySmMounts()->references(), 2U);
  EXPECT_EQ(top->vrfHelper()->name(), "chip");
  EXPECT_EQ(top->vrfFallbackConfig()->fallbackVrf("red"), L3::VrfName("blue"));
  EXPECT_EQ(top->routingHwRouteStatus()->vrfStatus("red")->vrfId(), 7U);
  EXPECT_TRUE(top->routing6HwRouteStatus()->vrfPrefixLensInExactMatch("red")->prefixLenHas(64));
}

TEST_F(UmbrellaHeader, GivesTheVrfMachineWithItsInputs) {
  EXPECT_EQ(top->vrfSm()->vrfHwConfig()->vrfRefCount().count(), 0U);
  EXPECT_EQ(top->vrfSm()->vrfHwStatus()->hwStatus().count(), 0U);
  EXPECT_EQ(vrfSm().vrfHelper()->vrfFallbackConfig(), fallback);
  EXPECT_EQ(vrfSm().vrfHelper()->routingHwRouteStatus()->vrfStatus().count(), 1U);
  EXPECT_EQ(vrfSm().vrfHelper()->routing6HwRouteStatus()->vrfStatus().count(), 0U);
  EXPECT_TRUE(vrfSm().vrfFallbackConfig()->fallbackVrfHas("red"));
  EXPECT_FALSE(vrfSm().routingHwRouteStatus()->decapNhEnabled());
  EXPECT_FALSE(vrfSm().routing6HwRouteStatus()->decapNhEnabled());
  EXPECT_EQ(vrfSm().fwkType()->name, "ZelVrfSelectionPolicy::VrfSm");
}

TEST_F(UmbrellaHeader, GivesThePolicyMachineWithItsInputs) {
  const auto policySm = top->policySmIs(
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      nullptr, nullptr, nullptr, nullptr, nullptr, true, false, nullptr, nullptr, nullptr, nullptr,
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, false, true, false, nullptr);
  EXPECT_EQ(top->policySm(), policySm);
  EXPECT_TRUE(top->policySm()->inputs().permitFragment);
  EXPECT_TRUE(top->policySm()->allowL2Intf());
  EXPECT_TRUE(policySm->ready());
  EXPECT_FALSE(top->policySmDel()->hasNotificationActive());
}

TEST_F(UmbrellaHeader, GivesVrfInstances) {
  const auto instance = vrfSm().vrfInstanceIs(routes->vrfStatus("red"));
  EXPECT_EQ(instance->vrfName(), L3::VrfName("red"));
  EXPECT_EQ(instance->vrfInstance()->vrfId(), 7U);
  EXPECT_EQ(instance->vrfSm(), &vrfSm());
  for (auto entry = vrfSm().moxVrfInstance().iterator(); entry; ++entry)
    EXPECT_EQ(entry.value()->vrfInstanceName(), entry.key());
  EXPECT_EQ(vrfSm().vrfInstanceDel("red")->fwkKey(), L3::VrfName("red"));
}

TEST_F(UmbrellaHeader, GivesMachinesOfPrefixLengths) {
  for (auto entry = vrfSm().vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
    EXPECT_TRUE(entry.value()->prefixLens()->prefixLenHas(24));
    EXPECT_EQ(entry.value()->vrfSm(), &vrfSm());
  }
  for (auto entry = vrfSm().vrfPrefixLensInExactMatchV6().iterator(); entry; ++entry) {
    EXPECT_TRUE(entry.value()->prefixLens()->prefixLenHas(64));
    EXPECT_EQ(entry.value()->vrfSm(), &vrfSm());
  }
  EXPECT_EQ(vrfSm().vrfPrefixLensInExactMatch().count(), 1U);
  EXPECT_EQ(vrfSm().vrfPrefixLensInExactMatchV6().count(), 1U);
}

TEST_F(UmbrellaHeader, GivesRecordsOfDependents) {
  for (auto entry = vrfSm().dependentVrfInfo().iterator(); entry; ++entry)
    EXPECT_TRUE(entry.value()->dependentVrfs("red"));
  EXPECT_EQ(vrfSm().dependentVrfInfo("blue")->fallbackVrf(), L3::VrfName("blue"));
  EXPECT_EQ(vrfSm().dependentVrfInfoIs("grey")->dependentVrfs().count(), 0U);
  EXPECT_EQ(vrfSm().dependentVrfInfoDel("grey")->fallbackVrf(), L3::VrfName("grey"));
  EXPECT_EQ(vrfSm().fallbackVrfInfo().count(), 1U);
}

TEST_F(UmbrellaHeader, GivesTheRecordsOfTheTables) {
  const VrfAction action("red", PolicyMap::ActionType::vrf);
  EXPECT_EQ(users->vrfRefCountInc(action, 1), 1U);
  EXPECT_EQ(statuses->hwStatus(action).status(), ProgrammingResult::programmedInHw);
  EXPECT_EQ(statuses->hwStatus(action).failureReason(), FailureCode::failureNone);
  EXPECT_TRUE(users->publisher().hasSubscribers());
  EXPECT_FALSE(statuses->publisher().hasSubscribers());
  EXPECT_EQ(namespacePrefix, "ns-");
}

}  // namespace
