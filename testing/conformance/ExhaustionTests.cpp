// A chip without a free resource, and its recovery.

#include "testing/Shown.h"
#include "testing/VrfHelperConformance.h"
#include "testing/conformance/Bench.h"
#include "testing/conformance/Contract.h"
#include "testing/conformance/TestFiles.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace Conformance {

void linkExhaustionTests() {}

}  // namespace Conformance

using namespace Conformance;

TEST_P(VrfHelperConformance, AFullChipRefusesBecauseItIsExhausted) {
  const Filling filling = bench().fill();
  const std::size_t held = filling.held.size();
  EXPECT_TRUE(filling.refusal)
      << held << " creations were reported as programmed, and none was refused; if so many do fit, "
      << "make a smaller chip in makeHelper, or override mostCreations\n"
      << contract("success is the outcome of an action that is programmed in hardware");
  if (filling.refusal) {
    EXPECT_EQ(filling.refusal->failureReason(), FailureCode::failureVrfResourceExhausted)
        << "after " << held << " creations createVrf returned " << *filling.refusal << '\n'
        << contract("without a free resource createVrf fails by \"failureVrfResourceExhausted\"");
  }
  if (const auto capacity = bench().chip().capacity()) {
    EXPECT_EQ(held, *capacity)
        << "creations were reported as programmed by a chip that tells this capacity\n"
        << contract(freeResourcesAreAvailable);
  }
}

TEST_P(VrfHelperConformance, ARefusedCreationTakesNothing) {
  const Occupancy before = bench().occupancy();
  const Filling filling = bench().fill();
  for (const char* vrf : {"red", "blue", "green"}) {
    (void)bench().create(bench().plain(vrf));
    bench().remove(bench().plain(vrf));
  }
  for (const VrfAction& action : filling.held) {
    EXPECT_TRUE(isProgrammed(bench().update(action)))
        << "update of " << shown(action) << ", which the chip held when others were refused\n"
        << contract("deleting an action touches no other");
  }
  bench().empty(filling);
  EXPECT_EQ(bench().occupancy(), before) << contract(
      "deleteVrf of an action whose creation failed leaves nothing of it, and takes "
      "nothing from others");
}

TEST_P(VrfHelperConformance, AfterADeletionACreationFitsAgain) {
  const Filling filling = bench().fill();
  ASSERT_FALSE(filling.held.empty()) << "nothing fits into an empty chip\n"
                                     << contract(freeResourcesAreAvailable);
  if (filling.refusal) bench().remove(filling.refused);
  bench().remove(filling.held.front());
  const VrfAction next = bench().plain("red");
  EXPECT_TRUE(isProgrammed(bench().create(next)))
      << "createVrf after the deletion of one of " << filling.held.size() << " actions\n"
      << contract(deletionFrees);
}

TEST_P(VrfHelperConformance, AsManyActionsFitAfterAllAreDeletedAsBefore) {
  const Occupancy before = bench().occupancy();
  const Filling first = bench().fill();
  bench().empty(first);
  const Filling second = bench().fill();
  EXPECT_EQ(second.held.size(), first.held.size())
      << "actions fit into the chip, filled once more\n"
      << contract(deletionFrees);
  bench().empty(second);
  EXPECT_EQ(bench().occupancy(), before) << contract(deletionFrees);
}

}  // namespace ZelVrfSelectionPolicy::Testing
