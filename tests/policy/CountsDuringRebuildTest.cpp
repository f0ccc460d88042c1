// While a machine is built in the place of another, a hook changes a count. Whichever machine
// remains, that leads to one call of the chip.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "RebuildWorld.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAreArray;

using Lines = std::vector<std::string>;

/// Something that a hook may do, and the creations and deletions that it leads to, in order.
struct CountChange {
  const char* name;
  void (*happen)(VrfHwConfig& users);
  Lines calls;

  friend std::ostream& operator<<(std::ostream& out, const CountChange& change) {
    return out << change.name;
  }
};

const VrfAction red = lookUpIn("red");
const VrfAction spare = lookUpIn("spare");

const CountChange changes[] = {
    {"FirstUserComes",
     [](VrfHwConfig& users) { users.vrfRefCountInc(spare, 1); },
     {"createVrf spare"}},
    {"TwoUsersCome",
     [](VrfHwConfig& users) {
       users.vrfRefCountInc(spare, 1);
       users.vrfRefCountInc(spare, 1);
     },
     {"createVrf spare"}},
    {"FurtherUserComes", [](VrfHwConfig& users) { users.vrfRefCountInc(red, 1); }, {}},
    {"LastUserLeaves", [](VrfHwConfig& users) { users.vrfRefCountDec(red, 1); }, {"deleteVrf red"}},
    {"CountGoes", [](VrfHwConfig& users) { users.vrfRefCountDel(red); }, {"deleteVrf red"}},
    {"UserComesAndLeaves",
     [](VrfHwConfig& users) {
       users.vrfRefCountInc(spare, 1);
       users.vrfRefCountDec(spare, 1);
     },
     {"createVrf spare", "deleteVrf spare"}},
    {"UserComesAndCountGoes",
     [](VrfHwConfig& users) {
       users.vrfRefCountInc(spare, 1);
       users.vrfRefCountDel(spare);
     },
     {"createVrf spare", "deleteVrf spare"}},
    {"LastUserLeavesAndAnotherComes",
     [](VrfHwConfig& users) {
       users.vrfRefCountDec(red, 1);
       users.vrfRefCountInc(red, 1);
     },
     {"deleteVrf red", "createVrf red"}},
};

using CountCase = std::tuple<CountChange, Difference>;

class CountsDuringRebuild : public ::testing::TestWithParam<CountCase> {
 protected:
  static const CountChange& change() { return std::get<CountChange>(GetParam()); }

  static Lines creationsAndDeletions(const Lines& calls) {
    Lines lines;
    for (const std::string& call : calls) {
      if (!call.starts_with("updateVrf ")) lines.push_back(call);
    }
    return lines;
  }

  /// In each call of the construction in turn. Returns how many there are.
  static unsigned expectOneCallEach(Outcome outcome, unsigned further) {
    unsigned call = 1;
    for (; !HasFailure(); ++call) {
      RebuildWorld world(std::get<Difference>(GetParam()), outcome);
      const bool isCall = world.rebuild(
          call, [](MachineInputs& remaining) { change().happen(*remaining.users); }, further);
      if (!isCall) break;
      SCOPED_TRACE("in call " + std::to_string(call) + ", and " + std::to_string(further) +
                   " further ones");
      EXPECT_THAT(creationsAndDeletions(world.takeCalls()), ElementsAreArray(change().calls));
      EXPECT_EQ(world.difference(), "");
      if (call == 1) {
        EXPECT_EQ(world.unfollowedFacts(), "");
      }
    }
    return call - 1;
  }
};

TEST_P(CountsDuringRebuild, LeadToOneCallEachWhenTheNewMachineIsComplete) {
  EXPECT_GE(expectOneCallEach(Outcome::succeeds, 0), 8U);
}

TEST_P(CountsDuringRebuild, LeadToOneCallEachWhenTheConstructionThrows) {
  EXPECT_GE(expectOneCallEach(Outcome::throws, 0), 4U);
  EXPECT_GE(expectOneCallEach(Outcome::throws, 3), 1U);
}

INSTANTIATE_TEST_SUITE_P(Each, CountsDuringRebuild,
                         testing::Combine(testing::ValuesIn(changes),
                                          testing::ValuesIn(differences)),
                         nameOfRebuild);

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
