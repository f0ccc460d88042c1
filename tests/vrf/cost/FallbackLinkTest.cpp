#include <gtest/gtest.h>

#include <new>

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "tests/vrf/cost/Allocations.h"
#include "tests/vrf/cost/CountingChip.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

class FallbackLink : public ::testing::Test {
 protected:
  FallbackLink()
      : vrfSm(VrfSm::VrfSmIs(VrfHwConfig::VrfHwConfigIs(), VrfHwStatus::VrfHwStatusIs(),
                             Mox::makePtr<CountingChip>(), fallback, nullptr, nullptr)) {
    fallback->fallbackVrfIs(v, x);
  }

  bool dependsOn(const L3::VrfName& on) const {
    const auto record = vrfSm->dependentVrfInfo(on);
    return record && record->dependentVrfs(v);
  }

  // Changes the fallback VRF from X to Y; false when the allocation after `further` failed in it.
  bool changeWithAllocations(std::size_t further) const {
    Allocations::failAfter(further);
    try {
      fallback->fallbackVrfIs(v, y);
    } catch (const std::bad_alloc&) {
      return false;
    }
    static_cast<void>(Allocations::failureWithdrawn());
    return true;
  }

  const L3::VrfName v{"v"};
  const L3::VrfName x{"X"};
  const L3::VrfName y{"Y"};
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<VrfSm> vrfSm;
};

// That the new link comes before the old one goes shows when the change is cut short.
TEST_F(FallbackLink, VrfIsInTheNewSetBeforeItLeavesTheOldOneWhereverMemoryEnds) {
  std::size_t further = 0;
  while (!changeWithAllocations(further)) {
    SCOPED_TRACE(further);
    EXPECT_TRUE(dependsOn(x));
    fallback->fallbackVrfIs(v, x);
    ASSERT_TRUE(dependsOn(x));
    ASSERT_LT(++further, 100U);
  }
  EXPECT_GT(further, 0U);
  EXPECT_TRUE(dependsOn(y));
  EXPECT_EQ(vrfSm->dependentVrfInfo(x), nullptr);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
