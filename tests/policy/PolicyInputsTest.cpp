// What each of the inputs of the traffic-policy machine does when it changes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "ActingTop.h"
#include "PolicyFixture.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Testing::ActingTop;
using Testing::Journal;
using Testing::PolicySmArguments;

constexpr std::size_t numberOfInputs = 31;
constexpr std::string_view appliedInPlace = "allowL2Intf";

/// An input by its name, and what changes it.
struct InputChange {
  std::string input;
  std::string how;
  void (*apply)(PolicySmArguments& arguments);

  friend std::ostream& operator<<(std::ostream& stream, const InputChange& change) {
    return stream << change.input << change.how;
  }
};

template <class Held>
void replace(Mox::Ptr<Held>& argument) {
  argument = Testing::anEntity<Held>("another");
}
void replace(Mox::Ptr<PolicyMap::PolicyMapAclHelper>& argument) {
  static Journal unread;
  argument = Mox::makePtr<Testing::RecordingAclHelper>(unread);
}

template <auto argument>
void replaced(PolicySmArguments& arguments) {
  replace(arguments.*argument);
}
template <auto argument>
void null(PolicySmArguments& arguments) {
  arguments.*argument = nullptr;
}
template <auto argument>
void raised(PolicySmArguments& arguments) {
  arguments.*argument = true;
}

template <auto argument>
void addPointer(std::vector<InputChange>& changes, const char* input) {
  changes.push_back({input, "Replaced", &replaced<argument>});
  changes.push_back({input, "Null", &null<argument>});
}
template <auto argument>
void addFlag(std::vector<InputChange>& changes, const char* input) {
  changes.push_back({input, "Raised", &raised<argument>});
}

std::vector<InputChange> changesOfEachInput() {
  using In = PolicySmArguments;
  std::vector<InputChange> all;
  addPointer<&In::intfConfig>(all, "intfConfig");
  addPointer<&In::policyConfig>(all, "policyConfig");
  addPointer<&In::classTypeConfig>(all, "classTypeConfig");
  addPointer<&In::statusRequestDir>(all, "statusRequestDir");
  addPointer<&In::status>(all, "status");
  addPointer<&In::aclConfig>(all, "aclConfig");
  addPointer<&In::fieldSetConfig>(all, "fieldSetConfig");
  addPointer<&In::lagConfig>(all, "lagConfig");
  addPointer<&In::ipConfig>(all, "ipConfig");
  addPointer<&In::ip6Config>(all, "ip6Config");
  addPointer<&In::ipStatus>(all, "ipStatus");
  addPointer<&In::ip6Status>(all, "ip6Status");
  addPointer<&In::routingVrfInfoDir>(all, "routingVrfInfoDir");
  addPointer<&In::routing6VrfInfoDir>(all, "routing6VrfInfoDir");
  addPointer<&In::aclHelper>(all, "aclHelper");
  addFlag<&In::allowL2Intf>(all, "allowL2Intf");
  addFlag<&In::allowMgmtIntf>(all, "allowMgmtIntf");
  addPointer<&In::nexthopConfig>(all, "nexthopConfig");
  addPointer<&In::nexthopStatus>(all, "nexthopStatus");
  addPointer<&In::timerWheel>(all, "timerWheel");
  addPointer<&In::nexthopGroupConfig>(all, "nexthopGroupConfig");
  addPointer<&In::nexthopGroupStatus>(all, "nexthopGroupStatus");
  addPointer<&In::mirroringHwConfig>(all, "mirroringHwConfig");
  addPointer<&In::sflowIntfCollector>(all, "sflowIntfCollector");
  addPointer<&In::udfConfig>(all, "udfConfig");
  addPointer<&In::zcsd>(all, "zcsd");
  addPointer<&In::bgpNeighborConfigDir>(all, "bgpNeighborConfigDir");
  addFlag<&In::expandAllRulesByVrf>(all, "expandAllRulesByVrf");
  addFlag<&In::permitFragment>(all, "permitFragment");
  addFlag<&In::expandNeighborsWhenNonPresent>(all, "expandNeighborsWhenNonPresent");
  addPointer<&In::trafficPolicyHwStatus>(all, "trafficPolicyHwStatus");
  return all;
}

std::vector<InputChange> changesThatRebuild() {
  std::vector<InputChange> changes = changesOfEachInput();
  std::erase_if(changes, [](const InputChange& change) { return change.input == appliedInPlace; });
  return changes;
}

std::string nameOf(const ::testing::TestParamInfo<InputChange>& info) {
  return ::testing::PrintToString(info.param);
}

class PolicyInputs : public Testing::PolicyFixture {
 protected:
  PolicyInputs() { acting_->calls = 0; }

  /// That the top object hears of this machine, and whether anybody does.
  void expectObserved(const TrafficPolicySm& policySm) {
    const unsigned before = acting_->calls;
    publishReady(policySm);
    EXPECT_EQ(acting_->calls, before + 1);
  }
  static void expectUnobserved(const TrafficPolicySm& policySm) {
    EXPECT_FALSE(policySm.publisher().hasSubscribers());
  }

  Mox::Ptr<ActingTop> acting_ = makeTop<ActingTop>();
  const Mox::Ptr<TrafficPolicySm> first_ = arguments_.bindTo(*acting_);
};

class EachPolicyInput : public PolicyInputs, public ::testing::WithParamInterface<InputChange> {};

TEST(PolicyInputList, NamesEveryInputOnce) {
  std::vector<std::string> names;
  for (const InputChange& change : changesOfEachInput()) {
    if (names.empty() || names.back() != change.input) names.push_back(change.input);
  }
  EXPECT_EQ(names.size(), numberOfInputs);
}

TEST_P(EachPolicyInput, ChangedAloneGivesANewMachineThatIsObserved) {
  GetParam().apply(arguments_);
  const auto second = arguments_.bindTo(*acting_);
  EXPECT_NE(second, first_);
  EXPECT_EQ(acting_->policySm(), second);
  EXPECT_TRUE(second->hasNotificationActive());
  EXPECT_EQ(acting_->calls, 1U);
  expectObserved(*second);
  expectUnobserved(*first_);
  EXPECT_EQ(first_->references(), 1U) << "released";
}

TEST_P(EachPolicyInput, IsPassedThroughAsAllTheOthersAre) {
  GetParam().apply(arguments_);
  const auto second = arguments_.bindTo(*acting_);
  EXPECT_TRUE(second->inputs() == arguments_.inputs());
  EXPECT_FALSE(second->inputs() == first_->inputs());
  EXPECT_FALSE(second->inputs().compileOnly);
  EXPECT_FALSE(second->allowL2Intf());
}

TEST_P(EachPolicyInput, IsTakenInItsPlaceByTheCreatorOfTheMachine) {
  GetParam().apply(arguments_);
  const auto machine = arguments_.machine();
  EXPECT_TRUE(machine->inputs() == arguments_.inputs());
  EXPECT_FALSE(machine->allowL2Intf());
}

TEST_P(EachPolicyInput, ChangedBackGivesAnotherNewMachine) {
  const PolicySmArguments before = arguments_;
  GetParam().apply(arguments_);
  const auto second = arguments_.bindTo(*acting_);
  const auto third = before.bindTo(*acting_);
  EXPECT_NE(third, second);
  EXPECT_NE(third, first_);
  EXPECT_TRUE(third->inputs() == first_->inputs());
}

TEST_P(EachPolicyInput, ChangedTogetherWithAllowL2IntfHasThatAppliedToTheOldMachineToo) {
  GetParam().apply(arguments_);
  arguments_.allowL2Intf = true;
  const auto second = arguments_.bindTo(*acting_);
  EXPECT_NE(second, first_);
  EXPECT_TRUE(first_->allowL2Intf());
  EXPECT_TRUE(second->allowL2Intf());
  EXPECT_EQ(acting_->calls, 1U);
}

INSTANTIATE_TEST_SUITE_P(Changed, EachPolicyInput, ::testing::ValuesIn(changesThatRebuild()),
                         nameOf);

TEST_F(PolicyInputs, AllowL2IntfChangedAloneIsAppliedInPlaceAndReportsNoReadiness) {
  arguments_.allowL2Intf = true;
  EXPECT_EQ(arguments_.bindTo(*acting_), first_);
  EXPECT_TRUE(first_->allowL2Intf());
  EXPECT_EQ(acting_->calls, 0U);
  expectObserved(*first_);
  arguments_.allowL2Intf = false;
  EXPECT_EQ(arguments_.bindTo(*acting_), first_);
  EXPECT_FALSE(first_->allowL2Intf());
}

TEST_F(PolicyInputs, AllowL2IntfIsGivenToANewMachine) {
  acting_->policySmDel();
  arguments_.allowL2Intf = true;
  EXPECT_TRUE(arguments_.bindTo(*acting_)->allowL2Intf());
}

TEST_F(PolicyInputs, AreComparedByIdentityNotByContents) {
  PolicyMap::ClassMatch noPacket;
  noPacket.family = Ip::Family::v4;
  noPacket.dscps = 0;
  arguments_.classTypeConfig->classMapIs("class", noPacket);
  arguments_.routingVrfInfoDir->entryIs(Mox::Dir::DirIs("entry"));
  changeRule();
  acting_->calls = 0;
  EXPECT_EQ(arguments_.bindTo(*acting_), first_);
  EXPECT_EQ(acting_->calls, 0U);
}

TEST_F(PolicyInputs, OfTheSameTypeAreNotMistakenForEachOther) {
  std::swap(arguments_.routingVrfInfoDir, arguments_.routing6VrfInfoDir);
  const auto swapped = arguments_.bindTo(*acting_);
  EXPECT_NE(swapped, first_);
  EXPECT_TRUE(swapped->inputs() == arguments_.inputs());
  std::swap(arguments_.routingVrfInfoDir, arguments_.bgpNeighborConfigDir);
  EXPECT_NE(arguments_.bindTo(*acting_), swapped);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
