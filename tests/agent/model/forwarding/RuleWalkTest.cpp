// Rules that are read in parts while the configuration changes.
#include "agent/model/forwarding/RuleWalk.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

// The interface and the number of each rule; "!" for one that the chip does not hold, "^" for one
// of a previous policy.
std::string walkText(const RuleStates& rules) {
  std::string text;
  for (const RuleState& rule : rules) {
    text += (text.empty() ? "" : " ") + rule.user.interface + '/' +
            std::to_string(rule.user.sequenceId) + (rule.place ? "" : "!") +
            (rule.isPrevious ? "^" : "");
  }
  return text;
}

class RuleWalkTest : public ::testing::Test {
 protected:
  void apply(const std::vector<std::string>& rules, const std::vector<std::string>& interfaces) {
    agent_.apply(configurationOf({{{"red"}, {"blue"}}, rules, interfaces}));
  }
  std::string next(std::size_t most) {
    RuleStates rules;
    const bool hasMore = walk_.read(rules, most);
    return walkText(rules) + (hasMore ? "" : " end");
  }

  ForwardingAgent agent_{16};
  RuleWalk walk_{agent_};
};

TEST_F(RuleWalkTest, ReadsTheRulesOfAllInterfacesInParts) {
  apply({"red", "blue", "red"}, {"e1", "e2"});
  EXPECT_EQ(next(2), "e1/1 e1/2");
  EXPECT_EQ(next(2), "e1/3 e2/1");
  EXPECT_EQ(next(3), "e2/2 e2/3 end");
}

TEST_F(RuleWalkTest, OfOneInterfaceReadsNoOther) {
  apply({"red", "blue", "red"}, {"e1", "e2"});
  RuleWalk one(agent_, "e1");
  RuleStates rules;
  EXPECT_TRUE(one.read(rules, 2));
  EXPECT_FALSE(one.read(rules, 2));
  EXPECT_EQ(walkText(rules), "e1/1 e1/2 e1/3");
  RuleWalk none(agent_, "e9");
  rules.clear();
  EXPECT_FALSE(none.read(rules, 2));
  EXPECT_TRUE(rules.empty());
}

TEST_F(RuleWalkTest, ReadsAllRulesOfTheAgent) {
  apply({"red", "blue", "red"}, {"e1", "e2", "e3"});
  RuleStates rules;
  while (walk_.read(rules, 1)) {
  }
  EXPECT_EQ(walkText(rules), walkText(agent_.rules()));
  EXPECT_EQ(walkText(agent_.rules("e2")), "e2/1 e2/2 e2/3");
  EXPECT_EQ(walkText(agent_.rules("e9")), "");
}

TEST_F(RuleWalkTest, ReadsRulesOfThePreviousPolicyAfterThoseThatWereRefused) {
  agent_.ruleCapacityIs(2);
  apply({"red", "red"}, {"e1"});
  apply({"blue", "red", "red"}, {"e1"});
  EXPECT_EQ(next(2), "e1/1! e1/2!");
  EXPECT_EQ(next(2), "e1/3! e1/1^");
  EXPECT_EQ(next(2), "e1/2^ end");
}

TEST_F(RuleWalkTest, ReadsARuleThatStaysOnceThoughOthersChange) {
  apply({"red", "blue", "red"}, {"e1", "e2", "e4"});
  EXPECT_EQ(next(2), "e1/1 e1/2");
  apply({"red", "blue"}, {"e1", "e3", "e4"});
  EXPECT_EQ(next(3), "e3/1 e3/2 e4/1");
  apply({"red", "blue", "red"}, {"e1", "e3", "e4"});
  EXPECT_EQ(next(3), "e4/2 e4/3 end");
}

TEST_F(RuleWalkTest, EndsIfAllRulesAreRemoved) {
  apply({"red", "blue", "red"}, {"e1", "e2"});
  EXPECT_EQ(next(1), "e1/1");
  agent_.removeAll();
  EXPECT_EQ(next(1), " end");
}

TEST_F(RuleWalkTest, TheCountsOfAnInterfaceAgreeWithItsRules) {
  agent_.ruleCapacityIs(3);
  apply({"red", "red"}, {"e1", "e2"});
  EXPECT_EQ(agent_.ruleCounts("e1").programmed, 2U);
  EXPECT_EQ(agent_.ruleCounts("e1").refused, 0U);
  EXPECT_FALSE(agent_.ruleCounts("e1").isClosed);
  EXPECT_EQ(agent_.ruleCounts("e2").programmed, 0U);
  EXPECT_EQ(agent_.ruleCounts("e2").refused, 2U);
  EXPECT_TRUE(agent_.ruleCounts("e2").isClosed);
  EXPECT_EQ(agent_.state().ruleTable.refused, 2U);
}

TEST_F(RuleWalkTest, AStateWithoutListsOfUsersHasTheirNumbers) {
  apply({"red", "red"}, {"e1"});
  EXPECT_EQ(agent_.state().actions.at(0).usedBy.size(), 2U);
  const AgentState state = agent_.state(UserLists::none);
  EXPECT_TRUE(state.actions.at(0).usedBy.empty());
  EXPECT_EQ(state.actions.at(0).users, 2U);
}

}  // namespace
}  // namespace ZelAgent
