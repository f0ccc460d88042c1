// The actions, their statuses and resources, and the counters of the chip.
#include "agent/reports/StateReport.h"

#include <gtest/gtest.h>

#include "tests/agent/reports/ReportText.h"

namespace ZelAgent {
namespace {

using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::ProgrammingResult;

Chips::VrfProgram programInto(std::uint32_t vrfId) {
  Chips::VrfProgram program;
  program.lookUp = {{"red", vrfId, {}, {}}};
  return program;
}

ActionState stateOf(const VrfAction& action) {
  ActionState state;
  state.action = action;
  state.users = 3;
  return state;
}

AgentState agentWith(std::vector<ActionState> actions) {
  AgentState state;
  state.actions = std::move(actions);
  state.chip = {11, 12, {13, 14, 15, 16}};
  state.ruleTable = {17, 18, 19, 20};
  return state;
}

std::string textOfState(const AgentState& state) {
  return printedBy([&](std::ostream& out) { writeTextReport(out, "title", state); });
}

std::string jsonOfState(const AgentState& state) {
  return printedBy([&](std::ostream& out) { writeJsonReport(out, "f.json", state); });
}

std::string resourcesOf(const AgentState& state) {
  return printedBy([&](std::ostream& out) { writeResourceReport(out, state); });
}

constexpr const char* chipLine =
    "  chip: 12 of 11 VRF resources in use; 13 creates, 14 updates, 15 deletes, 16 failed\n"
    "  rules: 18 of 17 rule entries in use, at most 19; 20 refused\n";
constexpr const char* chipMember =
    R"("chip":{"capacity":11,"used":12,"creates":13,"updates":14,"deletes":15,"failures":16},)"
    R"("ruleTable":{"capacity":17,"used":18,"mostUsed":19,"refused":20})";

TEST(StateReport, WithoutActionsThereIsTheChipOnly) {
  EXPECT_EQ(textOfState(agentWith({})), std::string("title\n  no VRF actions\n") + chipLine);
  EXPECT_EQ(jsonOfState(agentWith({})),
            std::string(R"({"configuration":"f.json","actions":[],)") + chipMember + "}\n");
}

TEST(StateReport, AConfigurationThatWasRemovedIsNull) {
  const std::string json =
      printedBy([](std::ostream& out) { writeJsonReport(out, std::nullopt, AgentState()); });
  EXPECT_EQ(json, R"({"configuration":null,"actions":[],"chip":{"capacity":0,"used":0,"creates":0,)"
                  R"("updates":0,"deletes":0,"failures":0},)"
                  R"("ruleTable":{"capacity":0,"used":0,"mostUsed":0,"refused":0}})"
                  "\n");
  EXPECT_EQ(textOfState(AgentState()),
            "title\n  no VRF actions\n"
            "  chip: 0 of 0 VRF resources in use; 0 creates, 0 updates, 0 deletes, 0 failed\n"
            "  rules: 0 of 0 rule entries in use, at most 0; 0 refused\n");
}

TEST(StateReport, EachNameOfAnActionHasItsColumn) {
  EXPECT_EQ(
      textOfState(agentWith({stateOf(lookUpAction("red")), stateOf(decapAction("a", "b", "c"))})),
      std::string("title\n"
                  "  VRF  FALLBACK  POST-DECAP  ACTION          USERS  RESOURCE  STATUS     "
                  "     REASON       DESCRIPTION\n"
                  "  red  -         -           actionVrf       3      -         "
                  "programmedInHw  failureNone  -\n"
                  "  a    b         c           actionDecapVrf  3      -         "
                  "programmedInHw  failureNone  -\n") +
          chipLine);
}

std::string wordOf(ProgrammingResult result) {
  switch (result) {
    case ProgrammingResult::programmedInHw:
      return "programmedInHw";
    case ProgrammingResult::programmingFailure:
      return "programmingFailure";
  }
  return "";
}

std::string wordOf(FailureCode code) {
  switch (code) {
    case FailureCode::failureNone:
      return "failureNone";
    case FailureCode::failureVrfResourceAlloc:
      return "failureVrfResourceAlloc";
    case FailureCode::failureVrfResourceExhausted:
      return "failureVrfResourceExhausted";
  }
  return "";
}

TEST(StateReport, EachStatusHasItsWordsAsJson) {
  for (const auto result :
       {ProgrammingResult::programmedInHw, ProgrammingResult::programmingFailure}) {
    for (const auto code : {FailureCode::failureNone, FailureCode::failureVrfResourceAlloc,
                            FailureCode::failureVrfResourceExhausted}) {
      EXPECT_EQ(statusJson(statusOf(result, code, "why")).dump(),
                R"({"status":")" + wordOf(result) + R"(","failureReason":")" + wordOf(code) +
                    R"(","failureDescription":"why"})");
    }
  }
}

TEST(StateReport, EachStatusHasItsCells) {
  for (const auto result :
       {ProgrammingResult::programmedInHw, ProgrammingResult::programmingFailure}) {
    for (const auto code : {FailureCode::failureNone, FailureCode::failureVrfResourceAlloc,
                            FailureCode::failureVrfResourceExhausted}) {
      ActionState state = stateOf(lookUpAction("red"));
      state.status = statusOf(result, code, "it is\nfull");
      const std::string text = textOfState(agentWith({state}));
      const std::string row = text.substr(text.find("  red"));
      EXPECT_EQ(row, "  red  -         -           actionVrf  3      -         " + wordOf(result) +
                         "  " + wordOf(code) + "  it is\\x0afull\n" + chipLine);
    }
  }
}

Chips::VrfProgram fullProgram() {
  Chips::VrfProgram program;
  program.lookUp = {{"red", 2, {24, 32}, {64}}, {"blue", 3, {}, {}}};
  program.fallback = {{"green", 0, {8}, {}}};
  program.postDecap = {{"default", 1, {}, {48}}};
  return program;
}

ActionState fullAction() {
  ActionState state = stateOf(decapAction("red", "green", "default"));
  state.usedBy = {{"e1", "default", "P", 10}, {"e2", "red", "Q", 20}};
  state.resource = Chips::VrfResource{5, fullProgram()};
  state.currentProgram = fullProgram();
  return state;
}

constexpr const char* fullActionBeforeItsResource =
    R"({"configuration":"f.json","actions":[{"vrfName":"red","fallbackVrfName":"green",)"
    R"("postDecapVrfName":"default","action":"actionDecapVrf","users":3,"usedBy":[)"
    R"({"interface":"e1","networkInstance":"default","policy":"P","rule":10},)"
    R"({"interface":"e2","networkInstance":"red","policy":"Q","rule":20}],)"
    R"("status":"programmedInHw","failureReason":"failureNone","failureDescription":"",)"
    R"("resource":)";

constexpr const char* fullWalks =
    R"("lookUp":[{"vrfName":"red","vrfId":2,"exactMatchLens":[24,32],"exactMatchLensV6":[64]},)"
    R"({"vrfName":"blue","vrfId":3,"exactMatchLens":[],"exactMatchLensV6":[]}],)"
    R"("fallback":[{"vrfName":"green","vrfId":0,"exactMatchLens":[8],"exactMatchLensV6":[]}],)"
    R"("postDecap":[{"vrfName":"default","vrfId":1,"exactMatchLens":[],"exactMatchLensV6":[48]}],)";

TEST(StateReport, AResourceAsJsonHasItsWalksAndBothFlags) {
  for (const bool isEnabled : {false, true}) {
    for (const bool mayFallBack : {false, true}) {
      ActionState state = fullAction();
      state.resource->program.decapNhEnabled = isEnabled;
      state.resource->program.decapNhFallbackEnabled = mayFallBack;
      state.currentProgram = state.resource->program;
      EXPECT_EQ(jsonOfState(agentWith({state})),
                std::string(fullActionBeforeItsResource) + R"({"index":5,"current":true,)" +
                    fullWalks + R"("decapNhEnabled":)" + (isEnabled ? "true" : "false") +
                    R"(,"decapNhFallbackEnabled":)" + (mayFallBack ? "true" : "false") + "}}]," +
                    chipMember + "}\n");
    }
  }
}

TEST(StateReport, AStaleResourceAsJsonIsNotCurrent) {
  ActionState state = fullAction();
  state.currentProgram = programInto(9);
  EXPECT_EQ(jsonOfState(agentWith({state})),
            std::string(fullActionBeforeItsResource) + R"({"index":5,"current":false,)" +
                fullWalks + R"("decapNhEnabled":false,"decapNhFallbackEnabled":false}}],)" +
                chipMember + "}\n");
}

TEST(StateReport, AnActionWithoutAResourceAsJsonHasNull) {
  ActionState state = fullAction();
  state.resource = std::nullopt;
  EXPECT_EQ(jsonOfState(agentWith({state})),
            std::string(fullActionBeforeItsResource) + "null}]," + chipMember + "}\n");
}

TEST(StateReport, TheCellOfAResourceIsItsIndexAndWhetherItIsStale) {
  const auto cellOf = [](const ActionState& state) {
    const std::string text = textOfState(agentWith({state}));
    const std::string row = text.substr(text.find("  red"));
    const auto end = row.find("  programmedInHw");
    const auto begin = row.find("  3  ") + 3;
    return row.substr(row.find_first_not_of(' ', begin), end - row.find_first_not_of(' ', begin));
  };
  ActionState state = stateOf(lookUpAction("red"));
  EXPECT_EQ(cellOf(state), "-       ");
  state.resource = Chips::VrfResource{5, programInto(2)};
  state.currentProgram = programInto(2);
  EXPECT_EQ(cellOf(state), "5       ");
  state.currentProgram = programInto(3);
  EXPECT_EQ(cellOf(state), "5 stale ");
}

TEST(StateReport, ResourcesAreWrittenInFullAndStaleOnesTwice) {
  ActionState current = stateOf(lookUpAction("red"));
  current.resource = Chips::VrfResource{1, programInto(2)};
  current.currentProgram = programInto(2);
  ActionState none = stateOf(lookUpAction("blue"));
  ActionState stale = fullAction();
  stale.currentProgram = programInto(9);
  stale.currentProgram.decapNhEnabled = true;
  stale.resource->program.decapNhFallbackEnabled = true;
  EXPECT_EQ(resourcesOf(agentWith({current, none, stale})),
            "  resource 1 of actionVrf red:\n"
            "    look up red(2) v4=[] v6=[]; fallback none; post-decap none; decap-nh off; "
            "decap-nh-fallback off\n"
            "  resource 5 of actionDecapVrf red fallback green post-decap default, stale:\n"
            "    look up red(2) v4=[24,32] v6=[64] > blue(3) v4=[] v6=[]; fallback green(0) v4=[8] "
            "v6=[]; post-decap default(1) v4=[] v6=[48]; decap-nh off; decap-nh-fallback on\n"
            "    an update would program: look up red(9) v4=[] v6=[]; fallback none; post-decap "
            "none; decap-nh on; decap-nh-fallback off\n");
}

TEST(StateReport, AnActionInOneLineHasTheFieldsThatAreSet) {
  EXPECT_EQ(toText(lookUpAction("red")), "actionVrf red");
  EXPECT_EQ(toText(decapAction("a", "b", "c")), "actionDecapVrf a fallback b post-decap c");
  EXPECT_EQ(toText(decapAction("a", "b", "")), "actionDecapVrf a fallback b");
  EXPECT_EQ(toText(decapAction("a", "", "c")), "actionDecapVrf a post-decap c");
  EXPECT_EQ(toText(decapAction("a b", "fallback", "id")),
            "actionDecapVrf 'a b' fallback fallback post-decap id");
}

TEST(StateReport, AJsonDocumentIsOneLineOfUtf8) {
  EXPECT_EQ(oneLine({{"name", "a\nb\xff"}}), "{\"name\":\"a\\nb\xef\xbf\xbd\"}");
}

TEST(StateReport, AnActionHasFailedIfItsResourceIsNotProgrammed) {
  ActionState state = stateOf(lookUpAction("red"));
  EXPECT_FALSE(hasFailedAction(AgentState()));
  EXPECT_FALSE(hasFailedAction(agentWith({state})));
  ActionState failed = state;
  failed.status =
      statusOf(ProgrammingResult::programmingFailure, FailureCode::failureVrfResourceExhausted);
  EXPECT_TRUE(hasFailedAction(agentWith({state, failed})));
  EXPECT_TRUE(hasFailedAction(agentWith({failed, state})));
}

}  // namespace
}  // namespace ZelAgent
