// The statuses and the output of `zel-agent diff`.
#include <gtest/gtest.h>

#include "tests/agent/AgentCall.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

class DiffCommand : public ::testing::Test {
 protected:
  const std::string before_ = writeSmall("before.json", {{{"red"}}, {"red"}, {"e1"}});
  const std::string after_ = writeSmall("after.json", {{{"red"}}, {"red"}, {"e1", "e2"}});
};

TEST_F(DiffCommand, EqualConfigurationsHaveStatusZero) {
  const CallOutcome outcome = callAgent({"diff", before_, before_});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "no difference\n");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(DiffCommand, DifferentConfigurationsHaveStatusOne) {
  const CallOutcome outcome = callAgent({"diff", before_, after_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            "interfaces\n"
            "  + e2: VRF default, policy P\n"
            "actions\n"
            "  ~ actionVrf red: 1 user -> 2 users\n");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(DiffCommand, AWrongConfigurationHasStatusTwo) {
  const std::string wrong = writeFile("wrong.json", "7");
  for (const auto& files : {std::pair(before_, wrong), std::pair(wrong, before_)}) {
    const CallOutcome outcome = callAgent({"diff", files.first, files.second});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "error: " + wrong + ": /: must be an object, not 7\n");
  }
}

TEST_F(DiffCommand, JsonIsOneDocument) {
  const CallOutcome outcome = callAgent({"diff", "--json", before_, after_});
  EXPECT_EQ(outcome.status, 1);
  ASSERT_EQ(outcome.documents().size(), 1U);
  EXPECT_EQ(outcome.documents()[0]["equal"], false);
  EXPECT_EQ(outcome.documents()[0]["interfaces"].size(), 1U);
}

TEST_F(DiffCommand, ItNeedsTwoConfigurations) {
  const CallOutcome outcome = callAgent({"diff", before_});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: AFTER is required; see zel-agent diff --help\n");
}

TEST_F(DiffCommand, AnOutputThatCannotBeWrittenIsAnError) {
  const CallOutcome outcome = callAgentWithoutOutput({"diff", before_, before_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "error: standard output cannot be written\n");
}

}  // namespace
}  // namespace ZelAgent
