// While a machine is built in the place of another, a hook changes a fact that resources depend on.
// Whichever machine remains, no resource is stale and nothing is unfollowed afterwards.

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>

#include "RebuildWorld.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Routing::Hardware::PrefixLensInExactMatch;
using Routing::Hardware::VrfStatus;

/// Something that a hook may do.
struct FactChange {
  const char* name;
  void (*happen)(Facts& facts);

  friend std::ostream& operator<<(std::ostream& out, const FactChange& change) {
    return out << change.name;
  }
};

template <class Routes>
void replaceLengths(Routes& routes, const char* vrf) {
  const auto other = PrefixLensInExactMatch::PrefixLensInExactMatchIs(vrf);
  other->prefixLenIs(routes.vrfPrefixLensInExactMatch(vrf)->prefixLenHas(1) ? 1 : 2);
  routes.vrfPrefixLensInExactMatchIs(other);
  other->prefixLenIs(3);
}

const FactChange ofVrfs[] = {
    {"IdOfAVrf", [](Facts& in) { in.routes->vrfStatus("red")->vrfIdIs(70); }},
    {"IdOfAFallbackVrf", [](Facts& in) { in.routes->vrfStatus("blue")->vrfIdIs(70); }},
    {"IdOfTheLastFallbackVrf", [](Facts& in) { in.routes->vrfStatus("grey")->vrfIdIs(70); }},
    {"IdOfAVrfWithoutLengths", [](Facts& in) { in.routes->vrfStatus("green")->vrfIdIs(70); }},
    {"IdOfAFallbackVrfWithoutLengths",
     [](Facts& in) { in.routes->vrfStatus("white")->vrfIdIs(70); }},
    {"VrfWithoutLengthsGoes", [](Facts& in) { in.routes->vrfStatusDel("green"); }},
    {"FallbackVrfWithoutLengthsGoes", [](Facts& in) { in.routes->vrfStatusDel("white"); }},
    {"VrfWithoutLengthsGoesAndComesBackWithAnId",
     [](Facts& in) {
       in.routes->vrfStatusDel("white");
       in.routes->vrfStatusIs("white")->vrfIdIs(70);
     }},
    {"VrfWithoutLengthsIsReplaced",
     [](Facts& in) {
       const auto other = VrfStatus::VrfStatusIs("white");
       other->vrfIdIs(70);
       in.routes->vrfStatusIs(other);
     }},
    {"IdTwice",
     [](Facts& in) {
       in.routes->vrfStatus("blue")->vrfIdIs(70);
       in.routes->vrfStatus("blue")->vrfIdIs(71);
     }},
    {"VrfComes", [](Facts& in) { in.routes->vrfStatusIs("solo")->vrfIdIs(70); }},
    {"VrfGoes", [](Facts& in) { in.routes->vrfStatusDel("red"); }},
    {"FallbackVrfGoes", [](Facts& in) { in.routes->vrfStatusDel("blue"); }},
    {"LastFallbackVrfGoes", [](Facts& in) { in.routes->vrfStatusDel("grey"); }},
    {"AllVrfsGo", [](Facts& in) { in.routes->vrfStatusDelAll(); }},
    {"VrfGoesAndComesBackWithoutAnId",
     [](Facts& in) {
       in.routes->vrfStatusDel("blue");
       in.routes->vrfStatusIs("blue");
     }},
    {"VrfGoesAndComesBackWithAnId",
     [](Facts& in) {
       in.routes->vrfStatusDel("blue");
       in.routes->vrfStatusIs("blue")->vrfIdIs(70);
     }},
    {"VrfIsReplaced",
     [](Facts& in) {
       const auto other = VrfStatus::VrfStatusIs("blue");
       other->vrfIdIs(70);
       in.routes->vrfStatusIs(other);
     }},
    {"VrfIsReplacedAndGetsItsId",
     [](Facts& in) {
       const auto other = VrfStatus::VrfStatusIs("red");
       in.routes->vrfStatusIs(other);
       other->vrfIdIs(70);
     }},
};

const FactChange ofLengths[] = {
    {"LengthComes", [](Facts& in) { in.routes->vrfPrefixLensInExactMatch("red")->prefixLenIs(3); }},
    {"LengthOfAFallbackVrfComes",
     [](Facts& in) { in.routes->vrfPrefixLensInExactMatch("blue")->prefixLenIs(3); }},
    {"LengthGoes",
     [](Facts& in) { in.routes->vrfPrefixLensInExactMatch("grey")->prefixLenDel(1); }},
    {"LengthsCome",
     [](Facts& in) { in.routes->vrfPrefixLensInExactMatchIs("solo")->prefixLenIs(3); }},
    {"LengthsComeWhole",
     [](Facts& in) {
       const auto whole = PrefixLensInExactMatch::PrefixLensInExactMatchIs("solo");
       whole->prefixLenIs(3);
       in.routes->vrfPrefixLensInExactMatchIs(whole);
     }},
    {"LengthsGo", [](Facts& in) { in.routes->vrfPrefixLensInExactMatchDel("red"); }},
    {"LengthsOfAFallbackVrfGo", [](Facts& in) { in.routes->vrfPrefixLensInExactMatchDel("blue"); }},
    {"LengthsGoAndComeBack",
     [](Facts& in) {
       in.routes->vrfPrefixLensInExactMatchDel("blue");
       in.routes->vrfPrefixLensInExactMatchIs("blue");
     }},
    {"LengthsComeAndGo",
     [](Facts& in) {
       in.routes->vrfPrefixLensInExactMatchIs("solo")->prefixLenIs(3);
       in.routes->vrfPrefixLensInExactMatchDel("solo");
     }},
    {"LengthsAreReplaced", [](Facts& in) { replaceLengths(*in.routes, "blue"); }},
    {"AllLengthsGo", [](Facts& in) { in.routes->vrfPrefixLensInExactMatchDelAll(); }},
    {"Length6Comes",
     [](Facts& in) { in.routes6->vrfPrefixLensInExactMatch("red")->prefixLenIs(3); }},
    {"Length6OfAFallbackVrfComes",
     [](Facts& in) { in.routes6->vrfPrefixLensInExactMatch("blue")->prefixLenIs(3); }},
    {"Length6Goes",
     [](Facts& in) { in.routes6->vrfPrefixLensInExactMatch("grey")->prefixLenDel(2); }},
    {"Lengths6Come",
     [](Facts& in) { in.routes6->vrfPrefixLensInExactMatchIs("solo")->prefixLenIs(3); }},
    {"Lengths6Go", [](Facts& in) { in.routes6->vrfPrefixLensInExactMatchDel("red"); }},
    {"Lengths6OfAFallbackVrfGo",
     [](Facts& in) { in.routes6->vrfPrefixLensInExactMatchDel("blue"); }},
    {"Lengths6GoAndComeBack",
     [](Facts& in) {
       in.routes6->vrfPrefixLensInExactMatchDel("blue");
       in.routes6->vrfPrefixLensInExactMatchIs("blue");
     }},
    {"Lengths6AreReplaced", [](Facts& in) { replaceLengths(*in.routes6, "blue"); }},
    {"AllLengths6Go", [](Facts& in) { in.routes6->vrfPrefixLensInExactMatchDelAll(); }},
};

const FactChange ofFallback[] = {
    {"FallbackComes", [](Facts& in) { in.fallback->fallbackVrfIs("late", "grey"); }},
    {"FallbackOfTheLastComes", [](Facts& in) { in.fallback->fallbackVrfIs("grey", "green"); }},
    {"FallbackChanges", [](Facts& in) { in.fallback->fallbackVrfIs("red", "grey"); }},
    {"FallbackOfAFallbackVrfChanges",
     [](Facts& in) { in.fallback->fallbackVrfIs("blue", "late"); }},
    {"FallbackChangesToTheDefaultVrf",
     [](Facts& in) { in.fallback->fallbackVrfIs("red", "default"); }},
    {"FallbackChangesAndChangesBack",
     [](Facts& in) {
       in.fallback->fallbackVrfIs("blue", "late");
       in.fallback->fallbackVrfIs("blue", "grey");
     }},
    {"FallbackGoes", [](Facts& in) { in.fallback->fallbackVrfDel("red"); }},
    {"FallbackOfAFallbackVrfGoes", [](Facts& in) { in.fallback->fallbackVrfDel("blue"); }},
    {"FallbackGoesAndComesBack",
     [](Facts& in) {
       in.fallback->fallbackVrfDel("blue");
       in.fallback->fallbackVrfIs("blue", "late");
     }},
    {"AllFallbackGoes", [](Facts& in) { in.fallback->fallbackVrfDelAll(); }},
};

const FactChange ofFlags[] = {
    {"Decapsulation", [](Facts& in) { in.routes->decapNhEnabledIs(true); }},
    {"FallbackOfDecapsulation", [](Facts& in) { in.routes->decapNhFallbackEnabledIs(true); }},
};

using FactCase = std::tuple<FactChange, Difference>;

constexpr unsigned callsApart = 3;

class FactsDuringRebuild : public ::testing::TestWithParam<FactCase> {
 protected:
  static unsigned firstCall() {
    return 1 + static_cast<unsigned>(std::get<Difference>(GetParam())) % callsApart;
  }
  static RebuildWorld::Happening change() {
    return
        [](MachineInputs& remaining) { std::get<FactChange>(GetParam()).happen(remaining.facts); };
  }

  /// In every third call of the construction, beginning with another one for each difference.
  /// Returns about how many calls there are.
  static unsigned expectNothingIsLostInAnyCall(Outcome outcome, unsigned further) {
    unsigned call = firstCall();
    for (; !HasFailure(); call += callsApart) {
      RebuildWorld world(std::get<Difference>(GetParam()), outcome);
      if (!world.rebuild(call, change(), further)) break;
      SCOPED_TRACE("in call " + std::to_string(call) + ", and " + std::to_string(further) +
                   " further ones");
      EXPECT_EQ(world.difference(), "");
      if (call == firstCall()) {
        EXPECT_EQ(world.unfollowedFacts(), "");
      }
    }
    return call - 1;
  }
};

TEST_P(FactsDuringRebuild, ReachTheNewMachineWhenItIsComplete) {
  EXPECT_GE(expectNothingIsLostInAnyCall(Outcome::succeeds, 0), 8U);
}

TEST_P(FactsDuringRebuild, ReachTheOldMachineWhenTheConstructionThrows) {
  EXPECT_GE(expectNothingIsLostInAnyCall(Outcome::throws, 0), 4U);
  EXPECT_GE(expectNothingIsLostInAnyCall(Outcome::throws, 3), 1U);
}

class FactsInALifecycleCallDuringRebuild : public FactsDuringRebuild {
 protected:
  /// A hook changes a count in every third call of the construction, and the fact changes in the
  /// creation or deletion that follows.
  static void expectNothingIsLost(Outcome outcome, void (*changeCount)(VrfHwConfig& users)) {
    unsigned call = firstCall();
    for (; !HasFailure(); call += callsApart) {
      RebuildWorld world(std::get<Difference>(GetParam()), outcome);
      bool hasChanged = false;
      world.inNextLifecycleCall([&] {
        hasChanged = true;
        change()(world.remaining());
      });
      const auto happening = [&](MachineInputs& remaining) { changeCount(*remaining.users); };
      if (!world.rebuild(call, happening, 0)) break;
      SCOPED_TRACE("in call " + std::to_string(call));
      EXPECT_TRUE(hasChanged);
      EXPECT_EQ(world.difference(), "");
      if (call == firstCall()) {
        EXPECT_EQ(world.unfollowedFacts(), "");
      }
    }
    EXPECT_GT(call, 4U);
  }
  static void comes(VrfHwConfig& users) { users.vrfRefCountInc(lookUpIn("spare"), 1); }
  static void leaves(VrfHwConfig& users) { users.vrfRefCountDec(lookUpIn("solo"), 1); }
};

TEST_P(FactsInALifecycleCallDuringRebuild, ReachWhicheverMachineRemainsAfterACreation) {
  expectNothingIsLost(Outcome::succeeds, &comes);
  expectNothingIsLost(Outcome::throws, &comes);
}

TEST_P(FactsInALifecycleCallDuringRebuild, ReachWhicheverMachineRemainsAfterADeletion) {
  expectNothingIsLost(Outcome::succeeds, &leaves);
  expectNothingIsLost(Outcome::throws, &leaves);
}

// Each with the differences that matter to it.
INSTANTIATE_TEST_SUITE_P(Vrfs, FactsDuringRebuild,
                         testing::Combine(testing::ValuesIn(ofVrfs),
                                          testing::Values(Difference::fallback, Difference::routes,
                                                          Difference::helper)),
                         nameOfRebuild);
INSTANTIATE_TEST_SUITE_P(Lengths, FactsDuringRebuild,
                         testing::Combine(testing::ValuesIn(ofLengths),
                                          testing::Values(Difference::fallback, Difference::routes,
                                                          Difference::routes6)),
                         nameOfRebuild);
INSTANTIATE_TEST_SUITE_P(Fallback, FactsDuringRebuild,
                         testing::Combine(testing::ValuesIn(ofFallback),
                                          testing::Values(Difference::fallback,
                                                          Difference::tables)),
                         nameOfRebuild);
INSTANTIATE_TEST_SUITE_P(Flags, FactsDuringRebuild,
                         testing::Combine(testing::ValuesIn(ofFlags),
                                          testing::Values(Difference::routes, Difference::tables)),
                         nameOfRebuild);

INSTANTIATE_TEST_SUITE_P(Vrfs, FactsInALifecycleCallDuringRebuild,
                         testing::Combine(testing::ValuesIn(ofVrfs),
                                          testing::Values(Difference::routes, Difference::helper)),
                         nameOfRebuild);
INSTANTIATE_TEST_SUITE_P(Lengths, FactsInALifecycleCallDuringRebuild,
                         testing::Combine(testing::ValuesIn(ofLengths),
                                          testing::Values(Difference::routes6)),
                         nameOfRebuild);
INSTANTIATE_TEST_SUITE_P(Fallback, FactsInALifecycleCallDuringRebuild,
                         testing::Combine(testing::ValuesIn(ofFallback),
                                          testing::Values(Difference::fallback)),
                         nameOfRebuild);

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
