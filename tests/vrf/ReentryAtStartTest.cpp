#include <gmock/gmock.h>

#include <array>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "tests/vrf/BothSinks.h"
#include "tests/vrf/LiveObjects.h"
#include "tests/vrf/NestedMachines.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What is there already when a machine is built.
class ReentryAtStart : public NestedMachines {
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

// d falls back to c, and c to a. The id of a changes in the last update that these links call for,
// when a has no nested machine yet.
TEST_F(ReentryAtStart, IdThatChangesBeforeItsVrfIsWatchedReachesTwoLevelsOfDependents) {
  const auto status = routes->vrfStatusIs("a");
  fallback->fallbackVrfIs("c", "a");
  fallback->fallbackVrfIs("d", "c");
  chip->onUpdate = [&](const VrfAction& action) {
    if (action == actionOf("d")) status->vrfIdIs(7);
    return HwStatus();
  };
  build();
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf c", "updateVrf d", "updateVrf a",
                                          "updateVrf c", "updateVrf d"));
}

// The same with prefix lengths that go, of a VRF whose name is as long as names may be.
TEST_F(ReentryAtStart, PrefixLengthsThatGoBeforeTheyAreWatchedReachTwoLevelsOfDependents) {
  const std::string longest(L3::VrfName::maxLength, 'n');
  statuses->hwStatusIs(actionOf(longest), HwStatus());
  routes->vrfPrefixLensInExactMatchIs(longest);
  fallback->fallbackVrfIs("c", longest);
  fallback->fallbackVrfIs("d", "c");
  chip->onUpdate = [&](const VrfAction& action) {
    if (action == actionOf("d")) routes->vrfPrefixLensInExactMatchDel(longest);
    return HwStatus();
  };
  build();
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf c", "updateVrf d", "updateVrf " + longest,
                                          "updateVrf c", "updateVrf d"));
}

TEST_F(ReentryAtStart, IdOfTheDefaultVrfThatChangesMeanwhileIsPassedOver) {
  const auto status = routes->vrfStatusIs("default");
  statuses->hwStatusIs(actionOf("default"), HwStatus());
  fallback->fallbackVrfIs("d", "c");
  chip->onUpdate = [&](const VrfAction&) {
    status->vrfIdIs(7);
    return HwStatus();
  };
  build();
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf d"));
}

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
    fallback->fallbackVrfIs("a", numbered("Y", throwing));
    routes->vrfStatus("a")->vrfIdIs(static_cast<std::uint32_t>(throwing));
    routes->decapNhEnabledIs(!routes->decapNhEnabled());
    EXPECT_THAT(journal.take(), IsEmpty());
  }
  build();
  expectMachinesInStep();
  expectFallbackInStep();
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
