#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "ActingTop.h"
#include "Blinklog/Ring.h"
#include "PolicyFixture.h"
#include "testing/TraceCapture.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Testing::ActingTop;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::Journal;
using Testing::policyReady;
using Testing::TraceCapture;

class PolicySm : public Testing::PolicyFixture {
 protected:
  Mox::Ptr<ActingTop> acting_ = makeTop<ActingTop>();
};

TEST_F(PolicySm, FactoryGivesAnEmptyObjectWithNotificationsOn) {
  const auto top =
      zelVrfSelectionPolicySmFactory(policyHelper_, mounts_, helper_, fallback_, routes_, routes6_);
  EXPECT_EQ(top->references(), 1U);
  EXPECT_TRUE(top->hasNotificationActive());
  EXPECT_FALSE(top->isZombie());
  EXPECT_EQ(top->policySm(), nullptr);
  EXPECT_EQ(top->vrfSm(), nullptr);
  EXPECT_EQ(top->fwkType()->name, "ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm");
  EXPECT_EQ(static_cast<unsigned>(top->notifieeList().kind), 0U);
}

TEST_F(PolicySm, CreationHoldsEachInputOnceAndTouchesNothing) {
  configureRed();
  top_ = nullptr;
  acting_ = nullptr;
  const unsigned policyHelper = policyHelper_->references();
  const unsigned mounts = mounts_->references();
  const unsigned helper = helper_->references();
  const unsigned fallback = fallback_->references();
  const unsigned routes = routes_->references();
  const unsigned routes6 = routes6_->references();
  const TraceCapture capture(journal_);
  auto top = ZelVrfSelectionPolicySm::ZelVrfSelectionPolicySmIs(policyHelper_, mounts_, helper_,
                                                                fallback_, routes_, routes6_);
  EXPECT_EQ(top->policyHelper(), policyHelper_);
  EXPECT_EQ(top->policySmMounts(), mounts_);
  EXPECT_EQ(top->vrfHelper(), helper_);
  EXPECT_EQ(top->vrfFallbackConfig(), fallback_);
  EXPECT_EQ(top->routingHwRouteStatus(), routes_);
  EXPECT_EQ(top->routing6HwRouteStatus(), routes6_);
  EXPECT_EQ(policyHelper_->references(), policyHelper + 1);
  EXPECT_EQ(mounts_->references(), mounts + 1);
  EXPECT_EQ(helper_->references(), helper + 1);
  EXPECT_EQ(fallback_->references(), fallback + 1);
  EXPECT_EQ(routes_->references(), routes + 1);
  EXPECT_EQ(routes6_->references(), routes6 + 1);
  EXPECT_FALSE(fallback_->publisher().hasSubscribers());
  EXPECT_EQ(routes_->notifieeList().iterate, nullptr) << "no reactor";
  top = nullptr;
  EXPECT_EQ(policyHelper_->references(), policyHelper);
  EXPECT_EQ(mounts_->references(), mounts);
  EXPECT_EQ(helper_->references(), helper);
  EXPECT_EQ(fallback_->references(), fallback);
  EXPECT_EQ(routes_->references(), routes);
  EXPECT_EQ(routes6_->references(), routes6);
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(PolicySm, ItIsCountedInItsSlabWhileItLives) {
  top_ = nullptr;
  acting_ = nullptr;
  const Quarry::Slab* slab = Quarry::Slab::find(ZelVrfSelectionPolicySm::typeName);
  ASSERT_NE(slab, nullptr);
  EXPECT_EQ(slab->live(), 0U);
  auto top =
      zelVrfSelectionPolicySmFactory(policyHelper_, mounts_, helper_, fallback_, routes_, routes6_);
  EXPECT_EQ(slab->live(), 1U);
  top = nullptr;
  EXPECT_EQ(slab->live(), 0U);
}

// The VRF state machine.

TEST_F(PolicySm, TheSameSixObjectsGiveTheSameVrfSmAndWalkNothingAgain) {
  configureRed();
  const auto first = bindVrf();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(top_->vrfSm(), first);
  EXPECT_TRUE(first->hasNotificationActive());
  const unsigned references = first->references();
  const TraceCapture capture(journal_);
  EXPECT_EQ(bindVrf(), first);
  EXPECT_EQ(first->references(), references);
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(PolicySm, NullRouteStatusesAndCountsAreTheSameArgumentsAgain) {
  const auto bind = [&] {
    return top_->vrfSmIs(nullptr, statuses_, helper_, fallback_, nullptr, nullptr);
  };
  const auto first = bind();
  EXPECT_EQ(first->routingHwRouteStatus(), nullptr);
  EXPECT_EQ(bind(), first);
}

TEST_F(PolicySm, AnyOneDifferentObjectGivesANewVrfSm) {
  const auto otherHelper = Mox::makePtr<Testing::RecordingVrfHelper>(journal_);
  const auto otherFallback = FallbackVrf::VrfSelectionFallbackVrfIs();
  const auto otherRoutes = Routing::Hardware::RouteStatus::RouteStatusIs();
  const auto otherRoutes6 = Routing6::Hardware::RouteStatus::RouteStatusIs();
  const std::vector<std::function<Mox::Ptr<VrfSm>()>> binds{
      [&] { return bindVrf(); },
      [&] {
        return top_->vrfSmIs(vrfHwConfigFactory(), statuses_, helper_, fallback_, routes_,
                             routes6_);
      },
      [&] {
        return top_->vrfSmIs(users_, vrfHwStatusFactory(), helper_, fallback_, routes_, routes6_);
      },
      [&] { return top_->vrfSmIs(users_, statuses_, otherHelper, fallback_, routes_, routes6_); },
      [&] { return top_->vrfSmIs(users_, statuses_, helper_, otherFallback, routes_, routes6_); },
      [&] { return top_->vrfSmIs(users_, statuses_, helper_, fallback_, otherRoutes, routes6_); },
      [&] { return top_->vrfSmIs(users_, statuses_, helper_, fallback_, routes_, otherRoutes6); },
      [&] { return top_->vrfSmIs(users_, statuses_, helper_, fallback_, nullptr, routes6_); },
      [&] { return top_->vrfSmIs(users_, statuses_, helper_, fallback_, routes_, nullptr); },
      [&] { return top_->vrfSmIs(nullptr, statuses_, helper_, fallback_, routes_, routes6_); },
  };
  for (std::size_t different = 1; different < binds.size(); ++different) {
    const auto usual = binds[0]();
    const auto other = binds[different]();
    EXPECT_NE(other, usual) << different;
    EXPECT_EQ(top_->vrfSm(), other) << different;
    EXPECT_EQ(usual->references(), 1U) << "the old one was released, argument " << different;
  }
}

TEST_F(PolicySm, TheVrfSmWorksOnTheArgumentsGivenNotOnTheInputsHeld) {
  const auto otherRoutes = Routing::Hardware::RouteStatus::RouteStatusIs();
  const auto otherHelper = Mox::makePtr<Testing::RecordingVrfHelper>(journal_);
  const auto vrfSm = top_->vrfSmIs(users_, statuses_, otherHelper, fallback_, otherRoutes, nullptr);
  EXPECT_EQ(vrfSm->vrfHelper(), otherHelper);
  EXPECT_EQ(vrfSm->routingHwRouteStatus(), otherRoutes);
  EXPECT_EQ(vrfSm->routing6HwRouteStatus(), nullptr);
  EXPECT_EQ(top_->vrfHelper(), helper_);
  EXPECT_EQ(top_->routingHwRouteStatus(), routes_);
}

TEST_F(PolicySm, VrfSmDelGivesTheSilencedMachineAndThenNull) {
  const auto bound = bindVrf();
  const auto removed = top_->vrfSmDel();
  EXPECT_EQ(removed, bound);
  EXPECT_EQ(top_->vrfSm(), nullptr);
  EXPECT_FALSE(removed->hasNotificationActive());
  users_->vrfRefCountInc(red_, 1);
  EXPECT_THAT(journal_.lines(), ElementsAre("vrfRefCount red = 1"));
  EXPECT_EQ(top_->vrfSmDel(), nullptr);
}

TEST_F(PolicySm, AfterVrfSmDelTheSameSixObjectsGiveANewVrfSm) {
  const auto first = bindVrf();
  top_->vrfSmDel();
  EXPECT_NE(bindVrf(), first);
}

TEST_F(PolicySm, DeletingWhatIsNotThereGivesNullAndChangesNothing) {
  const TraceCapture capture(journal_);
  EXPECT_EQ(top_->vrfSmDel(), nullptr);
  EXPECT_EQ(top_->policySmDel(), nullptr);
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_TRUE(top_->hasNotificationActive());
}

class PolicySmWhoseRebuildThrows : public PolicySm {
 protected:
  PolicySmWhoseRebuildThrows() {
    present_ = bindVrf();
    users_->vrfRefCountInc(red_, 1);
    forgetJournal();
  }

  // What follows a failed rebuild: the present machine alone reacts, once.
  void expectPresentMachineUntouched() {
    EXPECT_EQ(top_->vrfSm(), present_);
    EXPECT_TRUE(present_->hasNotificationActive());
    forgetJournal();
    users_->vrfRefCountInc(VrfAction("blue", PolicyMap::ActionType::vrf), 1);
    EXPECT_THAT(journal_.lines(),
                ElementsAre("vrfRefCount blue = 1", "createVrf blue", "hwStatus blue = ok"));
  }

  Mox::Ptr<VrfSm> present_;
  Mox::Ptr<Routing::Hardware::RouteStatus> otherRoutes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
};

TEST_F(PolicySmWhoseRebuildThrows, ByAnOverlongNameItKeepsThePresentMachine) {
  otherRoutes_->vrfPrefixLensInExactMatchIs(std::string(101, 'x'));
  EXPECT_THROW(top_->vrfSmIs(users_, statuses_, helper_, fallback_, otherRoutes_, routes6_),
               Mox::RangeException);
  EXPECT_EQ(otherRoutes_->notifieeList().iterate, nullptr) << "no reactor is left behind";
  expectPresentMachineUntouched();
}

TEST_F(PolicySmWhoseRebuildThrows, ByTheChipItKeepsThePresentMachine) {
  otherRoutes_->vrfPrefixLensInExactMatchIs("red");
  helper_->onUpdate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("chip lost"); };
  EXPECT_THROW(top_->vrfSmIs(users_, statuses_, helper_, fallback_, otherRoutes_, routes6_),
               std::runtime_error);
  expectPresentMachineUntouched();
}

TEST_F(PolicySmWhoseRebuildThrows, WithoutAPresentMachineThereIsNoneAfterwards) {
  top_->vrfSmDel();
  otherRoutes_->vrfPrefixLensInExactMatchIs(std::string(101, 'x'));
  EXPECT_THROW(top_->vrfSmIs(users_, statuses_, helper_, fallback_, otherRoutes_, routes6_),
               Mox::RangeException);
  EXPECT_EQ(top_->vrfSm(), nullptr);
  EXPECT_NE(bindVrf(), nullptr);
}

// The traffic-policy state machine.

TEST_F(PolicySm, InstallingReportsReadinessOnceAndObservesIt) {
  const auto policySm = arguments_.bindTo(*acting_);
  EXPECT_EQ(acting_->policySm(), policySm);
  EXPECT_TRUE(policySm->hasNotificationActive());
  EXPECT_EQ(acting_->calls, 1U);
  changeRule();
  EXPECT_EQ(acting_->calls, 2U);
  arguments_.classTypeConfig->classMapIs("not used", {});
  EXPECT_EQ(acting_->calls, 2U) << "no change";
  changeRule();
  EXPECT_EQ(acting_->calls, 3U);
}

TEST_F(PolicySm, OnlyTheReadinessAttributeIsObserved) {
  const auto policySm = arguments_.bindTo(*acting_);
  acting_->calls = 0;
  for (const Mox::AttributeId attribute :
       std::vector<Mox::AttributeId>{0, 2, 130, 282, 284, -283}) {
    policySm->publisher().publish(attribute, nullptr, nullptr);
  }
  EXPECT_EQ(acting_->calls, 0U);
  policySm->publisher().publish(283, nullptr, nullptr);
  EXPECT_EQ(acting_->calls, 1U);
}

TEST_F(PolicySm, ReplacingTheMachineMovesTheObservation) {
  const auto before = arguments_.bindTo(*acting_);
  arguments_.permitFragment = true;
  const auto after = arguments_.bindTo(*acting_);
  EXPECT_EQ(acting_->calls, 2U);
  EXPECT_EQ(before->references(), 1U);
  EXPECT_FALSE(before->publisher().hasSubscribers());
  publishReady(*before);
  EXPECT_EQ(acting_->calls, 2U);
  publishReady(*after);
  EXPECT_EQ(acting_->calls, 3U);
  changeRule();
  EXPECT_EQ(acting_->calls, 4U);
}

TEST_F(PolicySm, PolicySmDelGivesTheSilencedMachineThatIsNoLongerObserved) {
  const auto policySm = arguments_.bindTo(*acting_);
  acting_->calls = 0;
  EXPECT_EQ(acting_->policySmDel(), policySm);
  EXPECT_EQ(acting_->policySm(), nullptr);
  EXPECT_FALSE(policySm->hasNotificationActive());
  EXPECT_FALSE(policySm->publisher().hasSubscribers());
  forgetJournal();
  changeRule();
  EXPECT_THAT(journal_.lines(), IsEmpty()) << "it follows nothing";
  publishReady(*policySm);
  EXPECT_EQ(acting_->calls, 0U);
  EXPECT_EQ(acting_->policySmDel(), nullptr);
}

TEST_F(PolicySm, BothMachinesAreIndependentAndMayComeInEitherOrder) {
  const auto policySm = bindPolicy();
  const auto vrfSm = bindVrf();
  EXPECT_EQ(top_->policySm(), policySm);
  top_->policySmDel();
  EXPECT_EQ(top_->vrfSm(), vrfSm);
  EXPECT_TRUE(vrfSm->hasNotificationActive());
  bindPolicy();
  top_->vrfSmDel();
  EXPECT_NE(top_->policySm(), nullptr);
}

TEST_F(PolicySm, TheHookMayReleaseTheObjectThatItBelongsTo) {
  const auto policySm = arguments_.bindTo(*acting_);
  acting_->onReady = [this] { acting_ = nullptr; };
  changeRule();
  EXPECT_EQ(acting_, nullptr);
  EXPECT_FALSE(policySm->publisher().hasSubscribers());
}

TEST_F(PolicySm, TheHookMayReleaseTheObjectWhileTheMachineIsInstalled) {
  acting_->onReady = [this] { acting_ = nullptr; };
  const auto policySm = arguments_.bindTo(*acting_);
  EXPECT_EQ(acting_, nullptr);
  EXPECT_FALSE(policySm->hasNotificationActive());
  EXPECT_FALSE(policySm->publisher().hasSubscribers());
}

// The base's hook.

class PolicySmReadyTrace : public PolicySm {
 protected:
  static std::vector<Blinklog::Record> recordsSince(std::uint64_t first) {
    std::vector<Blinklog::Record> records;
    for (const Blinklog::Record& record : Blinklog::ring().dump()) {
      if (record.sequence >= first) records.push_back(record);
    }
    return records;
  }
};

TEST_F(PolicySmReadyTrace, IsOneWholeLineForInstallingAndOneForEachChange) {
  const TraceCapture capture(journal_);
  bindPolicy();
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 0 any->red1", policyReady()));
  changeRule();
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth1 0 any->red1", policyReady(), "addRule eth1 1 any->red2",
                          "removeRule eth1 0 any->red1", policyReady()));
  EXPECT_EQ(journal_.lines().back(),
            "ZelVrfSelection 7 /src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:302 "
            "handlePolicySmReady handlePolicySmReady");
}

TEST_F(PolicySmReadyTrace, IsARecordOfTheRing) {
  const std::uint64_t first = Blinklog::ring().written();
  const TraceCapture capture(journal_);
  top_->handlePolicySmReady();
  const auto records = recordsSince(first);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].text, "handlePolicySmReady");
  EXPECT_EQ(records[0].site->path, "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy");
  EXPECT_EQ(records[0].site->line, 302U);
  EXPECT_EQ(records[0].site->function, "handlePolicySmReady");
  EXPECT_EQ(records[0].site->level, 7U);
}

TEST_F(PolicySmReadyTrace, GoesToTheRingAloneWhileItsLevelIsOff) {
  const std::uint64_t first = Blinklog::ring().written();
  const TraceCapture capture(journal_, "ZelVrfSelection=5");
  top_->handlePolicySmReady();
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(recordsSince(first).size(), 1U);
}

// Notifications.

TEST_F(PolicySm, DeactivatingAnEmptyObjectOnlyClearsTheFlag) {
  const TraceCapture capture(journal_);
  top_->hasNotificationActiveIs(false);
  EXPECT_FALSE(top_->hasNotificationActive());
  EXPECT_FALSE(top_->isZombie());
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(top_->policySm(), nullptr);
  EXPECT_EQ(top_->vrfSm(), nullptr);
}

TEST_F(PolicySm, DeactivatingEndsTheObservationAndSilencesTheVrfSmAlone) {
  const auto policySm = arguments_.bindTo(*acting_);
  const auto vrfSm = acting_->vrfSmIs(users_, statuses_, helper_, fallback_, routes_, routes6_);
  acting_->calls = 0;
  acting_->hasNotificationActiveIs(false);
  EXPECT_FALSE(policySm->publisher().hasSubscribers());
  EXPECT_TRUE(policySm->hasNotificationActive()) << "that machine is not switched";
  EXPECT_FALSE(vrfSm->hasNotificationActive());
  changeRule();
  EXPECT_EQ(acting_->calls, 0U);
}

TEST_F(PolicySm, ReactivatingObservesAgainAndReplaysNothing) {
  const auto policySm = arguments_.bindTo(*acting_);
  const auto vrfSm = acting_->vrfSmIs(users_, statuses_, helper_, fallback_, routes_, routes6_);
  acting_->calls = 0;
  acting_->hasNotificationActiveIs(false);
  forgetJournal();
  changeRule();
  EXPECT_EQ(journal_.take(), ruleChanged(2));
  users_->vrfRefCountIs(red_, 1);
  acting_->hasNotificationActiveIs(true);
  EXPECT_TRUE(vrfSm->hasNotificationActive());
  EXPECT_EQ(acting_->calls, 0U);
  EXPECT_THAT(journal_.take(), ElementsAre("vrfRefCount red = 1"));
  changeRule();
  EXPECT_EQ(acting_->calls, 1U);
  EXPECT_EQ(journal_.take(), ruleChanged(3));
  users_->vrfRefCountIs(VrfAction("blue", PolicyMap::ActionType::vrf), 1);
  EXPECT_THAT(journal_.lines(),
              ElementsAre("vrfRefCount blue = 1", "createVrf blue", "hwStatus blue = ok"));
}

TEST_F(PolicySm, SwitchingToThePresentStateDoesNothing) {
  const auto vrfSm = acting_->vrfSmIs(users_, statuses_, helper_, fallback_, routes_, routes6_);
  vrfSm->hasNotificationActiveIs(false);
  acting_->hasNotificationActiveIs(true);
  EXPECT_FALSE(vrfSm->hasNotificationActive()) << "the object was active already";
}

// Zombies.

TEST_F(PolicySm, ReadinessDoesNotReachAZombie) {
  const auto policySm = arguments_.bindTo(*acting_);
  acting_->calls = 0;
  acting_->moxDoZombieReactors(true);
  EXPECT_TRUE(acting_->isZombie());
  changeRule();
  EXPECT_EQ(acting_->calls, 0U);
  acting_->moxDoZombieReactors(false);
  EXPECT_FALSE(acting_->isZombie());
  changeRule();
  EXPECT_EQ(acting_->calls, 1U);
}

TEST_F(PolicySm, TurningIntoAZombieDoesNotDescendIntoTheMachines) {
  configureRed();
  const auto policySm = bindPolicy();
  const auto vrfSm = bindVrf();
  const TraceCapture capture(journal_);
  forgetJournal();
  top_->moxDoZombieReactors(true);
  EXPECT_FALSE(policySm->isZombie());
  EXPECT_FALSE(vrfSm->isZombie());
  EXPECT_TRUE(vrfSm->hasNotificationActive());
  EXPECT_TRUE(top_->hasNotificationActive());
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
