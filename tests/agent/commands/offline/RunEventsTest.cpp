// `zel-agent run --events` from end to end.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/agent/AgentCall.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/model/events/BadEvents.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

constexpr const char* removedFromEmpty =
    "all removed\n  no VRF actions\n"
    "  chip: 0 of 1024 VRF resources in use; 0 creates, 0 updates, 0 deletes, 0 failed\n"
    "  rules: 0 of 65536 rule entries in use, at most 0; 0 refused\n";

// A text in which each `what` is replaced.
std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
    text.replace(at, what.size(), by);
  return text;
}

std::string storyTold() {
  std::ostringstream text;
  text << std::ifstream(ZEL_STORY_FILE).rdbuf();
  return replaced(text.str(), "EXAMPLES", ZEL_EXAMPLES_DIR);
}

std::string guestsWarning(const std::string& file) {
  return "warning: " + exampleFile(file) +
         ": /network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/"
         "policy[policy-id=by-class]/rules/rule[sequence-id=20]/action/config/network-instance: "
         "names network instance \"guests\", which is not configured\n";
}

std::string emptyConfiguration() {
  return writeSmall("empty.json", {});
}

TEST(RunEvents, TheExamples) {
  const CallOutcome outcome = callAgent({"run", exampleFile("late-vrf.json"), "--events",
                                         exampleFile("late-vrf.events"), "--chip-capacity", "2"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, guestsWarning("late-vrf.json") + guestsWarning("late-vrf-more.json"));
  EXPECT_EQ(outcome.out, storyTold());
}

TEST(RunEvents, EachEventIsOneJsonDocument) {
  const std::string config = writeSmall("a.json", {{}, {"red"}, {"e1"}});
  const std::string events =
      writeFile("a.events", "vrf red add\n# comment\nvrf red id 7\nshow\nvrf red remove\n");
  const CallOutcome outcome = callAgent({"run", config, "--json", "--events", events});
  EXPECT_EQ(outcome.status, 0);
  const auto documents = outcome.documents();
  ASSERT_EQ(documents.size(), 6U);
  EXPECT_EQ(documents[0]["configuration"], config);
  EXPECT_EQ(documents[5]["configuration"], nullptr);
  json noId = {{"status", "programmingFailure"},
               {"failureReason", "failureVrfResourceAlloc"},
               {"failureDescription",
                "VRF \"red\" has no hardware VRF id; the action is programmed when it gets one"}};
  EXPECT_EQ(documents[2], json::parse(R"({
    "event": {"file": ")" + events + R"(", "line": 3, "text": "vrf red id 7"},
    "calls": [{"hook": "updateVrf", "vrfName": "red", "fallbackVrfName": "",
               "postDecapVrfName": "", "action": "actionVrf", "failed": false}],
    "statuses": [{"vrfName": "red", "fallbackVrfName": "", "postDecapVrfName": "",
                  "action": "actionVrf", "before": )" +
                                      noId.dump() + R"(,
                  "after": {"status": "programmedInHw", "failureReason": "failureNone",
                            "failureDescription": ""}}],
    "actions": [{
      "vrfName": "red", "fallbackVrfName": "", "postDecapVrfName": "", "action": "actionVrf",
      "users": 1,
      "usedBy": [{"interface": "e1", "networkInstance": "default", "policy": "P", "rule": 1}],
      "status": "programmedInHw", "failureReason": "failureNone", "failureDescription": "",
      "resource": {
        "index": 1, "current": true,
        "lookUp": [
          {"vrfName": "red", "vrfId": 7, "exactMatchLens": [], "exactMatchLensV6": []}],
        "fallback": [], "postDecap": [],
        "decapNhEnabled": false, "decapNhFallbackEnabled": false}}],
    "chip": {"capacity": 1024, "used": 1, "creates": 1, "updates": 1, "deletes": 0, "failures": 1},
    "ruleTable": {"capacity": 65536, "used": 1, "mostUsed": 1, "refused": 0}
  })"));
  EXPECT_EQ(documents[1]["calls"], json::array());
  EXPECT_EQ(documents[1]["statuses"], json::array());
  EXPECT_EQ(documents[3]["event"]["text"], "show");
  EXPECT_EQ(documents[3]["actions"], documents[2]["actions"]);
  EXPECT_EQ(documents[4]["event"]["line"], 5);
  EXPECT_EQ(documents[4]["calls"][0]["failed"], true);
  EXPECT_EQ(documents[4]["statuses"][0]["after"], noId);
  EXPECT_EQ(documents[4]["actions"][0]["resource"], nullptr);
}

TEST(RunEvents, ActionsThatComeAndGoHaveNoStatusBeforeAndAfter) {
  const std::string without = writeSmall("without.json", {{{"red"}}, {}, {}});
  (void)writeSmall("with.json", {{{"red"}}, {"red"}, {"e1"}});
  const std::string events = writeFile("a.events", "config with.json\nconfig without.json\n");
  const CallOutcome outcome = callAgent({"run", without, "--events", events});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(
      outcome.out,
      without +
          " applied\n  no VRF actions\n"
          "  chip: 0 of 1024 VRF resources in use; 0 creates, 0 updates, 0 deletes, 0 failed\n"
          "  rules: 0 of 65536 rule entries in use, at most 0; 0 refused\n" +
          events +
          ":1: config with.json\n"
          "  createVrf actionVrf red\n"
          "  status of actionVrf red: none -> programmedInHw\n" +
          events +
          ":2: config without.json\n"
          "  deleteVrf actionVrf red\n"
          "  status of actionVrf red: programmedInHw -> none\n"
          "all removed\n  no VRF actions\n"
          "  chip: 0 of 1024 VRF resources in use; 1 creates, 0 updates, 1 deletes, 0 failed\n"
          "  rules: 0 of 65536 rule entries in use, at most 1; 0 refused\n");
}

TEST(RunEvents, ShowsNamesAsWords) {
  const std::string config =
      writeSmall("a.json", {{{"two words"}, {"b\xc3\xbcro"}}, {"two words"}, {"e1"}});
  const std::string events =
      writeFile("a.events", "fallback 'two words' to b\xc3\xbcro\nvrf 'esc\\x1b' add\n");
  const CallOutcome outcome = callAgent({"run", config, "--events", events});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find(events +
                             ":1: fallback 'two words' to b\xc3\xbcro\n"
                             "  updateVrf actionVrf 'two words'\n" +
                             events + ":2: vrf 'esc\\x1b' add\n  no hook call\n"),
            std::string::npos)
      << outcome.out;
}

TEST(RunEvents, ALaterConfigurationLeavesWhatEventsChanged) {
  const std::string config = writeSmall("a.json", {{{"red"}}, {"red"}, {"e1"}});
  const std::string events = writeFile("a.events", "vrf red id 70\nconfig a.json\n");
  const auto documents = callAgent({"run", config, "--json", "--events", events}).documents();
  ASSERT_EQ(documents.size(), 4U);
  EXPECT_EQ(documents[2]["calls"], json::array());
  EXPECT_EQ(documents[2]["actions"][0]["resource"]["lookUp"][0]["vrfId"], 70);
}

TEST(RunEvents, AnEmptyFileHasNoEvents) {
  const CallOutcome outcome =
      callAgent({"run", emptyConfiguration(), "--events", writeFile("a.events", "# nothing\n\n")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, callAgent({"run", emptyConfiguration()}).out);
}

TEST(RunEvents, StrictFailsWhereAnEventMadeTheChipFail) {
  const std::string config = writeSmall("a.json", {{{"red"}}, {"red"}, {"e1"}});
  const std::string good = writeFile("good.events", "vrf red id 7\n");
  const std::string failing =
      writeFile("failing.events", "chip fail any 1\nvrf red id 7\nvrf red id 8\n");
  EXPECT_EQ(callAgent({"run", config, "--strict", "--events", good}).status, 0);
  EXPECT_EQ(callAgent({"run", config, "--strict", "--events", failing}).status, 1);
  EXPECT_EQ(callAgent({"run", config, "--events", failing}).status, 0);
}

TEST(RunEvents, ConfigurationsAreReadFromTheFolderOfTheEventFile) {
  const std::string config = emptyConfiguration();
  const std::string folder = std::filesystem::path(config).parent_path();
  std::filesystem::create_directories(folder + "/sub");
  (void)writeFile("sub/next.json", toJson({{{"red"}}, {"red"}, {"e1"}}).dump());
  const std::string beside = writeFile("sub/a.events", "config next.json\n");
  const std::string below = writeFile("b.events", "config sub/next.json\n");
  const std::string absolute = writeFile("c.events", "config " + folder + "/sub/next.json\n");
  for (const std::string& events : {beside, below, absolute}) {
    const CallOutcome outcome = callAgent({"run", config, "--events", events});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("createVrf actionVrf red"), std::string::npos) << outcome.out;
  }
}

class BadEventLineTest : public ::testing::TestWithParam<BadEvent> {};

TEST_P(BadEventLineTest, EndsTheStoryInOneLine) {
  const std::string config = emptyConfiguration();
  const std::string events =
      writeFile("bad.events", "\ndecap-nh on\n" + GetParam().line + "\nshow\n");
  const CallOutcome outcome = callAgent({"run", config, "--events", events});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: " + events + ":3: " + GetParam().message + '\n');
  EXPECT_EQ(outcome.out, config + " applied\n" + replaced(removedFromEmpty, "all removed\n", "") +
                             events + ":2: decap-nh on\n  no hook call\n" + removedFromEmpty);
}

INSTANTIATE_TEST_SUITE_P(Each, BadEventLineTest, ::testing::ValuesIn(badEvents()),
                         [](const auto& bad) { return std::string(bad.param.name); });

TEST(BadEvents, WhatWentBeforeIsShownAndRemovedInOrder) {
  const std::string config = writeSmall("a.json", {{{"red"}}, {"red"}, {"e1"}});
  const std::string events = writeFile("bad.events", "vrf red id 7\nvrf late id 7\nvrf red id 8\n");
  const CallOutcome outcome = callAgent({"run", config, "--events", events});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err,
            "error: " + events +
                ":2: vrf NAME id N: NAME must be a VRF of the configuration or of the hardware, "
                "found 'late'; a new one needs first: vrf late add\n");
  EXPECT_EQ(
      outcome.out,
      config +
          " applied\n"
          "  VRF  FALLBACK  POST-DECAP  ACTION     USERS  RESOURCE  STATUS          REASON       "
          "DESCRIPTION\n"
          "  red  -         -           actionVrf  1      1         programmedInHw  failureNone  "
          "-\n"
          "  chip: 1 of 1024 VRF resources in use; 1 creates, 0 updates, 0 deletes, 0 failed\n"
          "  rules: 1 of 65536 rule entries in use, at most 1; 0 refused\n" +
          events +
          ":1: vrf red id 7\n"
          "  updateVrf actionVrf red\n"
          "all removed\n"
          "  no VRF actions\n"
          "  chip: 0 of 1024 VRF resources in use; 1 creates, 1 updates, 1 deletes, 0 failed\n"
          "  rules: 0 of 65536 rule entries in use, at most 1; 0 refused\n");
}

TEST(BadEvents, ABadConfigurationNamesTheEventAndThePlaceInTheConfiguration) {
  const std::string config = emptyConfiguration();
  const std::string bad = writeFile("bad.json", "[]");
  const std::string events = writeFile("a.events", "config bad.json\n");
  const CallOutcome outcome = callAgent({"run", config, "--events", events});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: " + events + ":1: config FILE: " + bad +
                             ": /: must be an object, not an array\n");
}

TEST(BadEvents, AFileThatCannotBeReadIsFoundBeforeAnythingIsApplied) {
  const std::string file = TestFiles::processFolder() / "no-such.events";
  const CallOutcome outcome = callAgent({"run", exampleFile("four-rules.json"), "--events", file});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: " + file +
                             ": cannot be read: No such file or directory; give a readable event "
                             "file\n");
  EXPECT_EQ(outcome.out, removedFromEmpty);
}

TEST(BadEvents, AfterABadConfigurationNoEventIsPlayed) {
  const std::string bad = writeFile("bad.json", "[]");
  const std::string events = writeFile("a.events", "show\n");
  const CallOutcome outcome = callAgent({"run", bad, "--events", events});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: " + bad + ": /: must be an object, not an array\n");
  EXPECT_EQ(outcome.out, removedFromEmpty);
}

}  // namespace
}  // namespace ZelAgent
