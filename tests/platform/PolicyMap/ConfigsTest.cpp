// The configured interfaces, policy maps and class maps, and their status: what they hold, and whom
// they tell of which change.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Mox/Exceptions.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "Velo/Subscriber.h"

namespace PolicyMap {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

/// Writes down the attribute of each publication, and whether it has a value.
class Notices {
 public:
  explicit Notices(Velo::Publisher& publisher) : publisher_(publisher) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attributeId,
                              const void*, const void* value) {
      Velo::MemberSubscriber<Notices>::ownerOf(subscriber)
          .lines.push_back(std::to_string(attributeId) + (value == nullptr ? " gone" : " set"));
    };
    publisher_.subscriberIs(subscriber_);
  }
  Notices(const Notices&) = delete;
  Notices& operator=(const Notices&) = delete;
  ~Notices() { publisher_.subscriberDel(subscriber_); }

  std::vector<std::string> lines;

 private:
  Velo::Publisher& publisher_;
  Velo::MemberSubscriber<Notices> subscriber_{*this};
};

TEST(IntfConfig, TellsOfEachRealChange) {
  const auto config = IntfConfig::IntfConfigIs("intfs");
  const Notices notices(config->publisher());
  config->intfIs("eth1", {IntfKind::routed, "P"});
  config->intfIs("eth1", {IntfKind::routed, "P"});
  config->intfIs("eth1", {IntfKind::l2, "P"});
  config->intfIs("eth1", {IntfKind::l2, "Q"});
  EXPECT_EQ(*config->intf("eth1"), (IntfPolicy{IntfKind::l2, "Q"}));
  EXPECT_EQ(config->intf().count(), 1U);
  EXPECT_TRUE(config->intfDel("eth1"));
  EXPECT_FALSE(config->intfDel("eth1"));
  EXPECT_EQ(config->intf("eth1"), nullptr);
  EXPECT_THAT(notices.lines, ElementsAre("130 set", "130 set", "130 set", "130 gone"));
}

TEST(ClassMapTypeConfig, TellsOfEachRealChange) {
  const auto config = ClassMapTypeConfig::ClassMapTypeConfigIs("classMaps");
  const Notices notices(config->publisher());
  config->classMapIs("a", ClassMatch());
  config->classMapIs("a", ClassMatch());
  ClassMatch match;
  match.dscps = 1;
  config->classMapIs("a", match);
  EXPECT_EQ(**config->classMap("a"), match);
  EXPECT_EQ(config->classMap().count(), 1U);
  EXPECT_TRUE(config->classMapDel("a"));
  EXPECT_FALSE(config->classMapDel("a"));
  EXPECT_EQ(config->classMap("a"), nullptr);
  EXPECT_THAT(notices.lines, ElementsAre("130 set", "130 set", "130 gone"));
}

TEST(PolicyMapTypeConfig, TellsOfEachRealChangeOfAWholePolicyMap) {
  const auto config = PolicyMapTypeConfig::PolicyMapTypeConfigIs("policies");
  const Notices notices(config->publisher());
  const PolicyMapRules rules{{10, "a", {}}, {20, "b", {}}};
  config->policyMapIs("P", rules);
  config->policyMapIs("P", rules);
  config->policyMapIs("P", {});
  EXPECT_EQ(*config->policyMap("P"), PolicyMapRules());
  EXPECT_EQ(config->policyMap().count(), 1U);
  EXPECT_TRUE(config->policyMapDel("P"));
  EXPECT_FALSE(config->policyMapDel("P"));
  EXPECT_EQ(config->policyMap("P"), nullptr);
  EXPECT_THAT(notices.lines, ElementsAre("130 set", "130 set", "130 gone"));
}

TEST(PolicyMapTypeConfig, RefusesRulesWhoseSequencesDoNotAscendAndKeepsWhatItHad) {
  const auto config = PolicyMapTypeConfig::PolicyMapTypeConfigIs("policies");
  const PolicyMapRules rules{{10, "a", {}}};
  config->policyMapIs("P", rules);
  const Notices notices(config->publisher());
  for (const std::uint32_t second : {10U, 9U, 0U}) {
    try {
      config->policyMapIs("P", {{10, "a", {}}, {second, "b", {}}, {30, "c", {}}});
      ADD_FAILURE() << second;
    } catch (const Mox::RangeException& error) {
      EXPECT_STREQ(error.what(),
                   "policy map 'P': rule 10 is followed by one whose sequence is not higher");
    }
  }
  EXPECT_EQ(*config->policyMap("P"), rules);
  EXPECT_THAT(notices.lines, IsEmpty());
}

TEST(PolicyMapTypeConfig, TakesTheHighestAndTheLowestSequence) {
  const auto config = PolicyMapTypeConfig::PolicyMapTypeConfigIs("policies");
  config->policyMapIs("P", {{0, "a", {}}, {0xffffffff, "b", {}}});
  EXPECT_EQ(config->policyMap("P")->size(), 2U);
}

TEST(PolicyMapTypeStatus, TellsOfPolicyMapsAndOfRulesByTheirNumbers) {
  const auto status = PolicyMapTypeStatus::PolicyMapTypeStatusIs("status");
  const Notices notices(status->publisher());
  const RuleKey rule{"eth1", "P", 10};
  status->policyStatusIs("P", {1, 2, 1});
  status->policyStatusIs("P", {1, 2, 1});
  status->ruleStatusIs(rule, {false, "refused"});
  status->ruleStatusIs(rule, {false, "refused"});
  status->ruleStatusIs(rule, {true, ""});
  EXPECT_EQ(*status->policyStatus("P"), (PolicyStatus{1, 2, 1}));
  EXPECT_FALSE(status->policyStatus("P")->isProgrammed());
  EXPECT_EQ(*status->ruleStatus(rule), (RuleStatus{true, ""}));
  EXPECT_EQ(status->ruleStatus({"eth1", "P", 11}), nullptr);
  EXPECT_TRUE(status->ruleStatusDel(rule));
  EXPECT_FALSE(status->ruleStatusDel(rule));
  EXPECT_TRUE(status->policyStatusDel("P"));
  EXPECT_FALSE(status->policyStatusDel("P"));
  EXPECT_EQ(status->policyStatus().count() + status->ruleStatus().count(), 0U);
  EXPECT_THAT(notices.lines, ElementsAre("130 set", "131 set", "131 set", "131 gone", "130 gone"));
}

// The keys of all statuses, in the order of the iteration.
std::vector<std::string> keysOf(const RuleStatusTable& table) {
  std::vector<std::string> keys;
  for (auto entry = table.iterator(); entry; ++entry) {
    keys.push_back(entry.key().intf.str() + ' ' + entry.key().policyMap.str() + ' ' +
                   std::to_string(entry.key().sequence));
  }
  return keys;
}

class RuleStatuses : public ::testing::Test {
 protected:
  void is(const char* intf, const char* policyMap, std::uint32_t sequence, bool programmed = true) {
    status_->ruleStatusIs({intf, policyMap, sequence}, {programmed, programmed ? "" : "refused"});
  }
  [[nodiscard]] const RuleStatusTable& table() const { return status_->ruleStatus(); }

  Mox::Ptr<PolicyMapTypeStatus> status_ = PolicyMapTypeStatus::PolicyMapTypeStatusIs("status");
};

TEST_F(RuleStatuses, AreInTheOrderOfTheirSequencesHoweverTheyWereAdded) {
  for (const std::uint32_t sequence : {30U, 10U, 20U, 15U})
    is("eth1", "P", sequence);
  is("eth0", "P", 5);
  EXPECT_THAT(keysOf(table()),
              ElementsAre("eth0 P 5", "eth1 P 10", "eth1 P 15", "eth1 P 20", "eth1 P 30"));
  EXPECT_THAT(table().intfs(), UnorderedElementsAre("eth0", "eth1"));
}

TEST_F(RuleStatuses, AreFoundAfterDeletionsOfOthers) {
  for (std::uint32_t sequence = 0; sequence < 100; ++sequence)
    is("eth1", "P", sequence);
  for (std::uint32_t sequence = 0; sequence < 99; ++sequence)
    EXPECT_TRUE(status_->ruleStatusDel({"eth1", "P", sequence}));
  EXPECT_EQ(table().find({"eth1", "P", 50}), nullptr);
  EXPECT_NE(table().find({"eth1", "P", 99}), nullptr);
  is("eth1", "P", 50);
  EXPECT_THAT(keysOf(table()), ElementsAre("eth1 P 50", "eth1 P 99"));
  EXPECT_EQ(table().count(), 2U);
}

TEST_F(RuleStatuses, CountTheProgrammedRulesOfAPolicyMapOnAnInterface) {
  is("eth1", "P", 10);
  is("eth1", "P", 20);
  is("eth1", "P", 30, false);
  is("eth1", "Q", 10);
  EXPECT_EQ(table().programmed("eth1", "P"), 2U);
  is("eth1", "P", 10, false);
  EXPECT_EQ(table().programmed("eth1", "P"), 1U);
  EXPECT_TRUE(status_->ruleStatusDel({"eth1", "P", 20}));
  EXPECT_EQ(table().programmed("eth1", "P"), 0U);
  EXPECT_EQ(table().programmed("eth2", "P"), 0U);
}

TEST_F(RuleStatuses, NameThoseThatAreNotOfThePolicyMapWithTheSequences) {
  for (const std::uint32_t sequence : {10U, 20U, 30U})
    is("eth1", "P", sequence);
  is("eth1", "Q", 20);
  is("eth2", "P", 10);
  EXPECT_THAT(table().others("eth1", "P", {5, 20, 40}),
              UnorderedElementsAre(RuleKey{"eth1", "P", 10}, RuleKey{"eth1", "P", 30},
                                   RuleKey{"eth1", "Q", 20}));
  EXPECT_THAT(table().others("eth3", "P", {}), IsEmpty());
}

TEST_F(RuleStatuses, MayBeDeletedAndAddedDuringAnIteration) {
  for (const std::uint32_t sequence : {10U, 20U, 30U})
    is("eth1", "P", sequence);
  std::vector<std::uint32_t> visited;
  for (auto entry = table().iterator(); entry; ++entry) {
    visited.push_back(entry.key().sequence);
    EXPECT_TRUE(entry.value().programmed);
    status_->ruleStatusDel({"eth1", "P", 10});
    status_->ruleStatusDel({"eth1", "P", 20});
    is("eth1", "P", 5);
  }
  EXPECT_THAT(visited, ElementsAre(10U, 30U));
}

template <class Entity>
unsigned notifieesOf(const Mox::Ptr<Entity>& entity) {
  const Velo::NotifieeListDescriptor list = entity->notifieeList();
  unsigned visited = 0;
  list.visit(
      list.list, [](void* count, void*) { ++*static_cast<unsigned*>(count); }, &visited);
  return visited;
}

template <class Entity>
void expectThatNotifieesAreListed(const Mox::Ptr<Entity>& entity) {
  const Notices notices(entity->publisher());
  EXPECT_EQ(notifieesOf(entity), 1U);
}

TEST(PolicyConfigs, ListTheirNotifiees) {
  expectThatNotifieesAreListed(PolicyMapTypeStatus::PolicyMapTypeStatusIs("status"));
  expectThatNotifieesAreListed(ClassMapTypeConfig::ClassMapTypeConfigIs("classMaps"));
  expectThatNotifieesAreListed(PolicyMapTypeConfig::PolicyMapTypeConfigIs("policyMaps"));
  expectThatNotifieesAreListed(IntfConfig::IntfConfigIs("interfaces"));
}

}  // namespace
}  // namespace PolicyMap
