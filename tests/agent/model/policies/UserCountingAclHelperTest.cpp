// Users are counted by the rules that the hardware holds, in step with it.
#include "agent/model/policies/UserCountingAclHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "agent/model/policies/VrfActions.h"
#include "testing/Journal.h"
#include "testing/TableJournal.h"

namespace ZelAgent {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::ActionType;
using ::testing::ElementsAre;
using ZelVrfSelectionPolicy::Testing::Journal;
using ZelVrfSelectionPolicy::Testing::TableJournal;

// Hardware that writes down what it is asked, and refuses what it is told to refuse.
class RecordingAclHelper final : public PolicyMap::PolicyMapAclHelper {
 public:
  explicit RecordingAclHelper(Journal& journal)
      : PolicyMapAclHelper("recorder"), journal_(journal) {}

  AclResult addRule(const Velo::String& intf, std::size_t place, const AclRule& rule) override {
    journal_.write("add " + intf.str() + ' ' + std::to_string(place));
    if (refuses) return {false, "no room"};
    Rules& present = rules_[intf.str()];
    present.insert(present.begin() + static_cast<std::ptrdiff_t>(place), rule);
    return {};
  }
  void removeRule(const Velo::String& intf, std::size_t place) override {
    journal_.write("remove " + intf.str() + ' ' + std::to_string(place));
    Rules& present = rules_[intf.str()];
    present.erase(present.begin() + static_cast<std::ptrdiff_t>(place));
  }
  void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) override {
    journal_.write("move " + intf.str() + ' ' + std::to_string(from) + ' ' + std::to_string(to));
    Rules& present = rules_[intf.str()];
    const AclRule rule = present[from];
    present.erase(present.begin() + static_cast<std::ptrdiff_t>(from));
    present.insert(present.begin() + static_cast<std::ptrdiff_t>(to), rule);
  }
  const Rules& rules(const Velo::String& intf) const override {
    static const Rules none;
    const auto found = rules_.find(intf.str());
    return found == rules_.end() ? none : found->second;
  }
  std::vector<Velo::String> intfs() const override {
    std::vector<Velo::String> names;
    for (const auto& [name, rules] : rules_)
      if (!rules.empty()) names.emplace_back(name);
    return names;
  }

  bool refuses = false;

 private:
  Journal& journal_;
  std::map<std::string, Rules> rules_;
};

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

  Journal journal_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users_ = ZelVrfSelectionPolicy::vrfHwConfigFactory();
  Mox::Ptr<RecordingAclHelper> hardware_ = Mox::makeActivePtr<RecordingAclHelper>(journal_);
  Mox::Ptr<UserCountingAclHelper> helper_ =
      Mox::makeActivePtr<UserCountingAclHelper>(Velo::String("counting"), hardware_, users_);
};

TEST_F(UserCountingAclHelperTest, AUserIsCountedAfterTheHardwareTookTheRule) {
  const TableJournal followed(journal_, users_, nullptr);
  add("e1", 0, into("red"));
  ASSERT_EQ(journal_.lines().size(), 2U);
  EXPECT_EQ(journal_.lines()[0], "add e1 0");
  EXPECT_THAT(journal_.lines()[1], ::testing::HasSubstr(" = 1"));
}

TEST_F(UserCountingAclHelperTest, ARefusedRuleIsNoUser) {
  const TableJournal followed(journal_, users_, nullptr);
  hardware_->refuses = true;
  EXPECT_EQ(helper_->addRule("e1", 0, into("red")), (AclResult{false, "no room"}));
  EXPECT_THAT(journal_.lines(), ElementsAre("add e1 0"));
  EXPECT_EQ(users_->vrfRefCount().count(), 0U);
  hardware_->refuses = false;
  add("e1", 0, into("red"));
  EXPECT_EQ(usersOf(into("red")), 1U);
}

TEST_F(UserCountingAclHelperTest, AUserIsGoneAfterTheHardwareRemovedTheRule) {
  add("e1", 0, into("red"));
  (void)journal_.take();
  const TableJournal followed(journal_, users_, nullptr);
  helper_->removeRule("e1", 0);
  ASSERT_EQ(journal_.lines().size(), 2U);
  EXPECT_EQ(journal_.lines()[0], "remove e1 0");
  EXPECT_THAT(journal_.lines()[1], ::testing::HasSubstr(" = 0"));
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
  EXPECT_THAT(journal_.lines(), ElementsAre("move e1 1 0"));
  EXPECT_EQ(helper_->rules("e1").at(0), into("blue"));
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
