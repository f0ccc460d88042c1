// The end of a machine, wished for or not: nested machines run their course, the chip and the
// statuses are left alone, and nothing remains connected.

#include <algorithm>
#include <functional>

#include "Mox/Exceptions.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Resources for red and blue, red falling back to blue, one VRF instance and prefix lengths of
/// both families.
class VrfSmWithEverything : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    resourcesAre({red, blue});
    fallback->fallbackVrfIs("red", "blue");
    redStatus->vrfIdIs(7);
    journalTables();
  }
  void startQuietly() {
    start();
    journalTrace();
    forgetLines();
  }
  Lines courseOfNestedMachines() const {
    return {instanceRemove("red", 7), prefixLens("red"), prefixLens6("blue")};
  }
  void expectNothingConnected() {
    EXPECT_EQ(notifiees(*users), 1U);  // the journal
    EXPECT_EQ(notifiees(*statuses), 1U);
    EXPECT_EQ(notifiees(*fallback), 0U);
    EXPECT_EQ(notifiees(*routes), 0U);
    EXPECT_EQ(notifiees(*routes6), 0U);
    EXPECT_EQ(notifiees(*redStatus), 0U);
    EXPECT_EQ(notifiees(*redLens), 0U);
    EXPECT_EQ(notifiees(*blueLens6), 0U);
  }
  // Everything that a machine would react to.
  void changeEverything() {
    fallback->fallbackVrfIs("blue", "red");
    redStatus->vrfIdIs(9);
    redLens->prefixLenIs(24);
    blueLens6->prefixLenIs(64);
    routes->vrfStatusIs("green");
    routes->vrfStatusDel("red");
    routes->vrfPrefixLensInExactMatchDel("red");
    routes6->vrfPrefixLensInExactMatchDel("blue");
    routes->decapNhEnabledIs(true);
    routes->decapNhFallbackEnabledIs(true);
  }

  Mox::Ptr<Routing::Hardware::VrfStatus> redStatus = routes->vrfStatusIs("red");
  Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch> redLens =
      routes->vrfPrefixLensInExactMatchIs("red");
  Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch> blueLens6 =
      routes6->vrfPrefixLensInExactMatchIs("blue");
};

class VrfSmTeardown : public VrfSmWithEverything {};

TEST_F(VrfSmTeardown, TracesTheCourseOfNestedMachinesAndTouchesNeitherChipNorStatuses) {
  startQuietly();
  vrfSm = nullptr;
  EXPECT_EQ(journal.take(), courseOfNestedMachines());
  EXPECT_EQ(statuses->hwStatus().count(), 2U);
  EXPECT_EQ(users->vrfRefCount().count(), 2U);
}

TEST_F(VrfSmTeardown, OfAMachineThatCreatedResourcesDeletesNoneAndLeavesEveryStatus) {
  startQuietly();
  users->vrfRefCountIs(green, 1);
  forgetLines();
  vrfSm = nullptr;
  EXPECT_EQ(journal.take(), courseOfNestedMachines());
  for (const VrfAction& action : {red, blue, green})
    EXPECT_TRUE(statuses->hwStatusHas(action));
}

TEST_F(VrfSmTeardown, LeavesNothingConnectedAndNobodyReacting) {
  startQuietly();
  vrfSm = nullptr;
  expectNothingConnected();
  forgetLines();
  changeEverything();
  users->vrfRefCountIs(red, 2);
  EXPECT_THAT(journal.take(), ElementsAre("vrfRefCount red = 2"));
}

TEST_F(VrfSmTeardown, OfAMachineThatIsSwitchedOffIsTheSame) {
  startQuietly();
  vrfSm->hasNotificationActiveIs(false);
  vrfSm = nullptr;
  EXPECT_EQ(journal.take(), courseOfNestedMachines());
  expectNothingConnected();
}

TEST_F(VrfSmTeardown, OfAZombieTracesNothingMore) {
  startQuietly();
  vrfSm->moxDoZombieReactors(true);
  forgetLines();
  vrfSm = nullptr;
  EXPECT_THAT(journal.take(), IsEmpty());
  expectNothingConnected();
}

TEST_F(VrfSmTeardown, CallsNoHookThatWouldThrow) {
  startQuietly();
  const auto refuse = [](const VrfAction&) -> HwStatus { throw std::runtime_error("refused"); };
  chip->onCreate = refuse;
  chip->onUpdate = refuse;
  chip->onDelete = [](const VrfAction&) { throw std::runtime_error("refused"); };
  EXPECT_NO_THROW(vrfSm = nullptr);
  EXPECT_EQ(journal.take(), courseOfNestedMachines());
}

TEST_F(VrfSmTeardown, FollowsNoChangeThatItsOwnTraceBringsAbout) {
  start();
  forgetLines();
  const Mox::TraceSink before = Mox::traceSinkIs([this](std::string_view) {
    users->vrfRefCountIs(green, 1);
    users->vrfRefCountIs(red, 0);
    fallback->fallbackVrfIs("red", "green");
  });
  Mox::traceLevelsIs("ZelVrfSelection=*");
  vrfSm = nullptr;
  Mox::traceSinkIs(before);
  EXPECT_THAT(journal.take(), ElementsAre("vrfRefCount green = 1", "vrfRefCount red = 0"));
  EXPECT_TRUE(statuses->hwStatusHas(red));
}

TEST_F(VrfSmTeardown, ManyNestedMachinesEachTraceTheirCourseOnce) {
  vrfSm = nullptr;
  for (const char* vrf : {"default", "green", "yellow"}) {
    routes->vrfStatusIs(vrf);
    routes->vrfPrefixLensInExactMatchIs(vrf);
    routes6->vrfPrefixLensInExactMatchIs(vrf);
  }
  startQuietly();
  vrfSm = nullptr;
  Lines expected = courseOfNestedMachines();
  for (const char* vrf : {"default", "green", "yellow"}) {
    expected.insert(expected.end(), {instanceRemove(vrf, 0), prefixLens(vrf), prefixLens6(vrf)});
  }
  EXPECT_THAT(journal.take(), ::testing::UnorderedElementsAreArray(expected));
}

TEST_F(VrfSmTeardown, AnInstanceThatOutlivesItReachesNothing) {
  startQuietly();
  const Mox::Ptr<VrfSm::VrfInstanceSm> instance = *vrfSm->moxVrfInstance().find("red");
  vrfSm = nullptr;
  EXPECT_EQ(instance->vrfSm(), nullptr);
  EXPECT_TRUE(instance->isZombie());
  EXPECT_FALSE(instance->hasNotificationActive());
  forgetLines();
  redStatus->vrfIdIs(8);
  EXPECT_THAT(journal.take(), IsEmpty());
  instance->moxDoZombieReactors(false);
  EXPECT_THAT(journal.take(), ElementsAre(instanceRemove("red", 8)));
}

TEST_F(VrfSmTeardown, ALivingMachinesZombieStateReachesTheChipUnlikeIt) {
  startQuietly();
  numberUpdates();
  vrfSm->moxDoZombieReactors(true);
  const Lines ofBlue{updatingAll("blue"), updatingOneOfAll("blue"), "updateVrf blue",
                     "hwStatus blue = " + updated(3)};
  Lines expected;
  unsigned number = 1;
  for (const std::string& handled : {instanceRemove("red", 7), prefixLens("red")}) {
    expected.insert(expected.end(), {handled, updatingAll("red"), updatingOneOfAll("red"),
                                     "updateVrf red", "hwStatus red = " + updated(number++)});
  }
  expected.push_back(prefixLens6("blue"));
  expected.insert(expected.end(), ofBlue.begin(), ofBlue.end());
  expected.insert(expected.end(),
                  {updatingDependent("red", "blue"), updatingAll("red"), updatingOneOfAll("red"),
                   "updateVrf red", "hwStatus red = " + updated(4)});
  EXPECT_EQ(journal.take(), expected);
}

/// The last reference to the machine goes from inside a hook that the machine called.
class VrfSmReleasedInAHook : public VrfSmWithEverything {
 protected:
  void SetUp() override {
    VrfSmWithEverything::SetUp();
    startQuietly();
    chip->onCreate = chip->onUpdate = [this](const VrfAction&) {
      vrfSm = nullptr;
      return HwStatus();
    };
    chip->onDelete = [this](const VrfAction&) { vrfSm = nullptr; };
  }
  // `lines`, and then the end of the machine.
  Lines endingAfter(Lines lines) const {
    const Lines course = courseOfNestedMachines();
    lines.insert(lines.end(), course.begin(), course.end());
    return lines;
  }
};

TEST_F(VrfSmReleasedInAHook, DuringACreationItStoresTheOutcomeAndThenEnds) {
  users->vrfRefCountIs(green, 1);
  EXPECT_EQ(journal.take(),
            endingAfter({"vrfRefCount green = 1", "createVrf green", "hwStatus green = ok"}));
  expectNothingConnected();
}

TEST_F(VrfSmReleasedInAHook, DuringADeletionItCompletesTheRemovalAndThenEnds) {
  users->vrfRefCountIs(red, 0);
  EXPECT_EQ(journal.take(), endingAfter({"vrfRefCount red = 0", "deleteVrf red", deleting("red"),
                                         "vrfRefCount red gone", "hwStatus red gone"}));
  expectNothingConnected();
  EXPECT_FALSE(statuses->hwStatusHas(red));
  EXPECT_TRUE(statuses->hwStatusHas(blue));
}

TEST_F(VrfSmReleasedInAHook, DuringADeletionWithNewUsersItCreatesAnewAndThenEnds) {
  chip->onCreate = nullptr;
  chip->onDelete = [this](const VrfAction&) {
    users->vrfRefCountIs(red, 1);
    vrfSm = nullptr;
  };
  users->vrfRefCountIs(red, 0);
  EXPECT_EQ(
      journal.take(),
      endingAfter({"vrfRefCount red = 0", "deleteVrf red", "vrfRefCount red = 1", deleting("red"),
                   "hwStatus red gone", "createVrf red", "hwStatus red = ok"}));
  EXPECT_TRUE(statuses->hwStatusHas(red));
}

TEST_F(VrfSmReleasedInAHook, DuringAnUpdateForAVrfIdItFinishesTheUpdatesAndThenEnds) {
  redStatus->vrfIdIs(8);
  EXPECT_EQ(
      journal.take(),
      Lines({instanceVrfId("red", 8), updatingAll("red"), updatingOneOfAll("red"), "updateVrf red",
             instanceRemove("red", 8), prefixLens("red"), prefixLens6("blue")}));
  expectNothingConnected();
}

TEST_F(VrfSmReleasedInAHook, DuringAnUpdateForPrefixLengthsItFinishesTheUpdatesAndThenEnds) {
  blueLens6->prefixLenIs(64);
  EXPECT_EQ(journal.take(),
            endingAfter({prefixLens6("blue"), updatingAll("blue"), updatingOneOfAll("blue"),
                         "updateVrf blue", updatingDependent("red", "blue"), updatingAll("red"),
                         updatingOneOfAll("red"), "updateVrf red"}));
  expectNothingConnected();
}

TEST_F(VrfSmReleasedInAHook, DuringAFallbackChangeItFinishesTheUpdatesAndThenEnds) {
  fallback->fallbackVrfIs("red", "green");
  EXPECT_EQ(journal.take(), endingAfter({fallbackChange("red"), updatingAll("red"),
                                         updatingOneOfAll("red"), "updateVrf red"}));
  expectNothingConnected();
}

TEST_F(VrfSmReleasedInAHook, DuringTheRemovalOfAVrfItFinishesTheUpdatesAndThenEnds) {
  routes->vrfStatusDel("red");
  EXPECT_EQ(journal.take(),
            Lines({instanceRemove("red", 7), updatingAll("red"), updatingOneOfAll("red"),
                   "updateVrf red", prefixLens("red"), prefixLens6("blue")}));
  expectNothingConnected();
}

TEST_F(VrfSmReleasedInAHook, DuringADecapChangeItFinishesTheUpdatesAndThenEnds) {
  routes->decapNhFallbackEnabledIs(true);
  const Lines lines = journal.take();
  EXPECT_EQ(std::ranges::count(lines, "updateVrf red"), 1);
  EXPECT_EQ(std::ranges::count(lines, "updateVrf blue"), 1);
  EXPECT_EQ(Lines(lines.end() - 3, lines.end()), courseOfNestedMachines());
  expectNothingConnected();
}

TEST_F(VrfSmReleasedInAHook, WhileItEntersTheZombieStateItCompletesThatAndThenEndsSilently) {
  vrfSm->moxDoZombieReactors(true);
  const Lines lines = journal.take();
  for (const std::string& line : courseOfNestedMachines()) {
    EXPECT_EQ(std::ranges::count(lines, line), 1) << line;
  }
  EXPECT_EQ(std::ranges::count(lines, "updateVrf red"), 3);
  EXPECT_EQ(std::ranges::count(lines, "updateVrf blue"), 1);
  EXPECT_EQ(lines.back(), "updateVrf red");
  expectNothingConnected();
}

TEST_F(VrfSmReleasedInAHook, DuringAnUpdateOfOneActionItFinishesThatAndThenEnds) {
  VrfSm& machine = *vrfSm;
  machine.updateVrfAction(red);
  EXPECT_EQ(journal.take(), endingAfter({updating("red"), "updateVrf red"}));
  expectNothingConnected();
}

TEST_F(VrfSmReleasedInAHook, WhileItHandlesEveryFallbackVrfItFinishesThatAndThenEnds) {
  vrfSm->hasNotificationActiveIs(false);
  fallback->fallbackVrfIs("red", "green");
  fallback->fallbackVrfIs("blue", "green");
  vrfSm->hasNotificationActiveIs(true);
  forgetLines();
  VrfSm& machine = *vrfSm;
  machine.handleInitialized();
  EXPECT_EQ(journal.take(),
            endingAfter({initialize(), fallbackChange("red"), updatingAll("red"),
                         updatingOneOfAll("red"), "updateVrf red", fallbackChange("blue"),
                         updatingAll("blue"), updatingOneOfAll("blue"), "updateVrf blue"}));
  expectNothingConnected();
}

/// A start that fails half-way.
class VrfSmFailedStart : public VrfSmWithEverything {
 protected:
  // Has the update of that number throw.
  void throwAtUpdate(unsigned number) {
    chip->onUpdate = [number](const VrfAction&) mutable -> HwStatus {
      if (--number == 0) throw std::runtime_error("chip is gone");
      return HwStatus();
    };
  }
  std::vector<unsigned> references() const {
    return {users->references(),     statuses->references(), chip->references(),
            fallback->references(),  routes->references(),   routes6->references(),
            redStatus->references(), redLens->references(),  blueLens6->references()};
  }
  // The start throws `Exception`; afterwards all is as if it had not been tried.
  template <class Exception>
  Lines failToStart() {
    const std::vector<unsigned> before = references();
    journalTrace();
    forgetLines();
    EXPECT_THROW(start(), Exception);
    const Lines lines = journal.take();
    EXPECT_EQ(vrfSm, nullptr);
    EXPECT_EQ(references(), before);
    expectNothingConnected();
    changeEverything();
    users->vrfRefCountIs(red, 2);
    EXPECT_THAT(journal.take(), ElementsAre("vrfRefCount red = 2"));
    return lines;
  }

  const Lines untilTheFallback{initialize(), fallbackChange("red"), updatingAll("red"),
                               updatingOneOfAll("red"), "updateVrf red"};
  const Lines untilIpv4{instanceInitialized("red", 7), prefixLensInitialized("red"),
                        updatingAll("red"), updatingOneOfAll("red"), "updateVrf red"};
  const Lines untilIpv6{prefixLens6Initialized("blue"), updatingAll("blue"),
                        updatingOneOfAll("blue"), "updateVrf blue"};

  static Lines joined(std::initializer_list<Lines> parts) {
    Lines whole;
    for (const Lines& part : parts)
      whole.insert(whole.end(), part.begin(), part.end());
    return whole;
  }
};

TEST_F(VrfSmFailedStart, AtTheFallbackEntriesCallsNoFurtherHook) {
  throwAtUpdate(1);
  EXPECT_EQ(failToStart<std::runtime_error>(), untilTheFallback);
}

TEST_F(VrfSmFailedStart, AtIpv4PrefixLengthsEndsTheInstancesWithoutTouchingTheChip) {
  throwAtUpdate(2);
  EXPECT_EQ(failToStart<std::runtime_error>(),
            joined({untilTheFallback, untilIpv4, {instanceRemove("red", 7)}}));
}

TEST_F(VrfSmFailedStart, AtIpv6PrefixLengthsEndsTheOthersWithoutTouchingTheChip) {
  throwAtUpdate(3);
  EXPECT_EQ(
      failToStart<std::runtime_error>(),
      joined(
          {untilTheFallback, untilIpv4, untilIpv6, {instanceRemove("red", 7), prefixLens("red")}}));
}

TEST_F(VrfSmFailedStart, AtADependentVrfEndsTheOthersWithoutTouchingTheChip) {
  throwAtUpdate(4);
  EXPECT_EQ(failToStart<std::runtime_error>(),
            joined({untilTheFallback,
                    untilIpv4,
                    untilIpv6,
                    {updatingDependent("red", "blue"), updatingAll("red"), updatingOneOfAll("red"),
                     "updateVrf red", instanceRemove("red", 7), prefixLens("red")}}));
}

TEST_F(VrfSmFailedStart, AtAPrefixLengthEntityWhoseNameIsTooLongPassesTheRangeErrorOn) {
  const std::string tooLong(101, 'n');
  routes6->vrfPrefixLensInExactMatchDel("blue");
  const auto lens = routes6->vrfPrefixLensInExactMatchIs(tooLong);
  EXPECT_EQ(
      failToStart<Mox::RangeException>(),
      joined({untilTheFallback,
              untilIpv4,
              {prefixLens6Initialized(tooLong), instanceRemove("red", 7), prefixLens("red")}}));
  EXPECT_EQ(notifiees(*lens), 0U);
}

TEST_F(VrfSmFailedStart, ReportsTheTooLongNameInThePlatformsWords) {
  routes->vrfPrefixLensInExactMatchIs(std::string(101, 'n'));
  try {
    start();
    FAIL() << "the start succeeded";
  } catch (const Mox::RangeException& error) {
    EXPECT_STREQ(error.what(), "Mox::String::bytes > maxLength() not allowed");
  }
}

TEST_F(VrfSmFailedStart, LeavesStatusesAsTheyWere) {
  statuses->hwStatusIs(red, failure(FailureCode::failureVrfResourceAlloc, "from before"));
  throwAtUpdate(1);
  EXPECT_THROW(start(), std::runtime_error);
  EXPECT_EQ(statuses->hwStatus(red), failure(FailureCode::failureVrfResourceAlloc, "from before"));
  EXPECT_EQ(statuses->hwStatus(blue), HwStatus());
}

TEST_F(VrfSmFailedStart, MayBeRepeatedAndSucceedThen) {
  throwAtUpdate(2);
  EXPECT_THROW(start(), std::runtime_error);
  chip->onUpdate = nullptr;
  start();
  EXPECT_TRUE(vrfSm->moxVrfInstanceHas("red"));
  forgetLines();
  users->vrfRefCountIs(green, 1);
  EXPECT_THAT(journal.take(),
              ElementsAre("vrfRefCount green = 1", "createVrf green", "hwStatus green = ok"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
