// What the answer to a change has, and that its size is bounded.
#include "agent/reports/ChangeReport.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "agent/language/Limits.h"
#include "tests/agent/reports/ReportText.h"

namespace ZelAgent {
namespace {

using Chips::Hook;
using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::ProgrammingResult;

std::string changeText(const EventEffects& effects, Counts counts) {
  return printedBy(
      [&](std::ostream& out) { writeChangeReport(out, "a.json applied", effects, counts); });
}

OrderedJson changeJson(const EventEffects& effects) {
  OrderedJson report;
  putChange(report, effects);
  return report;
}

EventEffects smallChange() {
  EventEffects effects;
  effects.calls = {{Hook::createVrf, lookUpAction("red"), false}};
  effects.statusChanges = {{lookUpAction("red"), std::nullopt, ZelVrfSelectionPolicy::HwStatus()}};
  effects.counts = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  return effects;
}

// `count` creations, of which the last one fails, with their statuses.
EventEffects largeChange(std::size_t count, const std::string& name = "v") {
  EventEffects effects;
  for (std::size_t i = 1; i <= count; ++i) {
    const std::string vrf = name + std::to_string(i);
    const bool failed = i == count;
    effects.calls.push_back({Hook::createVrf, lookUpAction(vrf.c_str()), failed});
    effects.statusChanges.push_back({lookUpAction(vrf.c_str()), std::nullopt,
                                     failed ? statusOf(ProgrammingResult::programmingFailure,
                                                       FailureCode::failureVrfResourceAlloc, "full")
                                            : ZelVrfSelectionPolicy::HwStatus()});
  }
  return effects;
}

TEST(ChangeReport, BeginsWithTheCounts) {
  EXPECT_EQ(changeText(smallChange(), Counts::always),
            "a.json applied\n"
            "  actions: 1 created, 2 updated, 3 deleted, 4 failed\n"
            "  rules: 5 added, 6 replaced, 7 moved, 8 removed, 9 refused\n"
            "  routes: 10 set, 11 removed\n"
            "  createVrf actionVrf red\n"
            "  status of actionVrf red: none -> programmedInHw\n");
}

TEST(ChangeReport, HasNoCountsIfAllIsShownAndNoRuleChanged) {
  EventEffects effects = smallChange();
  effects.counts = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(changeText(effects, Counts::whenNeeded),
            "a.json applied\n"
            "  createVrf actionVrf red\n"
            "  status of actionVrf red: none -> programmedInHw\n");
  effects.counts.rulesRefused = 1;
  EXPECT_NE(changeText(effects, Counts::whenNeeded).find("1 refused"), std::string::npos);
}

TEST(ChangeReport, AChangeWithoutAHookCallSaysSo) {
  EXPECT_EQ(changeText({}, Counts::whenNeeded), "a.json applied\n  no hook call\n");
}

TEST(ChangeReport, OfManyCallsThoseThatFailedComeFirst) {
  const std::string text = changeText(largeChange(1000), Counts::whenNeeded);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1 + 3 + 20 + 1);
  EXPECT_NE(text.find("removed\n  createVrf actionVrf v1000 failed\n  createVrf actionVrf v1\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("createVrf actionVrf v9\n  status of actionVrf v1000: none -> "
                      "programmingFailure (failureVrfResourceAlloc: full)\n  status of actionVrf "
                      "v1: none"),
            std::string::npos)
      << text;
  EXPECT_TRUE(text.ends_with("  ... and 1980 more; show actions prints each action\n")) << text;
}

TEST(ChangeReport, TwentyLinesAreInTheirOrderAndWhole) {
  EXPECT_EQ(changeText(largeChange(10), Counts::whenNeeded).find("more"), std::string::npos);
  EXPECT_NE(changeText(largeChange(11), Counts::whenNeeded).find("... and 2 more;"),
            std::string::npos);
  EventEffects calls = largeChange(20);
  calls.statusChanges.clear();
  const std::string text = changeText(calls, Counts::whenNeeded);
  EXPECT_NE(text.find("applied\n  createVrf actionVrf v1\n"), std::string::npos) << text;
  EXPECT_NE(text.find("v20 failed\n"), std::string::npos) << text;
}

TEST(ChangeReport, TheJsonHasTheCountsAndHowMuchIsLeftOut) {
  EXPECT_EQ(oneLine(changeJson(smallChange())),
            R"({"changes":{"actions":{"created":1,"updated":2,"deleted":3,"failed":4},)"
            R"("rules":{"added":5,"replaced":6,"moved":7,"removed":8,"refused":9},)"
            R"("routes":{"set":10,"removed":11},"truncated":0},)"
            R"("calls":[{"hook":"createVrf","vrfName":"red","fallbackVrfName":"",)"
            R"("postDecapVrfName":"","action":"actionVrf","failed":false}],)"
            R"("statuses":[{"vrfName":"red","fallbackVrfName":"","postDecapVrfName":"",)"
            R"("action":"actionVrf","before":null,"after":{"status":"programmedInHw",)"
            R"("failureReason":"failureNone","failureDescription":""}}]})");
  const OrderedJson large = changeJson(largeChange(1000));
  EXPECT_EQ(large["changes"]["truncated"], 1980);
  EXPECT_EQ(large["calls"].size() + large["statuses"].size(), 20U);
  EXPECT_EQ(large["calls"][0]["failed"], true);
}

TEST(ChangeReport, IsShortWhateverTheNamesAre) {
  const EventEffects effects = largeChange(1000, std::string(90, '\x01'));
  const std::size_t warnings = [] {
    std::size_t bytes = 0;
    for (const std::string& warning :
         boundedWarnings(std::vector<std::string>(1000, std::string(5000, 'w'))))
      bytes += warning.size();
    return bytes;
  }();
  EXPECT_LT(changeText(effects, Counts::always).size() + warnings, Limits::shortAnswerBytes);
  EXPECT_LT(oneLine(changeJson(effects)).size() + warnings, Limits::shortAnswerBytes);
}

TEST(ChangeReport, HasTwentyWarningsAndTheNumberOfTheOthers) {
  const std::vector<std::string> twenty(20, "w");
  EXPECT_EQ(boundedWarnings(twenty), twenty);
  std::vector<std::string> shown = twenty;
  shown.emplace_back("... and 3 more warnings");
  EXPECT_EQ(boundedWarnings(std::vector<std::string>(23, "w")), shown);
}

}  // namespace
}  // namespace ZelAgent
