// Updates, with and without changes of facts.

#include "testing/Shown.h"
#include "testing/VrfHelperConformance.h"
#include "testing/conformance/Bench.h"
#include "testing/conformance/Contract.h"
#include "testing/conformance/FactChanges.h"
#include "testing/conformance/TestFiles.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace Conformance {

void linkUpdateTests() {}

namespace {

// The comparable state of an action: whether it is programmed, and its contents.
std::string stateOf(const Bench& bench, const VrfAction& action, const HwStatus& status) {
  const std::string result = stringValue(status.status()).str();
  return result + " " + bench.chip().programOf(action).value_or("");
}

}  // namespace
}  // namespace Conformance

using namespace Conformance;

TEST_P(VrfHelperConformance, EqualUpdatesGiveEqualOutcomesAndTakeNoResource) {
  const VrfAction action = bench().plain("red");
  ASSERT_TRUE(isProgrammed(bench().create(action))) << "on an empty chip\n"
                                                    << contract(freeResourcesAreAvailable);
  const Occupancy before = bench().occupancy();
  const auto program = bench().chip().programOf(action);
  for (int times = 0; times < 3; ++times) {
    EXPECT_EQ(result(bench().update(action)), "programmed")
        << "updateVrf of what was created by the same facts\n"
        << contract("updateVrf is also called when nothing changed, and must be idempotent");
  }
  EXPECT_EQ(bench().occupancy(), before)
      << "after three updates by the same facts\n"
      << contract("updateVrf programs the resource that the action has, and must be idempotent");
  EXPECT_EQ(bench().chip().programOf(action), program) << contract("updateVrf must be idempotent");
  const VrfAction unknown = bench().withoutId("unknown");
  (void)bench().create(unknown);
  const HwStatus first = bench().update(unknown);
  EXPECT_EQ(bench().update(unknown), first)
      << "updateVrf of " << shown(unknown) << ", for the second time by the same facts\n"
      << contract("equal updates give equal records");
}

TEST_P(VrfHelperConformance, AnUpdateProgramsWhatACreationByTheSameFactsDoes) {
  for (const VrfAction& action : {bench().plain("red"), bench().decapsulating()}) {
    for (const FactChange& change : factChanges()) {
      const bool wasProgrammed = isProgrammed(bench().create(action));
      change.make(bench().facts());
      const std::string updated = stateOf(bench(), action, bench().update(action));
      bench().remove(action);
      const std::string created = stateOf(bench(), action, bench().create(action));
      bench().remove(action);
      change.undo(bench().facts());
      if (!wasProgrammed) continue;
      EXPECT_EQ(updated, created) << "updateVrf of " << shown(action) << ", compared with its "
                                  << "creation, after " << change.what << '\n'
                                  << contract(
                                         "updateVrf programs the resource anew, by the facts "
                                         "as they are at that moment");
    }
  }
}

}  // namespace ZelVrfSelectionPolicy::Testing
