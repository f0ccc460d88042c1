#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/vrf/BothSinks.h"
#include "tests/vrf/DrivenVrfSm.h"
#include "tests/vrf/LiveObjects.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::IsEmpty;

using Work = std::function<void(const VrfAction&)>;

// The walks over dependent VRFs, of which each has one action.
class ReentryIntoDependents : public DrivenVrfSmTest {
 protected:
  static constexpr int dependents = 4;

  ReentryIntoDependents() { start(); }

  static std::string nameOf(int i) { return numbered("d", i); }

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
      fallback->fallbackVrfIs(numbered("new", i), "a");
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

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
