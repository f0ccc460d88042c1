#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "testing/TableJournal.h"
#include "tests/vrf/LiveObjects.h"
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
      users->vrfRefCountInc(actionOf(numbered("new", i), "red"), 1);
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
    users->vrfRefCountInc(actionOf(numbered("new", added), "red"), 1);
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
