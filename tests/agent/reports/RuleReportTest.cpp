// The reports of rules and of users of actions.
#include "agent/reports/RuleReport.h"

#include <gtest/gtest.h>

#include "tests/agent/reports/PagesText.h"
#include "tests/agent/reports/ReportedAgent.h"

namespace ZelAgent {
namespace {

class RuleReportTest : public ::testing::Test {
 protected:
  RuleReportTest() { agent_.apply(reportedConfiguration().configuration()); }

  ForwardingAgent agent_{16};
};

TEST_F(RuleReportTest, RulesAreATable) {
  EXPECT_EQ(
      textOf(agent_.rules()),
      R"(  INTERFACE  POLICY     RULE  MATCH                           ACTION                                                STATE
  Ethernet1  edge       1     ipv4 protocol 4                 actionDecapVrf decap fallback red post-decap default  programmed
  Ethernet1  edge       2     ipv4 dscp 10,12                 actionVrf red                                         programmed
  Ethernet1  edge       10    ipv6 destination 2001:db8::/32  discard                                               programmed
  Ethernet1  edge       20    any                             -                                                     programmed
  Ethernet2  edge       1     ipv4 protocol 4                 actionDecapVrf decap fallback red post-decap default  programmed
  Ethernet2  edge       2     ipv4 dscp 10,12                 actionVrf red                                         programmed
  Ethernet2  edge       10    ipv6 destination 2001:db8::/32  discard                                               programmed
  Ethernet2  edge       20    any                             -                                                     programmed
  Ethernet3  red: edge  5     any                             actionVrf red                                         programmed
)");
}

TEST_F(RuleReportTest, UsersAreATable) {
  EXPECT_EQ(textOf(agent_.users()),
            "  ACTION                                                INTERFACE  POLICY     RULE\n"
            "  actionDecapVrf decap fallback red post-decap default  Ethernet1  edge       1\n"
            "  actionDecapVrf decap fallback red post-decap default  Ethernet2  edge       1\n"
            "  actionVrf red                                         Ethernet1  edge       2\n"
            "  actionVrf red                                         Ethernet2  edge       2\n"
            "  actionVrf red                                         Ethernet3  red: edge  5\n");
}

TEST_F(RuleReportTest, RulesAsJson) {
  const auto json = nlohmann::json::parse(jsonOf(agent_.rules()));
  ASSERT_EQ(json.size(), 9U);
  EXPECT_EQ(json[0], (nlohmann::json{{"interface", "Ethernet1"},
                                     {"networkInstance", "default"},
                                     {"policy", "edge"},
                                     {"rule", 1},
                                     {"match", "ipv4 protocol 4"},
                                     {"action",
                                      {{"vrfName", "decap"},
                                       {"fallbackVrfName", "red"},
                                       {"postDecapVrfName", "default"},
                                       {"action", "actionDecapVrf"}}},
                                     {"programmed", true},
                                     {"reason", ""}}));
  EXPECT_EQ(json[1]["action"], (nlohmann::json{{"vrfName", "red"},
                                               {"fallbackVrfName", ""},
                                               {"postDecapVrfName", ""},
                                               {"action", "actionVrf"}}));
  EXPECT_EQ(json[2]["action"], (nlohmann::json{{"action", "actionDiscard"}}));
  EXPECT_EQ(json[3]["action"], nullptr);
  EXPECT_EQ(json[8]["networkInstance"], "red");
}

TEST_F(RuleReportTest, RulesThatAreBeingChangedHaveAStateOfTheirOwn) {
  RuleStates rules = agent_.rules("Ethernet3");
  ASSERT_EQ(rules.size(), 1U);
  rules[0].place.reset();
  rules[0].isBeingChanged = true;
  EXPECT_EQ(textOf(rules),
            "  INTERFACE  POLICY     RULE  MATCH  ACTION         STATE\n"
            "  Ethernet3  red: edge  5     any    actionVrf red  the rules of the interface are "
            "being changed\n");
  const auto json = nlohmann::json::parse(jsonOf(rules));
  ASSERT_EQ(json.size(), 1U);
  EXPECT_EQ(json[0]["programmed"], nullptr);
  EXPECT_EQ(json[0]["beingChanged"], true);
  EXPECT_EQ(json[0]["reason"], "");
}

TEST_F(RuleReportTest, UsersAsJson) {
  const auto json = nlohmann::json::parse(jsonOf(agent_.users()));
  ASSERT_EQ(json.size(), 2U);
  EXPECT_EQ(json[0], (nlohmann::json{{"vrfName", "decap"},
                                     {"fallbackVrfName", "red"},
                                     {"postDecapVrfName", "default"},
                                     {"action", "actionDecapVrf"},
                                     {"usedBy",
                                      {{{"interface", "Ethernet1"},
                                        {"networkInstance", "default"},
                                        {"policy", "edge"},
                                        {"rule", 1}},
                                       {{"interface", "Ethernet2"},
                                        {"networkInstance", "default"},
                                        {"policy", "edge"},
                                        {"rule", 1}}}}}));
  EXPECT_EQ(json[1]["usedBy"].size(), 3U);
}

TEST(RuleReport, WithoutRulesThereIsOneLine) {
  EXPECT_EQ(textOf(RuleStates{}), "  no rules\n");
  EXPECT_EQ(jsonOf(RuleStates{}), "[]");
}

TEST(RuleReport, WithoutUsersThereIsOneLine) {
  EXPECT_EQ(textOf(ActionUsers{}), "  no users\n");
  EXPECT_EQ(jsonOf(ActionUsers{}), "[]");
}

TEST(RuleReport, ARuleThatTheChipDoesNotHoldIsShownWithTheReason) {
  ForwardingAgent agent(ChipOptions{.ruleCapacity = 1});
  OpenConfigBuilder both;
  both.vrf("red").policy("P", {ruleOf(1, "", {}, toVrf("red")), ruleOf(2, "ipv4", {}, toDiscard())},
                         {"e1"});
  OpenConfigBuilder one;
  one.vrf("red").policy("P", {ruleOf(1, "", {}, toVrf("red"))}, {"e1"});
  agent.apply(one.configuration());
  agent.apply(both.configuration());
  const RuleStates rules = agent.rules();
  ASSERT_EQ(rules.size(), 3U);
  const auto json = nlohmann::json::parse(jsonOf(rules));
  EXPECT_EQ(json[0]["programmed"], false);
  EXPECT_EQ(json[1]["programmed"], false);
  EXPECT_FALSE(json[1].contains("previous"));
  EXPECT_NE(json[1]["reason"], "");
  EXPECT_EQ(json[2]["programmed"], true);
  EXPECT_EQ(json[2]["previous"], true);
  const std::string text = textOf(rules);
  EXPECT_NE(text.find("ipv4   discard        not programmed: " +
                      json[1]["reason"].get<std::string>() + '\n'),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("any    actionVrf red  programmed, of the previous policy\n"),
            std::string::npos)
      << text;
}

TEST(RuleReport, NamesAreShownInOneLine) {
  OpenConfigBuilder configuration;
  configuration.vrf("r\ne\x1b[31md")
      .policy("P\n", {ruleOf(1, "", {}, toVrf("r\ne\x1b[31md"))}, {"e\n1"}, "r\ne\x1b[31md");
  ForwardingAgent agent(16);
  agent.apply(configuration.configuration());
  EXPECT_EQ(textOf(agent.rules()),
            "  INTERFACE  POLICY                  RULE  MATCH  ACTION                     STATE\n"
            "  e\\x0a1     r\\x0ae\\x1b[31md: P\\x0a  1     any    actionVrf 'r\\ne\\x1b[31md'  "
            "programmed\n");
}

}  // namespace
}  // namespace ZelAgent
