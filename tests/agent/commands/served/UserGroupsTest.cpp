// `show users` finds the users of many actions in few readings of the rules.
#include "agent/commands/served/UserGroups.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "agent/commands/served/CommandDispatch.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

using std::string;
using Names = std::vector<string>;

Names numbered(const string& name, std::size_t count) {
  Names names;
  for (std::size_t number = 0; number < count; ++number)
    names.push_back(name + std::to_string(number));
  return names;
}

class UsersOfManyActions : public ::testing::Test {
 protected:
  // A rule for each of these VRFs, on so many interfaces.
  void apply(const Names& rules, std::size_t interfaces) {
    SmallConfiguration small{{}, rules, numbered("e", interfaces)};
    for (const string& vrf : std::set<string>(rules.begin(), rules.end()))
      small.vrfs.push_back({vrf});
    served_.agent().apply(configurationOf(small));
  }

  // The users that `show users` has are those of the agent, and so is their order.
  void expectAllUsers() {
    const OrderedJson shown = runCommand(served_, "show users", true);
    const std::vector<ActionState> actions = served_.agent().state().actions;
    ASSERT_EQ(shown.size(), actions.size());
    for (std::size_t at = 0; at < actions.size(); ++at) {
      EXPECT_EQ(shown[at]["vrfName"], actions[at].action.vrfName().str());
      std::set<std::pair<string, std::uint32_t>> users;
      for (const OrderedJson& user : shown[at]["usedBy"])
        users.emplace(user["interface"], user["rule"]);
      EXPECT_EQ(users.size(), shown[at]["usedBy"].size());
      EXPECT_EQ(users.size(), actions[at].usedBy.size());
      for (const ActionUser& user : actions[at].usedBy)
        EXPECT_TRUE(users.contains({user.interface, user.sequenceId})) << user.interface;
    }
  }

  // How many pages the text has, with the empty ones for readings that have found nothing yet.
  std::size_t stepsOfText() {
    CommandResult result = startCommand(served_, "show users", false);
    ReportPages& pages = *std::get<ReportPagesPtr>(result);
    std::size_t steps = 0;
    for (; pages.hasNext(); ++steps)
      (void)pages.next();
    return steps;
  }

  ServedAgent served_{"unused.json", 1000};
};

TEST_F(UsersOfManyActions, AreFoundInOneReading) {
  apply(numbered("v", 100), 10);
  expectAllUsers();
  const std::size_t readings = UserGroups::usersOfAGroup / 200 + 1;
  EXPECT_LT(stepsOfText(), 100 + 2 * readings);
}

TEST_F(UsersOfManyActions, AreAllFoundInSeveralGroups) {
  apply(numbered("v", 30), 50);
  expectAllUsers();
}

TEST_F(UsersOfManyActions, AreFoundForAnActionWithMoreThanAGroupHas) {
  Names rules(UserGroups::usersOfAGroup / 10 + 1, "b");
  rules.insert(rules.begin(), {"a", "c"});
  rules.insert(rules.end(), {"d", "e"});
  apply(rules, 10);
  expectAllUsers();
}

TEST_F(UsersOfManyActions, AreNoneOfRulesThatTheChipRefuses) {
  served_.agent().ruleCapacityIs(2);
  apply({"a", "b"}, 2);
  expectAllUsers();
  EXPECT_EQ(runCommand(served_, "show users", true)[0]["usedBy"].size(), 1U);
}

}  // namespace
}  // namespace ZelAgent
