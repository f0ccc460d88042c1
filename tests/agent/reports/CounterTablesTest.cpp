// Each counter with a number that no other has.
#include <gtest/gtest.h>

#include "agent/reports/CounterReport.h"
#include "agent/reports/RuleReport.h"
#include "tests/agent/reports/PagesText.h"
#include "tests/agent/reports/ReportText.h"

namespace ZelAgent {
namespace {

using PolicyMap::ActionType;

std::string countersText(const ForwardCounters& counters) {
  return printedBy([&](std::ostream& out) { writeTextReport(out, counters); });
}

constexpr const char* namesOfDrops[] = {
    "malformed",        "badChecksum",    "discardedByRule", "intfClosed",    "noVrfResource",
    "noVrfId",          "noRoute",        "dropRoute",       "decapDisabled", "notATunnel",
    "fragmentedTunnel", "innerMalformed", "congestion",      "nestedDecap",   "ttlExpired"};
static_assert(std::size(namesOfDrops) == Chips::dropReasons);

TEST(CounterTables, EachReasonForADropHasItsCounters) {
  for (std::size_t reason = 0; reason < Chips::dropReasons; ++reason) {
    ForwardCounters counters;
    counters.drops = {{static_cast<Chips::DropReason>(reason), {reason + 1, reason + 100}}};
    const std::string name = namesOfDrops[reason];
    const std::string packets = std::to_string(reason + 1);
    const std::string bytes = std::to_string(reason + 100);
    const std::size_t width = std::max(name.size(), std::string("DROPPED").size());
    EXPECT_EQ(countersText(counters),
              "  DROPPED" + std::string(width - 7, ' ') + "  PACKETS  BYTES\n  " + name +
                  std::string(width - name.size(), ' ') + "  " + packets +
                  std::string(7 - packets.size(), ' ') + "  " + bytes + '\n');
    EXPECT_EQ(jsonOf(counters), R"({"rules":[],"vrfs":[],"drops":[{"reason":")" + name +
                                    R"(","packets":)" + packets + R"(,"bytes":)" + bytes +
                                    R"(}],"notIp":0})");
  }
}

RuleState ruleWith(PolicyMap::RuleAction action) {
  RuleState state;
  state.user = {"e1", "default", "P", 10};
  state.rule.action = std::move(action);
  state.place = 0;
  return state;
}

TEST(CounterTables, RulesVrfsAndFramesHaveTheirCounters) {
  ForwardCounters counters;
  counters.rules = {ruleWith({})};
  counters.rules[0].counter = {21, 22};
  counters.vrfs = {{"red", {31, 32}}};
  counters.notIp = 41;
  EXPECT_EQ(countersText(counters),
            "  INTERFACE  POLICY  RULE  MATCH  ACTION  PACKETS  BYTES\n"
            "  e1         P       10    any    -       21       22\n"
            "  VRF  PACKETS  BYTES\n"
            "  red  31       32\n"
            "  frames without IP: 41\n");
  EXPECT_EQ(printedBy([&](std::ostream& out) { writeJsonReport(out, counters); }),
            R"({"rules":[{"interface":"e1","networkInstance":"default","policy":"P","rule":10,)"
            R"("match":"any","action":null,"programmed":true,"packets":21,"bytes":22}],)"
            R"("vrfs":[{"vrfName":"red","packets":31,"bytes":32}],"drops":[],"notIp":41})"
            "\n");
}

TEST(CounterTables, NoPacketsMeansNeitherForwardedNorDropped) {
  ForwardCounters forwarded;
  forwarded.vrfs = {{"red", {0, 0}}};
  EXPECT_EQ(countersText(forwarded), "  VRF  PACKETS  BYTES\n  red  0        0\n");
  ForwardCounters frames;
  frames.notIp = 1;
  EXPECT_EQ(countersText(frames), "  no packets\n  frames without IP: 1\n");
}

struct ActionWords {
  PolicyMap::RuleAction action;
  const char* text;
  const char* json;
};

TEST(RuleTables, EachActionHasItsWords) {
  const ActionWords rows[] = {
      {{ActionType::none, {}, {}, {}}, "-", "null"},
      {{ActionType::vrf, "red", {}, {}},
       "actionVrf red",
       R"({"vrfName":"red","fallbackVrfName":"","postDecapVrfName":"","action":"actionVrf"})"},
      {{ActionType::decapVrf, "a", "b", "c"},
       "actionDecapVrf a fallback b post-decap c",
       R"({"vrfName":"a","fallbackVrfName":"b","postDecapVrfName":"c","action":"actionDecapVrf"})"},
      {{ActionType::discard, {}, {}, {}}, "discard", R"({"action":"actionDiscard"})"},
  };
  ASSERT_EQ(std::size(rows), PolicyMap::actionTypeNames.size());
  for (std::size_t type = 0; type < std::size(rows); ++type) {
    const ActionWords& row = rows[type];
    ASSERT_EQ(static_cast<std::size_t>(row.action.type), type);
    EXPECT_EQ(toText(row.action), row.text);
    EXPECT_EQ(actionJson(row.action).dump(), row.json);
  }
}

TEST(RuleTables, ARuleIsProgrammedOrHasTheReasonWhyNot) {
  RuleState held = ruleWith({});
  RuleState refused = ruleWith({});
  refused.user.networkInstance = "red";
  refused.place = std::nullopt;
  refused.reason = "no\nroom";
  const RuleStates rules{held, refused};
  EXPECT_EQ(textOf(rules),
            "  INTERFACE  POLICY  RULE  MATCH  ACTION  STATE\n"
            "  e1         P       10    any    -       programmed\n"
            "  e1         red: P  10    any    -       not programmed: no\\x0aroom\n");
  const std::string begin = R"({"interface":"e1","networkInstance":)";
  const std::string middle = R"("policy":"P","rule":10,"match":"any","action":null,"programmed":)";
  EXPECT_EQ(jsonOf(rules), '[' + begin + R"("default",)" + middle + R"(true,"reason":""},)" +
                               begin + R"("red",)" + middle + R"(false,"reason":"no\nroom"}])");
}

TEST(RuleTables, EachUserOfEachActionHasItsRow) {
  const ActionUsers users{{lookUpAction("red"), {{"e1", "default", "P", 1}, {"e2", "red", "Q", 2}}},
                          {decapAction("a", "b", "c"), {{"e3", "default", "P", 3}}}};
  EXPECT_EQ(textOf(users),
            "  ACTION                                    INTERFACE  POLICY  RULE\n"
            "  actionDecapVrf a fallback b post-decap c  e3         P       3\n"
            "  actionVrf red                             e1         P       1\n"
            "  actionVrf red                             e2         red: Q  2\n");
  EXPECT_EQ(jsonOf(users),
            R"([{"vrfName":"a","fallbackVrfName":"b","postDecapVrfName":"c",)"
            R"("action":"actionDecapVrf","usedBy":[{"interface":"e3",)"
            R"("networkInstance":"default","policy":"P","rule":3}]},)"
            R"({"vrfName":"red","fallbackVrfName":"","postDecapVrfName":"","action":"actionVrf",)"
            R"("usedBy":[{"interface":"e1","networkInstance":"default","policy":"P","rule":1},)"
            R"({"interface":"e2","networkInstance":"red","policy":"Q","rule":2}]}])");
}

}  // namespace
}  // namespace ZelAgent
