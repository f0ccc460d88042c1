// Two VRF state machines on the same tables at once, as there are while one takes the place of the
// other, and whatever can happen meanwhile.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"
#include "testing/Journal.h"
#include "testing/RecordingVrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Calls = std::map<std::string, int>;

/// All that the machines work on. Red has a resource with one user, green one with two.
struct Inputs {
  Mox::Ptr<VrfHwConfig> users = vrfHwConfigFactory();
  Mox::Ptr<VrfHwStatus> statuses = vrfHwStatusFactory();
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  const VrfAction red{"red", PolicyMap::ActionType::vrf};
  const VrfAction green{"green", PolicyMap::ActionType::vrf};
  const VrfAction late{"late", PolicyMap::ActionType::vrf};
};

/// Something that may happen, and the calls that it is to bring about.
struct Happening {
  const char* name;
  void (*happen)(Inputs& inputs);
  Calls calls;

  friend std::ostream& operator<<(std::ostream& out, const Happening& happening) {
    return out << happening.name;
  }
};

// Of resources: whoever is told first makes the call, and nobody makes it again.
const Happening ofUsers[] = {
    {"FirstUserComes",
     [](Inputs& in) { in.users->vrfRefCountInc(in.late, 1); },
     {{"createVrf late", 1}}},
    {"FurtherUserComes", [](Inputs& in) { in.users->vrfRefCountInc(in.red, 1); }, {}},
    {"OneOfTwoUsersLeaves", [](Inputs& in) { in.users->vrfRefCountDec(in.green, 1); }, {}},
    {"LastUserLeaves",
     [](Inputs& in) { in.users->vrfRefCountDec(in.red, 1); },
     {{"deleteVrf red", 1}}},
    {"AllUsersLeave",
     [](Inputs& in) { in.users->vrfRefCountIs(in.green, 0); },
     {{"deleteVrf green", 1}}},
    {"CountGoes", [](Inputs& in) { in.users->vrfRefCountDel(in.green); }, {{"deleteVrf green", 1}}},
    {"AllCountsGo",
     [](Inputs& in) { in.users->vrfRefCountDelAll(); },
     {{"deleteVrf red", 1}, {"deleteVrf green", 1}}},
    {"UserComesAndGoes",
     [](Inputs& in) {
       in.users->vrfRefCountInc(in.late, 1);
       in.users->vrfRefCountDec(in.late, 1);
     },
     {{"createVrf late", 1}, {"deleteVrf late", 1}}},
};

// Of what resources depend on: each machine that follows it brings them up to date.
const Happening ofSurroundings[] = {
    {"VrfGetsItsId",
     [](Inputs& in) { in.routes->vrfStatus("green")->vrfIdIs(9); },
     {{"updateVrf green", 1}}},
    {"VrfStatusGoes",
     [](Inputs& in) { in.routes->vrfStatusDel("green"); },
     {{"updateVrf green", 1}}},
    {"VrfStatusIsReplaced",
     [](Inputs& in) {
       const auto other = Routing::Hardware::VrfStatus::VrfStatusIs("green");
       other->vrfIdIs(9);
       in.routes->vrfStatusIs(other);
     },
     {{"updateVrf green", 1}}},
    {"LengthComes",
     [](Inputs& in) { in.routes->vrfPrefixLensInExactMatch("red")->prefixLenIs(24); },
     {{"updateVrf red", 1}}},
    {"LengthsCome", [](Inputs& in) { in.routes->vrfPrefixLensInExactMatchIs("late"); }, {}},
    {"LengthsGo",
     [](Inputs& in) { in.routes->vrfPrefixLensInExactMatchDel("red"); },
     {{"updateVrf red", 1}}},
    {"Lengths6Come",
     [](Inputs& in) { in.routes6->vrfPrefixLensInExactMatchIs("red"); },
     {{"updateVrf red", 1}}},
    {"FallbackIsSet",
     [](Inputs& in) { in.fallback->fallbackVrfIs("green", "blue"); },
     {{"updateVrf green", 1}}},
    {"FallbackGoes", [](Inputs& in) { in.fallback->fallbackVrfDel("late"); }, {}},
    {"DecapNextHopsAreSwitched",
     [](Inputs& in) { in.routes->decapNhEnabledIs(true); },
     {{"updateVrf red", 1}, {"updateVrf green", 1}}},
    {"DecapNextHopFallbackIsSwitched",
     [](Inputs& in) { in.routes->decapNhFallbackEnabledIs(true); },
     {{"updateVrf red", 1}, {"updateVrf green", 1}}},
};

// While one is built, these are the lengths for which its last call is made.
const Happening ofLastLengths[] = {
    {"Length6Comes",
     [](Inputs& in) { in.routes6->vrfPrefixLensInExactMatch("green")->prefixLenIs(64); },
     {{"updateVrf green", 1}}},
};

class TwoMachines : public Inputs, public ::testing::TestWithParam<Happening> {
 protected:
  void SetUp() override {
    for (const char* vrf : {"red", "green"})
      routes->vrfStatusIs(vrf)->vrfIdIs(1);
    routes->vrfPrefixLensInExactMatchIs("red");
    routes6->vrfPrefixLensInExactMatchIs("green");
    fallback->fallbackVrfIs("late", "blue");
    installMachine();
    users->vrfRefCountInc(red, 1);
    users->vrfRefCountInc(green, 1);
    users->vrfRefCountInc(green, 1);
    ASSERT_EQ(calls(), (Calls{{"createVrf red", 1}, {"createVrf green", 1}}));
  }
  void TearDown() override { chip->onUpdate = nullptr; }

  void installMachine() { top->vrfSmIs(users, statuses, chip, fallback, routes, routes6); }
  /// Another helper is another argument, so the machine is built again on everything else.
  void rebuild() {
    chip = Mox::makePtr<RecordingVrfHelper>(journal, fallback, routes, routes6);
    installMachine();
  }
  void happen() { GetParam().happen(*this); }

  /// The calls of the chip since they were last asked for.
  Calls calls() {
    Calls counted;
    for (const std::string& line : journal.take())
      ++counted[line];
    return counted;
  }
  void expectATableOfWhatIsThere() const {
    for (auto entry = users->vrfRefCount().iterator(); entry; ++entry)
      EXPECT_TRUE(statuses->hwStatusHas(entry.key())) << entry.key().vrfName().bytes();
    EXPECT_EQ(users->vrfRefCount().count(), statuses->hwStatus().count());
  }

  Journal journal;
  Mox::Ptr<RecordingVrfHelper> chip =
      Mox::makePtr<RecordingVrfHelper>(journal, fallback, routes, routes6);
  Mox::Ptr<ZelVrfSelectionPolicySm> top =
      zelVrfSelectionPolicySmFactory(nullptr, nullptr, chip, fallback, routes, routes6);
};

class WhileOneIsBuilt : public TwoMachines {
 protected:
  /// Each creation and deletion of `wanted` once, and no other; each update at least as often, and
  /// at most twice as often.
  static void expectCalls(Calls made, const Calls& wanted) {
    for (const auto& [call, times] : wanted) {
      EXPECT_GE(made[call], times) << call;
      EXPECT_LE(made[call], call.starts_with("updateVrf ") ? 2 * times : times) << call;
      made.erase(call);
    }
    EXPECT_EQ(made, Calls());
  }
};

// The start of the new machine programs for prefix lengths, of IPv6 last; in the course of that
// call the old machine is active as well.
TEST_P(WhileOneIsBuilt, EachResourceIsCreatedAndDeletedOnceAndUpdatedAtLeastOnce) {
  const Mox::Ptr<VrfSm> old = top->vrfSm();
  chip = Mox::makePtr<RecordingVrfHelper>(journal, fallback, routes, routes6);
  chip->onUpdate = [this, hasHappened = false](const VrfAction& action) mutable {
    if (action == green && !std::exchange(hasHappened, true)) happen();
    return HwStatus();
  };
  installMachine();
  Calls wanted = GetParam().calls;
  ++wanted["updateVrf red"];
  ++wanted["updateVrf green"];
  expectCalls(calls(), wanted);
  EXPECT_NE(top->vrfSm(), old);
  EXPECT_FALSE(old->hasNotificationActive());
  EXPECT_TRUE(top->vrfSm()->hasNotificationActive());
  expectATableOfWhatIsThere();
}

class WhileTheReplacedOneIsHeld : public TwoMachines {};

TEST_P(WhileTheReplacedOneIsHeld, EachCallIsMadeOnce) {
  Mox::Ptr<VrfSm> old = top->vrfSm();
  rebuild();
  static_cast<void>(calls());
  happen();
  EXPECT_EQ(calls(), GetParam().calls);
  expectATableOfWhatIsThere();
  old = nullptr;
  EXPECT_EQ(calls(), Calls());
}

class WhileBothAreActive : public TwoMachines {
 protected:
  void SetUp() override {
    TwoMachines::SetUp();
    other = vrfSmFactory(users, statuses, chip, fallback, routes, routes6);
    static_cast<void>(calls());
  }
  Mox::Ptr<VrfSm> other;
};

TEST_P(WhileBothAreActive, AResourceIsCreatedAndDeletedOnce) {
  happen();
  EXPECT_EQ(calls(), GetParam().calls);
  expectATableOfWhatIsThere();
  top = nullptr;
  other = nullptr;
  EXPECT_EQ(calls(), Calls());
}

class WhileBothFollow : public WhileBothAreActive {};

TEST_P(WhileBothFollow, EachBringsResourcesUpToDateOnce) {
  happen();
  Calls expected = GetParam().calls;
  for (auto& [call, times] : expected)
    times *= 2;
  EXPECT_EQ(calls(), expected);
}

const auto nameOfHappening = [](const auto& happening) { return happening.param.name; };

INSTANTIATE_TEST_SUITE_P(Users, WhileOneIsBuilt, testing::ValuesIn(ofUsers), nameOfHappening);
INSTANTIATE_TEST_SUITE_P(Surroundings, WhileOneIsBuilt, testing::ValuesIn(ofSurroundings),
                         nameOfHappening);
INSTANTIATE_TEST_SUITE_P(LastLengths, WhileOneIsBuilt, testing::ValuesIn(ofLastLengths),
                         nameOfHappening);
INSTANTIATE_TEST_SUITE_P(Users, WhileTheReplacedOneIsHeld, testing::ValuesIn(ofUsers),
                         nameOfHappening);
INSTANTIATE_TEST_SUITE_P(Surroundings, WhileTheReplacedOneIsHeld, testing::ValuesIn(ofSurroundings),
                         nameOfHappening);
INSTANTIATE_TEST_SUITE_P(Users, WhileBothAreActive, testing::ValuesIn(ofUsers), nameOfHappening);
INSTANTIATE_TEST_SUITE_P(Surroundings, WhileBothFollow, testing::ValuesIn(ofSurroundings),
                         nameOfHappening);
INSTANTIATE_TEST_SUITE_P(LastLengths, WhileTheReplacedOneIsHeld, testing::ValuesIn(ofLastLengths),
                         nameOfHappening);
INSTANTIATE_TEST_SUITE_P(LastLengths, WhileBothFollow, testing::ValuesIn(ofLastLengths),
                         nameOfHappening);

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
