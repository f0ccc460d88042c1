// Hook calls by the library: for users of actions, and for changes of facts.

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "testing/Shown.h"
#include "testing/VrfHelperConformance.h"
#include "testing/conformance/Bench.h"
#include "testing/conformance/Contract.h"
#include "testing/conformance/FactChanges.h"
#include "testing/conformance/TestFiles.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace Conformance {

void linkLibraryTests() {}

namespace {

// The library's state machine, its tables, and the chip.
class Library {
 public:
  explicit Library(const Bench& bench) : bench_(bench) { machineIs(); }

  // Creates a machine, which replaces the previous one.
  void machineIs() {
    machine_ = vrfSmFactory(users_, statuses_, bench_.helper(), bench_.facts().fallbacks,
                            bench_.facts().routes, bench_.facts().routes6);
  }
  void usersAre(const VrfAction& action, unsigned count) { users_->vrfRefCountIs(action, count); }
  void use(const VrfAction& action) { usersAre(action, 1); }
  void release(const VrfAction& action) { usersAre(action, 0); }
  [[nodiscard]] HwStatus statusOf(const VrfAction& action) const {
    return statuses_->hwStatus(action);
  }

 private:
  const Bench& bench_;
  Mox::Ptr<VrfHwConfig> users_ = vrfHwConfigFactory();
  Mox::Ptr<VrfHwStatus> statuses_ = vrfHwStatusFactory();
  Mox::Ptr<VrfSm> machine_;
};

// Adds a user to one action after the other until the chip refuses one.
Filling fillByUsers(Library& library, Bench& bench) {
  Filling filling;
  const std::size_t most = bench.creationsToFill();
  for (std::size_t number = 1; number <= most && !filling.refusal; ++number) {
    const VrfAction action = bench.numbered(number);
    library.use(action);
    if (isProgrammed(library.statusOf(action))) {
      filling.held.push_back(action);
    } else {
      filling.refused = action;
      filling.refusal = library.statusOf(action);
    }
  }
  return filling;
}

}  // namespace
}  // namespace Conformance

using namespace Conformance;

TEST_P(VrfHelperConformance, UsersThatComeAndGoLeaveNothingBehind) {
  Library library(bench());
  const Occupancy before = bench().occupancy();
  const VrfAction action = bench().plain("red");
  for (const unsigned users : {1U, 2U, 3U, 1U, 0U}) {
    library.usersAre(action, users);
    EXPECT_EQ(result(library.statusOf(action)), "programmed")
        << "published with " << users << " users\n"
        << contract(freeResourcesAreAvailable);
  }
  EXPECT_EQ(bench().occupancy(), before) << "after the last user is gone\n"
                                         << contract(deletionFrees);
}

TEST_P(VrfHelperConformance, ChangesOfFactsTakeNoResourcesAndMendWhatTheyBroke) {
  Library library(bench());
  const Occupancy before = bench().occupancy();
  std::vector<VrfAction> programmed;
  for (const VrfAction& action : {bench().plain("red"), bench().decapsulating()}) {
    library.use(action);
    if (isProgrammed(library.statusOf(action))) {
      programmed.push_back(action);
    } else {
      library.release(action);  // so that it does not take what a failed update of another frees
    }
  }
  const Occupancy during = bench().occupancy();
  for (const FactChange& change : factChanges()) {
    change.make(bench().facts());
    change.undo(bench().facts());
    for (const VrfAction& action : programmed) {
      EXPECT_EQ(result(library.statusOf(action)), "programmed")
          << "published for " << shown(action) << ", after " << change.what
          << ", and all was as before again\n"
          << contract(
                 "updateVrf programs the resource anew, by the facts as they are at that "
                 "moment");
    }
  }
  EXPECT_EQ(bench().occupancy(), during) << contract("updateVrf must be idempotent");
  for (const VrfAction& action : programmed)
    library.release(action);
  EXPECT_EQ(bench().occupancy(), before) << contract(deletionFrees);
}

TEST_P(VrfHelperConformance, AFullChipRecoversWhenUsersLeave) {
  Library library(bench());
  const Occupancy before = bench().occupancy();
  const Filling filling = fillByUsers(library, bench());
  ASSERT_FALSE(filling.held.empty()) << "nothing fits into an empty chip\n"
                                     << contract(freeResourcesAreAvailable);
  library.release(filling.held.front());
  if (filling.refusal) {
    library.release(filling.refused);
    library.use(filling.refused);
    EXPECT_EQ(result(library.statusOf(filling.refused)), "programmed")
        << "published for " << shown(filling.refused) << ", which the full chip had refused, and "
        << "which got its first user again after another action had lost its last\n"
        << contract(deletionFrees);
    library.release(filling.refused);
  }
  for (std::size_t place = 1; place < filling.held.size(); ++place)
    library.release(filling.held[place]);
  EXPECT_EQ(bench().occupancy(), before) << "after the last user is gone\n"
                                         << contract(deletionFrees);
}

TEST_P(VrfHelperConformance, ResourcesOutliveTheStateMachineThatAskedForThem) {
  Library library(bench());
  const Occupancy before = bench().occupancy();
  const VrfAction action = bench().plain("red");
  library.use(action);
  const Occupancy during = bench().occupancy();
  library.machineIs();
  factChanges().front().make(bench().facts());
  EXPECT_EQ(result(library.statusOf(action)), "programmed")
      << "published after another state machine had taken over, and a hardware id had changed\n"
      << contract("resources outlive the state machine that asked for them");
  EXPECT_EQ(bench().occupancy(), during)
      << contract("resources outlive the state machine that asked for them");
  library.release(action);
  EXPECT_EQ(bench().occupancy(), before) << contract(deletionFrees);
}

}  // namespace ZelVrfSelectionPolicy::Testing
