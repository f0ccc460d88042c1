// Deletions.

#include <algorithm>
#include <random>
#include <set>

#include "testing/RandomSeed.h"
#include "testing/Shown.h"
#include "testing/VrfHelperConformance.h"
#include "testing/conformance/Bench.h"
#include "testing/conformance/Contract.h"
#include "testing/conformance/FactChanges.h"
#include "testing/conformance/TestFiles.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace Conformance {

void linkDeletionTests() {}

namespace {

// Random hook calls for a few actions, in an order that the contract allows.
class RandomCalls {
 public:
  RandomCalls(Bench& bench, std::uint32_t seed)
      : bench_(bench),
        random_(seed),
        actions_({bench.plain("red"), bench.plain("blue"), bench.plain("default"),
                  bench.decapsulating(), bench.withoutId("unknown")}) {}

  void step() {
    switch (below(4)) {
      case 0:
        changeAFact();
        break;
      case 1:
        if (bench_.chip().failNextHook()) call(anAction(), true);
        break;
      default:
        const bool update = below(2) == 0;
        call(anAction(), update);
    }
  }

  void end() {
    for (const VrfAction& action : created_)
      bench_.remove(action);
    for (const FactChange& change : factChanges())
      change.undo(bench_.facts());
  }

 private:
  std::size_t below(std::size_t count) { return random_() % count; }
  const VrfAction& anAction() { return actions_[below(actions_.size())]; }

  // A change that is reversed may not have been made.
  void changeAFact() {
    const FactChange& change = factChanges()[below(factChanges().size())];
    (below(2) == 0 ? change.make : change.undo)(bench_.facts());
  }

  // The next call for the action: its creation, or an update or its deletion.
  void call(const VrfAction& action, bool update) {
    if (created_.insert(action).second) {
      (void)bench_.create(action);
    } else if (update) {
      (void)bench_.update(action);
    } else {
      bench_.remove(action);
      created_.erase(action);
    }
  }

  Bench& bench_;
  std::mt19937 random_;
  std::vector<VrfAction> actions_;
  std::set<VrfAction> created_;
};

}  // namespace
}  // namespace Conformance

using namespace Conformance;

TEST_P(VrfHelperConformance, DeletingWhatWasNeverCreatedTouchesNothing) {
  const VrfAction present = bench().plain("red");
  ASSERT_TRUE(isProgrammed(bench().create(present))) << "on an empty chip\n"
                                                     << contract(freeResourcesAreAvailable);
  const Occupancy before = bench().occupancy();
  bench().remove(bench().plain("blue"));
  bench().remove(bench().withoutId("unknown"));
  EXPECT_EQ(bench().occupancy(), before)
      << contract("deleteVrf is also called for an action that was never created");
  EXPECT_TRUE(isProgrammed(bench().update(present)))
      << "update of " << shown(present) << " after others were deleted\n"
      << contract("deleting an action touches no other");
}

TEST_P(VrfHelperConformance, ADeletedActionCanBeCreatedAgain) {
  const VrfAction action = bench().plain("red");
  for (int life = 1; life <= 3; ++life) {
    EXPECT_EQ(result(bench().create(action)), "programmed")
        << "createVrf of " << shown(action) << " for its life number " << life << '\n'
        << contract("for one action the order is creation, updates, deletion, and again");
    bench().remove(action);
  }
}

TEST_P(VrfHelperConformance, AnyOrderOfCallsLeavesNothingBehind) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  const Occupancy before = bench().occupancy();
  RandomCalls calls(bench(), seed.value());
  for (int steps = 0; steps < 400; ++steps)
    calls.step();
  calls.end();
  EXPECT_EQ(bench().occupancy(), before)
      << contract("deleteVrf frees what its action holds, whatever happened before");
}

}  // namespace ZelVrfSelectionPolicy::Testing
