#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "tests/vrf/DrivenVrfSm.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A machine whose nested machines can be compared with what they are to follow, and a chip that
/// does some work during the first update.
class NestedMachines : public DrivenVrfSmTest {
 protected:
  NestedMachines() { start(); }

  void duringFirstUpdate(std::function<void(const VrfAction&)> work) {
    chip->onUpdate = [this, work = std::move(work)](const VrfAction& action) {
      const VrfAction updated = action;
      if (++updates_ == 1) work(updated);
      return HwStatus();
    };
  }

  // The machines are those of what the route statuses hold, and watch exactly that.
  void expectMachinesInStep() const {
    EXPECT_EQ(vrfSm->moxVrfInstance().count(), routes->vrfStatus().count());
    for (auto entry = routes->vrfStatus().iterator(); entry; ++entry) {
      const auto* instance = vrfSm->moxVrfInstance().find(entry.key());
      ASSERT_NE(instance, nullptr) << entry.key();
      EXPECT_EQ((*instance)->vrfInstance(), entry.value());
    }
    expectInStep(vrfSm->vrfPrefixLensInExactMatch(), *routes);
    expectInStep(vrfSm->vrfPrefixLensInExactMatchV6(), *routes6);
  }

  template <class Machines>
  static void expectInStep(const Machines& machines,
                           const Routing::Hardware::RouteStatusBase& routeStatus) {
    EXPECT_EQ(machines.count(), routeStatus.vrfPrefixLensInExactMatch().count());
    for (auto entry = routeStatus.vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
      const auto* machine = machines.find(entry.key());
      ASSERT_NE(machine, nullptr) << entry.key();
      EXPECT_EQ((*machine)->prefixLens(), entry.value());
      EXPECT_FALSE((*machine)->isZombie());
      EXPECT_TRUE((*machine)->hasNotificationActive());
    }
  }

  int updates_ = 0;
};

}  // namespace ZelVrfSelectionPolicy::Testing
