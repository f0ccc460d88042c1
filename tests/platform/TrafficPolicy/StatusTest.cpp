// What the traffic-policy machine writes into the status, and when it says that it is ready.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "TrafficPolicyFixture.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::PolicyStatus;
using PolicyMap::RuleStatus;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Status notices are in the journal beside the calls of the helper.
class StatusOfPolicy : public PolicyOnEth1 {
 protected:
  StatusOfPolicy() { forgetJournal(); }
  // Calls of the helper are left out.
  Lines takeStatusLines() {
    Lines lines = journal_.take();
    std::erase_if(lines, [](const std::string& line) {
      return !line.starts_with("rule ") && !line.starts_with("policy ");
    });
    return lines;
  }

  const Listener listener_{status_->publisher(),
                           [this](short attributeId, const void* key, const void* value) {
                             journal_.write(statusLine(attributeId, key, value));
                           }};
};

TEST_F(StatusOfPolicy, IsWrittenAfterTheProgramming) {
  policyIs("P", "a");
  intfIs("eth2", "P");
  const auto sm = makeSm();
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth1 0 " + shownRule('a'), "addRule eth2 0 " + shownRule('a'),
                          "rule eth1 P 10 = programmed", "rule eth2 P 10 = programmed",
                          "policy P = 2 2/2"));
}

TEST_F(StatusOfPolicy, IsPublishedWhereItChangesOnly) {
  const auto sm = makeSm();
  forgetJournal();
  policyIs("P", "abcb");
  EXPECT_THAT(takeStatusLines(), ElementsAre("rule eth1 P 40 = programmed", "policy P = 1 4/4"));
  policyIs("Q", "");
  EXPECT_THAT(takeStatusLines(), ElementsAre("policy Q = 0 0/0"));
  classMapsAre("x");
  EXPECT_THAT(takeStatusLines(), IsEmpty());
}

TEST_F(StatusOfPolicy, IsThereForEveryConfiguredPolicy) {
  policyIs("Q", "ab");
  const auto sm = makeSm();
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{1, 3, 3}));
  EXPECT_EQ(*status_->policyStatus("Q"), (PolicyStatus{0, 0, 0}));
  EXPECT_TRUE(status_->policyStatus("Q")->isProgrammed());
  EXPECT_EQ(status_->ruleStatus().count(), 3U);
}

TEST_F(StatusOfPolicy, GoesWithAPolicyThatIsRemoved) {
  const auto sm = makeSm();
  forgetJournal();
  policies_->policyMapDel("P");
  EXPECT_EQ(status_->ruleStatus().count(), 0U);
  EXPECT_THAT(takeStatusLines(), ElementsAre("rule eth1 P 10 gone", "rule eth1 P 20 gone",
                                             "rule eth1 P 30 gone", "policy P gone"));
}

TEST_F(StatusOfPolicy, IsNotThereForAPolicyThatDoesNotExist) {
  intfIs("eth2", "Q");
  const auto sm = makeSm();
  EXPECT_EQ(status_->policyStatus("Q"), nullptr);
  EXPECT_TRUE(sm->ready());
}

TEST_F(StatusOfPolicy, FollowsAnInterfaceFromOnePolicyToAnother) {
  policyIs("Q", "b");
  const auto sm = makeSm();
  forgetJournal();
  intfIs("eth1", "Q");
  EXPECT_THAT(takeStatusLines(),
              ElementsAre("rule eth1 P 10 gone", "rule eth1 P 20 gone", "rule eth1 P 30 gone",
                          "rule eth1 Q 10 = programmed", "policy P = 0 0/0", "policy Q = 1 1/1"));
}

TEST_F(StatusOfPolicy, FollowsAnInterfaceThatIsRemoved) {
  const auto sm = makeSm();
  intfs_->intfDel("eth1");
  EXPECT_EQ(status_->ruleStatus().count(), 0U);
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{0, 0, 0}));
}

TEST_F(StatusOfPolicy, CountsServedInterfacesOnly) {
  intfIs("vlan1", "P", IntfKind::l2);
  intfIs("mgmt1", "P", IntfKind::mgmt);
  const auto sm = makeSm();
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{1, 3, 3}));
  sm->allowL2IntfIs(true);
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{2, 6, 6}));
  EXPECT_EQ(status_->ruleStatus({"mgmt1", "P", 10}), nullptr);
}

TEST_F(StatusOfPolicy, CountsRulesThatAreNotProgrammed) {
  refuse("b");
  policyIs("P", "abcx");
  const auto sm = makeSm();
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{1, 4, 0}));
  EXPECT_FALSE(status_->policyStatus("P")->isProgrammed());
  EXPECT_EQ(ruleStatus("eth1", "P", 40), (RuleStatus{false, "class map 'x' does not exist"}));
}

TEST_F(StatusOfPolicy, TellsOfARuleThatIsRefusedAndThenTaken) {
  refuse("b");
  const auto sm = makeSm();
  hardware_->onAdd = nullptr;
  forgetJournal();
  policyIs("P", "ab");
  EXPECT_THAT(takeStatusLines(), ElementsAre("rule eth1 P 30 gone", "rule eth1 P 10 = programmed",
                                             "rule eth1 P 20 = programmed", "policy P = 1 2/2"));
}

TEST_F(StatusOfPolicy, StaysAsItIsWhenAnotherMachineTakesOver) {
  auto sm = makeSm();
  forgetJournal();
  sm = nullptr;
  sm = makeSm();
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(StatusOfPolicy, IsRidByTheNextMachineOfWhatIsNoLongerConfigured) {
  intfIs("eth2", "P");
  policyIs("Q", "a");
  auto sm = makeSm();
  sm = nullptr;
  policies_->policyMapDel("Q");
  intfs_->intfDel("eth2");
  policyIs("P", "ab");
  forgetJournal();
  sm = makeSm();
  EXPECT_EQ(status_->ruleStatus().count(), 2U);
  EXPECT_EQ(status_->policyStatus().count(), 1U);
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyStatus{1, 2, 2}));
}

TEST_F(StatusOfPolicy, IsWrittenAnewIntoAnotherStatus) {
  auto sm = makeSm();
  Mox::Ptr<PolicyMap::PolicyMapTypeStatus> other =
      PolicyMap::PolicyMapTypeStatus::PolicyMapTypeStatusIs("other");
  status_.swap(other);
  sm = makeSm();
  status_.swap(other);
  EXPECT_EQ(other->ruleStatus().count(), 3U);
  EXPECT_EQ(*other->policyStatus("P"), (PolicyStatus{1, 3, 3}));
}

// Readiness.

/// A machine whose publications are in the journal, as "ready", and no status notices.
class Readiness : public PolicyOnEth1 {
 protected:
  void start(Flags flags = {}) {
    sm_ = makeSm(flags);
    listener_ = std::make_unique<Listener>(
        sm_->publisher(), [this](short attributeId, const void* key, const void* value) {
          EXPECT_EQ(attributeId, 283);
          EXPECT_EQ(key, nullptr);
          EXPECT_TRUE(*static_cast<const bool*>(value));
          EXPECT_TRUE(sm_->ready());
          journal_.write("ready");
        });
    forgetJournal();
  }
  /// How often it said so since the last time.
  std::ptrdiff_t takeReadies() {
    const Lines lines = journal_.take();
    return std::count(lines.begin(), lines.end(), "ready");
  }

  Mox::Ptr<ZelTrafficPolicySm> sm_;
  std::unique_ptr<Listener> listener_;
};

TEST_F(Readiness, IsThereFromTheStartWhereEverythingIsProgrammed) {
  start();
  EXPECT_TRUE(sm_->ready());
  EXPECT_EQ(ZelTrafficPolicySm::readyAttribute, 283);
}

TEST_F(Readiness, IsPublishedOnceAfterTheWholeChange) {
  intfIs("eth2", "P");
  start();
  policyIs("P", "ab");
  EXPECT_THAT(journal_.lines(), ElementsAre("removeRule eth1 2 " + shownRule('c'),
                                            "removeRule eth2 2 " + shownRule('c'), "ready"));
}

TEST_F(Readiness, IsPublishedAfterTheStatus) {
  start();
  const Listener listener(status_->publisher(),
                          [this](short id, const void* key, const void* value) {
                            journal_.write(statusLine(id, key, value));
                          });
  policyIs("P", "ab");
  EXPECT_THAT(journal_.lines(), ElementsAre("removeRule eth1 2 " + shownRule('c'),
                                            "rule eth1 P 30 gone", "policy P = 1 2/2", "ready"));
}

TEST_F(Readiness, IsNotPublishedForAChangeThatChangesNothing) {
  policyIs("Q", "abc");
  start();
  classMapsAre("xabc");
  policyIs("P", "abc");
  policyIs("R", "ax");
  policies_->policyMapDel("R");
  intfIs("eth1", "P");
  intfIs("vlan1", "P", IntfKind::l2);
  intfIs("eth1", "Q");  // the same rules
  sm_->hasNotificationActiveIs(false);
  sm_->hasNotificationActiveIs(true);
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(Readiness, IsNotPublishedWhileARuleIsRefused) {
  start();
  refuse("x");
  classMapsAre("x");
  policyIs("P", "abx");
  EXPECT_FALSE(sm_->ready());
  policyIs("P", "bxa");
  EXPECT_FALSE(sm_->ready());
  EXPECT_EQ(takeReadies(), 0);
  hardware_->onAdd = nullptr;
  policyIs("P", "xba");
  EXPECT_TRUE(sm_->ready());
  EXPECT_EQ(takeReadies(), 1);
}

TEST_F(Readiness, GoesWithARuleThatCannotBeProgrammedAlthoughTheHardwareStaysAsItIs) {
  start();
  policyIs("P", "abcx");
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_FALSE(sm_->ready());
  policyIs("P", "abc");
  EXPECT_THAT(journal_.lines(), ElementsAre("ready"));
}

TEST_F(Readiness, IsNotPublishedWhileAnotherInterfaceIsNotProgrammed) {
  start();
  refuse("x");
  classMapsAre("x");
  policyIs("Q", "x");
  intfIs("eth2", "Q");
  policyIs("P", "ab");
  EXPECT_FALSE(sm_->ready());
  EXPECT_EQ(takeReadies(), 0);
  intfs_->intfDel("eth2");
  EXPECT_TRUE(sm_->ready());
  EXPECT_EQ(takeReadies(), 1);
}

TEST_F(Readiness, ReturnsWithTheMissingClassMap) {
  policyIs("P", "ax");
  start();
  EXPECT_FALSE(sm_->ready());
  classMapsAre("x");
  EXPECT_TRUE(sm_->ready());
  EXPECT_EQ(takeReadies(), 1);
  classMaps_->classMapDel("x");
  EXPECT_FALSE(sm_->ready());
  EXPECT_EQ(takeReadies(), 0);
}

TEST_F(Readiness, ReturnsWithARefusedRuleThatIsDropped) {
  refuse("b");
  start();
  EXPECT_FALSE(sm_->ready());
  policyIs("P", "ac");
  EXPECT_TRUE(sm_->ready());
  EXPECT_EQ(takeReadies(), 1) << "although the hardware did not change";
}

TEST_F(Readiness, IsPublishedForL2InterfacesThatBeginToBeServed) {
  intfIs("vlan1", "P", IntfKind::l2);
  start();
  sm_->allowL2IntfIs(true);
  EXPECT_EQ(takeReadies(), 1);
  sm_->allowL2IntfIs(false);
  EXPECT_EQ(takeReadies(), 1);
}

TEST_F(Readiness, IsPublishedWhenItCatchesUpAfterItsInactivity) {
  start();
  sm_->hasNotificationActiveIs(false);
  policyIs("P", "ab");
  EXPECT_EQ(takeReadies(), 0);
  sm_->hasNotificationActiveIs(true);
  EXPECT_EQ(takeReadies(), 1);
}

}  // namespace
}  // namespace TrafficPolicy
