// Failed creations and updates, and the deletion after them.

#include "testing/Shown.h"
#include "testing/VrfHelperConformance.h"
#include "testing/conformance/Bench.h"
#include "testing/conformance/Contract.h"
#include "testing/conformance/TestFiles.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace Conformance {

void linkFailureTests() {}

}  // namespace Conformance

using namespace Conformance;

TEST_P(VrfHelperConformance, AFailedCreationLeavesNothingBehindItsDeletion) {
  const Occupancy before = bench().occupancy();
  const VrfAction unknown = bench().withoutId("unknown");
  (void)bench().create(unknown);
  bench().remove(unknown);
  if (bench().chip().failNextHook()) {
    EXPECT_FALSE(isProgrammed(bench().create(bench().plain("red"))))
        << "createVrf after failNextHook, which said that it would fail\n"
        << contract("a hook must not return before it knows the outcome");
    bench().remove(bench().plain("red"));
  }
  EXPECT_EQ(bench().occupancy(), before) << contract(
      "an action whose creation failed is deleted like any other, and then nothing of "
      "it is left");
}

TEST_P(VrfHelperConformance, AnUpdateAfterAFailedCreationTakesNothingThatItsDeletionDoesNotFree) {
  const Occupancy before = bench().occupancy();
  const VrfAction late = bench().withoutId("late");
  (void)bench().create(late);
  (void)bench().update(late);
  (void)bench().update(bench().plain("late"));  // its VRF has an id now
  bench().remove(late);
  EXPECT_EQ(bench().occupancy(), before)
      << contract("an action whose creation failed is updated, and deleted, like any other");
}

TEST_P(VrfHelperConformance, AFailedUpdateLosesNoResource) {
  const Occupancy before = bench().occupancy();
  const VrfAction action = bench().plain("red");
  ASSERT_TRUE(isProgrammed(bench().create(action))) << "on an empty chip\n"
                                                    << contract(freeResourcesAreAvailable);
  if (bench().chip().failNextHook()) {
    EXPECT_FALSE(isProgrammed(bench().update(action)))
        << "updateVrf after failNextHook, which said that it would fail\n"
        << contract("a hook must not return before it knows the outcome");
  }
  (void)bench().update(bench().withoutId("red"));
  bench().remove(action);
  EXPECT_EQ(bench().occupancy(), before)
      << contract("deleteVrf frees what its action holds, whatever became of its updates");
}

}  // namespace ZelVrfSelectionPolicy::Testing
