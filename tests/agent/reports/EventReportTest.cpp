// An event with its hook calls and the statuses that it changed.
#include "agent/reports/EventReport.h"

#include <gtest/gtest.h>

#include "tests/agent/reports/ReportText.h"

namespace ZelAgent {
namespace {

using Chips::Hook;
using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;

PlayedEvent playedAt(std::optional<EventPlace> place) {
  return {std::move(place), SetVrfId{"red", 7}, {}};
}

PlayedEvent playedWith(EventEffects effects) {
  return {std::nullopt, SetVrfId{"red", 7}, std::move(effects)};
}

std::string textOfEvent(const PlayedEvent& played) {
  return printedBy([&](std::ostream& out) { writeTextReport(out, played, AgentState()); });
}

std::string jsonOfEvent(const PlayedEvent& played) {
  return printedBy([&](std::ostream& out) { writeJsonReport(out, played, AgentState()); });
}

constexpr const char* emptyState =
    R"("actions":[],"chip":{"capacity":0,"used":0,"creates":0,"updates":0,"deletes":0,)"
    R"("failures":0},"ruleTable":{"capacity":0,"used":0,"mostUsed":0,"refused":0}})"
    "\n";

TEST(EventReport, AnEventOfAFileHasItsPlace) {
  const PlayedEvent played = playedAt(EventPlace{"events.txt", 12});
  EXPECT_EQ(textOfEvent(played), "events.txt:12: vrf red id 7\n  no hook call\n");
  EXPECT_EQ(jsonOfEvent(played),
            std::string(R"({"event":{"file":"events.txt","line":12,"text":"vrf red id 7"},)"
                        R"("calls":[],"statuses":[],)") +
                emptyState);
}

TEST(EventReport, AnEventOfNoFileHasNoPlace) {
  EXPECT_EQ(textOfEvent(playedAt(std::nullopt)), "vrf red id 7\n  no hook call\n");
  EXPECT_EQ(
      jsonOfEvent(playedAt(std::nullopt)),
      std::string(R"({"event":{"text":"vrf red id 7"},"calls":[],"statuses":[],)") + emptyState);
}

std::string nameOfHook(Hook hook) {
  switch (hook) {
    case Hook::createVrf:
      return "createVrf";
    case Hook::updateVrf:
      return "updateVrf";
    case Hook::deleteVrf:
      return "deleteVrf";
  }
  return "";
}

TEST(EventReport, EachHookCallHasItsNameAndWhetherItFailed) {
  for (const Hook hook : {Hook::createVrf, Hook::updateVrf, Hook::deleteVrf}) {
    for (const bool failed : {false, true}) {
      const PlayedEvent played =
          playedWith({{{hook, decapAction("a", "b", "c"), failed}}, {}, {}, {}});
      EXPECT_EQ(textOfEvent(played), "vrf red id 7\n  " + nameOfHook(hook) +
                                         " actionDecapVrf a fallback b post-decap c" +
                                         (failed ? " failed\n" : "\n"));
      EXPECT_EQ(jsonOfEvent(played),
                R"({"event":{"text":"vrf red id 7"},"calls":[{"hook":")" + nameOfHook(hook) +
                    R"(","vrfName":"a","fallbackVrfName":"b","postDecapVrfName":"c",)"
                    R"("action":"actionDecapVrf","failed":)" +
                    (failed ? "true" : "false") + R"(}],"statuses":[],)" + emptyState);
    }
  }
}

TEST(EventReport, HookCallsAreInTheirOrder) {
  const PlayedEvent played = playedWith({{{Hook::updateVrf, lookUpAction("red"), true},
                                          {Hook::createVrf, lookUpAction("blue"), false}},
                                         {},
                                         {},
                                         {}});
  EXPECT_EQ(textOfEvent(played),
            "vrf red id 7\n  updateVrf actionVrf red failed\n  createVrf actionVrf blue\n");
}

struct StatusRow {
  std::optional<HwStatus> status;
  std::string text;
  std::string json;
};

std::vector<StatusRow> statusRows() {
  const std::string failed = "programmingFailure (";
  const std::string members = R"({"status":"programmingFailure","failureReason":")";
  const auto failure = ProgrammingResult::programmingFailure;
  return {
      {std::nullopt, "none", "null"},
      {HwStatus(), "programmedInHw",
       R"({"status":"programmedInHw","failureReason":"failureNone","failureDescription":""})"},
      {statusOf(failure, FailureCode::failureNone, "why"), failed + "failureNone: why)",
       members + R"(failureNone","failureDescription":"why"})"},
      {statusOf(failure, FailureCode::failureVrfResourceAlloc, "why"),
       failed + "failureVrfResourceAlloc: why)",
       members + R"(failureVrfResourceAlloc","failureDescription":"why"})"},
      {statusOf(failure, FailureCode::failureVrfResourceExhausted, "full\n"),
       failed + "failureVrfResourceExhausted: full\\x0a)",
       members + R"(failureVrfResourceExhausted","failureDescription":"full\n"})"},
  };
}

TEST(EventReport, EachStatusIsShownBeforeAndAfter) {
  for (const StatusRow& before : statusRows()) {
    for (const StatusRow& after : statusRows()) {
      const PlayedEvent played =
          playedWith({{}, {{lookUpAction("red"), before.status, after.status}}, {}, {}});
      EXPECT_EQ(textOfEvent(played), "vrf red id 7\n  no hook call\n  status of actionVrf red: " +
                                         before.text + " -> " + after.text + "\n");
      EXPECT_EQ(jsonOfEvent(played),
                R"({"event":{"text":"vrf red id 7"},"calls":[],"statuses":[{"vrfName":"red",)"
                R"("fallbackVrfName":"","postDecapVrfName":"","action":"actionVrf","before":)" +
                    before.json + R"(,"after":)" + after.json + "}]," + emptyState);
    }
  }
}

TEST(EventReport, ShowIsAnsweredWithTheStateInPlaceOfCalls) {
  const PlayedEvent played{EventPlace{"f", 1}, Show{}, {}};
  AgentState state;
  ActionState action;
  action.action = lookUpAction("red");
  action.resource = Chips::VrfResource{1, {}};
  state.actions = {action};
  EXPECT_EQ(printedBy([&](std::ostream& out) { writeTextReport(out, played, state); }),
            "f:1: show\n"
            "  VRF  FALLBACK  POST-DECAP  ACTION     USERS  RESOURCE  STATUS          REASON       "
            "DESCRIPTION\n"
            "  red  -         -           actionVrf  0      1         programmedInHw  failureNone  "
            "-\n"
            "  chip: 0 of 0 VRF resources in use; 0 creates, 0 updates, 0 deletes, 0 failed\n"
            "  rules: 0 of 0 rule entries in use, at most 0; 0 refused\n"
            "  resource 1 of actionVrf red:\n"
            "    look up none; fallback none; post-decap none; decap-nh off; decap-nh-fallback "
            "off\n");
}

}  // namespace
}  // namespace ZelAgent
