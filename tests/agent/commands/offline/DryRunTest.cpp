// The calls that `zel-agent run --dry-run` prints.
#include <gtest/gtest.h>

#include "tests/agent/AgentCall.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

constexpr const char* programOfRed =
    "look up red(2) v4=[] v6=[]; fallback none; post-decap none; decap-nh off; "
    "decap-nh-fallback off";

class DryRunTest : public ::testing::Test {
 protected:
  static std::string write(const std::string& name, const std::vector<nlohmann::json>& rules,
                           const std::string& egress) {
    return writeFile(name, OpenConfigBuilder()
                               .vrf("red")
                               .route("red", "10.0.0.0/8", egress)
                               .policy("edge", rules, {"e1"})
                               .text());
  }

  const std::string first_ =
      write("first.json", {ruleOf(1, "ipv4", {}, toVrf("red")), ruleOf(2, "ipv6", {}, toDiscard())},
            "e8");
  const std::string second_ = write("second.json", {ruleOf(1, "ipv6", {}, toDiscard())}, "e9");
};

TEST_F(DryRunTest, PrintsTheCallsOfEachConfigurationInTheirOrder) {
  const CallOutcome outcome = callAgent({"run", "--dry-run", first_, second_});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, first_ +
                             "\n"
                             "  setRoute VRF id 2, 10.0.0.0/8 via e8\n"
                             "  createVrf actionVrf red: " +
                             programOfRed +
                             "\n"
                             "  addRule e1 at 0: ipv4, actionVrf red\n"
                             "  addRule e1 at 1: ipv6, discard\n"
                             "  outcome: 1 of 1 actions and 2 of 2 rules programmed\n" +
                             second_ +
                             "\n"
                             "  setRoute VRF id 2, 10.0.0.0/8 via e9\n"
                             "  removeRule e1 at 0: ipv4, actionVrf red\n"
                             "  deleteVrf actionVrf red\n"
                             "  outcome: 0 of 0 actions and 1 of 1 rules programmed\n");
}

TEST_F(DryRunTest, PrintsTheOutcomeOnAChipOfTheGivenCapacity) {
  const CallOutcome outcome =
      callAgent({"run", "--dry-run", "--strict", "--chip-capacity", "0", first_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.out.find("  createVrf actionVrf red failed: look up red"), std::string::npos)
      << outcome.out;
  EXPECT_TRUE(outcome.out.ends_with(
      "  outcome: 0 of 1 actions and 2 of 2 rules programmed\n"
      "not programmed: actionVrf red: the chip had no free VRF resource; the action is programmed "
      "when it gets one\n"))
      << outcome.out;
  EXPECT_EQ(callAgent({"run", "--dry-run", "--chip-capacity", "0", first_}).status, 0);
}

TEST_F(DryRunTest, ARefusedRuleIsNamed) {
  const CallOutcome outcome = callAgent({"run", "--dry-run", "--rule-capacity", "1", first_});
  EXPECT_NE(outcome.out.find("  addRule e1 at 1: ipv6, discard refused\n"), std::string::npos)
      << outcome.out;
  EXPECT_NE(outcome.out.find("  outcome: 0 of 0 actions and 0 of 2 rules programmed\n"),
            std::string::npos)
      << outcome.out;
}

TEST_F(DryRunTest, CountsNoRulesOfAPreviousPolicyThatTheChipStillHolds) {
  const CallOutcome outcome =
      callAgent({"run", "--dry-run", "--rule-capacity", "1", second_, first_});
  EXPECT_NE(outcome.out.find("and 1 of 1 rules programmed\n"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find(" and 0 of 2 rules programmed\n"), std::string::npos) << outcome.out;
}

TEST_F(DryRunTest, JsonIsADocumentForEachCallAndEachOutcome) {
  const auto documents = callAgent({"run", "--dry-run", "--json", first_}).documents();
  ASSERT_EQ(documents.size(), 5U);
  using nlohmann::json;
  EXPECT_EQ(
      documents[0],
      json({{"call", "setRoute"}, {"vrfId", 2}, {"prefix", "10.0.0.0/8"}, {"route", "via e8"}}));
  EXPECT_EQ(documents[1], json({{"call", "createVrf"},
                                {"vrfName", "red"},
                                {"fallbackVrfName", ""},
                                {"postDecapVrfName", ""},
                                {"action", "actionVrf"},
                                {"failed", false},
                                {"program", programOfRed}}));
  EXPECT_EQ(documents[3], json({{"call", "addRule"},
                                {"interface", "e1"},
                                {"place", 1},
                                {"match", "ipv6"},
                                {"action", {{"action", "actionDiscard"}}},
                                {"refused", false}}));
  EXPECT_EQ(documents[4], json({{"configuration", first_},
                                {"actions", {{"configured", 1}, {"programmed", 1}}},
                                {"rules", {{"configured", 2}, {"programmed", 2}}}}));
}

TEST_F(DryRunTest, AWrongConfigurationEndsIt) {
  const std::string wrong = writeFile("wrong.json", "7");
  const CallOutcome outcome = callAgent({"run", "--dry-run", wrong, first_});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "error: " + wrong + ": /: must be an object, not 7\n");
}

TEST_F(DryRunTest, EventsAreNotPlayed) {
  const CallOutcome outcome =
      callAgent({"run", "--dry-run", "--events", writeFile("events", ""), first_});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
}

}  // namespace
}  // namespace ZelAgent
