// What was once half done, or done to death, when memory ended.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <new>
#include <string>

#include "Quarry/Slab.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "tests/vrf/cost/Allocations.h"
#include "tests/vrf/faults/World.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

class NoMemory : public ::testing::Test {
 protected:
  NoMemory() { world.build(); }

  // Does `work` again and again until it no longer throws, with one allocation more each time. What
  // an attempt keeps the next ones need not allocate, so that it begins anew: each allocation fails
  // in its turn. Gives how often it threw; before each time, and after each but the last,
  // everything is the same.
  std::size_t refusals(const std::function<void()>& work) const {
    const std::string before = world.dump();
    std::size_t further = 0;
    for (std::size_t refused = 0; refused < 1000; ++refused) {
      const std::size_t inUse = Allocations::inUse();
      Allocations::failFrom(further);
      try {
        work();
        static_cast<void>(Allocations::failureWithdrawn());
        return refused;
      } catch (const std::bad_alloc&) {
        static_cast<void>(Allocations::failureWithdrawn());
      }
      further = Allocations::inUse() == inUse ? further + 1 : 0;
      EXPECT_EQ(world.dump(), before);
    }
    return 0;
  }

  // Whether `work` throws where there is no memory at all.
  static void expectRefused(const std::function<void()>& work) {
    Allocations::failFrom(0);
    EXPECT_THROW(work(), std::bad_alloc);
    static_cast<void>(Allocations::failureWithdrawn());
  }

  // Whether `work` does without any memory.
  static void expectNeedsNone(const std::function<void()>& work) {
    EXPECT_EQ(Allocations::madeBy(work), 0U);
  }

  unsigned hookCalls() { return static_cast<unsigned>(world.chip->takeCalls().size()); }

  World world;
  const VrfAction red{"red", PolicyMap::ActionType::vrf};
  const VrfAction blue{"blue", PolicyMap::ActionType::vrf};
  const L3::VrfName violet{"violet"};
};

TEST_F(NoMemory, ACountIsRefusedBeforeAResourceIsCreated) {
  EXPECT_GT(refusals([this] { world.users->vrfRefCountInc(red, 1); }), 3U);
  EXPECT_EQ(hookCalls(), 1U);
  EXPECT_TRUE(world.statuses->hwStatusHas(red));
  EXPECT_GT(refusals([this] { world.users->vrfRefCountIs(blue, 1); }), 0U);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, ACountThatWasZeroInSilenceIsRefusedBeforeAResourceIsCreated) {
  world.top->vrfSm()->hasNotificationActiveIs(false);
  world.users->vrfRefCountIs(red, 0);
  world.top->vrfSm()->hasNotificationActiveIs(true);
  EXPECT_GT(refusals([this] { world.users->vrfRefCountIs(red, 1); }), 1U);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, AnIncrementOfACountThatWasZeroInSilenceIsRefusedBeforeAResourceIsCreated) {
  world.top->vrfSm()->hasNotificationActiveIs(false);
  world.users->vrfRefCountIs(red, 0);
  world.top->vrfSm()->hasNotificationActiveIs(true);
  EXPECT_GT(refusals([this] { world.users->vrfRefCountInc(red, 1); }), 1U);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, TheHandlerOfACountRefusesBeforeItCreates) {
  world.top->vrfSm()->hasNotificationActiveIs(false);
  world.users->vrfRefCountIs(red, 1);
  EXPECT_GT(refusals([this] { world.top->vrfSm()->handleVrfRefCountChange(red); }), 1U);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, AnUpdateOfWhatHasNoStatusIsRefusedBeforeTheChipIsAsked) {
  EXPECT_GT(refusals([this] { world.top->vrfSm()->updateVrfAction(red); }), 1U);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, AFallbackVrfIsRefusedBeforeItIsConfigured) {
  world.users->vrfRefCountIs(red, 1);
  static_cast<void>(hookCalls());
  EXPECT_GT(refusals([this] { world.fallbacks[0]->fallbackVrfIs("red", violet); }), 3U);
  EXPECT_EQ(hookCalls(), 1U);
  EXPECT_TRUE(world.top->vrfSm()->dependentVrfInfo(violet)->dependentVrfs("red"));
}

TEST_F(NoMemory, AnotherFallbackVrfIsRefusedBeforeItIsConfigured) {
  world.fallbacks[0]->fallbackVrfIs("red", "blue");
  EXPECT_GT(refusals([this] { world.fallbacks[0]->fallbackVrfIs("red", violet); }), 1U);
}

TEST_F(NoMemory, EachOfManyVrfsThatFallBackToOneIsRefusedBeforeItIsConfigured) {
  std::size_t all = 0;
  for (unsigned number = 0; number < 40; ++number) {
    const L3::VrfName vrf("v" + std::to_string(number));
    all += refusals([&] { world.fallbacks[0]->fallbackVrfIs(vrf, violet); });
  }
  EXPECT_GT(all, 3U);
  EXPECT_EQ(world.top->vrfSm()->dependentVrfInfo(violet)->dependentVrfs().count(), 40U);
}

TEST_F(NoMemory, TheHandlerOfAFallbackVrfRefusesBeforeTheChipIsAsked) {
  world.users->vrfRefCountIs(red, 1);
  world.top->vrfSm()->hasNotificationActiveIs(false);
  world.fallbacks[0]->fallbackVrfIs("red", violet);
  static_cast<void>(hookCalls());
  EXPECT_GT(refusals([this] { world.top->vrfSm()->handleVrfFallbackConfig("red"); }), 1U);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, AFurtherVrfThatFallsBackToAnotherMakesNoRecord) {
  world.fallbacks[0]->fallbackVrfIs("red", violet);
  const auto* records = Quarry::Slab::find(DependentVrfInfo::typeName);
  const std::size_t before = records->allocated();
  world.fallbacks[0]->fallbackVrfIs("blue", violet);
  EXPECT_EQ(records->allocated(), before);
}

TEST_F(NoMemory, NoRecordIsKeptForAFallbackToTheDefaultVrf) {
  const std::size_t before = liveObjects()[DependentVrfInfo::typeName];
  world.fallbacks[0]->fallbackVrfIs("red", L3::VrfName::defaultVrf());
  EXPECT_EQ(liveObjects()[DependentVrfInfo::typeName], before);
}

TEST_F(NoMemory, AFallbackVrfGoesWithoutAny) {
  world.fallbacks[0]->fallbackVrfIs("red", violet);
  const L3::VrfName name("red");
  expectNeedsNone([&] { world.fallbacks[0]->fallbackVrfDel(name); });
  EXPECT_EQ(world.top->vrfSm()->dependentVrfInfo().count(), 0U);
}

TEST_F(NoMemory, TheHandlerOfAVrfWithoutAFallbackVrfNeedsNone) {
  const L3::VrfName name("red");
  expectNeedsNone([&] { world.top->vrfSm()->handleVrfFallbackConfig(name); });
}

TEST_F(NoMemory, AFirstUserWhomNoMachineFollowsNeedsNone) {
  const auto machine = world.top->vrfSm();
  machine->hasNotificationActiveIs(false);
  for (const VrfAction& action : {red, blue})
    world.users->vrfRefCountIs(action, 0);
  expectNeedsNone([&] { world.users->vrfRefCountIs(red, 1); });
  machine->hasNotificationActiveIs(true);
  machine->pausedIs(true);
  expectNeedsNone([&] { world.users->vrfRefCountIs(blue, 1); });
  EXPECT_EQ(hookCalls(), 0U);
}

TEST_F(NoMemory, WhatEntersWithoutAMachineToFollowItTakesWhatTheRouteStatusTakes) {
  using Routing::Hardware::PrefixLensInExactMatch;
  using Routing::Hardware::VrfStatus;
  const auto vrf = VrfStatus::VrfStatusIs("red");
  const auto lens = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  const auto entering = [&](Routing::Hardware::RouteStatus& routes,
                            Routing6::Hardware::RouteStatus& routes6) {
    return Allocations::madeBy([&] {
      routes.vrfStatusIs(vrf);
      routes.vrfPrefixLensInExactMatchIs(lens);
      routes6.vrfPrefixLensInExactMatchIs(lens);
    });
  };
  const auto unfollowed = Routing::Hardware::RouteStatus::RouteStatusIs();
  const auto unfollowed6 = Routing6::Hardware::RouteStatus::RouteStatusIs();
  world.top->vrfSm()->pausedIs(true);
  EXPECT_EQ(entering(*world.routes, *world.routes6), entering(*unfollowed, *unfollowed6));
}

TEST_F(NoMemory, AFallbackVrfWithoutAMachineToFollowItTakesWhatTheConfigurationTakes) {
  const L3::VrfName name("red");
  const auto configuring = [&](World::FallbackVrf& fallbacks) {
    return Allocations::madeBy([&] { fallbacks.fallbackVrfIs(name, violet); });
  };
  const auto unfollowed = World::FallbackVrf::VrfSelectionFallbackVrfIs();
  world.top->vrfSm()->pausedIs(true);
  EXPECT_EQ(configuring(*world.fallbacks[0]), configuring(*unfollowed));
}

TEST_F(NoMemory, AVrfStatusIsRefusedBeforeItEnters) {
  const auto status = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  EXPECT_GT(refusals([&] { world.routes->vrfStatusIs(status); }), 3U);
  EXPECT_TRUE(world.top->vrfSm()->moxVrfInstanceHas("red"));
}

TEST_F(NoMemory, TheHandlerOfAVrfStatusRefusesAndLeavesNoMachine) {
  const auto status = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  EXPECT_GT(refusals([&] { world.top->vrfSm()->vrfInstanceIs(status); }), 1U);
}

TEST_F(NoMemory, TheHandlersOfPrefixLengthsRefuseBeforeTheyAskTheChip) {
  world.users->vrfRefCountIs(red, 1);
  static_cast<void>(hookCalls());
  const auto lens = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  EXPECT_GT(refusals([&] { world.top->vrfSm()->vrfPrefixLensInExactMatchIs(lens); }), 1U);
  EXPECT_GT(refusals([&] { world.top->vrfSm()->vrfPrefixLensInExactMatchV6Is(lens); }), 1U);
  EXPECT_EQ(hookCalls(), 2U);
}

TEST_F(NoMemory, AnotherVrfStatusIsRefusedAndThePresentOneStillFollowed) {
  world.users->vrfRefCountIs(red, 1);
  const auto present = world.routes->vrfStatusIs("red");
  const auto other = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  expectRefused([&] { world.routes->vrfStatusIs(other); });
  EXPECT_EQ(world.routes->vrfStatus("red"), present);
  static_cast<void>(hookCalls());
  present->vrfIdIs(7);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, PrefixLengthsAreRefusedBeforeTheChipIsAsked) {
  // Which take the room that those of other tests have left.
  for (unsigned number = 0; number < 64; ++number) {
    const std::string vrf = "v" + std::to_string(number);
    world.routes->vrfPrefixLensInExactMatchIs(vrf);
    world.routes6->vrfPrefixLensInExactMatchIs(vrf);
  }
  world.users->vrfRefCountIs(red, 1);
  static_cast<void>(hookCalls());
  const auto lens = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  EXPECT_GT(refusals([&] { world.routes->vrfPrefixLensInExactMatchIs(lens); }), 3U);
  EXPECT_EQ(hookCalls(), 1U);
  EXPECT_GT(refusals([&] { world.routes6->vrfPrefixLensInExactMatchIs(lens); }), 3U);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, OtherPrefixLengthsAreRefusedAndThePresentOnesStillFollowed) {
  world.users->vrfRefCountIs(red, 1);
  const auto present = world.routes->vrfPrefixLensInExactMatchIs("red");
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  expectRefused([&] { world.routes->vrfPrefixLensInExactMatchIs(other); });
  EXPECT_EQ(world.routes->vrfPrefixLensInExactMatch("red"), present);
  static_cast<void>(hookCalls());
  present->prefixLenIs(24);
  EXPECT_EQ(hookCalls(), 1U);
}

TEST_F(NoMemory, OtherPrefixLengthsTakeNoMoreThanThePlaceOfTheirMachineAmongTheirReactors) {
  const auto lengths = [] {
    return Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  };
  world.routes->vrfPrefixLensInExactMatchIs(lengths());
  const auto other = lengths();
  EXPECT_EQ(Allocations::madeBy([&] { world.routes->vrfPrefixLensInExactMatchIs(other); }), 1U);
}

TEST_F(NoMemory, PrefixLengthsOfAVrfWithTheLongestNameAreRefusedBeforeTheyEnter) {
  const std::string name(L3::VrfName::maxLength, 'n');
  const auto lens = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs(name);
  EXPECT_GT(refusals([&] { world.routes->vrfPrefixLensInExactMatchIs(lens); }), 3U);
}

TEST_F(NoMemory, PrefixLengthsOfAVrfThatNobodyNamesChangeWithoutAny) {
  const auto lens = world.routes6->vrfPrefixLensInExactMatchIs("a name of its own");
  expectNeedsNone([&] { lens->prefixLenIs(64); });
  expectNeedsNone([&] { lens->prefixLenDel(64); });
}

TEST_F(NoMemory, AnActionGoesWithoutAnyInTheCourseOfAWalk) {
  world.users->vrfRefCountIs(red, 1);
  world.users->vrfRefCountIs(blue, 1);
  VrfHwStatus::ActionsNaming walk(world.statuses, "red");
  ASSERT_TRUE(walk.advance());
  expectNeedsNone([&] { world.users->vrfRefCountIs(red, 0); });
  expectNeedsNone([&] { world.users->vrfRefCountIs(blue, 0); });
  EXPECT_EQ(walk.action(), red);
  EXPECT_EQ(world.statuses->hwStatus().count(), 0U);
}

TEST_F(NoMemory, AMachineThatCannotSubscribeIsSilentAndSpeaksLater) {
  world.top->vrfSm()->hasNotificationActiveIs(false);
  std::array<Velo::Subscriber, 8> others;
  for (Velo::Subscriber& other : others) {
    other.dispatch = [](Velo::Publisher*, Velo::Subscriber*, short, const void*, const void*) {};
    world.users->publisher().subscriberIs(other);
    world.fallbacks[0]->publisher().subscriberIs(other);
  }
  // One takes the place that the machine left among those who follow the fallback configuration.
  Velo::Follower follower{[](Velo::Follower*, short, const void*, const void*) {}};
  world.fallbacks[0]->followers().followerIs(follower);
  EXPECT_GT(refusals([this] { world.top->vrfSm()->hasNotificationActiveIs(true); }), 0U);
  world.users->vrfRefCountIs(red, 1);
  EXPECT_EQ(hookCalls(), 1U);
  for (Velo::Subscriber& other : others) {
    world.users->publisher().subscriberDel(other);
    world.fallbacks[0]->publisher().subscriberDel(other);
  }
  world.fallbacks[0]->followers().followerDel(follower);
}

// From inside a notice of the counts, where a place that was left is not taken again.
TEST_F(NoMemory, AFailedRebuildDuringANoticeLeavesTheOldMachineFollowing) {
  constexpr std::size_t attempts = 4;  // each of which gets one step further
  struct Rebuilding final : Velo::Subscriber {
    World* world = nullptr;
    std::size_t refusals = 0;
  };
  Rebuilding subscriber;
  subscriber.world = &world;
  subscriber.dispatch = [](Velo::Publisher*, Velo::Subscriber* self, short, const void*,
                           const void*) {
    auto& rebuilding = *static_cast<Rebuilding*>(self);
    for (std::size_t further = 0; further < attempts; ++further) {
      Allocations::failFrom(further);
      try {
        rebuilding.world->build(1);
      } catch (const std::bad_alloc&) {
        ++rebuilding.refusals;
      }
      static_cast<void>(Allocations::failureWithdrawn());
    }
  };
  const VrfSm* const before = world.top->vrfSm().get();
  world.users->publisher().subscriberIs(subscriber);
  world.users->vrfRefCountIs(red, 1);
  world.users->publisher().subscriberDel(subscriber);
  EXPECT_EQ(subscriber.refusals, attempts);
  EXPECT_EQ(world.top->vrfSm().get(), before);
  static_cast<void>(hookCalls());
  world.users->vrfRefCountIs(blue, 1);
  world.fallbacks[0]->fallbackVrfIs("blue", "red");
  EXPECT_EQ(hookCalls(), 2U);
}

TEST_F(NoMemory, AFailedRebuildLeavesTheOldMachineFollowingEverything) {
  world.users->vrfRefCountIs(red, 1);
  const auto status = world.routes->vrfStatusIs("red");
  const auto lens = world.routes->vrfPrefixLensInExactMatchIs("red");
  const auto lens6 = world.routes6->vrfPrefixLensInExactMatchIs("red");
  const VrfSm* const before = world.top->vrfSm().get();
  expectRefused([&] { world.build(1); });
  EXPECT_EQ(world.top->vrfSm().get(), before);
  static_cast<void>(hookCalls());
  world.users->vrfRefCountIs(blue, 1);
  world.fallbacks[0]->fallbackVrfIs("red", "blue");
  status->vrfIdIs(7);
  lens->prefixLenIs(24);
  lens6->prefixLenIs(64);
  EXPECT_EQ(hookCalls(), 5U);
  world.routes->decapNhEnabledIs(true);
  EXPECT_EQ(hookCalls(), 2U);
}

TEST_F(NoMemory, AFailedRebindingLeavesTheOldPolicyMachineFollowing) {
  world.bindPolicy(false);
  const auto before = world.top->policySm();
  Allocations::failFrom(1);
  EXPECT_THROW(world.bindPolicy(true), std::bad_alloc);
  static_cast<void>(Allocations::failureWithdrawn());
  EXPECT_EQ(world.top->policySm(), before);
  EXPECT_FALSE(before->isPaused());
  EXPECT_EQ(world.rulesOfPolicy(), 1U);
  world.policyHasTwoRules();
  EXPECT_EQ(world.rulesOfPolicy(), 2U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
