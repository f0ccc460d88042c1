// How a traffic-policy machine is kept, built, replaced and removed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <utility>

#include "ActingTop.h"
#include "Epitaph.h"
#include "PolicyFixture.h"
#include "testing/TraceCapture.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Testing::ActingTop;
using ::testing::ElementsAre;
using Testing::Epitaph;
using ::testing::IsEmpty;
using Testing::policyReady;
using Testing::TraceCapture;

/// Does something once, at the first notice of a status.
class AtFirstStatus {
 public:
  AtFirstStatus(const Mox::Ptr<PolicyMap::PolicyMapTypeStatus>& status, std::function<void()> work)
      : status_(status), work_(std::move(work)) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void*,
                              const void*) {
      AtFirstStatus& self = Velo::MemberSubscriber<AtFirstStatus>::ownerOf(subscriber);
      if (const auto once = std::exchange(self.work_, nullptr)) once();
    };
    status_->publisher().subscriberIs(subscriber_);
  }
  AtFirstStatus(const AtFirstStatus&) = delete;
  AtFirstStatus& operator=(const AtFirstStatus&) = delete;
  ~AtFirstStatus() { status_->publisher().subscriberDel(subscriber_); }

 private:
  Mox::Ptr<PolicyMap::PolicyMapTypeStatus> status_;
  std::function<void()> work_;
  Velo::MemberSubscriber<AtFirstStatus> subscriber_{*this};
};

class PolicyBinding : public Testing::PolicyFixture {
 protected:
  Mox::Ptr<TrafficPolicySm> bind() { return arguments_.bindTo(*acting_); }
  void configureL2Intf() {
    arguments_.intfConfig->intfIs("eth2", {PolicyMap::IntfKind::l2, "policy"});
  }
  /// How many calls of the hook one publication of the machine makes.
  unsigned callsByPublicationOf(const TrafficPolicySm& policySm) {
    const unsigned before = acting_->calls;
    publishReady(policySm);
    return acting_->calls - before;
  }

  Mox::Ptr<ActingTop> acting_ = makeTop<ActingTop>();
};

TEST_F(PolicyBinding, IdenticalArgumentsBuildOneMachineAndReportReadinessOnce) {
  const auto first = bind();
  EXPECT_EQ(bind(), first);
  EXPECT_EQ(acting_->policySm(), first);
  EXPECT_EQ(acting_->calls, 1U);
}

TEST_F(PolicyBinding, IdenticalArgumentsDoNothingElse) {
  const auto first = bind();
  const unsigned references = first->references();
  forgetJournal();
  bind();
  EXPECT_EQ(first->references(), references);
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(callsByPublicationOf(*first), 1U) << "subscribed once";
}

TEST_F(PolicyBinding, IdenticalArgumentsDoNotSubscribeAgain) {
  const auto first = bind();
  acting_->hasNotificationActiveIs(false);
  bind();
  EXPECT_FALSE(first->publisher().hasSubscribers());
}

TEST_F(PolicyBinding, IdenticalArgumentsDoNotReviveASilencedMachine) {
  const auto first = bind();
  first->hasNotificationActiveIs(false);
  EXPECT_EQ(bind(), first);
  EXPECT_FALSE(first->hasNotificationActive());
}

TEST_F(PolicyBinding, AnotherPermitFragmentGivesANewMachineThatIsObserved) {
  const auto first = bind();
  arguments_.permitFragment = true;
  const auto second = bind();
  EXPECT_NE(second, first);
  EXPECT_EQ(acting_->calls, 2U);
  EXPECT_EQ(callsByPublicationOf(*first), 0U);
  EXPECT_EQ(callsByPublicationOf(*second), 1U);
}

TEST_F(PolicyBinding, AllowL2IntfIsAppliedToThePresentMachineAtOnce) {
  configureL2Intf();
  bind();
  forgetJournal();
  arguments_.allowL2Intf = true;
  bind();
  EXPECT_THAT(journal_.take(), ElementsAre("addRule eth2 0 any->red1"));
  arguments_.allowL2Intf = false;
  bind();
  EXPECT_THAT(journal_.take(), ElementsAre("removeRule eth2 0 any->red1"));
}

TEST_F(PolicyBinding, AnInactiveObjectObservesAMachineThatIsBoundMeanwhile) {
  acting_->hasNotificationActiveIs(false);
  const auto policySm = bind();
  EXPECT_EQ(acting_->calls, 1U);
  EXPECT_EQ(callsByPublicationOf(*policySm), 1U);
}

TEST_F(PolicyBinding, TheHookFindsTheMachineInPlaceObservedAndActive) {
  acting_->onReady = [this] {
    ASSERT_NE(acting_->policySm(), nullptr);
    EXPECT_TRUE(acting_->policySm()->hasNotificationActive());
    EXPECT_TRUE(acting_->policySm()->publisher().hasSubscribers());
  };
  bind();
  EXPECT_EQ(acting_->calls, 1U);
}

TEST_F(PolicyBinding, PolicySmDelLeavesTheRulesAndTheNextMachineTakesThemOver) {
  bind();
  acting_->policySmDel();
  forgetJournal();
  bind();
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(acting_->calls, 2U);
}

TEST_F(PolicyBinding, PolicySmDelGivesTheMachineThatIsDestroyedWhenTheResultIsDropped) {
  arguments_.routingVrfInfoDir->entryIs(Mox::makePtr<Epitaph>(journal_, "end of the machine"));
  bind();
  arguments_.routingVrfInfoDir = nullptr;
  forgetJournal();
  auto removed = acting_->policySmDel();
  EXPECT_EQ(removed->references(), 1U);
  EXPECT_FALSE(removed->hasNotificationActive());
  EXPECT_THAT(journal_.lines(), IsEmpty());
  removed = nullptr;
  EXPECT_THAT(journal_.lines(), ElementsAre("end of the machine"));
}

// The order of everything.

TEST_F(PolicyBinding, ProgramsBeforeItReportsReadiness) {
  const TraceCapture capture(journal_);
  bindPolicy();
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 0 any->red1", policyReady()));
}

TEST_F(PolicyBinding, ARebuildAppliesAllowL2IntfThenBuildsThenReleasesThenReportsReadiness) {
  configureL2Intf();
  arguments_.routingVrfInfoDir->entryIs(Mox::makePtr<Epitaph>(journal_, "end of the machine"));
  bindPolicy();
  const TraceCapture capture(journal_);
  forgetJournal();
  arguments_.routingVrfInfoDir = nullptr;
  arguments_.allowL2Intf = true;
  arguments_.classTypeConfig = Testing::anEntity<PolicyMap::ClassMapTypeConfig>("others");
  bindPolicy();
  EXPECT_THAT(journal_.lines(),
              // The old machine is ready again, with the new flag.
              ElementsAre("addRule eth2 0 any->red1", policyReady(),
                          // The new machine takes over.
                          "removeRule eth1 0 any->red1", "removeRule eth2 0 any->red1",
                          "end of the machine", policyReady()));
}

TEST_F(PolicyBinding, TheOldMachineIsUnobservedWhileItsSuccessorIsBuilt) {
  const auto first = bind();
  arguments_.policyConfig = Testing::anEntity<PolicyMap::PolicyMapTypeConfig>("others");
  unsigned calls = 0;
  policyHelper_->onRemove = [&](const Velo::String&, const PolicyMap::AclRule&) {
    EXPECT_EQ(acting_->policySm(), first) << "the present one until the new one is complete";
    EXPECT_FALSE(first->publisher().hasSubscribers());
    ++calls;
  };
  bind();
  EXPECT_EQ(calls, 1U);
}

TEST_F(PolicyBinding, AnOldMachineThatSomebodyHoldsNoLongerProgramsAnything) {
  arguments_.intfConfig->intfIs("mgmt1", {PolicyMap::IntfKind::mgmt, "policy"});
  const auto first = bind();
  arguments_.allowMgmtIntf = true;
  bind();
  EXPECT_FALSE(first->hasNotificationActive());
  forgetJournal();
  changeRule();
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth1 1 any->red2", "addRule mgmt1 1 any->red2",
                          "removeRule eth1 0 any->red1", "removeRule mgmt1 0 any->red1"));
}

TEST_F(PolicyBinding, AChangeFromInsideAHelperCallOfARebuildIsFollowedByTheNewMachineAlone) {
  bind();
  arguments_.permitFragment = true;
  arguments_.intfConfig = Testing::anEntity<PolicyMap::IntfConfig>("others");
  arguments_.intfConfig->intfIs("eth2", {PolicyMap::IntfKind::routed, "policy"});
  forgetJournal();
  bool changed = false;
  policyHelper_->onRemove = [&](const Velo::String&, const PolicyMap::AclRule&) {
    if (!std::exchange(changed, true)) changeRule();
  };
  bind();
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth2 0 any->red1", "removeRule eth1 0 any->red1",
                          "addRule eth2 1 any->red2", "removeRule eth2 0 any->red1"));
}

// Construction that throws.

class PolicyBindingThatThrows : public PolicyBinding {
 protected:
  static PolicyMap::AclResult lost(const Velo::String& /*intf*/,
                                   const PolicyMap::AclRule& /*rule*/) {
    throw std::runtime_error("hardware lost");
  }
  /// Configures something that the next machine adds a rule for.
  void configureAnother() {
    arguments_.intfConfig = Testing::anEntity<PolicyMap::IntfConfig>("others");
    arguments_.intfConfig->intfIs("eth2", {PolicyMap::IntfKind::routed, "policy"});
    policyHelper_->onAdd = lost;
  }
};

TEST_F(PolicyBindingThatThrows, LeavesNoneWhereThereWasNone) {
  policyHelper_->onAdd = lost;
  EXPECT_THROW(bind(), std::runtime_error);
  EXPECT_EQ(acting_->policySm(), nullptr);
  EXPECT_EQ(acting_->calls, 0U);
  EXPECT_FALSE(arguments_.intfConfig->publisher().hasSubscribers());
  policyHelper_->onAdd = nullptr;
  EXPECT_EQ(callsByPublicationOf(*bind()), 1U);
}

TEST_F(PolicyBindingThatThrows, LeavesTheOldMachineInPlaceAndUnobserved) {
  const auto first = bind();
  configureAnother();
  EXPECT_THROW(bind(), std::runtime_error);
  EXPECT_EQ(acting_->policySm(), first);
  EXPECT_TRUE(first->hasNotificationActive());
  EXPECT_FALSE(first->publisher().hasSubscribers());
  EXPECT_EQ(acting_->calls, 1U);
  EXPECT_FALSE(arguments_.intfConfig->publisher().hasSubscribers()) << "no machine is left behind";
}

TEST_F(PolicyBindingThatThrows, LeavesTheOldMachineAtWork) {
  const auto first = bind();
  configureAnother();
  EXPECT_THROW(bind(), std::runtime_error);
  policyHelper_->onAdd = nullptr;
  changeRule();
  EXPECT_TRUE(first->ready());
  ASSERT_EQ(policyHelper_->held("eth1").size(), 1U);
  EXPECT_EQ(policyHelper_->held("eth1")[0].action.vrfName, "red2");
  EXPECT_THAT(policyHelper_->intfs(), ElementsAre(Velo::String("eth1")));
}

TEST_F(PolicyBindingThatThrows, IsFollowedByASuccessThatIsObserved) {
  const auto first = bind();
  configureAnother();
  EXPECT_THROW(bind(), std::runtime_error);
  policyHelper_->onAdd = nullptr;
  const auto second = bind();
  EXPECT_NE(second, first);
  EXPECT_EQ(acting_->policySm(), second);
  EXPECT_EQ(acting_->calls, 2U);
  EXPECT_EQ(callsByPublicationOf(*second), 1U);
  EXPECT_EQ(first->references(), 1U);
}

TEST_F(PolicyBindingThatThrows, LeavesAMachineThatItsOwnArgumentsGiveBackStillUnobserved) {
  const auto first = bind();
  const Testing::PolicySmArguments before = arguments_;
  configureAnother();
  EXPECT_THROW(bind(), std::runtime_error);
  policyHelper_->onAdd = nullptr;
  EXPECT_EQ(before.bindTo(*acting_), first);
  EXPECT_EQ(acting_->calls, 1U);
  EXPECT_FALSE(first->publisher().hasSubscribers());
}

TEST_F(PolicyBindingThatThrows, WhileAllowL2IntfIsAppliedKeepsTheMachineObserved) {
  configureL2Intf();
  const auto first = bind();
  policyHelper_->onAdd = lost;
  arguments_.allowL2Intf = true;
  EXPECT_THROW(bind(), std::runtime_error);
  EXPECT_EQ(acting_->policySm(), first);
  EXPECT_EQ(callsByPublicationOf(*first), 1U);
}

TEST_F(PolicyBindingThatThrows, DoesNotWakeAMachineThatWasReplacedMeanwhile) {
  const auto first = bind();
  configureAnother();
  policyHelper_->onAdd = nullptr;
  // From inside a status notice another machine is bound; then the construction fails.
  const AtFirstStatus binder(arguments_.status, [&] {
    auto others = arguments_;
    others.permitFragment = true;
    others.bindTo(*acting_);
    acting_->policySm()->hasNotificationActiveIs(false);
    arguments_.intfConfig->intfIs("eth4", {PolicyMap::IntfKind::routed, "policy"});
    policyHelper_->onAdd = lost;
  });
  EXPECT_THROW(bind(), std::runtime_error);
  EXPECT_TRUE(acting_->policySm()->inputs().permitFragment);
  EXPECT_FALSE(first->hasNotificationActive());
  EXPECT_EQ(callsByPublicationOf(*acting_->policySm()), 1U);
}

TEST_F(PolicyBindingThatThrows, InsideAnotherBindingLeavesTheOldMachinePaused) {
  const auto first = bind();
  const auto ofFirst = arguments_;
  configureAnother();
  policyHelper_->onAdd = nullptr;
  bool isChecked = false;
  const AtFirstStatus binder(arguments_.status, [&] {
    auto inner = arguments_;
    inner.permitFragment = true;
    inner.intfConfig = Testing::anEntity<PolicyMap::IntfConfig>("inner");
    inner.intfConfig->intfIs("eth3", {PolicyMap::IntfKind::routed, "policy"});
    policyHelper_->onAdd = lost;
    EXPECT_THROW(inner.bindTo(*acting_), std::runtime_error);
    policyHelper_->onAdd = nullptr;
    EXPECT_EQ(acting_->policySm(), first);
    EXPECT_TRUE(first->isPaused());
    forgetJournal();
    ofFirst.intfConfig->intfIs("eth4", {PolicyMap::IntfKind::routed, "policy"});
    EXPECT_THAT(journal_.lines(), IsEmpty()) << "the old machine programs nothing";
    isChecked = true;
  });
  const auto outer = bind();
  EXPECT_TRUE(isChecked);
  EXPECT_EQ(acting_->policySm(), outer);
  EXPECT_FALSE(first->hasNotificationActive());
  EXPECT_EQ(callsByPublicationOf(*outer), 1U);
  EXPECT_THAT(policyHelper_->intfs(), ElementsAre(Velo::String("eth2")));
}

TEST_F(PolicyBindingThatThrows, InsideAnotherOneThatThrowsTooLeavesTheOldMachineAtWork) {
  const auto first = bind();
  const auto ofFirst = arguments_;
  configureAnother();
  policyHelper_->onAdd = nullptr;
  const AtFirstStatus binder(arguments_.status, [&] {
    auto inner = arguments_;
    inner.permitFragment = true;
    inner.intfConfig = Testing::anEntity<PolicyMap::IntfConfig>("inner");
    inner.intfConfig->intfIs("eth3", {PolicyMap::IntfKind::routed, "policy"});
    policyHelper_->onAdd = lost;
    EXPECT_THROW(inner.bindTo(*acting_), std::runtime_error);
    ofFirst.intfConfig->intfIs("eth4", {PolicyMap::IntfKind::routed, "policy"});
    throw std::runtime_error("subscriber failed");
  });
  EXPECT_THROW(bind(), std::runtime_error);
  policyHelper_->onAdd = nullptr;
  EXPECT_EQ(acting_->policySm(), first);
  EXPECT_FALSE(first->isPaused());
  changeRule();
  EXPECT_THAT(policyHelper_->intfs(), ElementsAre(Velo::String("eth1"), Velo::String("eth4")));
  EXPECT_TRUE(first->ready());
}

// Changes from inside.

TEST_F(PolicyBinding, TheHookMayRemoveTheMachineWhichStaysSilenced) {
  acting_->onReady = [this] { acting_->policySmDel(); };
  const auto built = bind();
  EXPECT_EQ(acting_->policySm(), nullptr);
  ASSERT_NE(built, nullptr);
  EXPECT_FALSE(built->hasNotificationActive());
  EXPECT_FALSE(built->publisher().hasSubscribers());
}

TEST_F(PolicyBinding, TheHookMaySilenceTheMachineWhichIsActiveInTheEnd) {
  acting_->onReady = [this] { acting_->policySm()->hasNotificationActiveIs(false); };
  const auto built = bind();
  EXPECT_EQ(acting_->policySm(), built);
  EXPECT_TRUE(built->hasNotificationActive());
}

TEST_F(PolicyBinding, TheHookMayBindAnotherMachineWhichStays) {
  acting_->onReady = [this] {
    acting_->onReady = nullptr;
    arguments_.permitFragment = true;
    bind();
  };
  const auto first = bind();
  const auto second = acting_->policySm();
  EXPECT_NE(second, first);
  EXPECT_TRUE(second->inputs().permitFragment);
  EXPECT_TRUE(second->hasNotificationActive());
  EXPECT_EQ(callsByPublicationOf(*second), 1U);
  EXPECT_EQ(callsByPublicationOf(*first), 0U);
  EXPECT_FALSE(first->hasNotificationActive());
}

TEST_F(PolicyBinding, AnotherMachineThatIsBoundDuringTheConstructionDoesNotHideTheBuiltOne) {
  Mox::Ptr<TrafficPolicySm> inner;
  const AtFirstStatus binder(arguments_.status, [&] {
    auto others = arguments_;
    others.permitFragment = true;
    inner = others.bindTo(*acting_);
  });
  const auto outer = bind();
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(acting_->policySm(), outer);
  EXPECT_EQ(callsByPublicationOf(*outer), 1U);
  EXPECT_EQ(callsByPublicationOf(*inner), 0U);
  EXPECT_FALSE(inner->hasNotificationActive());
}

TEST_F(PolicyBinding, AMachineThatIsRemovedWhileAllowL2IntfIsAppliedIsReplaced) {
  configureL2Intf();
  const auto first = bind();
  const AtFirstStatus remover(arguments_.status, [this] { acting_->policySmDel(); });
  arguments_.allowL2Intf = true;
  const auto second = bind();
  EXPECT_NE(second, first);
  EXPECT_EQ(acting_->policySm(), second);
  EXPECT_EQ(callsByPublicationOf(*second), 1U);
  EXPECT_EQ(policyHelper_->held("eth2").size(), 1U);
}

TEST_F(PolicyBinding, TheObjectMayBeReleasedWhileAMachineIsBuilt) {
  const AtFirstStatus releaser(arguments_.status, [this] { acting_ = nullptr; });
  const auto built = bind();
  EXPECT_EQ(acting_, nullptr);
  EXPECT_FALSE(built->hasNotificationActive());
  EXPECT_FALSE(built->publisher().hasSubscribers());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
