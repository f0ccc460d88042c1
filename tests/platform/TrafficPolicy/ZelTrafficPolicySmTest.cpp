// Which rules the traffic-policy machine has the hardware hold, and by which calls.
#include "TrafficPolicy/ZelTrafficPolicySm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "Mox/Exceptions.h"
#include "TrafficPolicyFixture.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::RuleStatus;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A machine on policy map P of rules a, b and c, which is applied to eth1, with an empty journal.
class RunningSm : public PolicyOnEth1 {
 protected:
  RunningSm() { forgetJournal(); }

  Mox::Ptr<ZelTrafficPolicySm> sm_ = makeSm();
};

using TrafficPolicySm = TrafficPolicyFixture;

TEST_F(TrafficPolicySm, IsAServicePolicyStateMachine) {
  const auto sm = makeSm();
  const Mox::Ptr<PolicyMap::ServicePolicySm> base = sm;
  EXPECT_EQ(&base->publisher(), &sm->publisher());
  EXPECT_EQ(base->notifieeList().kind, Velo::NotifieeListDescriptor::Kind::publisher);
  EXPECT_EQ(base->notifieeList().entity, sm.get());
  EXPECT_EQ(sm->fwkType()->name, "TrafficPolicy::ZelTrafficPolicySm");
  EXPECT_TRUE(sm->hasNotificationActive());
}

TEST_F(PolicyOnEth1, ReadsNothingBeforeItIsActivated) {
  TrafficPolicyInputs inputs;
  inputs.intfConfig = intfs_;
  inputs.policyConfig = policies_;
  inputs.classTypeConfig = classMaps_;
  inputs.aclHelper = hardware_;
  const auto sm = Mox::makePtr<ZelTrafficPolicySm>(inputs, false);
  classMapsAre("d");
  sm->allowL2IntfIs(true);
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_FALSE(sm->ready());
  sm->hasNotificationActiveIs(true);
  EXPECT_EQ(held("eth1"), "abc");
  EXPECT_TRUE(sm->ready());
}

// Rules by interface.

TEST_F(PolicyOnEth1, IsProgrammedInItsOrder) {
  const auto sm = makeSm();
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth1 0 " + shownRule('a'), "addRule eth1 1 " + shownRule('b'),
                          "addRule eth1 2 " + shownRule('c')));
}

TEST_F(TrafficPolicySm, TakesMatchAndActionOverWhole) {
  PolicyMap::ClassMatch match;
  match.family = Ip::Family::v6;
  match.protocol = 41;
  match.dscps = std::uint64_t{1} << 63;
  match.source = Ip::Prefix{{Ip::Family::v6, {0x20, 0x01}}, 16};
  match.destination = Ip::Prefix{{Ip::Family::v6, {0x20, 0x02}}, 32};
  const PolicyMap::RuleAction action{PolicyMap::ActionType::decapVrf, "red", "blue", "green"};
  classMaps_->classMapIs("class", match);
  policies_->policyMapIs("P", {{1, "class", action}});
  intfIs("eth1", "P");
  const auto sm = makeSm();
  EXPECT_THAT(hardware_->held("eth1"),
              ElementsAre(AclRule{PolicyMap::AclMatch{match, {}, {}, false}, action}));
}

TEST_F(PolicyOnEth1, IsProgrammedOnEachInterfaceThatItIsAppliedTo) {
  intfIs("eth2", "P");
  const auto sm = makeSm();
  EXPECT_EQ(held("eth1"), "abc");
  EXPECT_EQ(held("eth2"), "abc");
}

TEST_F(RunningSm, FollowsAnInterfaceThatIsAdded) {
  intfIs("eth2", "P");
  EXPECT_EQ(held("eth2"), "abc");
  EXPECT_EQ(journal_.lines().size(), 3U) << "eth1 is not touched";
}

TEST_F(RunningSm, TakesTheRulesOfAnInterfaceThatIsRemovedAway) {
  intfs_->intfDel("eth1");
  EXPECT_THAT(hardware_->intfs(), IsEmpty());
}

TEST_F(RunningSm, FollowsAnInterfaceThatIsBoundToAnotherPolicy) {
  policyIs("Q", "cb");
  forgetJournal();
  intfIs("eth1", "Q");
  EXPECT_EQ(held("eth1"), "cb");
  EXPECT_EQ(journal_.lines().size(), 2U) << "a move and a removal";
}

TEST_F(RunningSm, TouchesNothingForAPolicyThatIsAppliedNowhere) {
  policyIs("Q", "c");
  policyIs("Q", "ab");
  policies_->policyMapDel("Q");
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

// Changes of a policy map, by the smallest set of calls.

TEST_F(RunningSm, AddsARuleByOneCall) {
  classMapsAre("x");
  policyIs("P", "axbc");
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 1 " + shownRule('x')));
}

TEST_F(RunningSm, RemovesARuleByOneCall) {
  policyIs("P", "ac");
  EXPECT_THAT(journal_.lines(), ElementsAre("removeRule eth1 1 " + shownRule('b')));
}

TEST_F(RunningSm, MovesARuleByOneCall) {
  policyIs("P", "cab");
  EXPECT_THAT(journal_.lines(), ElementsAre("moveRule eth1 2 0 " + shownRule('c')));
}

TEST_F(RunningSm, RenumbersRulesWithoutACall) {
  PolicyRules rules = rulesOn("abc");
  for (PolicyMap::PolicyMapRule& rule : rules)
    rule.sequence += 5;
  policies_->policyMapIs("P", rules);
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(ruleStatus("eth1", "P", 15), programmed_);
  EXPECT_EQ(status_->ruleStatus({"eth1", "P", 10}), nullptr);
}

TEST_F(RunningSm, HoldsARuleTwiceThatIsThereTwice) {
  policyIs("P", "abca");
  EXPECT_EQ(held("eth1"), "abca");
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 3 " + shownRule('a')));
}

TEST_F(RunningSm, ChangesEveryInterfaceOfThePolicyAndNoOther) {
  policyIs("Q", "ab");
  intfIs("eth2", "Q");
  intfIs("eth3", "P");
  forgetJournal();
  policyIs("P", "ab");
  EXPECT_THAT(journal_.lines(), ElementsAre("removeRule eth1 2 " + shownRule('c'),
                                            "removeRule eth3 2 " + shownRule('c')));
}

TEST_F(RunningSm, AddsOnEveryInterfaceBeforeItRemovesOnAny) {
  intfIs("eth2", "P");
  classMapsAre("x");
  forgetJournal();
  policyIs("P", "abx");
  EXPECT_THAT(
      journal_.lines(),
      ElementsAre("addRule eth1 3 " + shownRule('x'), "addRule eth2 3 " + shownRule('x'),
                  "removeRule eth1 2 " + shownRule('c'), "removeRule eth2 2 " + shownRule('c')));
}

TEST_F(RunningSm, TakesTheRulesOfAPolicyThatIsRemovedAwayAndBringsThemBack) {
  policies_->policyMapDel("P");
  EXPECT_THAT(hardware_->intfs(), IsEmpty());
  policyIs("P", "cb");
  EXPECT_EQ(held("eth1"), "cb");
}

TEST_F(TrafficPolicySm, ProgramsAPolicyThatArrivesAfterItsInterface) {
  classMapsAre("a");
  intfIs("eth1", "P");
  const auto sm = makeSm();
  EXPECT_THAT(journal_.lines(), IsEmpty());
  policyIs("P", "a");
  EXPECT_EQ(held("eth1"), "a");
}

TEST_F(TrafficPolicySm, ChangesOneRuleAmongTenThousandByOneOrTwoCalls) {
  constexpr std::uint32_t count = 10000;
  PolicyRules rules;
  for (std::uint32_t number = 0; number < count; ++number) {
    const std::string name = "vrf" + std::to_string(number);
    rules.push_back({number, "any", {PolicyMap::ActionType::vrf, L3::VrfName(name), {}, {}}});
  }
  classMaps_->classMapIs("any", {});
  policies_->policyMapIs("P", rules);
  intfIs("eth1", "P");
  const auto sm = makeSm();
  EXPECT_EQ(journal_.take().size(), count);
  rules[5000].action.vrfName = "other";
  policies_->policyMapIs("P", rules);
  EXPECT_THAT(journal_.take(),
              ElementsAre("addRule eth1 5001 any->other", "removeRule eth1 5000 any->vrf5000"));
  rules.erase(rules.begin() + 7000);
  policies_->policyMapIs("P", rules);
  EXPECT_THAT(journal_.take(), ElementsAre("removeRule eth1 7000 any->vrf7000"));
  std::swap(rules[1].action, rules[9998].action);
  policies_->policyMapIs("P", rules);
  EXPECT_EQ(journal_.take().size(), 2U);
  EXPECT_TRUE(sm->ready());
}

// Class maps.

TEST_F(RunningSm, FollowsAChangedClassMap) {
  classMaps_->classMapIs("b", protocol(99));
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 2 v4,protocol=99->b",
                                            "removeRule eth1 1 " + shownRule('b')));
}

TEST_F(RunningSm, FollowsAClassMapWhoseUserIsOneOfSeveralPolicies) {
  policyIs("Q", "bc");
  intfIs("eth2", "Q");
  forgetJournal();
  classMaps_->classMapIs("a", protocol(99));
  EXPECT_THAT(journal_.take(), ElementsAre("addRule eth1 1 v4,protocol=99->a",
                                           "removeRule eth1 0 " + shownRule('a')));
  classMaps_->classMapIs("b", protocol(98));
  EXPECT_EQ(journal_.take().size(), 4U) << "two on each interface";
}

TEST_F(RunningSm, TakesTheRulesOfARemovedClassMapAway) {
  classMaps_->classMapDel("b");
  EXPECT_THAT(journal_.lines(), ElementsAre("removeRule eth1 1 " + shownRule('b')));
  EXPECT_EQ(ruleStatus("eth1", "P", 20), (RuleStatus{false, "class map 'b' does not exist"}));
}

TEST_F(RunningSm, ProgramsTheRulesOfAClassMapThatArrives) {
  policyIs("P", "abxc");
  EXPECT_EQ(held("eth1"), "abc");
  forgetJournal();
  classMapsAre("x");
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 2 " + shownRule('x')));
}

TEST_F(RunningSm, TouchesNothingForAClassMapThatNobodyNames) {
  policyIs("P", "ab");
  forgetJournal();
  classMaps_->classMapIs("c", protocol(99));
  classMaps_->classMapDel("c");
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

// Interfaces that are not served everywhere.

TEST_F(PolicyOnEth1, IsNotProgrammedOnInterfacesThatAreNotAllowed) {
  intfIs("mgmt1", "P", IntfKind::mgmt);
  intfIs("vlan1", "P", IntfKind::l2);
  const auto sm = makeSm();
  EXPECT_THAT(hardware_->intfs(), ElementsAre(Velo::String("eth1")));
  EXPECT_TRUE(sm->ready());
}

TEST_F(PolicyOnEth1, IsProgrammedOnL2InterfacesWhereThatIsAllowed) {
  intfIs("mgmt1", "P", IntfKind::mgmt);
  intfIs("vlan1", "P", IntfKind::l2);
  const auto sm = makeSm({.allowL2Intf = true});
  EXPECT_EQ(held("vlan1"), "abc");
  EXPECT_EQ(held("mgmt1"), "");
}

TEST_F(PolicyOnEth1, IsProgrammedOnManagementInterfacesWhereThatIsAllowed) {
  intfIs("mgmt1", "P", IntfKind::mgmt);
  intfIs("vlan1", "P", IntfKind::l2);
  const auto sm = makeSm({.allowMgmtIntf = true});
  EXPECT_EQ(held("mgmt1"), "abc");
  EXPECT_EQ(held("vlan1"), "");
}

TEST_F(RunningSm, BeginsAndEndsToServeL2InterfacesInPlace) {
  intfIs("vlan1", "P", IntfKind::l2);
  EXPECT_FALSE(sm_->allowL2Intf());
  sm_->allowL2IntfIs(true);
  EXPECT_TRUE(sm_->allowL2Intf());
  EXPECT_EQ(held("vlan1"), "abc");
  sm_->allowL2IntfIs(false);
  EXPECT_EQ(held("vlan1"), "");
  EXPECT_EQ(held("eth1"), "abc");
  EXPECT_EQ(status_->ruleStatus({"vlan1", "P", 10}), nullptr);
}

TEST_F(RunningSm, DoesNothingForTheSameAllowL2Intf) {
  intfIs("vlan1", "P", IntfKind::l2);
  sm_->allowL2IntfIs(true);
  forgetJournal();
  sm_->allowL2IntfIs(true);
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(RunningSm, FollowsAnInterfaceThatBecomesOfAnotherKind) {
  intfIs("eth1", "P", IntfKind::l2);
  EXPECT_EQ(held("eth1"), "");
  intfIs("eth1", "P", IntfKind::mgmt);
  EXPECT_EQ(held("eth1"), "");
  intfIs("eth1", "P", IntfKind::routed);
  EXPECT_EQ(held("eth1"), "abc");
}

// Compiling only.

TEST_F(PolicyOnEth1, IsJudgedButNotProgrammedWhereItIsCompiledOnly) {
  policyIs("P", "ax");
  const auto sm = makeSm({.compileOnly = true});
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_TRUE(sm->inputs().compileOnly);
  EXPECT_FALSE(sm->ready());
  EXPECT_EQ(ruleStatus("eth1", "P", 10), (RuleStatus{false, "rules are compiled only"}));
  EXPECT_EQ(ruleStatus("eth1", "P", 20), (RuleStatus{false, "class map 'x' does not exist"}));
  policyIs("P", "b");
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(RunningSm, LeavesWhatAnotherProgrammedWhereItIsFollowedByOneThatCompilesOnly) {
  sm_ = nullptr;
  policyIs("P", "c");
  sm_ = makeSm({.compileOnly = true});
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(held("eth1"), "abc");
  EXPECT_FALSE(sm_->ready());
}

// From one machine to another.

TEST_F(RunningSm, LeavesTheRulesWhenItEnds) {
  sm_ = nullptr;
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(held("eth1"), "abc");
  EXPECT_FALSE(intfs_->publisher().hasSubscribers());
  EXPECT_FALSE(policies_->publisher().hasSubscribers());
  EXPECT_FALSE(classMaps_->publisher().hasSubscribers());
}

TEST_F(RunningSm, IsFollowedByAnotherThatTakesOverWithoutACall) {
  sm_ = makeSm();
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_TRUE(sm_->ready());
  policyIs("P", "ab");
  EXPECT_THAT(journal_.lines(), ElementsAre("removeRule eth1 2 " + shownRule('c')));
}

TEST_F(RunningSm, IsFollowedByAnotherThatChangesOnlyWhatIsDifferent) {
  intfIs("eth2", "P");
  sm_ = nullptr;
  forgetJournal();
  intfs_->intfDel("eth2");
  policyIs("P", "cab");
  classMapsAre("x");
  sm_ = makeSm();
  EXPECT_THAT(
      journal_.lines(),
      ElementsAre("moveRule eth1 2 0 " + shownRule('c'), "removeRule eth2 2 " + shownRule('c'),
                  "removeRule eth2 1 " + shownRule('b'), "removeRule eth2 0 " + shownRule('a')));
}

TEST_F(RunningSm, IsFollowedByAnotherThatRemovesRulesThatNoStatusTellsOf) {
  sm_ = nullptr;
  intfs_->intfDel("eth1");
  status_ = PolicyMap::PolicyMapTypeStatus::PolicyMapTypeStatusIs("other");
  sm_ = makeSm();
  EXPECT_THAT(hardware_->intfs(), IsEmpty());
}

// Switching it off and on.

TEST_F(RunningSm, FollowsNothingWhileItIsInactive) {
  sm_->hasNotificationActiveIs(false);
  policyIs("P", "a");
  intfIs("eth2", "P");
  classMaps_->classMapDel("a");
  sm_->allowL2IntfIs(true);
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_FALSE(intfs_->publisher().hasSubscribers());
}

TEST_F(RunningSm, CatchesUpWhenItIsActiveAgain) {
  sm_->hasNotificationActiveIs(false);
  policyIs("Q", "ab");
  intfIs("eth2", "Q");
  intfIs("vlan1", "Q", IntfKind::l2);
  intfs_->intfDel("eth1");
  sm_->allowL2IntfIs(true);
  sm_->hasNotificationActiveIs(true);
  EXPECT_EQ(held("eth1"), "");
  EXPECT_EQ(held("eth2"), "ab");
  EXPECT_EQ(held("vlan1"), "ab");
  EXPECT_EQ(status_->ruleStatus().count(), 4U);
  classMaps_->classMapDel("b");
  EXPECT_EQ(held("eth2"), "a");
}

TEST_F(RunningSm, DoesNothingWhenItIsSwitchedToWhatItIs) {
  sm_->hasNotificationActiveIs(true);
  EXPECT_THAT(journal_.lines(), IsEmpty());
  sm_->hasNotificationActiveIs(false);
  sm_->hasNotificationActiveIs(false);
  sm_->hasNotificationActiveIs(true);
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

// Without one of its inputs.

TEST_F(PolicyOnEth1, IsNotConfiguredForAMachineWithoutInterfaces) {
  intfs_ = nullptr;
  const auto sm = makeSm();
  policyIs("P", "a");
  classMaps_->classMapDel("a");
  sm->allowL2IntfIs(true);
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_TRUE(sm->ready());
}

TEST_F(PolicyOnEth1, HasNoRulesForAMachineWithoutPolicies) {
  policies_ = nullptr;
  const auto sm = makeSm();
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(status_->policyStatus().count(), 0U);
  EXPECT_TRUE(sm->ready());
}

TEST_F(PolicyOnEth1, CannotBeProgrammedByAMachineWithoutClassMaps) {
  classMaps_ = nullptr;
  const auto sm = makeSm();
  EXPECT_THAT(journal_.lines(), IsEmpty());
  EXPECT_EQ(ruleStatus("eth1", "P", 10), (RuleStatus{false, "class map 'a' does not exist"}));
  EXPECT_FALSE(sm->ready());
}

TEST_F(PolicyOnEth1, IsProgrammedByAMachineWithoutAStatus) {
  status_ = nullptr;
  const auto sm = makeSm();
  policyIs("P", "ab");
  EXPECT_EQ(held("eth1"), "ab");
  EXPECT_TRUE(sm->ready());
}

TEST_F(PolicyOnEth1, IsNotProgrammedByAMachineWithoutHardware) {
  hardware_ = nullptr;
  const auto sm = makeSm();
  EXPECT_FALSE(ruleStatus("eth1", "P", 10).programmed);
  EXPECT_FALSE(ruleStatus("eth1", "P", 10).reason.empty());
  EXPECT_FALSE(sm->ready());
}

TEST_F(TrafficPolicySm, MayHaveNoInputsAtAll) {
  intfs_ = nullptr;
  policies_ = nullptr;
  classMaps_ = nullptr;
  status_ = nullptr;
  hardware_ = nullptr;
  const auto sm = makeSm();
  sm->allowL2IntfIs(true);
  sm->hasNotificationActiveIs(false);
  sm->hasNotificationActiveIs(true);
  EXPECT_TRUE(sm->ready());
}

// Refusals and failures.

TEST_F(RunningSm, KeepsTheOldPolicyWhereTheNewOneDoesNotFit) {
  classMapsAre("xy");
  hardware_->capacity = 4;
  policyIs("P", "xyb");
  EXPECT_EQ(held("eth1"), "abc");
  const RuleStatus refused{false, "no room for more than 4; the previous rules stay in force"};
  EXPECT_EQ(ruleStatus("eth1", "P", 10), refused);
  EXPECT_EQ(ruleStatus("eth1", "P", 30), refused) << "although the hardware has a rule like it";
  EXPECT_FALSE(sm_->ready());
  EXPECT_THAT(sm_->refusedIntfs(), ElementsAre(Velo::String("eth1")));
}

TEST_F(PolicyOnEth1, ClosesTheInterfaceWhereItDoesNotFit) {
  refuse("b");
  const auto sm = makeSm();
  EXPECT_EQ(held("eth1"), "");
  EXPECT_TRUE(hardware_->intfClosed("eth1"));
  EXPECT_EQ(ruleStatus("eth1", "P", 10),
            (RuleStatus{false, "refused; all packets of the interface are dropped"}));
}

TEST_F(PolicyOnEth1, LeavesTheInterfaceOpenIfThatIsChosen) {
  hardware_->whenFullIs(PolicyMap::WhenFull::open);
  refuse("b");
  const auto sm = makeSm();
  EXPECT_THAT(hardware_->intfs(), IsEmpty());
  EXPECT_EQ(ruleStatus("eth1", "P", 10),
            (RuleStatus{false, "refused; the interface has no rules in force"}));
}

TEST_F(PolicyOnEth1, OpensTheInterfaceThatAnotherMachineClosed) {
  refuse("b");
  auto sm = makeSm();
  sm = nullptr;
  intfs_->intfDel("eth1");
  sm = makeSm();
  EXPECT_FALSE(hardware_->intfClosed("eth1"));
}

TEST_F(PolicyOnEth1, IsTriedAgainWithItsNextChange) {
  refuse("b");
  const auto sm = makeSm();
  hardware_->onAdd = nullptr;
  classMapsAre("x");
  EXPECT_EQ(held("eth1"), "") << "no change of its own";
  policyIs("P", "abcx");
  EXPECT_EQ(held("eth1"), "abcx");
  EXPECT_FALSE(hardware_->intfClosed("eth1"));
}

TEST_F(RunningSm, TriesRefusedRulesAgainWhenAnotherInterfaceMakesRoom) {
  hardware_->capacity = 4;
  intfIs("eth2", "P");
  intfIs("eth3", "P");
  EXPECT_EQ(held("eth2"), "");
  intfs_->intfDel("eth1");
  EXPECT_EQ(held("eth2"), "abc");
  EXPECT_EQ(held("eth3"), "") << "it was refused later";
  EXPECT_THAT(sm_->refusedIntfs(), ElementsAre(Velo::String("eth3")));
  intfs_->intfDel("eth2");
  EXPECT_EQ(held("eth3"), "abc");
  EXPECT_TRUE(sm_->ready());
}

TEST_F(RunningSm, TriesTheOldestRefusalFirst) {
  hardware_->capacity = 3;
  intfIs("eth3", "P");
  intfIs("eth2", "P");
  intfs_->intfDel("eth1");
  EXPECT_EQ(held("eth3"), "abc");
  EXPECT_EQ(held("eth2"), "");
}

TEST_F(RunningSm, AsksForNothingAgainWhileNoRuleIsRemoved) {
  hardware_->capacity = 3;
  intfIs("eth2", "P");
  policyIs("Q", "");
  forgetJournal();
  intfIs("eth3", "Q");
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(RunningSm, TriesRefusedRulesAgainWhenAskedTo) {
  hardware_->capacity = 3;
  intfIs("eth2", "P");
  forgetJournal();
  sm_->retry();
  EXPECT_EQ(journal_.take().size(), 1U) << "one addition is refused";
  hardware_->capacity = 6;
  sm_->retry();
  EXPECT_EQ(held("eth2"), "abc");
  EXPECT_TRUE(sm_->ready());
  forgetJournal();
  sm_->retry();
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(RunningSm, TriesNothingAgainWhileItIsInactive) {
  hardware_->capacity = 3;
  intfIs("eth2", "P");
  sm_->hasNotificationActiveIs(false);
  hardware_->capacity = 6;
  sm_->retry();
  EXPECT_EQ(held("eth2"), "");
}

TEST_F(PolicyOnEth1, IsNotRefusedOnAnInterfaceThatLeftWhileTheMachineWasInactive) {
  hardware_->whenFullIs(PolicyMap::WhenFull::open);
  refuse("b");
  TrafficPolicyInputs inputs;  // without a status, which would name the interface, too
  inputs.intfConfig = intfs_;
  inputs.policyConfig = policies_;
  inputs.classTypeConfig = classMaps_;
  inputs.aclHelper = hardware_;
  const auto sm = ZelTrafficPolicySm::ZelTrafficPolicySmIs(inputs, false);
  EXPECT_THAT(sm->refusedIntfs(), ElementsAre(Velo::String("eth1")));
  sm->hasNotificationActiveIs(false);
  intfs_->intfDel("eth1");
  sm->hasNotificationActiveIs(true);
  EXPECT_THAT(sm->refusedIntfs(), IsEmpty());
}

TEST_F(RunningSm, TriesRefusedRulesAgainAfterAFailureThatMayHaveMadeRoom) {
  hardware_->capacity = 3;
  intfIs("eth2", "P");
  hardware_->onRemove = [this](const Velo::String&, const AclRule&) {
    if (held("eth1").size() == 1) throw std::runtime_error("hardware lost");
  };
  EXPECT_THROW(intfs_->intfDel("eth1"), std::runtime_error);
  hardware_->onRemove = nullptr;
  hardware_->capacity = 4;  // a rule of eth1 is left
  policyIs("Q", "");        // any change at all
  EXPECT_EQ(held("eth2"), "abc");
}

TEST_F(RunningSm, ReplacesAnActionInPlaceWhereThereIsNoRoom) {
  hardware_->capacity = 3;
  forgetJournal();
  PolicyRules rules = rulesOn("abc");
  rules[1].action.vrfName = "x";
  policies_->policyMapIs("P", rules);
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 2 v4,protocol=1->x",
                                            "replaceRule eth1 1 v4,protocol=1->x"));
  EXPECT_TRUE(sm_->ready());
}

TEST_F(PolicyOnEth1, IsMendedByTheNextChangeAfterAHelperThrewOnce) {
  intfIs("eth2", "P");
  const auto sm = makeSm();
  classMapsAre("x");
  hardware_->onAdd = [this](const Velo::String&, const AclRule&) -> AclResult {
    hardware_->onAdd = nullptr;
    throw std::runtime_error("hardware lost");
  };
  EXPECT_THROW(policyIs("P", "cxa"), std::runtime_error);
  EXPECT_FALSE(sm->ready());
  classMapsAre("y");  // any change at all
  EXPECT_EQ(held("eth1"), "cxa");
  EXPECT_EQ(held("eth2"), "cxa");
  EXPECT_TRUE(sm->ready());
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyMap::PolicyStatus{2, 6, 6}));
}

TEST_F(PolicyOnEth1, IsMendedByTheSameChangeTakenBackAfterAHelperThrewOnce) {
  const auto sm = makeSm();
  hardware_->onRemove = [this](const Velo::String&, const AclRule&) {
    hardware_->onRemove = nullptr;
    throw std::runtime_error("hardware lost");
  };
  EXPECT_THROW(policyIs("P", "b"), std::runtime_error);
  policyIs("P", "abc");
  EXPECT_EQ(held("eth1"), "abc");
  EXPECT_TRUE(sm->ready());
}

TEST_F(PolicyOnEth1, HasNoMachineWhereTheHelperThrowsAtItsConstruction) {
  hardware_->onAdd = [](const Velo::String&, const AclRule&) -> AclResult {
    throw std::runtime_error("hardware lost");
  };
  EXPECT_THROW(static_cast<void>(makeSm()), std::runtime_error);
  EXPECT_FALSE(intfs_->publisher().hasSubscribers());
  EXPECT_FALSE(policies_->publisher().hasSubscribers());
  EXPECT_FALSE(classMaps_->publisher().hasSubscribers());
  EXPECT_EQ(intfs_->references(), 1U);
}

// Steps.

/// A machine that is off while policy map P and a second interface change.
class SmInSteps : public RunningSm {
 protected:
  // Eth1 has rule a and a new one in front of it afterwards, and eth2 has them too.
  void change() {
    sm_->hasNotificationActiveIs(false);
    classMapsAre("x");
    policyIs("P", "xa");
    intfIs("eth2", "P");
  }
  // The calls that one step made.
  [[nodiscard]] Lines callsOfStep() {
    isLeft_ = sm_->step();
    return journal_.take();
  }
  [[nodiscard]] std::vector<Lines> callsOfSteps() {
    std::vector<Lines> calls;
    for (isLeft_ = true; isLeft_;) {
      const Lines ofStep = callsOfStep();
      if (!ofStep.empty()) calls.push_back(ofStep);
    }
    return calls;
  }

  bool isLeft_ = false;
};

TEST_F(SmInSteps, MakesTheSameCallsInTheSameOrderOneInterfaceAtATime) {
  change();
  sm_->hasNotificationActiveIs(true);
  const Lines atOnce = journal_.take();
  sm_->hasNotificationActiveIs(false);
  intfs_->intfDel("eth2");
  policyIs("P", "abc");
  sm_->hasNotificationActiveIs(true);
  forgetJournal();
  change();
  sm_->hasNotificationActiveInSteps();
  EXPECT_THAT(journal_.lines(), IsEmpty());
  const std::vector<Lines> steps = callsOfSteps();
  ASSERT_EQ(steps.size(), 3U) << "additions on eth1 and on eth2, and removals on eth1";
  Lines all;
  for (const Lines& step : steps)
    all.insert(all.end(), step.begin(), step.end());
  EXPECT_EQ(all, atOnce);
  EXPECT_EQ(steps[0], Lines{"addRule eth1 0 " + shownRule('x')});
  EXPECT_TRUE(sm_->ready());
  EXPECT_EQ(*status_->policyStatus("P"), (PolicyMap::PolicyStatus{2, 4, 4}));
}

TEST_F(SmInSteps, HandlesAChangeBetweenTwoStepsAfterThem) {
  change();
  sm_->hasNotificationActiveInSteps();
  while (journal_.lines().empty())
    EXPECT_TRUE(sm_->step());
  policyIs("P", "b");
  EXPECT_EQ(journal_.lines().size(), 1U) << "no call was made at once";
  static_cast<void>(callsOfSteps());
  EXPECT_EQ(held("eth1"), "b");
  EXPECT_EQ(held("eth2"), "b");
  EXPECT_TRUE(sm_->ready());
}

TEST_F(SmInSteps, CompletesTheProgrammingInProgressWhenItIsSwitchedOff) {
  change();
  sm_->hasNotificationActiveInSteps();
  while (journal_.lines().empty())
    EXPECT_TRUE(sm_->step());
  sm_->hasNotificationActiveIs(false);
  EXPECT_EQ(held("eth1"), "xa");
  EXPECT_EQ(held("eth2"), "xa");
  EXPECT_FALSE(sm_->step());
  EXPECT_EQ(status_->ruleStatus({"eth2", "P", 10}), nullptr) << "it writes no status";
}

TEST_F(SmInSteps, FollowsChangesAtOnceAgainAfterTheLastStepOrAFailure) {
  change();
  sm_->hasNotificationActiveInSteps();
  hardware_->onAdd = [](const Velo::String&, const AclRule&) -> AclResult {
    throw std::runtime_error("broken");
  };
  EXPECT_THROW(static_cast<void>(callsOfSteps()), std::runtime_error);
  hardware_->onAdd = nullptr;
  policyIs("P", "ba");
  EXPECT_EQ(held("eth1"), "ba");
  EXPECT_EQ(held("eth2"), "ba");
  EXPECT_TRUE(sm_->ready());
}

// The cost of a change.

/// Counts how often the rules of an interface are read. Each reading may compare all of them.
class CountingHardware final : public PolicyMap::PolicyMapAclHelper {
 public:
  CountingHardware() : PolicyMapAclHelper("counting") {}

  AclResult addRule(const Velo::String& intf, std::size_t place, const AclRule& rule) override {
    Rules& rules = rules_[intf];
    rules.insert(rules.begin() + static_cast<std::ptrdiff_t>(place), rule);
    ++calls;
    return {};
  }
  void removeRule(const Velo::String& intf, std::size_t place) override {
    Rules& rules = rules_[intf];
    rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(place));
    ++calls;
  }
  void moveRule(const Velo::String&, std::size_t, std::size_t) override { ++calls; }
  AclResult replaceRule(const Velo::String&, std::size_t, const AclRule&) override {
    ++calls;
    return {};
  }
  void intfClosedIs(const Velo::String&, bool) override { ++calls; }
  [[nodiscard]] bool intfClosed(const Velo::String&) const override { return false; }
  [[nodiscard]] const Rules& rules(const Velo::String& intf) const override {
    ++readings;
    return rules_[intf];
  }
  [[nodiscard]] std::vector<Velo::String> intfs() const override { return {}; }

  std::size_t calls = 0;
  mutable std::size_t readings = 0;

 private:
  mutable std::map<Velo::String, Rules> rules_;
};

TEST_F(TrafficPolicySm, ReadsTheRulesOfEachInterfaceOnceForAChangeHoweverManyThereAre) {
  const auto counting = Mox::makePtr<CountingHardware>();
  TrafficPolicyInputs inputs;
  inputs.intfConfig = intfs_;
  inputs.policyConfig = policies_;
  inputs.classTypeConfig = classMaps_;
  inputs.status = status_;
  inputs.aclHelper = counting;
  const std::string letters = "abcdefghijklmnopqrstuvwxyz";
  classMapsAre(letters);
  policyIs("P", letters);
  for (int number = 0; number < 10; ++number)
    intfIs(("eth" + std::to_string(number)).c_str(), "P");
  const auto sm = ZelTrafficPolicySm::ZelTrafficPolicySmIs(inputs, false);
  EXPECT_EQ(counting->calls, 10 * letters.size());
  EXPECT_EQ(counting->readings, 10U);
  policies_->policyMapDel("P");
  EXPECT_EQ(counting->calls, 2 * 10 * letters.size());
  EXPECT_EQ(counting->readings, 2 * 10U);
}

}  // namespace
}  // namespace TrafficPolicy
