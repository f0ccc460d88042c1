// Changes from inside the calls that the traffic-policy machine makes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

#include "TrafficPolicyFixture.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::PolicyStatus;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Reentry : public PolicyOnEth1 {
 protected:
  Reentry() { classMapsAre("xy"); }

  /// Does `work` once, from inside the next addition of a rule.
  void atNextAddition(std::function<void()> work) {
    hardware_->onAdd = [this, work = std::move(work)](const Velo::String&, const AclRule&) {
      const auto once = work;
      hardware_->onAdd = nullptr;
      once();
      return AclResult();
    };
  }
  /// Does `work` once, from inside the next notice of `publisher`.
  std::unique_ptr<Listener> atNextNotice(Velo::Publisher& publisher, std::function<void()> work) {
    return std::make_unique<Listener>(
        publisher, [work = std::move(work)](short, const void*, const void*) mutable {
          if (const auto once = std::exchange(work, nullptr)) once();
        });
  }
  void expectInStep() {
    EXPECT_TRUE(sm_->ready());
    // Nobody has anything left to do.
    forgetJournal();
    const auto second = makeSm({.allowL2Intf = sm_->allowL2Intf()});
    EXPECT_THAT(journal_.lines(), IsEmpty());
  }

  Mox::Ptr<ZelTrafficPolicySm> sm_;
};

TEST_F(Reentry, AHelperMayChangeThePolicyThatIsBeingProgrammed) {
  atNextAddition([this] { policyIs("P", "cx"); });
  sm_ = makeSm();
  EXPECT_EQ(held("eth1"), "cx");
  EXPECT_EQ(status_->ruleStatus().count(), 2U);
  expectInStep();
}

TEST_F(Reentry, AHelperMayRemoveTheInterfaceThatIsBeingProgrammed) {
  atNextAddition([this] { intfs_->intfDel("eth1"); });
  sm_ = makeSm();
  EXPECT_THAT(hardware_->intfs(), IsEmpty());
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{0, 0, 0}));
  expectInStep();
}

TEST_F(Reentry, AHelperMayChangeAnInterfaceThatHasBeenProgrammedAlready) {
  intfIs("eth2", "P");
  sm_ = makeSm();
  policyIs("Q", "y");
  hardware_->onAdd = [this](const Velo::String& intf, const AclRule&) {
    if (intf == "eth2") intfIs("eth1", "Q");
    return AclResult();
  };
  policyIs("P", "abcx");
  EXPECT_EQ(held("eth1"), "y");
  EXPECT_EQ(held("eth2"), "abcx");
  expectInStep();
}

TEST_F(Reentry, AHelperMayChangeAClassMap) {
  sm_ = makeSm();
  hardware_->onRemove = [this](const Velo::String&, const AclRule&) {
    classMaps_->classMapIs("a", protocol(77));
  };
  policyIs("P", "a");
  EXPECT_EQ(hardware_->held("eth1").front().match->protocol, 77);
  EXPECT_EQ(held("eth1"), "a");
  expectInStep();
}

TEST_F(Reentry, AHelperMayAllowL2Interfaces) {
  intfIs("vlan1", "P", IntfKind::l2);
  sm_ = makeSm();
  atNextAddition([this] { sm_->allowL2IntfIs(true); });
  policyIs("P", "abcx");
  EXPECT_EQ(held("vlan1"), "abcx");
  expectInStep();
}

TEST_F(Reentry, AHelperMayAddTheRoomThatItLacked) {
  policyIs("Q", "y");
  intfIs("eth2", "Q");
  hardware_->capacity = 4;
  sm_ = makeSm();
  policyIs("P", "abcxy");
  EXPECT_EQ(held("eth1"), "abc");
  hardware_->onRemove = [this](const Velo::String&, const AclRule&) { hardware_->capacity = 9; };
  intfs_->intfDel("eth2");
  EXPECT_EQ(held("eth1"), "abcxy");
  expectInStep();
}

TEST_F(Reentry, AStatusSubscriberMayChangeThePolicyThatItIsToldOf) {
  sm_ = makeSm();
  const auto changer = atNextNotice(status_->publisher(), [this] { policyIs("P", "y"); });
  policyIs("P", "abcx");
  EXPECT_EQ(held("eth1"), "y");
  EXPECT_EQ(status_->ruleStatus().count(), 1U);
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{1, 1, 1}));
  expectInStep();
}

TEST_F(Reentry, AStatusSubscriberMayRemoveThePolicyThatItIsToldOf) {
  sm_ = makeSm();
  const auto changer = atNextNotice(status_->publisher(), [this] { policies_->policyMapDel("P"); });
  policyIs("P", "abcx");
  EXPECT_THAT(hardware_->intfs(), IsEmpty());
  EXPECT_EQ(status_->ruleStatus().count(), 0U);
  EXPECT_EQ(status_->policyStatus("P"), nullptr);
  expectInStep();
}

TEST_F(Reentry, AStatusSubscriberMayBindTheInterfaceToAnotherPolicy) {
  policyIs("Q", "ya");
  sm_ = makeSm();
  const auto changer = atNextNotice(status_->publisher(), [this] { intfIs("eth1", "Q"); });
  policyIs("P", "abcx");
  EXPECT_EQ(held("eth1"), "ya");
  EXPECT_EQ(status_->ruleStatus().count(), 2U);
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{0, 0, 0}));
  EXPECT_EQ(*status_->policyStatus("Q"), (PolicyStatus{1, 2, 2}));
  expectInStep();
}

TEST_F(Reentry, ASubscriberOfReadinessMayChangeThePolicy) {
  sm_ = makeSm();
  unsigned calls = 0;
  const Listener changer(sm_->publisher(), [&](short, const void*, const void*) {
    if (++calls == 1) policyIs("P", "y");
  });
  policyIs("P", "abcx");
  EXPECT_EQ(held("eth1"), "y");
  EXPECT_EQ(calls, 2U);
  expectInStep();
}

// Changes from inside that fail.

TEST_F(Reentry, AChangeOfAnInterfaceFromInsideThatFailsIsMadeAtTheNextChange) {
  sm_ = makeSm();
  const auto changer = atNextNotice(status_->publisher(), [this] {
    intfIs("eth2", "P");
    hardware_->onAdd = [](const Velo::String&, const AclRule&) -> AclResult {
      throw std::runtime_error("hardware lost");
    };
  });
  EXPECT_THROW(policyIs("P", "abcx"), std::runtime_error);
  hardware_->onAdd = nullptr;
  EXPECT_EQ(held("eth1"), "abcx");
  EXPECT_EQ(held("eth2"), "");
  EXPECT_FALSE(sm_->ready());
  policyIs("Q", "y");  // of no interface
  EXPECT_EQ(held("eth2"), "abcx");
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{2, 8, 8}));
  expectInStep();
}

TEST_F(Reentry, AChangeInsideAChangeFromInsideThatFailsIsMadeAtTheNextChange) {
  policyIs("Q", "y");
  sm_ = makeSm();
  atNextAddition([this] {
    intfIs("eth2", "Q");
    hardware_->onAdd = [this](const Velo::String& intf, const AclRule&) -> AclResult {
      if (intf != "eth2") return {};
      intfIs("eth2", "P");
      throw std::runtime_error("hardware lost");
    };
  });
  EXPECT_THROW(policyIs("P", "abcx"), std::runtime_error);
  hardware_->onAdd = nullptr;
  EXPECT_FALSE(sm_->ready());
  policyIs("R", "x");  // of no interface
  EXPECT_EQ(held("eth1"), "abcx");
  EXPECT_EQ(held("eth2"), "abcx");
  EXPECT_EQ(*status_->policyStatus("Q"), (PolicyStatus{0, 0, 0}));
  expectInStep();
}

// Others who follow the configuration.

TEST_F(Reentry, AnEarlierSubscriberMayChangeThePolicyMapThatEverybodyIsBeingToldOf) {
  const auto changer = atNextNotice(policies_->publisher(), [this] { policyIs("P", "xb"); });
  sm_ = makeSm();  // subscribed after the changer: told of the second change before the first
  policyIs("P", "ab");
  EXPECT_EQ(held("eth1"), "xb");
  classMaps_->classMapIs("x", protocol(77));
  EXPECT_EQ(hardware_->held("eth1").front().match->protocol, 77) << "the class map is followed";
  expectInStep();
}

TEST_F(Reentry, AnEarlierSubscriberMayRemoveThePolicyMapThatEverybodyIsBeingToldOf) {
  const auto changer =
      atNextNotice(policies_->publisher(), [this] { policies_->policyMapDel("P"); });
  sm_ = makeSm();
  policyIs("P", "ab");
  EXPECT_EQ(held("eth1"), "");
  EXPECT_EQ(status_->policyStatus("P"), nullptr);
  expectInStep();
}

TEST_F(Reentry, AnEarlierSubscriberMayBringARemovedPolicyMapBack) {
  const auto changer = atNextNotice(policies_->publisher(), [this] { policyIs("P", "xb"); });
  sm_ = makeSm();
  policies_->policyMapDel("P");
  EXPECT_EQ(held("eth1"), "xb");
  classMaps_->classMapDel("x");
  EXPECT_EQ(held("eth1"), "b");
}

// The end of the machine from inside.

TEST_F(Reentry, TheMachineMayBeReleasedFromInsideAHelperCall) {
  sm_ = makeSm();
  atNextAddition([this] { sm_ = nullptr; });
  policyIs("P", "abcx");
  EXPECT_EQ(sm_, nullptr);
  EXPECT_EQ(held("eth1"), "abcx");
  EXPECT_FALSE(intfs_->publisher().hasSubscribers());
}

TEST_F(Reentry, TheMachineMayBeReleasedFromInsideAStatusNotice) {
  sm_ = makeSm();
  const auto releaser = atNextNotice(status_->publisher(), [this] { sm_ = nullptr; });
  policyIs("P", "abcx");
  EXPECT_EQ(sm_, nullptr);
  EXPECT_FALSE(policies_->publisher().hasSubscribers());
}

TEST_F(Reentry, TheMachineMayBeReleasedFromInsideThePublicationOfItsReadiness) {
  sm_ = makeSm();
  bool told = false;
  std::unique_ptr<Listener> listener;
  listener =
      std::make_unique<Listener>(sm_->publisher(), [&](short, const void*, const void* value) {
        told = *static_cast<const bool*>(value);
        listener->leave();
        sm_ = nullptr;
      });
  policyIs("P", "abcx");
  EXPECT_TRUE(told);
  EXPECT_EQ(sm_, nullptr);
  EXPECT_FALSE(policies_->publisher().hasSubscribers()) << "it is gone";
}

TEST_F(Reentry, TheMachineMayBeReleasedWhileItIsSwitchedOn) {
  sm_ = makeSm();
  sm_->hasNotificationActiveIs(false);
  policyIs("P", "abcx");
  intfIs("eth2", "P");
  const auto releaser = atNextNotice(status_->publisher(), [this] { sm_ = nullptr; });
  ZelTrafficPolicySm& machine = *sm_;
  machine.hasNotificationActiveIs(true);
  EXPECT_EQ(sm_, nullptr);
  EXPECT_FALSE(intfs_->publisher().hasSubscribers());
}

TEST_F(Reentry, AMachineThatIsSwitchedOffFromInsideCompletesTheProgrammingAndNoMore) {
  intfIs("eth2", "P");
  sm_ = makeSm();
  atNextAddition([this] {
    intfIs("eth3", "P");
    sm_->hasNotificationActiveIs(false);
  });
  policyIs("P", "abcx");
  EXPECT_EQ(held("eth1"), "abcx");
  EXPECT_EQ(held("eth2"), "abcx");
  EXPECT_EQ(held("eth3"), "");
  EXPECT_EQ(status_->ruleStatus().count(), 6U) << "as before";
  EXPECT_FALSE(sm_->ready());
  sm_->hasNotificationActiveIs(true);
  EXPECT_EQ(held("eth3"), "abcx");
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{3, 12, 12}));
  expectInStep();
}

TEST_F(Reentry, AMachineThatIsSwitchedOffFromInsideLeavesTheRestToTheNext) {
  intfIs("eth2", "P");
  sm_ = makeSm();
  Mox::Ptr<ZelTrafficPolicySm> next;
  const auto replacer = atNextNotice(status_->publisher(), [&] {
    sm_->hasNotificationActiveIs(false);
    policyIs("P", "y");
    next = makeSm();
    forgetJournal();
  });
  policyIs("P", "abcxy");
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(held("eth1"), "y");
  EXPECT_EQ(held("eth2"), "y");
  EXPECT_EQ(status_->ruleStatus().count(), 2U) << "those of the next machine";
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{2, 2, 2}));
  sm_ = next;
  expectInStep();
}

TEST_F(Reentry, AMachineThatIsSwitchedOffAtAPolicyStatusWritesNoMoreOfThem) {
  policyIs("Q", "x");
  intfIs("eth2", "Q");
  sm_ = makeSm();
  unsigned statuses = 0;
  const Listener switcher(status_->publisher(), [&](short id, const void*, const void*) {
    if (id != PolicyMap::PolicyMapTypeStatus::policyStatusAttribute) return;
    ++statuses;
    sm_->hasNotificationActiveIs(false);
  });
  classMaps_->classMapDel("a");
  EXPECT_EQ(statuses, 1U);
  sm_->hasNotificationActiveIs(true);
  intfIs("eth1", "Q");  // of P and of Q
  EXPECT_EQ(statuses, 2U);
}

TEST_F(Reentry, AMachineMayBeSwitchedOffAndOnFromInsideAStatusNotice) {
  intfIs("eth2", "P");
  sm_ = makeSm();
  const auto switcher = atNextNotice(status_->publisher(), [&] {
    sm_->hasNotificationActiveIs(false);
    policyIs("P", "y");
    sm_->hasNotificationActiveIs(true);
  });
  policies_->policyMapIs("P", {});
  EXPECT_EQ(held("eth1"), "y");
  EXPECT_EQ(held("eth2"), "y");
  EXPECT_EQ(status_->ruleStatus().count(), 2U);
  expectInStep();
}

TEST_F(Reentry, AMachineMayBeSwitchedOffAndOnFromInsideAHelperCall) {
  intfIs("eth2", "P");
  sm_ = makeSm();
  atNextAddition([&] {
    sm_->hasNotificationActiveIs(false);
    policyIs("P", "y");
    sm_->hasNotificationActiveIs(true);
  });
  policyIs("P", "abcx");
  EXPECT_EQ(held("eth1"), "y");
  EXPECT_EQ(held("eth2"), "y");
  expectInStep();
}

}  // namespace
}  // namespace TrafficPolicy
