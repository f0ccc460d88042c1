// `zel-agent run` from end to end.
#include <gtest/gtest.h>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

// An action of a report by its VRF, and by its kind where one VRF has two; null where it has none.
json actionOf(const json& report, const std::string& vrf, const std::string& kind = "actionVrf") {
  for (const json& action : report["actions"]) {
    if (action["vrfName"] == vrf && action["action"] == kind) return action;
  }
  return nullptr;
}

json hooksOf(const json& report) {
  const json& chip = report["chip"];
  return {chip["creates"], chip["updates"], chip["deletes"], chip["failures"]};
}

constexpr const char* exhausted =
    "the chip had no free VRF resource; the action is programmed when it gets one";

TEST(RunCommand, ShowsATable) {
  const AgentOutcome outcome = runAgent({"run", examplePath("four-rules.json")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(
      outcome.out,
      examplePath("four-rules.json") +
          " applied\n"
          "  VRF    FALLBACK  POST-DECAP  ACTION     USERS  RESOURCE  STATUS          REASON       "
          "DESCRIPTION\n"
          "  bulk   -         -           actionVrf  6      2         programmedInHw  failureNone  "
          "-\n"
          "  voice  -         -           actionVrf  6      1         programmedInHw  failureNone  "
          "-\n"
          "  chip: 2 of 1024 VRF resources in use; 2 creates, 0 updates, 0 deletes, 0 failed\n"
          "  rules: 12 of 65536 rule entries in use, at most 12; 0 refused\n"
          "all removed\n"
          "  no VRF actions\n"
          "  chip: 0 of 1024 VRF resources in use; 2 creates, 0 updates, 2 deletes, 0 failed\n"
          "  rules: 0 of 65536 rule entries in use, at most 12; 0 refused\n");
}

TEST(RunCommand, JsonShowsEverything) {
  const std::string file =
      writeSmall("a.json", {{{"red", "blue"}, {"blue"}}, {"red", "red"}, {"e1"}});
  const auto documents = runAgent({"run", file, "--json", "--chip-capacity", "5"}).documents();
  ASSERT_EQ(documents.size(), 2U);
  EXPECT_EQ(documents[0], json::parse(R"({
    "configuration": ")" + file + R"(",
    "actions": [{
      "vrfName": "red", "fallbackVrfName": "", "postDecapVrfName": "", "action": "actionVrf",
      "users": 2,
      "usedBy": [{"interface": "e1", "networkInstance": "default", "policy": "P", "rule": 1},
                 {"interface": "e1", "networkInstance": "default", "policy": "P", "rule": 2}],
      "status": "programmedInHw", "failureReason": "failureNone", "failureDescription": "",
      "resource": {
        "index": 1, "current": true,
        "lookUp": [
          {"vrfName": "red", "vrfId": 2, "exactMatchLens": [], "exactMatchLensV6": []},
          {"vrfName": "blue", "vrfId": 3, "exactMatchLens": [], "exactMatchLensV6": []}],
        "fallback": [], "postDecap": [],
        "decapNhEnabled": false, "decapNhFallbackEnabled": false}}],
    "chip": {"capacity": 5, "used": 1, "creates": 1, "updates": 0, "deletes": 0, "failures": 0},
    "ruleTable": {"capacity": 65536, "used": 2, "mostUsed": 2, "refused": 0}
  })"));
  EXPECT_EQ(documents[1], json::parse(R"({
    "configuration": null, "actions": [],
    "chip": {"capacity": 5, "used": 0, "creates": 1, "updates": 0, "deletes": 1, "failures": 0},
    "ruleTable": {"capacity": 65536, "used": 0, "mostUsed": 2, "refused": 0}
  })"));
}

TEST(RunCommand, DecapsulationNamesThreeVrfs) {
  const AgentOutcome outcome = runAgent({"run", "--json", examplePath("decap.json")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  const json report = outcome.documents().at(0);
  const json decap = actionOf(report, "decap", "actionDecapVrf");
  EXPECT_EQ(decap["fallbackVrfName"], "transit");
  EXPECT_EQ(decap["postDecapVrfName"], "default");
  EXPECT_EQ(decap["users"], 4);
  EXPECT_EQ(decap["status"], "programmedInHw");
  EXPECT_EQ(decap["resource"]["fallback"].size(), 3U);
  EXPECT_EQ(actionOf(report, "transit")["users"], 2);
  EXPECT_EQ(report["actions"].size(), 2U);
}

TEST(RunCommand, OnlyDifferencesReachTheChip) {
  const auto documents =
      runAgent({"run", "--json", examplePath("four-rules.json"), examplePath("four-rules.json"),
                examplePath("four-rules-changed.json")})
          .documents();
  ASSERT_EQ(documents.size(), 4U);
  EXPECT_EQ(hooksOf(documents[0]), json({2, 0, 0, 0}));
  EXPECT_EQ(hooksOf(documents[1]), json({2, 0, 0, 0}));
  EXPECT_EQ(documents[1]["actions"], documents[0]["actions"]);
  // "archive" is new; the fallback of "bulk" is, too, which is one update of its action.
  EXPECT_EQ(hooksOf(documents[2]), json({3, 1, 0, 0}));
  EXPECT_EQ(actionOf(documents[2], "voice")["users"], 4);
  EXPECT_EQ(actionOf(documents[2], "bulk")["users"], 2);
  EXPECT_EQ(actionOf(documents[2], "archive")["users"], 2);
  EXPECT_EQ(actionOf(documents[2], "voice")["resource"],
            actionOf(documents[0], "voice")["resource"]);
  EXPECT_EQ(documents[3]["chip"]["used"], 0);
  EXPECT_EQ(documents[3]["chip"]["deletes"], 3);
}

TEST(RunCommand, AFullChipIsShownAndRecoversWhenThereIsRoom) {
  const std::string full = writeSmall("full.json", {{{"red"}, {"blue"}}, {"blue", "red"}, {"e1"}});
  const std::string room = writeSmall("room.json", {{{"red"}, {"blue"}}, {"red"}, {"e1"}});
  const AgentOutcome outcome = runAgent({"run", "--json", "--chip-capacity", "1", full, room});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  const auto documents = outcome.documents();
  ASSERT_EQ(documents.size(), 3U);
  EXPECT_EQ(actionOf(documents[0], "blue")["status"], "programmedInHw");
  json failed = actionOf(documents[0], "red");
  EXPECT_EQ(failed["status"], "programmingFailure");
  EXPECT_EQ(failed["failureReason"], "failureVrfResourceExhausted");
  EXPECT_EQ(failed["failureDescription"], exhausted);
  EXPECT_EQ(failed["resource"], nullptr);
  EXPECT_EQ(actionOf(documents[1], "red")["status"], "programmedInHw");
  EXPECT_EQ(actionOf(documents[1], "red")["failureDescription"], "");
  EXPECT_EQ(documents[1]["chip"]["used"], 1);
  EXPECT_EQ(documents[2]["chip"]["used"], 0);
}

TEST(RunCommand, AFullChipIsExplainedInTheTable) {
  const std::string full = writeSmall("full.json", {{{"red"}, {"blue"}}, {"blue", "red"}, {"e1"}});
  const AgentOutcome outcome = runAgent({"run", "--chip-capacity", "1", full});
  EXPECT_NE(outcome.out.find("  red   -         -           actionVrf  1      -         "
                             "programmingFailure  failureVrfResourceExhausted  " +
                             std::string(exhausted) + '\n'),
            std::string::npos)
      << outcome.out;
}

TEST(RunCommand, StrictFailsWhereTheChipDid) {
  const std::string full = writeSmall("full.json", {{{"red"}, {"blue"}}, {"blue", "red"}, {"e1"}});
  EXPECT_EQ(runAgent({"run", "--strict", full}).status, 0);
  EXPECT_EQ(runAgent({"run", "--strict", "--chip-capacity", "1", full}).status, 1);
  EXPECT_EQ(runAgent({"run", "--chip-capacity", "1", full}).status, 0);
  EXPECT_EQ(runAgent({"run", "--strict", "--chip-capacity", "0", full, "/no/such/file"}).status, 2);
}

TEST(RunCommand, StrictFailsAlsoForAFailureThatWasRepaired) {
  const std::string without = writeSmall("without.json", {{}, {"red"}, {"e1"}});
  const std::string with = writeSmall("with.json", {{{"red"}}, {"red"}, {"e1"}});
  EXPECT_EQ(runAgent({"run", "--strict", without, with}).status, 1);
}

TEST(RunCommand, AnInstanceThatIsNotConfiguredIsAWarningAndAFailingAction) {
  const std::string without = writeSmall("without.json", {{}, {"red"}, {"e1"}});
  const std::string with = writeSmall("with.json", {{{"red"}}, {"red"}, {"e1"}});
  const AgentOutcome outcome = runAgent({"run", "--json", without, with});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err,
            "warning: " + without +
                ": /network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/"
                "policy[policy-id=P]/rules/rule[sequence-id=1]/action/config/network-instance: "
                "names network instance \"red\", which is not configured\n");
  const auto documents = outcome.documents();
  const json failed = actionOf(documents.at(0), "red");
  EXPECT_EQ(failed["failureReason"], "failureVrfResourceAlloc");
  EXPECT_EQ(failed["failureDescription"],
            "VRF \"red\" has no hardware VRF id; the action is programmed when it gets one");
  EXPECT_EQ(actionOf(documents.at(1), "red")["status"], "programmedInHw");
}

TEST(RunCommand, UnknownMembersAreWarnings) {
  json document = toJson({{}, {}, {}});
  document["network-instances"]["vendor:extra"] = 1;
  const std::string file = writeFile("a.json", document.dump());
  const AgentOutcome outcome = runAgent({"run", file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err,
            "warning: " + file + ": /network-instances/vendor:extra: unknown member, ignored\n");
}

TEST(RunCommand, TheTraceIsShownOnRequestOnly) {
  const AgentOutcome silent = runAgent({"run", examplePath("four-rules.json")});
  EXPECT_EQ(silent.err, "");
  const AgentOutcome traced = runAgent({"run", "--trace", examplePath("four-rules.json")});
  EXPECT_EQ(traced.out, silent.out);
  EXPECT_EQ(traced.err.rfind("ZelVrfSelection 5 ", 0), 0U) << traced.err;
  EXPECT_NE(
      traced.err.find("\nZelVrfSelection 7 /src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:59 "
                      "handleVrfRefCountChange "),
      std::string::npos)
      << traced.err;
}

TEST(RunCommand, OutputThatCannotBeWrittenIsAnError) {
  const AgentOutcome outcome = runAgentInto("/dev/full", {"run", examplePath("four-rules.json")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "error: standard output cannot be written\n");
}

TEST(RunCommand, HelpIsNoError) {
  const AgentOutcome outcome = runAgent({"run", "--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(outcome.out.find("Usage: zel-agent run "), std::string::npos) << outcome.out;
  for (const char* const option :
       {"--events", "--json", "--strict", "--trace", "--chip-capacity", "vrf NAME id N"}) {
    EXPECT_NE(outcome.out.find(option), std::string::npos) << option;
  }
}

}  // namespace
}  // namespace ZelAgent
