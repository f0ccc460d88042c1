// What a VrfSm connects itself to, when it listens, and what it does at start.

#include <algorithm>

#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "tests/vrf/FrameFixture.h"
#include "tests/vrf/LiveObjects.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VrfSmFrame : public VrfSmFrameFixture {};

TEST_F(VrfSmFrame, KeepsItsInputsWhileItLivesAndReleasesThemAfterwards) {
  const unsigned references[] = {users->references(),  statuses->references(),
                                 chip->references(),   fallback->references(),
                                 routes->references(), routes6->references()};
  start();
  EXPECT_EQ(vrfSm->vrfHwConfig(), users);
  EXPECT_EQ(vrfSm->vrfHwStatus(), statuses);
  EXPECT_EQ(vrfSm->vrfHelper().get(), chip.get());
  EXPECT_EQ(vrfSm->vrfFallbackConfig().get(), fallback.get());
  EXPECT_EQ(vrfSm->routingHwRouteStatus().get(), routes.get());
  EXPECT_EQ(vrfSm->routing6HwRouteStatus().get(), routes6.get());
  EXPECT_GT(users->references(), references[0]);
  vrfSm = nullptr;
  const unsigned released[] = {users->references(),  statuses->references(),
                               chip->references(),   fallback->references(),
                               routes->references(), routes6->references()};
  EXPECT_TRUE(std::ranges::equal(released, references));
}

TEST_F(VrfSmFrame, TheFactoryMakesAMachineThatIsActive) {
  vrfSm = vrfSmFactory(users, statuses, chip, fallback, routes, routes6);
  EXPECT_TRUE(vrfSm->hasNotificationActive());
  EXPECT_FALSE(vrfSm->isZombie());
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red"));
}

TEST_F(VrfSmFrame, WithoutAnIpv4RouteStatusItHasNoReactorNoInstancesAndNoIpv4PrefixLengths) {
  routes->vrfStatusIs("red");
  routes->vrfPrefixLensInExactMatchIs("red");
  routes6->vrfPrefixLensInExactMatchIs("blue");
  vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, nullptr, routes6);
  EXPECT_EQ(vrfSm->routingHwRouteStatus(), nullptr);
  EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm::MoxRoutingHwRouteStatus"), 0U);
  EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm::MoxRouting6HwRouteStatus"), 1U);
  EXPECT_EQ(notifiees(*routes), 0U);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 0U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatchV6().count(), 1U);
}

TEST_F(VrfSmFrame, WithoutAnIpv6RouteStatusItHasNoReactorAndNoIpv6PrefixLengths) {
  routes->vrfStatusIs("red");
  routes->vrfPrefixLensInExactMatchIs("red");
  routes6->vrfPrefixLensInExactMatchIs("blue");
  vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, nullptr);
  EXPECT_EQ(vrfSm->routing6HwRouteStatus(), nullptr);
  EXPECT_EQ(live("ZelVrfSelectionPolicy::VrfSm::MoxRouting6HwRouteStatus"), 0U);
  EXPECT_EQ(notifiees(*routes6), 0U);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 1U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatchV6().count(), 0U);
}

TEST_F(VrfSmFrame, WithoutRouteStatusesItSwitchesOnAndOffAndEndsLikeAnyOther) {
  vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, nullptr, nullptr);
  vrfSm->hasNotificationActiveIs(false);
  vrfSm->hasNotificationActiveIs(true);
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red"));
  vrfSm->moxDoZombieReactors(true);
  EXPECT_TRUE(vrfSm->isZombie());
  vrfSm = nullptr;
  EXPECT_EQ(notifiees(*users), 0U);
}

TEST_F(VrfSmFrame, WithoutACountTableItHasNoSubscriptionAndSwitchingSkipsIt) {
  vrfSm = VrfSm::VrfSmIs(nullptr, statuses, chip, fallback, routes, routes6);
  EXPECT_EQ(vrfSm->vrfHwConfig(), nullptr);
  EXPECT_EQ(notifiees(*fallback), 1U);
  vrfSm->hasNotificationActiveIs(false);
  EXPECT_EQ(notifiees(*fallback), 0U);
  vrfSm->hasNotificationActiveIs(true);
  EXPECT_EQ(notifiees(*fallback), 1U);
  users->vrfRefCountIs(red, 1);
  EXPECT_THAT(journal.take(), IsEmpty());
  fallback->fallbackVrfIs("red", "blue");
  EXPECT_EQ(vrfSm->fallbackVrfInfo("red"), "blue");
}

TEST_F(VrfSmFrame, SubscribesToEachInputOnce) {
  start();
  EXPECT_EQ(notifiees(*users), 1U);
  EXPECT_EQ(notifiees(*statuses), 0U);
  EXPECT_EQ(notifiees(*fallback), 1U);
  EXPECT_EQ(notifiees(*routes), 1U);
  EXPECT_EQ(notifiees(*routes6), 1U);
}

class VrfSmNotifications : public VrfSmFrameFixture {
 protected:
  // A machine with a resource for red, one VRF instance and prefix lengths of both families.
  void SetUp() override {
    resourcesAre({red});
    redStatus->vrfIdIs(7);
    start();
    forgetLines();
    journalTrace();
  }

  Mox::Ptr<Routing::Hardware::VrfStatus> redStatus = routes->vrfStatusIs("red");
  Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch> redLens =
      routes->vrfPrefixLensInExactMatchIs("red");
  Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch> redLens6 =
      routes6->vrfPrefixLensInExactMatchIs("red");
  const Lines updateOfRed{updatingAll("red"), updatingOneOfAll("red"), "updateVrf red"};

  Lines after(const std::string& line) const {
    Lines lines{line};
    lines.insert(lines.end(), updateOfRed.begin(), updateOfRed.end());
    return lines;
  }
};

TEST_F(VrfSmNotifications, SwitchingThemOnTwiceAddsEachSubscriptionOnce) {
  vrfSm->hasNotificationActiveIs(true);
  vrfSm->hasNotificationActiveIs(true);
  EXPECT_EQ(notifiees(*users), 1U);
  EXPECT_EQ(notifiees(*fallback), 1U);
  users->vrfRefCountIs(red, 2);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 2)));
}

TEST_F(VrfSmNotifications, SwitchingThemOffRemovesBothSubscriptionsAndSilencesNestedMachines) {
  const auto instance = *vrfSm->moxVrfInstance().find("red");
  EXPECT_TRUE(instance->hasNotificationActive());
  vrfSm->hasNotificationActiveIs(false);
  EXPECT_FALSE(vrfSm->hasNotificationActive());
  EXPECT_EQ(notifiees(*users), 0U);
  EXPECT_EQ(notifiees(*fallback), 0U);
  EXPECT_FALSE(instance->hasNotificationActive());
  vrfSm->hasNotificationActiveIs(false);
  EXPECT_EQ(notifiees(*users), 0U);
  vrfSm->hasNotificationActiveIs(true);
  EXPECT_TRUE(vrfSm->hasNotificationActive());
  EXPECT_EQ(notifiees(*users), 1U);
  EXPECT_EQ(notifiees(*fallback), 1U);
  EXPECT_TRUE(instance->hasNotificationActive());
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmNotifications, ACountThatChangedWhileTheyWereOffIsNotReplayed) {
  vrfSm->hasNotificationActiveIs(false);
  users->vrfRefCountIs(blue, 1);
  users->vrfRefCountIs(red, 5);
  vrfSm->hasNotificationActiveIs(true);
  EXPECT_THAT(journal.take(), IsEmpty());
  users->vrfRefCountIs(red, 6);
  users->vrfRefCountIs(green, 1);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 6), "createVrf green"));
  EXPECT_FALSE(statuses->hwStatusHas(blue));
}

TEST_F(VrfSmNotifications, AFallbackThatChangedWhileTheyWereOffIsNotReplayed) {
  vrfSm->hasNotificationActiveIs(false);
  fallback->fallbackVrfIs("green", "blue");
  vrfSm->hasNotificationActiveIs(true);
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 0U);
  fallback->fallbackVrfIs("green", "yellow");
  EXPECT_THAT(journal.take(), ElementsAre(fallbackChange("green"), updatingAll("green")));
  EXPECT_EQ(vrfSm->fallbackVrfInfo("green"), "yellow");
}

TEST_F(VrfSmNotifications, NothingThatTheRouteStatusesReportIsHandledWhileTheyAreOff) {
  vrfSm->hasNotificationActiveIs(false);
  routes->vrfStatusIs("blue");
  routes->vrfStatusDel("red");
  routes->vrfPrefixLensInExactMatchIs("blue");
  routes6->vrfPrefixLensInExactMatchIs("blue");
  routes->decapNhEnabledIs(true);
  routes->decapNhFallbackEnabledIs(true);
  redStatus->vrfIdIs(8);
  redLens->prefixLenIs(24);
  redLens6->prefixLenIs(64);
  vrfSm->hasNotificationActiveIs(true);
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_TRUE(vrfSm->moxVrfInstanceHas("red"));
  EXPECT_FALSE(vrfSm->moxVrfInstanceHas("blue"));
  EXPECT_FALSE(vrfSm->vrfPrefixLensInExactMatch().has("blue"));
  EXPECT_FALSE(vrfSm->vrfPrefixLensInExactMatchV6().has("blue"));
}

TEST_F(VrfSmNotifications, ReactorsAndNestedMachinesReportAgainOnceTheyAreBackOn) {
  vrfSm->hasNotificationActiveIs(false);
  vrfSm->hasNotificationActiveIs(true);
  redStatus->vrfIdIs(8);
  EXPECT_EQ(journal.take(), after(instanceVrfId("red", 8)));
  redLens->prefixLenIs(24);
  EXPECT_EQ(journal.take(), after(prefixLens("red")));
  redLens6->prefixLenIs(64);
  EXPECT_EQ(journal.take(), after(prefixLens6("red")));
  routes->vrfStatusDel("red");
  EXPECT_EQ(journal.take(), after(instanceRemove("red", 8)));
  routes->vrfPrefixLensInExactMatchDel("red");
  EXPECT_EQ(journal.take(), after(prefixLens("red")));
  routes6->vrfPrefixLensInExactMatchDel("red");
  EXPECT_EQ(journal.take(), after(prefixLens6("red")));
}

class VrfSmDispatch : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    resourcesAre({red});
    start();
    journalTrace();
  }
};

TEST_F(VrfSmDispatch, ActsOnAttribute130OfTheCountTable) {
  users->publisher().publish(130, &red, nullptr);
  EXPECT_THAT(journal.take(), ElementsAre(alreadyInUse("red", 1)));
}

TEST_F(VrfSmDispatch, IgnoresEveryOtherAttributeOfTheCountTable) {
  for (const short attribute : std::initializer_list<short>{-1, 0, 1, 2, 129, 131, 258, 259, 392}) {
    users->publisher().publish(attribute, &red, nullptr);
    users->publisher().publish(attribute, &blue, nullptr);
  }
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmDispatch, ActsOnAttribute258OfTheFallbackConfiguration) {
  const L3::VrfName name("green");
  fallback->publisher().publish(258, &name, nullptr);
  EXPECT_THAT(journal.take(), ElementsAre(fallbackChange("green"), updatingAll("green")));
}

TEST_F(VrfSmDispatch, IgnoresEveryOtherAttributeOfTheFallbackConfiguration) {
  const L3::VrfName name("red");
  for (const short attribute : std::initializer_list<short>{-1, 0, 2, 130, 131, 257, 259, 392}) {
    fallback->publisher().publish(attribute, &name, nullptr);
  }
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmDispatch, DropsChangesWithoutATraceWhileTheMachineIsAZombie) {
  vrfSm->moxDoZombieReactors(true);
  journalTables();
  users->vrfRefCountIs(blue, 1);
  users->vrfRefCountIs(red, 2);
  users->vrfRefCountDel(red);
  fallback->fallbackVrfIs("red", "blue");
  EXPECT_THAT(journal.take(),
              ElementsAre("vrfRefCount blue = 1", "vrfRefCount red = 2", "vrfRefCount red gone"));
  EXPECT_EQ(vrfSm->fallbackVrfInfo().count(), 0U);
}

TEST_F(VrfSmDispatch, FollowsAgainButDoesNotReplayOnceTheMachineIsNoZombieAnyMore) {
  vrfSm->moxDoZombieReactors(true);
  users->vrfRefCountIs(blue, 1);
  fallback->fallbackVrfIs("red", "blue");
  vrfSm->moxDoZombieReactors(false);
  EXPECT_THAT(journal.take(), IsEmpty());
  users->vrfRefCountIs(green, 1);
  EXPECT_THAT(journal.take(), ElementsAre("createVrf green"));
}

TEST_F(VrfSmDispatch, SubscriptionsOutlastTheZombieState) {
  vrfSm->moxDoZombieReactors(true);
  EXPECT_EQ(notifiees(*users), 1U);
  EXPECT_EQ(notifiees(*fallback), 1U);
}

class VrfSmStart : public VrfSmFrameFixture {};

TEST_F(VrfSmStart, WithNothingThereOnlyTracesThatItInitializes) {
  journalTrace();
  start();
  EXPECT_THAT(journal.take(), ElementsAre(initialize()));
}

TEST_F(VrfSmStart, VrfStatusesOfTheIpv6RouteStatusCreateNoInstance) {
  routes6->vrfStatusIs("red");
  routes6->vrfStatusIs("blue");
  start();
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
}

TEST_F(VrfSmStart, EveryVrfStatusOfTheIpv4RouteStatusGetsAnInstance) {
  for (const char* vrf : {"default", "red", "blue"})
    routes->vrfStatusIs(vrf);
  start();
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 3U);
  for (const char* vrf : {"default", "red", "blue"})
    EXPECT_TRUE(vrfSm->moxVrfInstanceHas(vrf));
}

TEST_F(VrfSmStart, PrefixLengthsOfEachFamilyGetTheirMachines) {
  routes->vrfPrefixLensInExactMatchIs("red");
  routes->vrfPrefixLensInExactMatchIs("blue");
  routes6->vrfPrefixLensInExactMatchIs("green");
  start();
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 2U);
  EXPECT_TRUE(vrfSm->vrfPrefixLensInExactMatch().has("red"));
  EXPECT_TRUE(vrfSm->vrfPrefixLensInExactMatch().has("blue"));
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatchV6().count(), 1U);
  EXPECT_TRUE(vrfSm->vrfPrefixLensInExactMatchV6().has("green"));
}

TEST_F(VrfSmStart, ThreeFallbackEntriesAreHandledBeforeTheFirstInstanceIsMade) {
  for (const char* vrf : {"red", "blue", "green"})
    fallback->fallbackVrfIs(vrf, "yellow");
  routes->vrfStatusIs("red");
  journalTrace();
  start();
  const Lines lines = journal.take();
  std::vector<std::string> handled;
  const auto firstInstance = std::ranges::find(lines, instanceInitialized("red", 0));
  std::copy_if(lines.begin(), firstInstance, std::back_inserter(handled), [](const auto& line) {
    return line.find(" handleVrfFallbackConfig ") != std::string::npos;
  });
  EXPECT_NE(firstInstance, lines.end());
  EXPECT_THAT(handled, ::testing::UnorderedElementsAre(
                           fallbackChange("red"), fallbackChange("blue"), fallbackChange("green")));
}

TEST_F(VrfSmStart, CountsThatAreThereAlreadyAreNotHandled) {
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountIs(blue, 4);
  users->vrfRefCountIs(green, 0);
  journalTrace();
  journalTables();
  start();
  EXPECT_THAT(journal.take(), ElementsAre(initialize()));
  EXPECT_EQ(statuses->hwStatus().count(), 0U);
}

TEST_F(VrfSmStart, ACountThatChangesWhileItIsUnderWayIsHandled) {
  resourcesAre({red});
  fallback->fallbackVrfIs("red", "blue");
  chip->onUpdate = [this](const VrfAction&) {
    users->vrfRefCountIs(green, 1);
    return HwStatus();
  };
  start();
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red", "createVrf green"));
  EXPECT_TRUE(statuses->hwStatusHas(green));
}

TEST_F(VrfSmStart, AVrfThatComesWhileItIsUnderWayGetsOneInstance) {
  resourcesAre({red});
  fallback->fallbackVrfIs("red", "blue");
  chip->onUpdate = [this](const VrfAction&) {
    routes->vrfStatusIs("late");
    return HwStatus();
  };
  journalTrace();
  start();
  EXPECT_TRUE(vrfSm->moxVrfInstanceHas("late"));
  EXPECT_EQ(std::ranges::count(journal.lines(), instanceInitialized("late", 0)), 1);
}

TEST_F(VrfSmStart, HandlingItAgainTracesAndHandlesEveryFallbackEntryAgain) {
  fallback->fallbackVrfIs("red", "blue");
  start();
  journalTrace();
  vrfSm->handleInitialized();
  EXPECT_THAT(journal.take(), ElementsAre(initialize(), fallbackChange("red"), updatingAll("red"),
                                          fallbackAlreadyHandled()));
}

class VrfSmZombie : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    resourcesAre({red});
    routes->vrfStatusIs("red")->vrfIdIs(7);
    routes->vrfPrefixLensInExactMatchIs("red");
    routes6->vrfPrefixLensInExactMatchIs("red");
    start();
    forgetLines();
    numberUpdates();
    journalTrace();
    journalTables();
  }

  // What entering and leaving the state do alike, the first update having that number.
  Lines courseOfNestedMachines(unsigned number) const {
    Lines lines;
    for (const std::string& handled :
         {instanceRemove("red", 7), prefixLens("red"), prefixLens6("red")}) {
      lines.insert(lines.end(), {handled, updatingAll("red"), updatingOneOfAll("red"),
                                 "updateVrf red", "hwStatus red = " + updated(number++)});
    }
    return lines;
  }
};

TEST_F(VrfSmZombie, EnteringAndLeavingTheStateRunsNestedMachinesWithTheirUpdates) {
  vrfSm->moxDoZombieReactors(true);
  EXPECT_TRUE(vrfSm->isZombie());
  EXPECT_EQ(journal.take(), courseOfNestedMachines(1));
  vrfSm->moxDoZombieReactors(false);
  EXPECT_FALSE(vrfSm->isZombie());
  EXPECT_EQ(journal.take(), courseOfNestedMachines(4));
}

TEST_F(VrfSmZombie, EnteringTheStateTwiceDoesNothingTheSecondTime) {
  vrfSm->moxDoZombieReactors(true);
  forgetLines();
  vrfSm->moxDoZombieReactors(true);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmZombie, LeavingTheStateWithoutHavingEnteredItDoesNothing) {
  vrfSm->moxDoZombieReactors(false);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmZombie, LeavingTheStateWithoutHavingEnteredItLeavesNestedMachinesInTheirs) {
  const Mox::Ptr<VrfSm::VrfInstanceSm> instance = *vrfSm->moxVrfInstance().find("red");
  instance->moxDoZombieReactors(true);
  forgetLines();
  vrfSm->moxDoZombieReactors(false);
  EXPECT_TRUE(instance->isZombie());
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmZombie, TheMachineItselfEntersTheStateLast) {
  std::vector<bool> wasZombie;
  chip->onUpdate = [&](const VrfAction&) {
    wasZombie.push_back(vrfSm->isZombie());
    return HwStatus();
  };
  vrfSm->moxDoZombieReactors(true);
  EXPECT_THAT(wasZombie, ElementsAre(false, false, false));
  EXPECT_TRUE(vrfSm->isZombie());
}

TEST_F(VrfSmZombie, ReactorsAndNestedMachinesReportNothingInTheState) {
  vrfSm->moxDoZombieReactors(true);
  forgetLines();
  routes->vrfStatus("red")->vrfIdIs(8);
  routes->vrfPrefixLensInExactMatch("red")->prefixLenIs(24);
  routes6->vrfPrefixLensInExactMatch("red")->prefixLenIs(64);
  routes->vrfStatusIs("blue");
  routes->vrfStatusDel("red");
  routes->vrfPrefixLensInExactMatchDel("red");
  routes6->vrfPrefixLensInExactMatchDel("red");
  routes->decapNhEnabledIs(true);
  routes->decapNhFallbackEnabledIs(true);
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_FALSE(vrfSm->moxVrfInstanceHas("blue"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
