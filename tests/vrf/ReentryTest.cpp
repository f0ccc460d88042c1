#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <functional>
#include <stdexcept>

#include "Quarry/Slab.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "testing/TableJournal.h"
#include "tests/vrf/BothSinks.h"
#include "tests/vrf/WalksOfRed.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::Le;

using Work = std::function<void(const VrfAction&)>;

// Objects of that type alive in the process.
std::size_t live(const char* typeName) {
  const Quarry::Slab* slab = Quarry::Slab::find(typeName);
  return slab == nullptr ? 0 : slab->live();
}

// What any walk has to survive from inside the hook that updates an action.
class ReentryIntoAWalk : public DrivenVrfSmWithRed, public ::testing::TestWithParam<WalkOfRed> {
 protected:
  ReentryIntoAWalk() {
    GetParam().prepare(*this);
    forget();
  }

  void walk() { GetParam().walk(*this); }

  // Does `work` during the first update, and reports `outcome` for all of them.
  void duringFirstUpdate(Work work, HwStatus outcome = {}) {
    chip->onUpdate = [this, work = std::move(work), outcome](const VrfAction& action) {
      const VrfAction updated = action;
      if (++updates_ == 1) work(updated);
      return outcome;
    };
  }

  void release(const VrfAction& action) const { users->vrfRefCountDec(action, 1); }

  // Times that each of the first actions was updated, by what the journal has of them.
  std::vector<int> updatesOfEach() {
    auto lines = counted(journal.take());
    std::vector<int> times;
    for (const VrfAction& action : actions)
      times.push_back(lines["updateVrf " + shown(action)]);
    return times;
  }

  // Every action that remains is updated once by another event of the same VRF.
  void expectNextEventToUpdateWhatRemains() {
    chip->onUpdate = nullptr;
    forget();
    vrfSm->handleVrfUpdates("red", true);
    std::map<std::string, int> expected;
    for (auto entry = statuses->hwStatus().iterator(); entry; ++entry) {
      if (namesRed(entry.key())) expected["updateVrf " + shown(entry.key())] = 1;
    }
    EXPECT_EQ(counted(journal.take()), expected);
  }

  int updates_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Every, ReentryIntoAWalk, ::testing::ValuesIn(walksOfRed()),
                         [](const ::testing::TestParamInfo<WalkOfRed>& instance) {
                           return std::string(instance.param.name);
                         });

TEST_P(ReentryIntoAWalk, UndisturbedItUpdatesEachActionOnce) {
  walk();
  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
}

TEST_P(ReentryIntoAWalk, ActionDeletedInItsOwnUpdateStaysDeletedAndTheOthersAreUpdatedOnce) {
  VrfAction deleted;
  duringFirstUpdate(
      [&](const VrfAction& action) {
        deleted = action;
        release(action);
      },
      failure("too late"));

  walk();

  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
  EXPECT_FALSE(statuses->hwStatusHas(deleted));
  EXPECT_EQ(statuses->hwStatus().count(), 3U);
  EXPECT_FALSE(users->vrfRefCount().has(deleted));
  expectNextEventToUpdateWhatRemains();
}

TEST_P(ReentryIntoAWalk, ActionDeletedInItsOwnUpdateIsReportedGoneAndNotAgain) {
  std::string deleted;
  duringFirstUpdate(
      [&](const VrfAction& action) {
        deleted = "hwStatus " + shown(action);
        release(action);
      },
      failure("too late"));
  const TableJournal tables(journal, nullptr, statuses);

  walk();

  std::vector<std::string> notices;
  for (const std::string& line : journal.take()) {
    if (line.starts_with(deleted + " ")) notices.push_back(line);
  }
  EXPECT_THAT(notices, ElementsAre(deleted + " gone"));
}

TEST_P(ReentryIntoAWalk, ActionCreatedAnewInItsOwnUpdateKeepsTheNewOutcome) {
  VrfAction recreated;
  chip->onCreate = [](const VrfAction&) { return failure("anew"); };
  duringFirstUpdate(
      [&](const VrfAction& action) {
        recreated = action;
        release(action);
        users->vrfRefCountInc(action, 1);
      },
      failure("of the old one"));

  walk();

  EXPECT_EQ(statuses->hwStatus(recreated), failure("anew"));
  EXPECT_EQ(statuses->hwStatus().count(), 4U);
  for (const VrfAction& action : actions) {
    if (action == recreated) continue;
    EXPECT_EQ(statuses->hwStatus(action), failure("of the old one"));
  }
  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
}

TEST_P(ReentryIntoAWalk, ActionDeletedAndCreatedTwiceInItsOwnUpdateKeepsTheLastOutcome) {
  int creations = 0;
  VrfAction recreated;
  chip->onCreate = [&](const VrfAction&) { return failure(std::to_string(++creations).c_str()); };
  duringFirstUpdate([&](const VrfAction& action) {
    recreated = action;
    for (int i = 0; i < 2; ++i) {
      release(action);
      users->vrfRefCountInc(action, 1);
    }
  });

  walk();

  EXPECT_EQ(statuses->hwStatus(recreated), failure("2"));
}

TEST_P(ReentryIntoAWalk, ActionDeletedBeforeItsTurnIsNotUpdated) {
  // Each of the actions that come later in turn.
  for (std::size_t later = 0; later < 3; ++later) {
    SCOPED_TRACE(later);
    DrivenVrfSmWithRed on;
    GetParam().prepare(on);
    on.forget();
    std::vector<VrfAction> seen;
    VrfAction deleted;
    on.chip->onUpdate = [&](const VrfAction& action) {
      seen.push_back(action);
      if (seen.size() > 1) return HwStatus();
      std::vector<VrfAction> others = on.actions;
      std::erase(others, seen[0]);
      deleted = others[later];
      on.users->vrfRefCountDec(deleted, 1);
      return HwStatus();
    };

    GetParam().walk(on);

    EXPECT_EQ(seen.size(), 3U);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), deleted), 0);
    EXPECT_THAT(counted(on.journal.take()),
                Each(::testing::Field(&std::pair<const std::string, int>::second, 1)));
    EXPECT_FALSE(on.statuses->hwStatusHas(deleted));
  }
}

TEST_P(ReentryIntoAWalk, ActionDeletedAfterItsTurnDoesNotDisturbTheRest) {
  std::vector<VrfAction> seen;
  chip->onUpdate = [&](const VrfAction& action) {
    seen.push_back(action);
    if (seen.size() > 1) release(seen[seen.size() - 2]);
    return failure("written");
  };

  walk();

  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
  ASSERT_EQ(seen.size(), 4U);
  EXPECT_EQ(statuses->hwStatus().count(), 1U);
  EXPECT_EQ(statuses->hwStatus(seen.back()), failure("written"));
}

TEST_P(ReentryIntoAWalk, ItEndsWhenAllActionsAreDeleted) {
  duringFirstUpdate([&](const VrfAction&) {
    for (const VrfAction& action : actions)
      release(action);
  });

  walk();

  EXPECT_EQ(updates_, 1);
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
  EXPECT_EQ(users->vrfRefCount().count(), 0U);
}

TEST_P(ReentryIntoAWalk, ItEndsWhenBothTablesAreEmptied) {
  duringFirstUpdate([&](const VrfAction&) { users->vrfRefCountDelAll(); }, failure("too late"));

  walk();

  EXPECT_EQ(updates_, 1);
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
}

TEST_P(ReentryIntoAWalk, ItEndsWhenTheStatusTableIsClearedUnderIt) {
  duringFirstUpdate([&](const VrfAction&) { statuses->hwStatusDelAll(); }, failure("too late"));

  walk();

  EXPECT_EQ(updates_, 1);
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
}

TEST_P(ReentryIntoAWalk, NewActionsNamingTheVrfAreUpdatedAtMostOnceAndTheOldOnesOnce) {
  duringFirstUpdate([&](const VrfAction&) {
    for (int i = 0; i < 100; ++i) {
      users->vrfRefCountInc(actionOf("new" + std::to_string(i), "red"), 1);
    }
  });

  walk();

  for (const auto& [line, times] : counted(journal.lines()))
    EXPECT_EQ(times, 1) << line;
  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
  EXPECT_EQ(statuses->hwStatus().count(), 104U);
  expectNextEventToUpdateWhatRemains();
}

TEST_P(ReentryIntoAWalk, ItEndsThoughEveryUpdateAddsAnActionAndReplacesItsOwn) {
  constexpr int tooMany = 1000;
  int added = 0;
  chip->onUpdate = [&](const VrfAction& action) {
    const VrfAction updated = action;
    if (++added > tooMany) throw std::runtime_error("the walk follows what is added to it");
    users->vrfRefCountInc(actionOf("new" + std::to_string(added), "red"), 1);
    release(updated);
    users->vrfRefCountInc(updated, 1);
    return HwStatus();
  };

  EXPECT_NO_THROW(walk());

  EXPECT_THAT(updatesOfEach(), Each(AllOf(Ge(1), Le(2))));
  EXPECT_EQ(statuses->hwStatus().count(), static_cast<unsigned>(added + 4));
}

TEST_P(ReentryIntoAWalk, WalkWithinAWalkUpdatesEachActionOnceMore) {
  duringFirstUpdate([&](const VrfAction&) { vrfSm->handleVrfUpdates("red", true); });
  walk();
  EXPECT_THAT(updatesOfEach(), ElementsAre(2, 2, 2, 2));
}

TEST_P(ReentryIntoAWalk, WalkOverEverythingWithinAWalkUpdatesEachActionOnceMore) {
  duringFirstUpdate([&](const VrfAction&) { vrfSm->handleDecapNh(); });
  walk();
  EXPECT_THAT(updatesOfEach(), ElementsAre(2, 2, 2, 2));
}

TEST_P(ReentryIntoAWalk, DeletionsInAWalkWithinAWalkHoldForBoth) {
  // The inner walk deletes what neither of the two has reached.
  std::vector<VrfAction> seen;
  VrfAction deleted;
  chip->onUpdate = [&](const VrfAction& action) {
    seen.push_back(action);
    if (seen.size() == 1) vrfSm->handleVrfUpdates("red", true);
    if (seen.size() == 2) {
      for (const VrfAction& other : actions) {
        if (std::find(seen.begin(), seen.end(), other) == seen.end()) deleted = other;
      }
      release(deleted);
    }
    return HwStatus();
  };

  walk();

  EXPECT_EQ(std::count(seen.begin(), seen.end(), deleted), 0);
  for (const VrfAction& action : actions) {
    if (action == deleted) continue;
    EXPECT_EQ(std::count(seen.begin(), seen.end(), action), 2) << shown(action);
  }
}

TEST_P(ReentryIntoAWalk, FurtherUsersOfTheActionUnderUpdateAreOnlyCounted) {
  VrfAction used;
  duringFirstUpdate(
      [&](const VrfAction& action) {
        used = action;
        users->vrfRefCountInc(action, 2);
        users->vrfRefCountDec(action, 2);
        users->vrfRefCountInc(action, 1);
      },
      failure("written"));

  walk();

  EXPECT_EQ(statuses->hwStatus(used), failure("written"));
  EXPECT_EQ(users->vrfRefCount(used), 2U);
  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
}

TEST_P(ReentryIntoAWalk, HookOfADeletionThatDeletesFurtherActionsIsFollowed) {
  // From inside the deletion of the first, all others go one within the other.
  chip->onDelete = [&](const VrfAction& action) {
    for (const VrfAction& other : actions) {
      if (other != action && users->vrfRefCount(other) != 0) release(other);
    }
  };
  duringFirstUpdate([&](const VrfAction& action) { release(action); });

  walk();

  EXPECT_EQ(updates_, 1);
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
}

TEST_P(ReentryIntoAWalk, EventDuringADeletionDoesNotUpdateTheActionThatIsGoing) {
  VrfAction going;
  bool isGoing = false;
  bool updatedWhileGoing = false;
  chip->onDelete = [&](const VrfAction&) {
    isGoing = true;
    vrfSm->handleVrfUpdates("red", true);
    vrfSm->handleDecapNhFallback();
    isGoing = false;
  };
  chip->onUpdate = [&](const VrfAction& action) {
    if (++updates_ == 1) {
      going = action;
      release(going);
    } else if (isGoing && action == going) {
      updatedWhileGoing = true;
    }
    return HwStatus();
  };

  walk();

  EXPECT_FALSE(updatedWhileGoing);
  EXPECT_FALSE(statuses->hwStatusHas(going));
  for (const VrfAction& action : actions) {
    const auto lines = counted(journal.lines());
    EXPECT_EQ(lines.at("updateVrf " + shown(action)), action == going ? 1 : 3) << shown(action);
  }
}

TEST_P(ReentryIntoAWalk, FallbackOfTheVrfMayChangeUnderIt) {
  duringFirstUpdate([&](const VrfAction&) {
    fallback->fallbackVrfIs("red", "m");
    fallback->fallbackVrfIs("red", "n");
    fallback->fallbackVrfIs("x", "red");
    fallback->fallbackVrfDel("red");
    fallback->fallbackVrfIs("red", "o");
  });

  walk();

  EXPECT_EQ(vrfSm->fallbackVrfInfo("red"), L3::VrfName("o"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo("x"), L3::VrfName("red"));
  EXPECT_EQ(vrfSm->dependentVrfInfo("m"), nullptr);
  EXPECT_EQ(vrfSm->dependentVrfInfo("n"), nullptr);
  EXPECT_EQ(vrfSm->dependentVrfInfo("z"), nullptr);
  EXPECT_TRUE(vrfSm->dependentVrfInfo("o")->dependentVrfs("red"));
  EXPECT_TRUE(vrfSm->dependentVrfInfo("red")->dependentVrfs("x"));
}

TEST_P(ReentryIntoAWalk, FallbackOfTheVrfMayGoUnderIt) {
  duringFirstUpdate([&](const VrfAction&) {
    fallback->fallbackVrfIs("red", "m");
    fallback->fallbackVrfDelAll();
  });

  walk();

  EXPECT_FALSE(vrfSm->fallbackVrfInfo().has("red"));
  EXPECT_EQ(vrfSm->dependentVrfInfo("m"), nullptr);
  EXPECT_EQ(vrfSm->dependentVrfInfo("z"), nullptr);
}

TEST_P(ReentryIntoAWalk, AllRecordsOfDependentsMayGoUnderIt) {
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm->dependentVrfInfoDelAll();
    vrfSm->fallbackVrfInfoDelAll();
  });
  walk();
  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
}

TEST_P(ReentryIntoAWalk, VrfInstancesMayGoUnderIt) {
  duringFirstUpdate([&](const VrfAction&) {
    routes->vrfStatusIs("red");
    routes->vrfStatusDelAll();
  });
  walk();
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  EXPECT_THAT(updatesOfEach(), Each(Ge(2)));
}

TEST_P(ReentryIntoAWalk, VrfInstanceMayGoAndComeBackUnderIt) {
  duringFirstUpdate([&](const VrfAction&) {
    routes->vrfStatusIs("red");
    routes->vrfStatusDel("red");
    redStatus = routes->vrfStatusIs("red");
  });

  walk();

  ASSERT_TRUE(vrfSm->moxVrfInstanceHas("red"));
  const auto instance = *vrfSm->moxVrfInstance().find("red");
  EXPECT_EQ(instance->vrfInstance(), redStatus);
  EXPECT_FALSE(instance->isZombie());
  forget();
  redStatus->vrfIdIs(11);
  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
}

TEST_P(ReentryIntoAWalk, PrefixLensMayGoUnderIt) {
  duringFirstUpdate([&](const VrfAction&) {
    routes->vrfPrefixLensInExactMatchDelAll();
    routes6->vrfPrefixLensInExactMatchDelAll();
  });

  walk();

  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 0U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatchV6().count(), 0U);
  expectNextEventToUpdateWhatRemains();
}

TEST_P(ReentryIntoAWalk, PrefixLensMayBeReplacedUnderIt) {
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  const auto other6 = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  duringFirstUpdate([&](const VrfAction&) {
    routes->vrfPrefixLensInExactMatchDel("red");
    routes6->vrfPrefixLensInExactMatchDel("red");
    routes->vrfPrefixLensInExactMatchIs(other);
    routes6->vrfPrefixLensInExactMatchIs(other6);
  });

  walk();

  ASSERT_TRUE(vrfSm->vrfPrefixLensInExactMatch().has("red"));
  ASSERT_TRUE(vrfSm->vrfPrefixLensInExactMatchV6().has("red"));
  EXPECT_EQ((*vrfSm->vrfPrefixLensInExactMatch().find("red"))->prefixLens(), other);
  EXPECT_EQ((*vrfSm->vrfPrefixLensInExactMatchV6().find("red"))->prefixLens(), other6);
  forget();
  other->prefixLenIs(24);
  other6->prefixLenIs(64);
  EXPECT_THAT(updatesOfEach(), ElementsAre(2, 2, 2, 2));
}

TEST_P(ReentryIntoAWalk, MachineReleasedInAHookCompletesTheWalkAndIsGoneWhenItReturns) {
  std::size_t liveInHook = 0;
  duringFirstUpdate(
      [&](const VrfAction&) {
        vrfSm = nullptr;
        liveInHook = live(VrfSm::typeName);
      },
      failure("written"));

  walk();

  EXPECT_EQ(liveInHook, 1U);
  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
  for (const VrfAction& action : actions) {
    EXPECT_EQ(statuses->hwStatus(action), failure("written"));
  }
  EXPECT_EQ(live(VrfSm::typeName), 0U);
  EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
  EXPECT_EQ(live(VrfSm::NestedSm_VrfPrefixLensInExactMatch::typeName), 0U);
  EXPECT_EQ(live(VrfSm::NestedSm_VrfPrefixLensInExactMatchV6::typeName), 0U);
  EXPECT_EQ(live(DependentVrfInfo::typeName), 0U);
}

TEST_P(ReentryIntoAWalk, MachineReleasedInAHookFollowsNothingAfterwards) {
  duringFirstUpdate([&](const VrfAction&) { vrfSm = nullptr; });
  walk();
  forget();

  routes->vrfStatusIs("red")->vrfIdIs(101);
  routes->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(9);
  routes6->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(9);
  routes->decapNhEnabledIs(!routes->decapNhEnabled());
  routes->decapNhFallbackEnabledIs(!routes->decapNhFallbackEnabled());
  fallback->fallbackVrfIs("red", "elsewhere");
  users->vrfRefCountDec(actions[0], 1);

  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_P(ReentryIntoAWalk, MachineAndAllThatDrivesItMayBeReleasedInAHook) {
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm = nullptr;
    users = nullptr;
    statuses = nullptr;
    fallback = nullptr;
    redStatus = nullptr;
    redLens = nullptr;
    redLens6 = nullptr;
  });
  // The caller of an entity's mutator holds that entity; so it is held here.
  const auto held = fallback;
  const auto heldStatus = redStatus;
  const auto heldLens = redLens;
  const auto heldLens6 = redLens6;

  walk();

  EXPECT_THAT(updatesOfEach(), ElementsAre(1, 1, 1, 1));
  EXPECT_EQ(live(VrfSm::typeName), 0U);
}

TEST_P(ReentryIntoAWalk, MachineReleasedInAHookWithActionsDeletedAndAddedIsSafe) {
  duringFirstUpdate(
      [&](const VrfAction& action) {
        release(action);
        vrfSm = nullptr;
        users->vrfRefCountInc(actionOf("new", "red"), 1);
        routes->vrfStatusDelAll();
        routes->vrfPrefixLensInExactMatchDelAll();
        routes6->vrfPrefixLensInExactMatchDelAll();
      },
      failure("written"));

  walk();

  EXPECT_EQ(live(VrfSm::typeName), 0U);
  EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
  EXPECT_EQ(statuses->hwStatus().count(), 4U);
}

TEST_P(ReentryIntoAWalk, MachineReplacedInAHookGivesWayToTheNewOne) {
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, routes6);
  });

  walk();

  EXPECT_EQ(live(VrfSm::typeName), 1U);
  expectNextEventToUpdateWhatRemains();
  users->vrfRefCountDec(actions[0], 1);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red"));
}

TEST_P(ReentryIntoAWalk, HookThatThrowsReachesTheCallerAndTheNextEventWorks) {
  for (const VrfAction& action : actions)
    statuses->hwStatusIs(action, failure("before"));
  forget();
  std::vector<VrfAction> seen;
  chip->onUpdate = [&](const VrfAction& action) -> HwStatus {
    seen.push_back(action);
    if (seen.size() == 2) throw std::runtime_error("chip is gone");
    return {};
  };

  EXPECT_THROW(walk(), std::runtime_error);

  ASSERT_EQ(seen.size(), 2U);
  for (const VrfAction& action : actions) {
    EXPECT_EQ(statuses->hwStatus(action), action == seen[0] ? HwStatus() : failure("before"));
  }
  expectNextEventToUpdateWhatRemains();
}

TEST_P(ReentryIntoAWalk, HookThatThrowsAfterReleasingTheMachineReachesTheCaller) {
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm = nullptr;
    throw std::runtime_error("chip is gone");
  });
  EXPECT_THROW(walk(), std::runtime_error);
  EXPECT_EQ(live(VrfSm::typeName), 0U);
}

TEST_P(ReentryIntoAWalk, HookThatThrowsInAWalkWithinAWalkLeavesBoth) {
  chip->onUpdate = [&](const VrfAction&) -> HwStatus {
    if (++updates_ == 1) vrfSm->handleVrfUpdates("red", true);
    if (updates_ == 3) throw std::runtime_error("chip is gone");
    return {};
  };
  EXPECT_THROW(walk(), std::runtime_error);
  EXPECT_EQ(updates_, 3);
  expectNextEventToUpdateWhatRemains();
}

// The walks over dependent VRFs, of which each has one action.
class ReentryIntoDependents : public DrivenVrfSmTest {
 protected:
  static constexpr int dependents = 4;

  ReentryIntoDependents() { start(); }

  static std::string nameOf(int i) {
    std::string name = "d";
    return name += std::to_string(i);
  }

  void dependOn(const char* vrf) {
    for (int i = 0; i < dependents; ++i) {
      fallback->fallbackVrfIs(nameOf(i), vrf);
      created(actionOf(nameOf(i)));
    }
  }

  // Dependents of "a" that the walk went to, as its trace has them.
  static std::map<std::string, int> visited(const std::vector<std::string>& trace) {
    std::map<std::string, int> times;
    const std::string from = "Updating dependent VRF:";
    const std::string to = "  HW resource. Changed VRF:a";
    for (const std::string& line : trace) {
      const std::size_t begin = line.find(from);
      const std::size_t end = line.find(to);
      if (begin == line.npos || end == line.npos) continue;
      ++times[line.substr(begin + from.size(), end - begin - from.size())];
    }
    return times;
  }

  void duringFirstUpdate(Work work) {
    chip->onUpdate = [this, work = std::move(work)](const VrfAction& action) {
      const VrfAction updated = action;
      if (++updates_ == 1) work(updated);
      return HwStatus();
    };
  }

  int updates_ = 0;
};

TEST_F(ReentryIntoDependents, DependentThatIsRemovedBeforeItsTurnIsNotVisitedAndTheRestOnce) {
  dependOn("a");
  for (int removed = 1; removed < dependents; ++removed) {
    updates_ = 0;
    std::string gone;
    duringFirstUpdate([&](const VrfAction& action) {
      const int first = std::stoi(action.vrfName().str().substr(1));
      gone = nameOf((first + removed) % dependents);
      fallback->fallbackVrfDel(gone);
    });
    std::map<std::string, int> expected;
    const BothSinks sinks;

    vrfSm->handleVrfUpdates("a", false);

    for (int i = 0; i < dependents; ++i) {
      if (nameOf(i) != gone) expected[nameOf(i)] = 1;
    }
    EXPECT_EQ(visited(sinks.text()), expected);
    chip->onUpdate = nullptr;
    fallback->fallbackVrfIs(gone, "a");
  }
}

TEST_F(ReentryIntoDependents, DependentThatIsRemovedInItsOwnTurnDoesNotDisturbTheRest) {
  dependOn("a");
  duringFirstUpdate([&](const VrfAction& action) { fallback->fallbackVrfDel(action.vrfName()); });
  const BothSinks sinks;

  vrfSm->handleVrfUpdates("a", false);

  const std::map<std::string, int> expected{{"d0", 1}, {"d1", 1}, {"d2", 1}, {"d3", 1}};
  EXPECT_EQ(visited(sinks.text()), expected);
  EXPECT_EQ(vrfSm->dependentVrfInfo("a")->dependentVrfs().count(), 3U);
}

TEST_F(ReentryIntoDependents, WalkEndsWhenAllDependentsAreRemovedWithTheirRecord) {
  dependOn("a");
  duringFirstUpdate([&](const VrfAction&) { fallback->fallbackVrfDelAll(); });
  const BothSinks sinks;

  vrfSm->handleVrfUpdates("a", false);

  EXPECT_EQ(visited(sinks.text()).size(), 1U);
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

TEST_F(ReentryIntoDependents, NewDependentsAreVisitedAtMostOnceAndTheOldOnesOnce) {
  dependOn("a");
  duringFirstUpdate([&](const VrfAction&) {
    for (int i = 0; i < 50; ++i)
      fallback->fallbackVrfIs("new" + std::to_string(i), "a");
  });
  const BothSinks sinks;

  vrfSm->handleVrfUpdates("a", false);

  const auto times = visited(sinks.text());
  for (const auto& [name, count] : times)
    EXPECT_EQ(count, 1) << name;
  for (int i = 0; i < dependents; ++i)
    EXPECT_EQ(times.count(nameOf(i)), 1U) << nameOf(i);
  EXPECT_EQ(vrfSm->dependentVrfInfo("a")->dependentVrfs().count(), 54U);
}

TEST_F(ReentryIntoDependents, DependentsThatAreMovedAwayAreNotVisitedThere) {
  dependOn("a");
  duringFirstUpdate([&](const VrfAction&) {
    for (int i = 0; i < dependents; ++i)
      fallback->fallbackVrfIs(nameOf(i), "b");
  });
  const BothSinks sinks;

  vrfSm->handleVrfUpdates("a", false);

  EXPECT_EQ(visited(sinks.text()).size(), 1U);
  EXPECT_EQ(vrfSm->dependentVrfInfo("a"), nullptr);
  EXPECT_EQ(vrfSm->dependentVrfInfo("b")->dependentVrfs().count(), 4U);
}

TEST_F(ReentryIntoDependents, SecondLevelMayLoseMembersUnderTheWalk) {
  fallback->fallbackVrfIs("b", "a");
  dependOn("b");
  duringFirstUpdate([&](const VrfAction& action) {
    for (int i = 0; i < dependents; ++i) {
      if (nameOf(i) != action.vrfName().str()) fallback->fallbackVrfDel(nameOf(i));
    }
    forget();
  });

  vrfSm->handleVrfUpdates("a", false);

  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(vrfSm->dependentVrfInfo("b")->dependentVrfs().count(), 1U);
}

TEST_F(ReentryIntoDependents, BothLevelsMayGoUnderTheWalkOfTheSecond) {
  fallback->fallbackVrfIs("b", "a");
  fallback->fallbackVrfIs("c", "a");
  dependOn("b");
  duringFirstUpdate([&](const VrfAction&) {
    fallback->fallbackVrfDelAll();
    forget();
  });
  vrfSm->handleVrfUpdates("a", false);
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

TEST_F(ReentryIntoDependents, ActionsMayBeDeletedUnderTheWalk) {
  dependOn("a");
  duringFirstUpdate([&](const VrfAction&) { users->vrfRefCountDelAll(); });
  vrfSm->handleVrfUpdates("a", false);
  EXPECT_EQ(updates_, 1);
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
}

TEST_F(ReentryIntoDependents, MachineReleasedUnderTheWalkCompletesItAndIsGone) {
  fallback->fallbackVrfIs("b", "a");
  dependOn("b");
  duringFirstUpdate([&](const VrfAction&) { vrfSm = nullptr; });
  const auto status = routes->vrfStatusIs("a");

  status->vrfIdIs(7);

  EXPECT_EQ(updates_, dependents);
  EXPECT_EQ(live(VrfSm::typeName), 0U);
  EXPECT_EQ(live(DependentVrfInfo::typeName), 0U);
}

// Collections of nested machines, walked while they change.
class ReentryIntoNestedMachines : public DrivenVrfSmTest {
 protected:
  ReentryIntoNestedMachines() { start(); }

  void duringFirstUpdate(Work work) {
    chip->onUpdate = [this, work = std::move(work)](const VrfAction& action) {
      const VrfAction updated = action;
      if (++updates_ == 1) work(updated);
      return HwStatus();
    };
  }

  // The machines are those of what the route statuses hold, and watch exactly that.
  void expectMachinesInStep() const {
    EXPECT_EQ(vrfSm->moxVrfInstance().count(), routes->vrfStatus().count());
    for (auto entry = routes->vrfStatus().iterator(); entry; ++entry) {
      const auto* instance = vrfSm->moxVrfInstance().find(entry.key());
      ASSERT_NE(instance, nullptr) << entry.key();
      EXPECT_EQ((*instance)->vrfInstance(), entry.value());
    }
    expectInStep(vrfSm->vrfPrefixLensInExactMatch(), *routes);
    expectInStep(vrfSm->vrfPrefixLensInExactMatchV6(), *routes6);
  }

  template <class Machines>
  static void expectInStep(const Machines& machines,
                           const Routing::Hardware::RouteStatusBase& routeStatus) {
    EXPECT_EQ(machines.count(), routeStatus.vrfPrefixLensInExactMatch().count());
    for (auto entry = routeStatus.vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
      const auto* machine = machines.find(entry.key());
      ASSERT_NE(machine, nullptr) << entry.key();
      EXPECT_EQ((*machine)->prefixLens(), entry.value());
      EXPECT_FALSE((*machine)->isZombie());
      EXPECT_TRUE((*machine)->hasNotificationActive());
    }
  }

  int updates_ = 0;
};

TEST_F(ReentryIntoNestedMachines, VrfInstanceThatIsRemovedByItsOwnRemovalHookGoesOnce) {
  routes->vrfStatusIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    EXPECT_EQ(vrfSm->vrfInstanceDel("red"), nullptr);
    routes->vrfStatusDel("red");
  });
  routes->vrfStatusDel("red");
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
  expectMachinesInStep();
}

TEST_F(ReentryIntoNestedMachines, VrfThatComesBackWhileItIsRemovedHasANewInstance) {
  routes->vrfStatusIs("red");
  const auto before = *vrfSm->moxVrfInstance().find("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusIs("red"); });

  routes->vrfStatusDel("red");

  expectMachinesInStep();
  const auto after = *vrfSm->moxVrfInstance().find("red");
  EXPECT_NE(after, before);
  EXPECT_EQ(before->vrfSm(), nullptr);
  EXPECT_TRUE(before->isZombie());
  EXPECT_FALSE(after->isZombie());
  forget();
  routes->vrfStatus("red")->vrfIdIs(7);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_F(ReentryIntoNestedMachines, VrfInstanceMayBeRemovedWhileItsIdIsHandled) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusDel("red"); });

  red->vrfIdIs(7);

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red", "updateVrf red"));
  expectMachinesInStep();
  EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
  red->vrfIdIs(8);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(ReentryIntoNestedMachines, VrfInstanceMayBeRemovedWhileItIsRepointed) {
  routes->vrfStatusIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusDel("red"); });
  const auto other = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  other->vrfIdIs(9);

  routes->vrfStatusIs(other);

  expectMachinesInStep();
  EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
  forget();
  other->vrfIdIs(10);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(ReentryIntoNestedMachines, VrfInstanceMayBeRepointedWhileItIsRepointed) {
  routes->vrfStatusIs("red");
  created(actionOf("red"));
  const auto second = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  const auto third = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  second->vrfIdIs(2);
  third->vrfIdIs(3);
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusIs(third); });

  routes->vrfStatusIs(second);

  expectMachinesInStep();
  forget();
  second->vrfIdIs(22);
  EXPECT_THAT(journal.take(), IsEmpty());
  third->vrfIdIs(33);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_F(ReentryIntoNestedMachines, IdMayChangeAgainWhileItIsHandled) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { red->vrfIdIs(8); });
  red->vrfIdIs(7);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red", "updateVrf red"));
}

TEST_F(ReentryIntoNestedMachines, RemovalOfAllVrfInstancesSurvivesARemovalOfAllWithinIt) {
  for (const char* vrf : {"red", "green", "blue"}) {
    routes->vrfStatusIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) { vrfSm->vrfInstanceDelAll(); });

  vrfSm->vrfInstanceDelAll();

  const std::map<std::string, int> onceEach{
      {"updateVrf red", 1}, {"updateVrf green", 1}, {"updateVrf blue", 1}};
  EXPECT_EQ(counted(journal.take()), onceEach);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
}

TEST_F(ReentryIntoNestedMachines, RemovalOfAllVrfInstancesMayReleaseTheMachine) {
  for (const char* vrf : {"red", "green", "blue"}) {
    routes->vrfStatusIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) { vrfSm = nullptr; });
  vrfSm->vrfInstanceDelAll();
  EXPECT_EQ(updates_, 3);
  EXPECT_EQ(live(VrfSm::typeName), 0U);
}

TEST_F(ReentryIntoNestedMachines, EnteringTheZombieStateSurvivesTheRemovalOfWhatIsVisited) {
  for (const char* vrf : {"red", "green", "blue"}) {
    routes->vrfStatusIs(vrf);
    routes->vrfPrefixLensInExactMatchIs(vrf);
    routes6->vrfPrefixLensInExactMatchIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm->vrfInstanceDelAll();
    vrfSm->vrfPrefixLensInExactMatchDelAll();
    vrfSm->vrfPrefixLensInExactMatchV6DelAll();
  });

  vrfSm->moxDoZombieReactors(true);

  EXPECT_TRUE(vrfSm->isZombie());
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 0U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatchV6().count(), 0U);
}

// The two families of prefix lengths, which are twins.
struct PrefixLensFamily {
  const char* name;
  Routing::Hardware::RouteStatusBase& (*routes)(const DrivenVrfSm&);
  bool (*follows)(const VrfSm&, const char*);
  std::size_t (*liveMachines)();
  void (*delAll)(VrfSm&);
};

const PrefixLensFamily ipv4{
    "Ipv4", [](const DrivenVrfSm& on) -> Routing::Hardware::RouteStatusBase& { return *on.routes; },
    [](const VrfSm& vrfSm, const char* name) {
      return vrfSm.vrfPrefixLensInExactMatch().has(name);
    },
    [] { return live(VrfSm::NestedSm_VrfPrefixLensInExactMatch::typeName); },
    [](VrfSm& vrfSm) { vrfSm.vrfPrefixLensInExactMatchDelAll(); }};
const PrefixLensFamily ipv6{
    "Ipv6",
    [](const DrivenVrfSm& on) -> Routing::Hardware::RouteStatusBase& { return *on.routes6; },
    [](const VrfSm& vrfSm, const char* name) {
      return vrfSm.vrfPrefixLensInExactMatchV6().has(name);
    },
    [] { return live(VrfSm::NestedSm_VrfPrefixLensInExactMatchV6::typeName); },
    [](VrfSm& vrfSm) { vrfSm.vrfPrefixLensInExactMatchV6DelAll(); }};

class ReentryIntoPrefixLens : public ReentryIntoNestedMachines,
                              public ::testing::WithParamInterface<PrefixLensFamily> {
 protected:
  Routing::Hardware::RouteStatusBase& family() const { return GetParam().routes(*this); }
  bool follows(const char* name) const { return GetParam().follows(*vrfSm, name); }
};

INSTANTIATE_TEST_SUITE_P(Both, ReentryIntoPrefixLens, ::testing::Values(ipv4, ipv6),
                         [](const ::testing::TestParamInfo<PrefixLensFamily>& instance) {
                           return std::string(instance.param.name);
                         });

TEST_P(ReentryIntoPrefixLens, EntityRemovedWhileItsMachineIsCreatedLeavesNoMachine) {
  created(actionOf("red"));
  Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch> removed;
  duringFirstUpdate(
      [&](const VrfAction&) { removed = family().vrfPrefixLensInExactMatchDel("red"); });

  family().vrfPrefixLensInExactMatchIs("red");

  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 0U);
  EXPECT_EQ(updates_, 2);
  forget();
  removed->prefixLenIs(24);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_P(ReentryIntoPrefixLens, EntityReplacedWhileItsMachineIsCreatedIsFollowedInItsPlace) {
  created(actionOf("red"));
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  duringFirstUpdate([&](const VrfAction&) { family().vrfPrefixLensInExactMatchIs(other); });

  const auto first = family().vrfPrefixLensInExactMatchIs("red");

  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 1U);
  forget();
  first->prefixLenIs(24);
  EXPECT_THAT(journal.take(), IsEmpty());
  other->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_P(ReentryIntoPrefixLens, EntityRemovedAndReplacedWhileItsMachineIsCreatedIsFollowed) {
  created(actionOf("red"));
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  duringFirstUpdate([&](const VrfAction&) {
    family().vrfPrefixLensInExactMatchDel("red");
    family().vrfPrefixLensInExactMatchIs(other);
  });

  family().vrfPrefixLensInExactMatchIs("red");

  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 1U);
  forget();
  other->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_P(ReentryIntoPrefixLens, EntityRemovedAndPutBackWhileItsMachineIsCreatedIsFollowed) {
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    const auto taken = family().vrfPrefixLensInExactMatchDel("red");
    family().vrfPrefixLensInExactMatchIs(taken);
  });

  const auto lens = family().vrfPrefixLensInExactMatchIs("red");

  expectMachinesInStep();
  forget();
  lens->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_P(ReentryIntoPrefixLens, EntityReplacedAndRemovedWhileItsMachineIsCreatedLeavesNoMachine) {
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    family().vrfPrefixLensInExactMatchIs(
        Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red"));
    family().vrfPrefixLensInExactMatchDelAll();
  });
  family().vrfPrefixLensInExactMatchIs("red");
  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, OtherVrfsMayComeAndGoWhileAMachineIsCreated) {
  family().vrfPrefixLensInExactMatchIs("green");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    family().vrfPrefixLensInExactMatchDel("green");
    family().vrfPrefixLensInExactMatchIs("blue");
    family().vrfPrefixLensInExactMatchIs("grey");
  });
  family().vrfPrefixLensInExactMatchIs("red");
  expectMachinesInStep();
  EXPECT_TRUE(follows("red"));
  EXPECT_TRUE(follows("blue"));
  EXPECT_FALSE(follows("green"));
}

TEST_P(ReentryIntoPrefixLens, MachinesCreatedWithinOneAnotherMayLoseTheirEntities) {
  // While the machine of the last of five is created, all their entities go.
  for (int i = 0; i < 5; ++i)
    created(actionOf("v" + std::to_string(i)));
  chip->onUpdate = [&](const VrfAction&) {
    if (++updates_ < 5) {
      family().vrfPrefixLensInExactMatchIs("v" + std::to_string(updates_));
    } else if (updates_ == 5) {
      family().vrfPrefixLensInExactMatchDelAll();
    }
    return HwStatus();
  };

  family().vrfPrefixLensInExactMatchIs("v0");

  EXPECT_EQ(family().vrfPrefixLensInExactMatch().count(), 0U);
  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, MachineReleasedWhileANestedMachineIsCreatedTakesItAlong) {
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm = nullptr;
    family().vrfPrefixLensInExactMatchDel("red");
  });
  const auto lens = family().vrfPrefixLensInExactMatchIs("red");
  EXPECT_EQ(live(VrfSm::typeName), 0U);
  EXPECT_EQ(GetParam().liveMachines(), 0U);
  forget();
  lens->prefixLenIs(24);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_P(ReentryIntoPrefixLens, EntityThatComesBackWhileItIsRemovedHasANewMachine) {
  family().vrfPrefixLensInExactMatchIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { family().vrfPrefixLensInExactMatchIs("red"); });

  family().vrfPrefixLensInExactMatchDel("red");

  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 1U);
  forget();
  family().vrfPrefixLensInExactMatch("red")->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_P(ReentryIntoPrefixLens, EntityMayBeRemovedWhileItsChangeIsHandled) {
  const auto lens = family().vrfPrefixLensInExactMatchIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { family().vrfPrefixLensInExactMatchDel("red"); });
  lens->prefixLenIs(24);
  EXPECT_EQ(updates_, 2);
  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, RemovalOfAllSurvivesRemovalsAndAdditionsWithinIt) {
  for (const char* vrf : {"red", "green", "blue"}) {
    family().vrfPrefixLensInExactMatchIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) { GetParam().delAll(*vrfSm); });

  GetParam().delAll(*vrfSm);

  const std::map<std::string, int> onceEach{
      {"updateVrf red", 1}, {"updateVrf green", 1}, {"updateVrf blue", 1}};
  EXPECT_EQ(counted(journal.take()), onceEach);
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, CreationWhoseHookReplacesTheEntityAndThrowsCanBeRepeated) {
  created(actionOf("red"));
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  duringFirstUpdate([&](const VrfAction&) {
    family().vrfPrefixLensInExactMatchIs(other);
    throw std::runtime_error("chip is gone");
  });

  EXPECT_THROW(family().vrfPrefixLensInExactMatchIs("red"), std::runtime_error);

  EXPECT_EQ(GetParam().liveMachines(), 0U);
  family().vrfPrefixLensInExactMatchDel("red");
  family().vrfPrefixLensInExactMatchIs(other);
  expectMachinesInStep();
}

// What is there already when a machine is built.
class ReentryAtStart : public ReentryIntoNestedMachines {
 protected:
  ReentryAtStart() {
    vrfSm = nullptr;
    for (const char* vrf : vrfs)
      statuses->hwStatusIs(actionOf(vrf), HwStatus());
  }

  void build() { vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, routes6); }

  void expectFallbackInStep() const {
    EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), fallback->fallbackVrf().count());
    for (auto entry = fallback->fallbackVrf().iterator(); entry; ++entry) {
      EXPECT_EQ(vrfSm->fallbackVrfInfo(entry.key()), entry.value());
      const auto record = vrfSm->dependentVrfInfo(entry.value());
      ASSERT_NE(record, nullptr) << entry.value();
      EXPECT_TRUE(record->dependentVrfs(entry.key()));
    }
  }

  // Times that the fallback entry of each VRF was handled, as the trace has it.
  static std::map<std::string, int> handled(const std::vector<std::string>& trace) {
    const std::string text = "Handling fallback vrf config change for VRF:";
    std::map<std::string, int> times;
    for (const std::string& line : trace) {
      const std::size_t begin = line.find(text);
      if (begin != line.npos) ++times[line.substr(begin + text.size())];
    }
    return times;
  }

  static constexpr std::array<const char*, 4> vrfs{"a", "b", "c", "d"};
};

TEST_F(ReentryAtStart, FallbackEntryRemovedBeforeItsTurnIsHandledForItsRemovalOnly) {
  for (std::size_t later = 1; later < vrfs.size(); ++later) {
    fallback->fallbackVrfDelAll();
    vrfSm = nullptr;
    for (const char* vrf : vrfs)
      fallback->fallbackVrfIs(vrf, "X");
    updates_ = 0;
    duringFirstUpdate([&](const VrfAction& action) {
      const auto first = static_cast<std::size_t>(action.vrfName().bytes()[0] - 'a');
      fallback->fallbackVrfDel(vrfs[(first + later) % vrfs.size()]);
    });
    const BothSinks sinks;

    build();

    const std::map<std::string, int> onceEach{{"a", 1}, {"b", 1}, {"c", 1}, {"d", 1}};
    EXPECT_EQ(handled(sinks.text()), onceEach);
    EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 3U);
    expectFallbackInStep();
  }
}

TEST_F(ReentryAtStart, FallbackEntriesMayAllChangeDuringTheFirst) {
  for (const char* vrf : vrfs)
    fallback->fallbackVrfIs(vrf, "X");
  duringFirstUpdate([&](const VrfAction&) {
    for (const char* vrf : vrfs)
      fallback->fallbackVrfIs(vrf, "Y");
    fallback->fallbackVrfIs("new", "Y");
  });
  build();
  expectFallbackInStep();
  EXPECT_EQ(vrfSm->dependentVrfInfo("X"), nullptr);
  EXPECT_EQ(vrfSm->dependentVrfInfo("Y")->dependentVrfs().count(), 5U);
}

TEST_F(ReentryAtStart, FallbackEntriesMayAllGoDuringTheFirst) {
  for (const char* vrf : vrfs)
    fallback->fallbackVrfIs(vrf, "X");
  duringFirstUpdate([&](const VrfAction&) { fallback->fallbackVrfDelAll(); });
  build();
  expectFallbackInStep();
  EXPECT_EQ(vrfSm->dependentVrfInfo().count(), 0U);
}

TEST_F(ReentryAtStart, ActionsMayGoDuringTheFirstFallbackEntry) {
  for (const char* vrf : vrfs) {
    fallback->fallbackVrfIs(vrf, "X");
    users->vrfRefCountIs(actionOf(vrf), 1);
  }
  duringFirstUpdate([&](const VrfAction&) { users->vrfRefCountDelAll(); });
  build();
  EXPECT_EQ(updates_, 1);
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
  expectFallbackInStep();
}

TEST_F(ReentryAtStart, RouteStatusMayChangeWhileItsEntriesAreTakenOver) {
  for (const char* vrf : vrfs) {
    routes->vrfStatusIs(vrf);
    routes->vrfPrefixLensInExactMatchIs(vrf);
    routes6->vrfPrefixLensInExactMatchIs(vrf);
  }
  duringFirstUpdate([&](const VrfAction& action) {
    for (const char* vrf : vrfs) {
      if (action.vrfName() == L3::VrfName(vrf)) continue;
      routes->vrfPrefixLensInExactMatchDel(vrf);
      break;
    }
    routes->vrfPrefixLensInExactMatchIs("new");
    routes->vrfStatusDel("a");
    routes->vrfStatusIs("new");
    routes6->vrfPrefixLensInExactMatchDel("b");
    routes6->vrfPrefixLensInExactMatchIs("new");
  });
  build();
  expectMachinesInStep();
}

TEST_F(ReentryAtStart, RouteStatusMayBeEmptiedWhileItsEntriesAreTakenOver) {
  for (const char* vrf : vrfs) {
    fallback->fallbackVrfIs(vrf, "X");
    routes->vrfStatusIs(vrf);
    routes->vrfPrefixLensInExactMatchIs(vrf);
    routes6->vrfPrefixLensInExactMatchIs(vrf);
  }
  duringFirstUpdate([&](const VrfAction&) {
    routes->vrfStatusDelAll();
    routes->vrfPrefixLensInExactMatchDelAll();
    routes6->vrfPrefixLensInExactMatchDelAll();
  });
  build();
  expectMachinesInStep();
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
}

TEST_F(ReentryAtStart, MachineThatIsReplacedMayBeReleasedWhileItsSuccessorStarts) {
  build();
  fallback->fallbackVrfIs("a", "X");
  routes->vrfStatusIs("a");
  routes->vrfPrefixLensInExactMatchIs("a");
  Mox::Ptr<VrfSm> successor;
  std::size_t liveInHook = 0;
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm = nullptr;
    liveInHook = live(VrfSm::typeName);
  });

  successor = VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, routes6);

  EXPECT_EQ(liveInHook, 1U);
  vrfSm = successor;
  expectMachinesInStep();
  expectFallbackInStep();
  forget();
  routes->vrfStatus("a")->vrfIdIs(7);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf a"));
}

TEST_F(ReentryAtStart, HookThatThrowsLeavesNothingConnectedWhicheverStepItIsIn) {
  fallback->fallbackVrfIs("a", "X");
  routes->vrfStatusIs("a");
  routes->vrfPrefixLensInExactMatchIs("a");
  routes6->vrfPrefixLensInExactMatchIs("a");
  // One update for the fallback entry, then one for the prefix lengths of each family.
  for (int throwing = 1; throwing <= 3; ++throwing) {
    SCOPED_TRACE(throwing);
    updates_ = 0;
    chip->onUpdate = [&](const VrfAction&) -> HwStatus {
      if (++updates_ == throwing) throw std::runtime_error("chip is gone");
      return {};
    };

    EXPECT_THROW(build(), std::runtime_error);

    chip->onUpdate = nullptr;
    forget();
    EXPECT_EQ(vrfSm, nullptr);
    EXPECT_EQ(live(VrfSm::typeName), 0U);
    EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
    EXPECT_EQ(live(VrfSm::NestedSm_VrfPrefixLensInExactMatch::typeName), 0U);
    EXPECT_EQ(live(VrfSm::NestedSm_VrfPrefixLensInExactMatchV6::typeName), 0U);
    fallback->fallbackVrfIs("a", "Y" + std::to_string(throwing));
    routes->vrfStatus("a")->vrfIdIs(static_cast<std::uint32_t>(throwing));
    routes->decapNhEnabledIs(!routes->decapNhEnabled());
    EXPECT_THAT(journal.take(), IsEmpty());
  }
  build();
  expectMachinesInStep();
  expectFallbackInStep();
}

// The hooks that create and delete may do the same as the one that updates.
class ReentryIntoLifecycle : public DrivenVrfSmTest {
 protected:
  ReentryIntoLifecycle() { start(); }
};

TEST_F(ReentryIntoLifecycle, CreationThatSetsOffAWalkDoesNotUpdateTheActionThatIsNotThereYet) {
  created(actionOf("x", "red"));
  chip->onCreate = [&](const VrfAction&) {
    vrfSm->updateAllVrfActions("red");
    routes->decapNhEnabledIs(true);
    return HwStatus();
  };
  users->vrfRefCountInc(actionOf("red"), 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red", "updateVrf x>red>:actionVrf",
                                          "updateVrf x>red>:actionVrf"));
}

TEST_F(ReentryIntoLifecycle, DeletionThatSetsOffAWalkDoesNotUpdateTheActionThatIsGoing) {
  created(actionOf("x", "red"));
  created(actionOf("red"));
  chip->onDelete = [&](const VrfAction&) {
    vrfSm->updateAllVrfActions("red");
    routes->decapNhEnabledIs(true);
  };
  users->vrfRefCountDec(actionOf("red"), 1);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", "updateVrf x>red>:actionVrf",
                                          "updateVrf x>red>:actionVrf"));
}

TEST_F(ReentryIntoLifecycle, MachineMayBeReleasedWhileItCreates) {
  chip->onCreate = [&](const VrfAction&) {
    vrfSm = nullptr;
    return failure("written");
  };
  users->vrfRefCountInc(actionOf("red"), 1);
  EXPECT_EQ(live(VrfSm::typeName), 0U);
  EXPECT_EQ(statuses->hwStatus(actionOf("red")), failure("written"));
}

TEST_F(ReentryIntoLifecycle, MachineMayBeReleasedWhileItDeletes) {
  created(actionOf("red"));
  chip->onDelete = [&](const VrfAction&) { vrfSm = nullptr; };
  users->vrfRefCountDec(actionOf("red"), 1);
  EXPECT_EQ(live(VrfSm::typeName), 0U);
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
  EXPECT_EQ(users->vrfRefCount().count(), 0U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
