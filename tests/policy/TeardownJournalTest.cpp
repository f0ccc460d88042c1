#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "Epitaph.h"
#include "PolicyFixture.h"
#include "testing/TraceCapture.h"

// Whole journals of how the top object ends, in every state that it can be in, and of how one VRF
// state machine takes over from another. Whatever is not in a journal did not happen: no hook was
// called, no table changed, nothing was traced.

namespace ZelVrfSelectionPolicy {
namespace {

using Testing::alreadyInUse;
using Testing::deleting;
using ::testing::ElementsAre;
using Testing::Epitaph;
using Testing::initialized;
using Testing::instanceInitialized;
using Testing::instanceRemoved;
using ::testing::IsEmpty;
using Testing::lens6Changed;
using Testing::lens6Initialized;
using Testing::lensChanged;
using Testing::lensInitialized;
using Testing::TraceCapture;
using Testing::updateAll;
using Testing::updating;

class TeardownJournal : public Testing::PolicyFixture {
 protected:
  TeardownJournal() { configureRed(); }

  // What the end of a VRF state machine traces of VRF "red".
  static Lines endOfVrfSm() {
    return {instanceRemoved("red", 7), lensChanged("red"), lens6Changed("red")};
  }
  void createRed() { users_->vrfRefCountInc(red_, 1); }
  void expectRedInPlace() {
    EXPECT_EQ(users_->vrfRefCount(red_), 1U);
    EXPECT_TRUE(statuses_->hwStatusHas(red_));
  }

  const TraceCapture capture_{journal_};
};

TEST_F(TeardownJournal, OfAnEmptyObjectIsEmpty) {
  top_ = nullptr;
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(TeardownJournal, OfAPolicyBoundObjectIsEmptyAndLeavesTheMachineSilenced) {
  const auto policySm = bindPolicy();
  forgetJournal();
  top_ = nullptr;
  EXPECT_THAT(journal_.take(), IsEmpty());
  EXPECT_EQ(policySm->references(), 1U);
  EXPECT_FALSE(policySm->hasNotificationActive());
  changeRule();
  publishReady(*policySm);
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(TeardownJournal, OfAVrfBoundObjectHasTheEndOfItsVrfSmAndNoHook) {
  bindVrf();
  createRed();
  EXPECT_THAT(journal_.take(),
              ElementsAre(initialized(), instanceInitialized("red", 7), lensInitialized("red"),
                          updateAll("red"), lens6Initialized("red"), updateAll("red"),
                          "vrfRefCount red = 1", "createVrf red", "hwStatus red = ok"));
  top_ = nullptr;
  EXPECT_EQ(journal_.lines(), endOfVrfSm());
  expectRedInPlace();
}

TEST_F(TeardownJournal, OfAVrfBoundObjectIsThatOfAZombie) {
  bindVrf();
  const ZelVrfSelectionPolicySm& top = *top_;
  std::vector<bool> zombies;
  const Mox::TraceSink before =
      Mox::traceSinkIs([&](std::string_view) { zombies.push_back(top.isZombie()); });
  top_ = nullptr;
  Mox::traceSinkIs(before);
  EXPECT_THAT(zombies, ElementsAre(true, true, true));
}

TEST_F(TeardownJournal, OfVrfSmDelComesWhenTheResultIsDroppedAndHasNoHook) {
  bindVrf();
  createRed();
  forgetJournal();
  auto removed = top_->vrfSmDel();
  EXPECT_THAT(journal_.take(), IsEmpty());
  removed = nullptr;
  EXPECT_EQ(journal_.take(), endOfVrfSm());
  expectRedInPlace();
  top_ = nullptr;
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(TeardownJournal, OfAVrfBoundObjectWaitsForWhoeverElseHoldsTheVrfSm) {
  auto vrfSm = bindVrf();
  createRed();
  forgetJournal();
  top_ = nullptr;
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_FALSE(vrfSm->hasNotificationActive());
  users_->vrfRefCountDel(red_);
  EXPECT_THAT(journal_.take(), ElementsAre("vrfRefCount red gone"));
  vrfSm = nullptr;
  EXPECT_EQ(journal_.lines(), endOfVrfSm());
}

TEST_F(TeardownJournal, OfABoundObjectEndsTheTrafficPolicyMachineFirst) {
  const auto policySm = bindPolicy();
  bindVrf();
  createRed();
  forgetJournal();
  bool policySmEndedFirst = false;
  Mox::traceSinkIs([&](std::string_view line) {
    if (journal_.lines().empty()) {
      policySmEndedFirst = policySm->references() == 1 && !policySm->hasNotificationActive() &&
                           !policySm->publisher().hasSubscribers();
    }
    journal_.write(line);
  });
  top_ = nullptr;
  EXPECT_TRUE(policySmEndedFirst);
  EXPECT_EQ(journal_.lines(), endOfVrfSm());
  expectRedInPlace();
}

TEST_F(TeardownJournal, OfAnInactiveObjectIsThatOfAnActiveOne) {
  const auto policySm = bindPolicy();
  bindVrf();
  createRed();
  top_->hasNotificationActiveIs(false);
  forgetJournal();
  // Inactive, it reacts to nothing. The traffic-policy machine is not switched by it.
  changeRule();
  EXPECT_EQ(journal_.take(), ruleChanged(2));
  users_->vrfRefCountInc(red_, 1);
  routes_->vrfStatusIs("red")->vrfIdIs(8);
  fallback_->fallbackVrfIs("red", "blue");
  EXPECT_THAT(journal_.take(), ElementsAre("vrfRefCount red = 2"));
  top_ = nullptr;
  EXPECT_THAT(journal_.lines(),
              ElementsAre(instanceRemoved("red", 8), lensChanged("red"), lens6Changed("red")));
  EXPECT_TRUE(statuses_->hwStatusHas(red_));
  EXPECT_FALSE(policySm->hasNotificationActive());
}

TEST_F(TeardownJournal, OfAZombieIsThatOfAnyOther) {
  const auto policySm = bindPolicy();
  bindVrf();
  createRed();
  top_->moxDoZombieReactors(true);
  forgetJournal();
  changeRule();
  EXPECT_EQ(journal_.take(), ruleChanged(2)) << "and no readiness";
  top_ = nullptr;
  EXPECT_EQ(journal_.lines(), endOfVrfSm());
  expectRedInPlace();
}

/// Releases what it is given at the first publication of a traffic-policy machine.
class Releaser {
 public:
  Releaser(TrafficPolicy::ZelTrafficPolicySm& policySm, std::function<void()> release)
      : policySm_(policySm), release_(std::move(release)), subscriber_(*this) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void*,
                              const void*) {
      Velo::MemberSubscriber<Releaser>::ownerOf(subscriber).release_();
    };
    policySm_.publisher().subscriberIs(subscriber_);
  }
  Releaser(const Releaser&) = delete;
  Releaser& operator=(const Releaser&) = delete;
  ~Releaser() { policySm_.publisher().subscriberDel(subscriber_); }

 private:
  TrafficPolicy::ZelTrafficPolicySm& policySm_;
  std::function<void()> release_;
  Velo::MemberSubscriber<Releaser> subscriber_;
};

TEST_F(TeardownJournal, InTheMiddleOfAReadinessChangeHasNoReadinessInIt) {
  const auto policySm = bindPolicy();
  top_->hasNotificationActiveIs(false);
  // Told before the top object is, which subscribes again after it, it ends it.
  const Releaser releaser(*policySm, [this] { top_ = nullptr; });
  top_->hasNotificationActiveIs(true);
  bindVrf();
  createRed();
  forgetJournal();
  changeRule();
  EXPECT_EQ(top_, nullptr);
  Lines expected = ruleChanged(2);
  for (const std::string& line : endOfVrfSm())
    expected.push_back(line);
  EXPECT_EQ(journal_.lines(), expected);
  expectRedInPlace();
}

TEST_F(TeardownJournal, PublishedIntoByTheTracesOfItsEndHasNoFurtherReaction) {
  const auto policySm = bindPolicy();
  bindVrf();
  createRed();
  forgetJournal();
  // Whoever takes the trace changes everything that the machines watch.
  Mox::traceSinkIs([&, count = 1U](std::string_view line) mutable {
    journal_.write(line);
    changeRule();
    publishReady(*policySm);
    users_->vrfRefCountIs(red_, ++count);
    fallback_->fallbackVrfIs("red", "blue" + std::to_string(count));
    routes_->decapNhEnabledIs(!routes_->decapNhEnabled());
  });
  top_ = nullptr;
  EXPECT_THAT(journal_.lines(),
              ElementsAre(instanceRemoved("red", 7), "vrfRefCount red = 2", lensChanged("red"),
                          "vrfRefCount red = 3", lens6Changed("red"), "vrfRefCount red = 4"));
}

class MortalHelper final : public VrfHelper {
 public:
  explicit MortalHelper(Testing::Journal& journal)
      : VrfHelper("mortal", nullptr, nullptr, nullptr), journal_(journal) {}
  ~MortalHelper() override { journal_.write("end of the chip"); }
  HwStatus createVrf(const VrfAction&) override { return {}; }
  HwStatus updateVrf(const VrfAction&) override { return {}; }
  void deleteVrf(const VrfAction&) override {}

 private:
  Testing::Journal& journal_;
};

TEST_F(TeardownJournal, ReleasesTheInputsInReverseOrderAfterTheMachines) {
  Mox::Ptr<VrfHelper> chip = Mox::makePtr<MortalHelper>(journal_);
  auto mounts = policySmMountsFactory();
  auto dir = Mox::Dir::DirIs("routing");
  dir->entryIs(Mox::makePtr<Epitaph>(journal_, "end of the mounts"));
  mounts->routingVrfInfoDirIs(dir);
  dir = nullptr;
  auto top =
      zelVrfSelectionPolicySmFactory(policyHelper_, mounts, chip, fallback_, routes_, routes6_);
  top->vrfSmIs(users_, statuses_, chip, fallback_, routes_, nullptr);
  chip = nullptr;
  mounts = nullptr;
  forgetJournal();
  top = nullptr;
  EXPECT_THAT(journal_.lines(), ElementsAre(instanceRemoved("red", 7), lensChanged("red"),
                                            "end of the chip", "end of the mounts"));
}

class RebuildJournal : public TeardownJournal {
 protected:
  RebuildJournal() {
    bindVrf();
    createRed();
    forgetJournal();
  }
  void rebuild() { top_->vrfSmIs(users_, statuses_, helper_, fallback_, otherRoutes_, routes6_); }

  Mox::Ptr<Routing::Hardware::RouteStatus> otherRoutes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
};

TEST_F(RebuildJournal, HasTheWalkOfTheNewMachineBeforeTheEndOfTheOldOne) {
  otherRoutes_->vrfStatusIs("green")->vrfIdIs(9);
  otherRoutes_->vrfStatusIs("yellow");
  rebuild();
  EXPECT_THAT(journal_.lines(),
              ElementsAre(initialized(), instanceInitialized("green", 9),
                          instanceInitialized("yellow", 0), lens6Initialized("red"),
                          // The new machine finds the resource in place and brings it up to date.
                          updateAll("red"), updating("red"), "updateVrf red",
                          // The end of the old one reaches no hook.
                          instanceRemoved("red", 7), lensChanged("red"), lens6Changed("red")));
  expectRedInPlace();
}

TEST_F(RebuildJournal, DoesNotReplayTheCountsThatAreInTheTable) {
  // One action counted without a resource, one with a resource and several users.
  top_->vrfSm()->hasNotificationActiveIs(false);
  users_->vrfRefCountIs(VrfAction("blue", PolicyMap::ActionType::vrf), 1);
  users_->vrfRefCountIs(red_, 3);
  forgetJournal();
  routes6_->vrfPrefixLensInExactMatchDel("red");
  rebuild();
  EXPECT_THAT(journal_.lines(), ElementsAre(initialized(), instanceRemoved("red", 7),
                                            lensChanged("red"), lens6Changed("red")));
  EXPECT_FALSE(statuses_->hwStatusHas(VrfAction("blue", PolicyMap::ActionType::vrf)));
}

TEST_F(RebuildJournal, LeavesOneMachineThatGoesOnWithTheResource) {
  rebuild();
  forgetJournal();
  users_->vrfRefCountInc(red_, 1);
  users_->vrfRefCountDec(red_, 1);
  users_->vrfRefCountDec(red_, 1);
  EXPECT_THAT(journal_.lines(),
              ElementsAre("vrfRefCount red = 2", alreadyInUse("red", 2), "vrfRefCount red = 1",
                          alreadyInUse("red", 1), "vrfRefCount red = 0", "deleteVrf red",
                          deleting("red"), "vrfRefCount red gone", "hwStatus red gone"));
}

TEST_F(RebuildJournal, WithTheSameObjectsIsEmpty) {
  bindVrf();
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
