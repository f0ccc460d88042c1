#include "TrafficPolicy/ClassMapUsers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace TrafficPolicy {
namespace {

using PolicyMap::PolicyMapRules;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Name = Velo::String;

PolicyMapRules rulesOn(std::initializer_list<const char*> classMaps) {
  PolicyMapRules rules;
  for (const char* classMap : classMaps)
    rules.push_back({static_cast<std::uint32_t>(rules.size()), classMap, {}});
  return rules;
}

class ClassMapUsersOfTwo : public ::testing::Test {
 protected:
  void policyMapIs(const char* policyMap, const PolicyMapRules& rules) {
    users_.policyMapIs(policyMap, &rules);
  }
  ClassMapUsersOfTwo() {
    policyMapIs("P", rulesOn({"a", "b", "a"}));
    policyMapIs("Q", rulesOn({"b", "c"}));
  }

  ClassMapUsers users_;
};

TEST(ClassMapUsers, OfNothingAreNone) {
  EXPECT_THAT(ClassMapUsers().policyMaps("a"), IsEmpty());
}

TEST_F(ClassMapUsersOfTwo, AreThePolicyMapsThatNameTheClassMap) {
  EXPECT_THAT(users_.policyMaps("a"), ElementsAre(Name("P")));
  EXPECT_THAT(users_.policyMaps("b"), ElementsAre(Name("P"), Name("Q")));
  EXPECT_THAT(users_.policyMaps("c"), ElementsAre(Name("Q")));
  EXPECT_THAT(users_.policyMaps("d"), IsEmpty());
}

TEST_F(ClassMapUsersOfTwo, FollowAChangedPolicyMap) {
  policyMapIs("P", rulesOn({"c", "d"}));
  EXPECT_THAT(users_.policyMaps("a"), IsEmpty());
  EXPECT_THAT(users_.policyMaps("b"), ElementsAre(Name("Q")));
  EXPECT_THAT(users_.policyMaps("c"), ElementsAre(Name("P"), Name("Q")));
  EXPECT_THAT(users_.policyMaps("d"), ElementsAre(Name("P")));
}

TEST_F(ClassMapUsersOfTwo, ForgetAPolicyMapThatIsGone) {
  users_.policyMapIs("P", nullptr);
  EXPECT_THAT(users_.policyMaps("a"), IsEmpty());
  EXPECT_THAT(users_.policyMaps("b"), ElementsAre(Name("Q")));
  users_.policyMapIs("P", nullptr);
  EXPECT_THAT(users_.policyMaps("b"), ElementsAre(Name("Q")));
}

TEST_F(ClassMapUsersOfTwo, OfAPolicyMapWithoutRulesAreNone) {
  policyMapIs("Q", {});
  EXPECT_THAT(users_.policyMaps("b"), ElementsAre(Name("P")));
  EXPECT_THAT(users_.policyMaps("c"), IsEmpty());
}

TEST_F(ClassMapUsersOfTwo, AreNoneAfterClearing) {
  users_.clear();
  EXPECT_THAT(users_.policyMaps("a"), IsEmpty());
  policyMapIs("P", rulesOn({"b"}));
  EXPECT_THAT(users_.policyMaps("b"), ElementsAre(Name("P")));
}

}  // namespace
}  // namespace TrafficPolicy
