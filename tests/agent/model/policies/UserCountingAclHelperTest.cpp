// Users are counted by the rules that the hardware holds, in step with it.
#include "agent/model/policies/UserCountingAclHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "agent/model/policies/VrfActions.h"
#include "testing/Journal.h"
#include "testing/RecordingAclHelper.h"
#include "testing/RecordingVrfHelper.h"
#include "testing/TableJournal.h"

namespace ZelAgent {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::ActionType;
using ::testing::ElementsAre;
using ZelVrfSelectionPolicy::VrfSm;
using ZelVrfSelectionPolicy::Testing::Journal;
using ZelVrfSelectionPolicy::Testing::RecordingAclHelper;
using ZelVrfSelectionPolicy::Testing::RecordingVrfHelper;
using ZelVrfSelectionPolicy::Testing::TableJournal;

AclRule into(const char* vrf) {
  return {{}, {ActionType::vrf, vrf, {}, {}}};
}

class UserCountingAclHelperTest : public ::testing::Test {
 protected:
  // Takes a rule that must be accepted.
  void add(const char* intf, std::size_t place, const AclRule& rule) {
    EXPECT_EQ(helper_->addRule(intf, place, rule), AclResult{});
  }
  [[nodiscard]] unsigned usersOf(const AclRule& rule) const {
    const auto* const count = users_->vrfRefCount().find(*vrfActionOf(rule.action));
    return count == nullptr ? 0 : *count;
  }

  // The library on both tables, which creates resources on `chip`.
  [[nodiscard]] Mox::Ptr<VrfSm> vrfSmOf(const Mox::Ptr<RecordingVrfHelper>& chip) const {
    return VrfSm::VrfSmIs(users_, statuses_, chip, fallbacks_, nullptr, nullptr);
  }

  Journal journal_;
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbacks_ =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses_ =
      ZelVrfSelectionPolicy::vrfHwStatusFactory();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users_ = ZelVrfSelectionPolicy::vrfHwConfigFactory();
  Mox::Ptr<RecordingAclHelper> hardware_ = Mox::makePtr<RecordingAclHelper>(journal_);
  Mox::Ptr<UserCountingAclHelper> helper_ =
      Mox::makeActivePtr<UserCountingAclHelper>(Velo::String("counting"), hardware_, users_);
};

TEST_F(UserCountingAclHelperTest, AUserIsCountedBeforeTheHardwareGetsTheRule) {
  const TableJournal followed(journal_, users_, nullptr);
  add("e1", 0, into("red"));
  EXPECT_THAT(journal_.lines(), ElementsAre("vrfRefCount red = 1", "addRule e1 0 any->red"));
}

TEST_F(UserCountingAclHelperTest, TheUserOfARefusedRuleIsTakenBack) {
  hardware_->capacity = 0;
  EXPECT_EQ(helper_->addRule("e1", 0, into("red")), (AclResult{false, "no room for more than 0"}));
  EXPECT_EQ(usersOf(into("red")), 0U);
  hardware_->capacity = 1;
  add("e1", 0, into("red"));
  EXPECT_EQ(usersOf(into("red")), 1U);
}

TEST_F(UserCountingAclHelperTest, TheUserOfARuleWhoseAdditionThrowsIsTakenBack) {
  add("e1", 0, into("red"));
  hardware_->onAdd = [](const Velo::String&, const AclRule&) -> AclResult {
    throw std::runtime_error("hardware lost");
  };
  EXPECT_THROW(add("e1", 1, into("red")), std::runtime_error);
  EXPECT_EQ(usersOf(into("red")), 1U);
}

TEST_F(UserCountingAclHelperTest, AUserIsGoneAfterTheHardwareRemovedTheRule) {
  add("e1", 0, into("red"));
  (void)journal_.take();
  const TableJournal followed(journal_, users_, nullptr);
  helper_->removeRule("e1", 0);
  EXPECT_THAT(journal_.lines(), ElementsAre("removeRule e1 0 any->red", "vrfRefCount red = 0"));
}

TEST_F(UserCountingAclHelperTest, ARuleWhoseRemovalThrowsStaysAUser) {
  add("e1", 0, into("red"));
  hardware_->onRemove = [](const Velo::String&, const AclRule&) {
    throw std::runtime_error("hardware lost");
  };
  EXPECT_THROW(helper_->removeRule("e1", 0), std::runtime_error);
  EXPECT_EQ(usersOf(into("red")), 1U);
}

// A rule on the hardware before its resource would drop the packets that it matches.
TEST_F(UserCountingAclHelperTest, ResourceBeforeRule) {
  const auto vrfSm = vrfSmOf(Mox::makePtr<RecordingVrfHelper>(journal_));
  add("e1", 0, into("red"));
  helper_->removeRule("e1", 0);
  EXPECT_THAT(journal_.lines(), ElementsAre("createVrf red", "addRule e1 0 any->red",
                                            "removeRule e1 0 any->red", "deleteVrf red"));
}

TEST_F(UserCountingAclHelperTest, TheResourceOfARefusedRuleIsDeletedAgain) {
  const auto vrfSm = vrfSmOf(Mox::makePtr<RecordingVrfHelper>(journal_));
  hardware_->capacity = 0;
  EXPECT_FALSE(helper_->addRule("e1", 0, into("red")).accepted);
  EXPECT_THAT(journal_.lines(),
              ElementsAre("createVrf red", "addRule e1 0 any->red", "deleteVrf red"));
  EXPECT_EQ(statuses_->hwStatus().count(), 0U);
}

TEST_F(UserCountingAclHelperTest, EachPairOfInterfaceAndRuleIsAUser) {
  add("e1", 0, into("red"));
  add("e1", 1, into("red"));
  add("e2", 0, into("red"));
  add("e1", 0, into("blue"));
  EXPECT_EQ(usersOf(into("red")), 3U);
  EXPECT_EQ(usersOf(into("blue")), 1U);
  helper_->removeRule("e1", 0);
  EXPECT_EQ(usersOf(into("red")), 3U);
  EXPECT_EQ(usersOf(into("blue")), 0U);
  helper_->removeRule("e1", 1);
  EXPECT_EQ(usersOf(into("red")), 2U);
}

TEST_F(UserCountingAclHelperTest, ActionsThatDifferInOneNameAreDifferent) {
  const AclRule decap{{}, {ActionType::decapVrf, "red", "blue", "green"}};
  const AclRule otherFallback{{}, {ActionType::decapVrf, "red", "black", "green"}};
  const AclRule otherPostDecap{{}, {ActionType::decapVrf, "red", "blue", "black"}};
  for (const AclRule& rule : {decap, otherFallback, otherPostDecap, into("red")})
    add("e1", 0, rule);
  EXPECT_EQ(users_->vrfRefCount().count(), 4U);
  for (const AclRule& rule : {decap, otherFallback, otherPostDecap, into("red")})
    EXPECT_EQ(usersOf(rule), 1U);
}

TEST_F(UserCountingAclHelperTest, AMoveChangesNoCount) {
  add("e1", 0, into("red"));
  add("e1", 1, into("blue"));
  (void)journal_.take();
  const TableJournal followed(journal_, users_, nullptr);
  helper_->moveRule("e1", 1, 0);
  EXPECT_THAT(journal_.lines(), ElementsAre("moveRule e1 1 0 any->blue"));
  EXPECT_EQ(helper_->rules("e1").at(0), into("blue"));
}

TEST_F(UserCountingAclHelperTest, AReplacedRuleHasTheNewResourceBeforeAndTheOldOneUntilAfter) {
  const auto vrfSm = vrfSmOf(Mox::makePtr<RecordingVrfHelper>(journal_));
  add("e1", 0, into("red"));
  (void)journal_.take();
  EXPECT_TRUE(helper_->replaceRule("e1", 0, into("blue")).accepted);
  EXPECT_THAT(journal_.lines(),
              ElementsAre("createVrf blue", "replaceRule e1 0 any->blue", "deleteVrf red"));
}

TEST_F(UserCountingAclHelperTest, ARefusedReplacementChangesNoCount) {
  add("e1", 0, into("red"));
  hardware_->onReplace = [](const Velo::String&, const AclRule&) {
    return AclResult{false, "no such action"};
  };
  EXPECT_EQ(helper_->replaceRule("e1", 0, into("blue")), (AclResult{false, "no such action"}));
  EXPECT_EQ(usersOf(into("red")), 1U);
  EXPECT_EQ(usersOf(into("blue")), 0U);
}

TEST_F(UserCountingAclHelperTest, PassesClosedInterfacesOn) {
  helper_->intfClosedIs("e1", true);
  EXPECT_TRUE(hardware_->intfClosed("e1"));
  EXPECT_TRUE(helper_->intfClosed("e1"));
  EXPECT_FALSE(helper_->intfClosed("e2"));
}

TEST_F(UserCountingAclHelperTest, RulesWithoutAVrfActionAreNoUsers) {
  add("e1", 0, {{}, {ActionType::discard, {}, {}, {}}});
  add("e1", 0, {});
  EXPECT_EQ(users_->vrfRefCount().count(), 0U);
  helper_->removeRule("e1", 0);
  helper_->removeRule("e1", 0);
  EXPECT_EQ(users_->vrfRefCount().count(), 0U);
}

TEST_F(UserCountingAclHelperTest, ShowsWhatTheHardwareHolds) {
  add("e2", 0, into("red"));
  add("e1", 0, into("blue"));
  EXPECT_THAT(helper_->intfs(), ElementsAre("e1", "e2"));
  EXPECT_THAT(helper_->rules("e2"), ElementsAre(into("red")));
  EXPECT_TRUE(helper_->rules("e3").empty());
}

}  // namespace
}  // namespace ZelAgent
