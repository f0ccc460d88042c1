// What `zel-agent run` prints of rules and actions that are not programmed.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/agent/AgentCall.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

TEST(StrictRun, PrintsALineForEachActionThatIsNotProgrammed) {
  const std::string full = writeSmall("full.json", {{{"red"}, {"blue"}}, {"blue", "red"}, {"e1"}});
  const CallOutcome outcome = callAgent({"run", "--strict", "--chip-capacity", "1", full});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.err.starts_with("not programmed: actionVrf red: the chip had no free VRF "))
      << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
}

TEST(StrictRun, PrintsALineForEachRuleThatIsNotProgrammed) {
  const std::string two = writeSmall("two.json", {{{"red"}}, {"red", "red"}, {"e1", "e2"}});
  const CallOutcome outcome = callAgent({"run", "--strict", "--rule-capacity", "2", two});
  EXPECT_EQ(outcome.status, 1);
  const std::string reason =
      "the rules do not fit into the 2 rule entries of the chip; remove rules or interfaces of a "
      "policy; all packets of the interface are dropped\n";
  EXPECT_EQ(outcome.err, "not programmed: rule 1 of P on e2: " + reason +
                             "not programmed: rule 2 of P on e2: " + reason);
  EXPECT_NE(outcome.out.find("  rules: 2 of 2 rule entries in use, at most 2; 2 refused\n"),
            std::string::npos)
      << outcome.out;
  EXPECT_EQ(callAgent({"run", "--rule-capacity", "2", two}).status, 0) << "without --strict";
}

TEST(StrictRun, NamesEachOfManyRulesThatAreNotProgrammed) {
  const std::vector<std::string> rules(300, "red");
  const std::string many = writeSmall("many.json", {{{"red"}}, rules, {"e1"}});
  const CallOutcome outcome = callAgent({"run", "--strict", "--rule-capacity", "299", many});
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 300);
  EXPECT_NE(outcome.err.find("\nnot programmed: rule 300 of P on e1: "), std::string::npos);
}

TEST(StrictRun, WhenFullOpenLeavesTheInterfaceOpen) {
  const std::string one = writeSmall("one.json", {{{"red"}}, {"red"}, {"e1"}});
  const CallOutcome outcome =
      callAgent({"run", "--strict", "--rule-capacity", "0", "--when-full", "open", one});
  EXPECT_EQ(
      outcome.err,
      "not programmed: rule 1 of P on e1: the rules do not fit into the 0 rule entries of the "
      "chip; remove rules or interfaces of a policy; the interface has no rules in force\n");
}

TEST(StrictRun, RefusedRulesAreProgrammedWhenThereIsRoom) {
  const std::string one = writeSmall("one.json", {{{"red"}}, {"red"}, {"e1"}});
  const std::string events = writeFile("room.events", "chip rules 1\nshow\n");
  const CallOutcome outcome = callAgent({"run", "--rule-capacity", "0", "--events", events, one});
  EXPECT_NE(outcome.out.find("  rules: 1 of 1 rule entries in use, at most 1; 0 refused\n"),
            std::string::npos)
      << outcome.out;
}

}  // namespace
}  // namespace ZelAgent
