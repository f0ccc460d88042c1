// Rules that name prefix sets, and rules with ports.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TrafficPolicyFixture.h"

namespace TrafficPolicy {
namespace {

using Classification::FieldSetConfig;
using Classification::PrefixSet;
using PolicyMap::AclMatch;
using PolicyMap::ActionType;
using PolicyMap::ClassMatch;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

Ip::Prefix prefixOf8(std::uint8_t byte) {
  return {{Ip::Family::v4, {byte}}, 8};
}

// Policy P has the rules a (source set "s"), b (destination set "d") and c (no set), and is applied
// to eth1. Policy Q has the rule c only, and is applied to eth2.
class PrefixSetsOnEth1 : public TrafficPolicyFixture {
 protected:
  PrefixSetsOnEth1() {
    classMapsAre("abc");
    ClassMatch match = protocol(0);
    match.sourceSet = "s";
    classMaps_->classMapIs("a", match);
    match = protocol(1);
    match.destinationSet = "d";
    classMaps_->classMapIs("b", match);
    policyIs("P", "abc");
    policyIs("Q", "c");
    intfIs("eth1", "P");
    intfIs("eth2", "Q");
    setIs("s", {{prefixOf8(10)}, {}});
    setIs("d", {{prefixOf8(20)}, {prefixOf8(21)}});
  }

  [[nodiscard]] Mox::Ptr<ZelTrafficPolicySm> makeSetSm(bool permitFragment = false) const {
    TrafficPolicyInputs inputs;
    inputs.intfConfig = intfs_;
    inputs.policyConfig = policies_;
    inputs.classTypeConfig = classMaps_;
    inputs.status = status_;
    inputs.fieldSetConfig = sets_;
    inputs.aclHelper = hardware_;
    inputs.permitFragment = permitFragment;
    return ZelTrafficPolicySm::ZelTrafficPolicySmIs(inputs, false);
  }
  void setIs(const char* name, const PrefixSet& set) {
    sets_->prefixSetIs({Ip::Family::v4, name}, set);
  }
  [[nodiscard]] const AclMatch& matchAt(std::size_t place) const {
    return *hardware_->held("eth1")[place].match;
  }

  Mox::Ptr<FieldSetConfig> sets_ = FieldSetConfig::FieldSetConfigIs("sets");
};

TEST_F(PrefixSetsOnEth1, TheHardwareGetsThePrefixesInsteadOfTheNames) {
  const auto sm = makeSetSm();
  ASSERT_THAT(hardware_->held("eth1"), SizeIs(3));
  EXPECT_EQ(**matchAt(0).sourceSet, (PrefixSet{{prefixOf8(10)}, {}}));
  EXPECT_FALSE(matchAt(0).destinationSet.has_value());
  EXPECT_EQ(**matchAt(1).destinationSet, (PrefixSet{{prefixOf8(20)}, {prefixOf8(21)}}));
  EXPECT_FALSE(matchAt(1).sourceSet.has_value());
  EXPECT_TRUE(sm->ready());
}

TEST_F(PrefixSetsOnEth1, RulesOfTwoInterfacesShareTheirMatch) {
  intfIs("eth3", "P");
  const auto sm = makeSetSm();
  EXPECT_EQ(&*hardware_->held("eth3")[0].match, &matchAt(0));
  EXPECT_EQ(&*hardware_->held("eth2")[0].match, &matchAt(2)) << "of another policy map";
}

TEST_F(PrefixSetsOnEth1, AChangedSetReplacesTheRulesWithIt) {
  const auto sm = makeSetSm();
  forgetJournal();
  setIs("s", {{prefixOf8(11)}, {}});
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth1 1 v4,protocol=0,sourceSet={11.0.0.0/8}->a",
                          "removeRule eth1 0 v4,protocol=0,sourceSet={10.0.0.0/8}->a"));
  EXPECT_TRUE(sm->ready());
}

TEST_F(PrefixSetsOnEth1, ASetThatNoRuleNamesChangesNothing) {
  const auto sm = makeSetSm();
  forgetJournal();
  setIs("other", {{prefixOf8(11)}, {}});
  sets_->prefixSetIs({Ip::Family::v6, "s"}, PrefixSet());
  sets_->prefixSetDel({Ip::Family::v4, "other"});
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(PrefixSetsOnEth1, ARuleWithAMissingSetIsLeftOutAndSaysSo) {
  sets_->prefixSetDel({Ip::Family::v4, "d"});
  const auto sm = makeSetSm();
  EXPECT_EQ(held("eth1"), "ac");
  EXPECT_EQ(ruleStatus("eth1", "P", 20),
            (PolicyMap::RuleStatus{false, "prefix set 'd' does not exist"}));
  EXPECT_EQ(ruleStatus("eth1", "P", 30), programmed_);
  EXPECT_FALSE(sm->ready());
  setIs("d", {{prefixOf8(20)}, {}});
  EXPECT_EQ(held("eth1"), "abc");
  EXPECT_EQ(ruleStatus("eth1", "P", 20), programmed_);
  EXPECT_TRUE(sm->ready());
  sets_->prefixSetDel({Ip::Family::v4, "s"});
  EXPECT_EQ(held("eth1"), "bc");
}

TEST_F(PrefixSetsOnEth1, ASetOfTheOtherFamilyIsAnotherOne) {
  sets_->prefixSetDel({Ip::Family::v4, "s"});
  sets_->prefixSetIs({Ip::Family::v6, "s"}, PrefixSet());
  const auto sm = makeSetSm();
  EXPECT_EQ(held("eth1"), "bc");
}

TEST_F(PrefixSetsOnEth1, WithoutAConfigurationOfSetsNoneExists) {
  sets_ = nullptr;
  const auto sm = makeSetSm();
  EXPECT_EQ(held("eth1"), "c");
}

TEST_F(PrefixSetsOnEth1, AMachineThatIsSwitchedOffFollowsNoSet) {
  const auto sm = makeSetSm();
  sm->hasNotificationActiveIs(false);
  setIs("s", {{prefixOf8(11)}, {}});
  EXPECT_EQ(**matchAt(0).sourceSet, (PrefixSet{{prefixOf8(10)}, {}}));
  sm->hasNotificationActiveIs(true);
  EXPECT_EQ(**matchAt(0).sourceSet, (PrefixSet{{prefixOf8(11)}, {}}));
}

TEST_F(PrefixSetsOnEth1, ARuleWithPortsMatchesNoLaterFragmentUnlessPermitted) {
  ClassMatch match = protocol(6);
  match.sourcePorts = {{80, 80}};
  classMaps_->classMapIs("a", match);
  policies_->policyMapIs("P", {{1, "a", {ActionType::vrf, "red", {}, {}}},
                               {2, "a", {ActionType::discard, {}, {}, {}}},
                               {3, "a", {}},
                               {4, "c", {}}});
  {
    const auto sm = makeSetSm();
    for (std::size_t place = 0; place < 4; ++place)
      EXPECT_FALSE(matchAt(place).matchesLaterFragments) << place;
  }
  const auto sm = makeSetSm(true);
  EXPECT_TRUE(matchAt(0).matchesLaterFragments);
  EXPECT_FALSE(matchAt(1).matchesLaterFragments) << "it discards";
  EXPECT_TRUE(matchAt(2).matchesLaterFragments);
  EXPECT_FALSE(matchAt(3).matchesLaterFragments) << "it needs no ports";
}

}  // namespace
}  // namespace TrafficPolicy
