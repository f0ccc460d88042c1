// The output of each command and its effect on the agent, without a socket.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "agent/commands/served/CommandDispatch.h"
#include "agent/commands/served/ServedAgent.h"
#include "agent/language/Errors.h"
#include "agent/model/packets/PacketText.h"
#include "agent/serve/protocol/ControlService.h"
#include "tests/agent/FixedClock.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class Commands : public ::testing::Test {
 protected:
  Commands() { served_.start(); }

  // The text framing without its last line.
  std::string text(const std::string& command) {
    const std::string bytes = service_.reply({RequestLine::Kind::whole, command}).bytes;
    EXPECT_TRUE(bytes.ends_with(".\n")) << bytes;
    return bytes.substr(0, bytes.size() - 2);
  }

  json answer(const std::string& command) {
    const json request{{"command", command}, {"json", true}};
    return json::parse(service_.reply({RequestLine::Kind::whole, request.dump()}).bytes);
  }

  json output(const std::string& command) {
    const json whole = answer(command);
    EXPECT_EQ(whole["status"], 0) << whole;
    return whole["output"];
  }

  // The errors of a command, one on each line. Its status must be 2.
  std::string error(const std::string& command) {
    const json whole = answer(command);
    EXPECT_EQ(whole["status"], 2) << whole;
    std::string lines;
    std::istringstream output(whole["output"].get<std::string>());
    for (std::string line; std::getline(output, line);)
      lines += "error: " + line + '\n';
    EXPECT_EQ(text(command), lines);
    return whole["output"];
  }

  std::string file_ =
      writeSmall("red.json", {{{"red", "blue"}, {"blue"}}, {"red", "green"}, {"e1", "e2"}});
  ServedAgent served_{file_, 8, Limits::clientTimeout, fixedTime};
  ControlService service_{served_, std::size_t{1} << 20U};
};

TEST_F(Commands, ShowActionsIsTheTableThatRunPrints) {
  EXPECT_EQ(text("show actions"),
            file_ +
                " applied\n"
                "  VRF    FALLBACK  POST-DECAP  ACTION     USERS  RESOURCE  STATUS              "
                "REASON                   DESCRIPTION\n"
                "  green  -         -           actionVrf  2      -         programmingFailure  "
                "failureVrfResourceAlloc  VRF \"green\" has no hardware VRF id; the action is "
                "programmed when it gets one\n"
                "  red    -         -           actionVrf  2      1         programmedInHw      "
                "failureNone              -\n"
                "  chip: 1 of 8 VRF resources in use; 2 creates, 0 updates, 0 deletes, 1 failed\n"
                "  rules: 4 of 65536 rule entries in use, at most 4; 0 refused\n");
}

TEST_F(Commands, ShowLimitsHasThoseInForce) {
  const auto capacity = [this] {
    for (const json& row : output("show limits"))
      if (row["name"] == "chip resources") return row["value"].get<int>();
    return -1;
  };
  EXPECT_EQ(capacity(), 8);
  EXPECT_THAT(text("show limits"), HasSubstr("\n  chip resources      8 "));
  text("chip capacity 77");
  EXPECT_EQ(capacity(), 77);
}

TEST_F(Commands, TablesFitTheColumnsOfTheRequest) {
  const json request{{"command", "show actions"}, {"columns", 150}};
  const json narrow = json::parse(service_.reply({RequestLine::Kind::whole, request.dump()}).bytes);
  EXPECT_THAT(narrow["output"].get<std::string>(),
              HasSubstr("  VRF \"green\" has no hardware VRF id; the action\n"));
}

TEST_F(Commands, ShowActionsAsJsonHasTheMembersOfAReport) {
  const json report = output("show actions");
  EXPECT_EQ(report["configuration"], file_);
  EXPECT_THAT(report["actions"], SizeIs(2));
  EXPECT_EQ(report["chip"]["capacity"], 8);
  EXPECT_EQ(report["ruleTable"]["mostUsed"], 4);
}

TEST_F(Commands, ShowVrfsHasARowForEveryKnownVrf) {
  text("vrf spare add");
  text("prefix-lens ipv4 red 24 32");
  text("prefix-lens ipv6 red 64");
  EXPECT_EQ(text("show vrfs"),
            "  VRF      ID  FALLBACK  IPV4-LENS  IPV6-LENS  CONFIGURED\n"
            "  default  1   -         -          -          yes\n"
            "  blue     3   -         -          -          yes\n"
            "  green    -   -         -          -          no\n"
            "  red      2   blue      24,32      64         yes\n"
            "  spare    0   -         -          -          no\n");
}

TEST_F(Commands, ShowVrfsAsJsonHasNullForUnknownValues) {
  text("prefix-lens ipv4 red 24 32");
  const json vrfs = output("show vrfs");
  ASSERT_THAT(vrfs, SizeIs(4));
  EXPECT_EQ(vrfs[2], json::parse(R"({"vrfName": "green", "vrfId": null, "fallbackVrfName": "",
      "exactMatchLens": null, "exactMatchLensV6": null, "configured": false})"));
  EXPECT_EQ(vrfs[3], json::parse(R"({"vrfName": "red", "vrfId": 2, "fallbackVrfName": "blue",
      "exactMatchLens": [24, 32], "exactMatchLensV6": null, "configured": true})"));
}

TEST_F(Commands, ShowFallbackIsTheCurrentGraph) {
  EXPECT_EQ(text("show fallback"),
            "VRF default\nVRF blue\nVRF green, not configured\nVRF red, fallback -> blue\n"
            "action actionVrf green, vrfName -> green\naction actionVrf red, vrfName -> red\n");
  text("fallback blue to red");
  EXPECT_THAT(text("show fallback"), HasSubstr("cycle blue -> red -> blue\n"));
}

TEST_F(Commands, ShowFallbackAsJsonNamesTheCycles) {
  text("fallback blue to red");
  const json graph = output("show fallback");
  EXPECT_EQ(graph["cycles"], json::parse(R"([["blue", "red"]])"));
  EXPECT_EQ(graph["actions"][0]["vrfName"], "green");
  EXPECT_EQ(graph["vrfs"][0],
            json::parse(R"({"vrfName": "default", "configured": true, "fallbackVrfName": ""})"));
}

TEST_F(Commands, ShowTracePrintsTheLastMessages) {
  text("vrf red id 77");
  const json records = output("show trace 2");
  ASSERT_THAT(records, SizeIs(2));
  EXPECT_EQ(records[1]["sequence"], records[0]["sequence"].get<int>() + 1);
  for (const char* const member : {"time", "level", "line", "path", "function", "text"})
    EXPECT_TRUE(records[1].contains(member)) << member;
  const std::string function = records[1]["function"];
  EXPECT_THAT(
      text("show trace 1"),
      AllOf(StartsWith(records[1]["sequence"].dump() + " " + records[1]["time"].get<std::string>() +
                       " level " + records[1]["level"].dump() + " line " +
                       records[1]["line"].dump() + " " + function + ": "),
            HasSubstr(records[1]["text"].get<std::string>())));
}

TEST_F(Commands, ShowTracePrintsTwentyMessagesByDefault) {
  for (int id = 100; id < 130; ++id)
    text("vrf red id " + std::to_string(id));
  EXPECT_THAT(output("show trace"), SizeIs(20));
  EXPECT_THAT(output("show trace 0"), IsEmpty());
}

TEST_F(Commands, ShowTypesListsTheTypesOfTheLibraryWithTheirAttributes) {
  EXPECT_THAT(text("show types"), HasSubstr("module ZelVrfSelectionPolicy\n"));
  EXPECT_THAT(text("show types"), HasSubstr("\nZelVrfSelectionPolicy::ProgrammingResult\n"
                                            "  one of programmedInHw, programmingFailure\n"));
  const json modules = output("show types");
  EXPECT_EQ(modules[1]["module"], "ZelVrfSelectionPolicy");
  EXPECT_EQ(modules[1]["types"].size(), 12U);
  EXPECT_THAT(
      modules[1]["types"],
      Contains(json{
          {"type", "ZelVrfSelectionPolicy::VrfAction"},
          {"names", json::array()},
          {"attributes",
           {{{"number", 2}, {"name", "vrfName"}, {"kind", "L3::VrfName"}, {"operations", {"read"}}},
            {{"number", 3},
             {"name", "fallbackVrfName"},
             {"kind", "L3::VrfName"},
             {"operations", {"read", "write"}}},
            {{"number", 4},
             {"name", "postDecapVrfName"},
             {"kind", "L3::VrfName"},
             {"operations", {"read", "write"}}},
            {{"number", 5},
             {"name", "action"},
             {"kind", "PolicyMap::ActionType"},
             {"operations", {"read"}}}}}}));
}

TEST_F(Commands, GetAcceptsTheEndOfATypeNameAndTheNumberOfAnAttribute) {
  EXPECT_EQ(text("get VrfSm fallbackVrfInfo"), "'red': 'blue'\n");
  EXPECT_EQ(text("get ZelVrfSelectionPolicy::VrfSm 136"), "'red': 'blue'\n");
  EXPECT_THAT(text("get HwStatus status"), HasSubstr("}): programmingFailure\n"));
}

TEST_F(Commands, GetAcceptsTheKeyOfAnEntryOrOfAnObject) {
  EXPECT_EQ(text("get VrfSm fallbackVrfInfo red"), "'blue'\n");
  EXPECT_EQ(text("get VrfInstanceSm vrfName red"), "'red': 'red'\n");
  EXPECT_EQ(text("get VrfHwConfig vrfRefCount Value('ZelVrfSelectionPolicy::VrfAction', ** "
                 "{'vrfName': 'red', 'fallbackVrfName': '', 'postDecapVrfName': '', 'action': "
                 "actionVrf})"),
            "2\n");
}

TEST_F(Commands, GetAcceptsAnActionAsReportsPrintIt) {
  EXPECT_EQ(text("get VrfHwConfig vrfRefCount actionVrf red"), "2\n");
  EXPECT_EQ(text("get VrfHwConfig 130  actionVrf   'red'"), "2\n");
  EXPECT_EQ(output("get HwStatus status actionVrf green")[0]["value"], "programmingFailure");
}

TEST_F(Commands, GetAcceptsTheVrfOfActions) {
  const std::string red =
      "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': 'red', 'fallbackVrfName': '', "
      "'postDecapVrfName': '', 'action': actionVrf}): ";
  EXPECT_EQ(text("get VrfHwConfig vrfRefCount red"), red + "2\n");
  EXPECT_EQ(text("get HwStatus status red"), red + "programmedInHw\n");
}

TEST_F(Commands, GetListsTheKeysOfActionsForAWrongKey) {
  EXPECT_EQ(
      error("get VrfHwStatus hwStatus nobody"),
      "get TYPE ATTRIBUTE [KEY]: KEY must be the VRF of an action, or one of: actionVrf green, "
      "actionVrf red; found 'nobody'");
  EXPECT_EQ(
      error("get HwStatus status actionVrf nobody"),
      "get TYPE ATTRIBUTE [KEY]: KEY must be the VRF of an action, or one of: actionVrf green, "
      "actionVrf red; found 'actionVrf nobody'");
}

TEST_F(Commands, GetReportsWrongArguments) {
  EXPECT_EQ(error("get Nothing at"),
            "get TYPE ATTRIBUTE [KEY]: TYPE must be a registered type with attributes, which `show "
            "types` lists, found 'Nothing'");
  EXPECT_EQ(error("get VrfAction colour"),
            "get TYPE ATTRIBUTE [KEY]: ATTRIBUTE must be one of: vrfName, fallbackVrfName, "
            "postDecapVrfName, action, found 'colour'");
  EXPECT_EQ(error("get VrfHelper createVrf"),
            "get TYPE ATTRIBUTE [KEY]: createVrf can be called, but not read");
  EXPECT_EQ(error("get VrfInstanceSm vrfName nobody"),
            "get TYPE ATTRIBUTE [KEY]: KEY must be one of: blue, default, red; found 'nobody'");
}

TEST_F(Commands, ShowUsersPrintsTheInterfaceAndTheRuleOfEachUser) {
  EXPECT_EQ(text("show users"),
            "  ACTION           INTERFACE  POLICY  RULE\n"
            "  actionVrf green  e1         P       2\n"
            "  actionVrf green  e2         P       2\n"
            "  actionVrf red    e1         P       1\n"
            "  actionVrf red    e2         P       1\n");
}

TEST_F(Commands, ShowRulesAndCountersFollowAPacket) {
  text("route red 0.0.0.0/0 via e2");
  EXPECT_EQ(text("explain e1 ipv4 192.0.2.1 to 192.0.2.2"),
            "packet ipv4 192.0.2.1 to 192.0.2.2 protocol 17 ttl 64, 28 bytes\n"
            "rule 1 of P, any: matches\n"
            "action actionVrf red, resource 1\n"
            "look up 192.0.2.2 in VRF red (id 2): 0.0.0.0/0 via e2\n"
            "forward via e2: ipv4 192.0.2.1 to 192.0.2.2 protocol 17 ttl 63, 28 bytes\n");
  PacketFields fields;
  fields.source = parseIpAddress("192.0.2.1").value();
  fields.destination = parseIpAddress("192.0.2.2").value();
  static_cast<void>(served_.agent().forwarder().forward("e1", buildPacket(fields)));
  EXPECT_THAT(text("show rules"),
              HasSubstr("  e1         P       1     any    actionVrf red    programmed\n"));
  EXPECT_THAT(text("show counters"),
              HasSubstr("  e1         P       1     any    actionVrf red    1        28\n"));
  EXPECT_EQ(output("show counters")["vrfs"],
            json::array({{{"vrfName", "red"}, {"packets", 1}, {"bytes", 28}}}));
}

// Reads each attribute of a type's single object, or of all its objects.
TEST_F(Commands, GetReachesEveryReadableAttributeOfEveryTypeOfTheLibrary) {
  text("prefix-lens ipv4 red 24");
  text("prefix-lens ipv6 red 48");
  const json modules = output("show types");
  std::size_t attributes = 0;
  for (const json& type : modules[1]["types"]) {
    for (const json& attribute : type["attributes"]) {
      const json& operations = attribute["operations"];
      if (std::find(operations.begin(), operations.end(), "read") == operations.end()) continue;
      const json answer = output("get " + type["type"].get<std::string>() + ' ' +
                                 attribute["name"].get<std::string>());
      EXPECT_TRUE(answer.is_array() && !answer.empty()) << type["type"] << attribute << answer;
      ++attributes;
    }
  }
  EXPECT_EQ(attributes, 50U);
}

TEST_F(Commands, AnEventIsAnsweredWithItsEffects) {
  EXPECT_EQ(text("vrf green add"), "vrf green add\n  no hook call\n");
  EXPECT_EQ(text("vrf green id 7"),
            "vrf green id 7\n"
            "  updateVrf actionVrf green\n"
            "  status of actionVrf green: programmingFailure (failureVrfResourceAlloc: VRF "
            "\"green\" has no hardware VRF id; the action is programmed when it gets one) -> "
            "programmedInHw\n");
}

TEST_F(Commands, AnEventAsJsonHasNoPlace) {
  const json report = output("chip capacity 9");
  EXPECT_EQ(report["event"], json::parse(R"({"text": "chip capacity 9"})"));
  EXPECT_EQ(report["changes"]["truncated"], 0);
  EXPECT_THAT(report["calls"], IsEmpty());
  EXPECT_THAT(report["statuses"], IsEmpty());
}

TEST_F(Commands, EveryKindOfEventIsACommand) {
  const std::string other = writeSmall("other.json", {{{"red"}}, {"red"}, {"e1"}});
  for (const std::string& event :
       {std::string("vrf red id 9"), std::string("vrf red remove"), std::string("vrf red add id 4"),
        std::string("vrf blue add"), std::string("fallback red to green"),
        std::string("fallback red remove"), std::string("decap-nh on"),
        std::string("decap-nh-fallback on"), std::string("prefix-lens ipv4 red 8 16"),
        std::string("prefix-lens ipv4 red remove"), "config " + other,
        std::string("chip capacity 3"), std::string("chip fail any 2"), std::string("show")}) {
    EXPECT_THAT(text(event), StartsWith(event + "\n"));
  }
}

TEST_F(Commands, AnEventThatCannotBePlayedChangesNothing) {
  const std::string before = text("show vrfs");
  EXPECT_EQ(
      error("vrf nobody id 7"),
      "vrf NAME id N: NAME must be a VRF of the configuration or of the hardware, found 'nobody'; "
      "a new one needs first: vrf nobody add");
  EXPECT_EQ(error("vrf red id 7 8"), "vrf NAME id N: the line must end here, found '8'");
  EXPECT_EQ(text("show vrfs"), before);
}

TEST_F(Commands, ShowConfigPrintsTheConfigurationInForce) {
  EXPECT_EQ(text("show config"), "file         " + file_ + "\nin force     " + file_ +
                                     ", applied at start, " + fixedTimeText +
                                     "\nreloads      0 applied, 0 refused\n");
  const std::string other = writeSmall("other.json", {{{"red"}}, {"red"}, {"e1"}});
  text("config " + other);
  EXPECT_EQ(output("show config")["inForce"],
            json({{"file", other}, {"by", "config"}, {"at", fixedTimeText}}));
}

TEST_F(Commands, ReloadAppliesTheFileAsItIsNow) {
  writeSmall("red.json", {{{"green"}}, {"green"}, {"e1"}});
  const json report = output("reload");
  EXPECT_EQ(report["configuration"], file_);
  EXPECT_EQ(report["changes"]["actions"],
            json({{"created", 0}, {"updated", 1}, {"deleted", 1}, {"failed", 0}}));
  EXPECT_EQ(report["changes"]["rules"]["removed"], 3);
  EXPECT_EQ(report["statuses"][0]["vrfName"], "green");
  EXPECT_EQ(report["statuses"][0]["after"]["status"], "programmedInHw");
  EXPECT_THAT(report["warnings"], IsEmpty());
  EXPECT_EQ(output("show config")["inForce"]["by"], "reload");
}

TEST_F(Commands, ReloadPrintsWhatHasChanged) {
  writeSmall("red.json", {{{"red", "blue"}, {"blue"}}, {"red"}, {"e1", "e2"}});
  EXPECT_EQ(text("reload"),
            file_ +
                " applied\n"
                "  actions: 0 created, 0 updated, 1 deleted, 0 failed\n"
                "  rules: 0 added, 0 replaced, 0 moved, 2 removed, 0 refused\n"
                "  routes: 0 set, 0 removed\n"
                "  deleteVrf actionVrf green\n"
                "  status of actionVrf green: programmingFailure (failureVrfResourceAlloc: VRF "
                "\"green\" has no hardware VRF id; the action is programmed when it gets one) -> "
                "none\n");
}

// Each new action has a line for its creation and one for its status.
TEST_F(Commands, AChangeThatIsTooLongToShowIsAnsweredAllTheSame) {
  SmallConfiguration many{{{"red", "blue"}, {"blue"}}, {"red"}, {"e1", "e2"}};
  for (int i = 0; i < 2000; ++i) {
    many.vrfs.push_back({"vrf-" + std::to_string(i)});
    many.rules.push_back(many.vrfs.back().name);
  }
  writeSmall("red.json", many);
  ControlService small(served_, 8192);
  const std::string bytes = small.reply({RequestLine::Kind::whole, "reload"}).bytes;
  EXPECT_THAT(bytes, StartsWith(file_ + " applied\n  actions: 2000 created, "));
  EXPECT_THAT(bytes, HasSubstr(" more; show actions prints each action\n"));
}

TEST_F(Commands, DiffIsWhatAReloadWouldChange) {
  EXPECT_THAT(text("diff"), HasSubstr("no difference\n"));
  writeSmall("red.json", {{{"red", "blue"}, {"blue"}}, {"red", "green"}, {"e1"}});
  text("vrf red id 77");  // no part of a configuration
  EXPECT_THAT(text("diff"), HasSubstr("interfaces\n"
                                      "  - e2: VRF default, policy P\n"
                                      "actions\n"
                                      "  ~ actionVrf green: 2 users -> 1 user\n"
                                      "  ~ actionVrf red: 2 users -> 1 user\n"));
  EXPECT_EQ(output("diff")["equal"], false);
  EXPECT_THAT(output("diff")["warnings"], SizeIs(1));
  text("reload");
  EXPECT_EQ(output("diff")["equal"], true);
}

TEST_F(Commands, DiffRefusesAWrongFile) {
  writeFile("red.json", "7");
  EXPECT_EQ(error("diff"), file_ + ": /: must be an object, not 7");
}

TEST_F(Commands, ExplainCountsNothing) {
  text("route red 0.0.0.0/0 via e1");
  const std::string counters = text("show counters");
  const std::string actions = text("show actions");
  for (const std::string destination : {"ipv4 192.0.2.1 to 192.0.2.2", "hex 00"})
    text("explain e1 " + destination);
  EXPECT_EQ(text("show counters"), counters);
  EXPECT_EQ(text("show actions"), actions);
}

TEST_F(Commands, ExplainRefusesAnInterfaceThatNothingConfigures) {
  EXPECT_EQ(error("explain e11 hex 00"),
            "explain INTERFACE PACKET: INTERFACE must be an interface of the configuration, found "
            "'e11'; did you mean 'e1'?");
}

TEST_F(Commands, ReloadShowsTheWarningsOfTheFile) {
  EXPECT_THAT(text("reload"), StartsWith("warning: " + file_ + ": "));
  EXPECT_THAT(output("reload")["warnings"], SizeIs(1));
}

TEST_F(Commands, AReloadOfABadFileChangesNothingAndIsRecorded) {
  const std::string before = text("show actions");
  writeFile("red.json", "{\"network-instances\": 7}");
  const std::string problem = error("reload");
  EXPECT_THAT(problem, StartsWith(file_ + ": /network-instances: "));
  EXPECT_EQ(text("show actions"), before);
  EXPECT_EQ(output("show config")["reloads"], json({{"applied", 0},
                                                    {"refused", 2},
                                                    {"lastRefusal", problem},
                                                    {"lastRefusalAt", fixedTimeText}}));
  EXPECT_THAT(text("show config"), HasSubstr(std::string("last reload  refused, ") + fixedTimeText +
                                             ": " + problem + "\n"));
}

TEST_F(Commands, AReloadOfAFileWithSeveralErrorsShowsAllAndRecordsTheFirst) {
  writeFile("red.json", R"({"network-instances": {"network-instance": [5, 6, 7]}})");
  const std::string list = file_ + ": /network-instances/network-instance";
  const std::string first = list + "[1]: must be an object, not 5";
  EXPECT_EQ(error("reload"), first + '\n' + list + "[2]: must be an object, not 6\n" + list +
                                 "[3]: must be an object, not 7");
  EXPECT_EQ(output("show config")["reloads"]["lastRefusal"], first + " (2 more lines)");
}

TEST_F(Commands, AReloadThatFailsForAnyOtherReasonIsRecorded) {
  writeSmall("red.json", {{{"red"}, {"blue"}}, {"red", "green"}, {"e1", "e2"}});
  served_.changeObserverIs([] { throw std::runtime_error("the chip\nis absent"); });
  const json whole = answer("reload");
  served_.changeObserverIs({});
  EXPECT_EQ(whole, json({{"status", 1}, {"output", "the command failed: the chip\\x0ais absent"}}));
  EXPECT_EQ(output("show config")["reloads"],
            json({{"applied", 0},
                  {"refused", 1},
                  {"lastRefusal",
                   "the reload failed: the chip\\x0ais absent; the file may be applied in part"},
                  {"lastRefusalAt", fixedTimeText}}));
}

TEST_F(Commands, AReloadThatIsAppliedClearsTheLastRefusal) {
  writeFile("red.json", "[]");
  error("reload");
  writeSmall("red.json", {{{"red"}}, {"red"}, {"e1"}});
  text("reload");
  EXPECT_EQ(output("show config")["reloads"]["lastRefusal"], nullptr);
  EXPECT_EQ(output("show config")["reloads"]["lastRefusalAt"], nullptr);
  EXPECT_THAT(text("show config"), Not(HasSubstr("last reload")));
}

TEST_F(Commands, AnUnknownCommandIsAnErrorThatListsTheCommands) {
  EXPECT_THAT(error("shw"), AllOf(StartsWith("a command must begin with chip, "),
                                  HasSubstr(", reload, "), HasSubstr(" or vrf, found 'shw'")));
  EXPECT_THAT(error("show vrfx"), AllOf(StartsWith("show must be followed by actions, "),
                                        HasSubstr(", vrfs or the end of the line, found 'vrfx'")));
  EXPECT_EQ(error("'show' vrfs").substr(0, 26), "a command must begin with ");
}

TEST_F(Commands, UnexpectedArgumentsAreRefused) {
  EXPECT_EQ(error("show vrfs now"), "show vrfs: the line must end here, found 'now'");
  EXPECT_EQ(error("reload now"), "reload: the line must end here, found 'now'");
  EXPECT_THAT(error("show trace many"),
              StartsWith("show trace [N]: N must be a number from 0 to 4294967295"));
  EXPECT_EQ(error("show trace 1 2"), "show trace [N]: the line must end here, found '2'");
}

TEST_F(Commands, ABlankLineAndACommentDoNothing) {
  EXPECT_EQ(text(""), "");
  EXPECT_EQ(text("  # a remark"), "");
  EXPECT_EQ(output(""), nullptr);
}

TEST_F(Commands, HelpHasALineForEachForm) {
  EXPECT_THAT(text("help"), HasSubstr("\nvrf NAME add [id N]  "));
  EXPECT_EQ(text("help decap-nh-"),
            "decap-nh-fallback on|off  Enable or disable fallback for decapsulating next hops\n");
  EXPECT_THAT(error("help me"), HasSubstr("must be the beginning of a command, found 'me'"));
}

TEST_F(Commands, CompletionOffersWordsOfTheTable) {
  EXPECT_THAT(output("complete ''"), IsSupersetOf({"chip", "help", "show", "vrf"}));
  EXPECT_EQ(output("complete 'decap-nh-'"), json({"decap-nh-fallback"}));
  EXPECT_EQ(output("complete 'show vr'"), json({"vrfs"}));
  EXPECT_EQ(text("complete 'prefix-lens '"), "ipv4\nipv6\n");
  EXPECT_EQ(output("complete 'show actions '"), json({"failed", "vrf"}));
  EXPECT_EQ(output("complete 'show rules '"), json({"failed", "interface", "policy", "vrf"}));
  EXPECT_EQ(output("complete 'show rules policy P '"), json({"failed", "vrf"}));
  EXPECT_EQ(output("complete 'show rules vrf r'"), json({"red"}));
  EXPECT_EQ(output("complete 'reload '"), json::array());
  EXPECT_EQ(output("complete 'nonsense '"), json::array());
}

TEST_F(Commands, CompletionOffersTheKnownVrfs) {
  EXPECT_EQ(output("complete 'vrf '"), json({"blue", "default", "green", "red"}));
  EXPECT_EQ(output("complete 'vrf r'"), json({"red"}));
  EXPECT_EQ(output("complete 'fallback red '"), json({"remove", "to"}));
  EXPECT_EQ(output("complete 'chip fail '"), json({"any", "blue", "default", "green", "red"}));
  text("vrf 'two words' add");
  EXPECT_EQ(output("complete 'vrf \\''"), json({"'two words'"}));
}

TEST_F(Commands, CompletionOffersInterfacesAndPrefixes) {
  EXPECT_EQ(output("complete 'explain '"), json({"e1", "e2"}));
  EXPECT_EQ(output("complete 'route red '"), json::array());
  text("route red 10.0.0.0/8 decap");
  EXPECT_EQ(output("complete 'route red '"), json({"10.0.0.0/8"}));
  EXPECT_EQ(output("complete 'route blue '"), json::array());
  EXPECT_EQ(output("complete 'route red 10.0.0.0/8 via e'"), json({"e1", "e2"}));
}

TEST_F(Commands, CompletionOffersTypesAttributesAndKeys) {
  EXPECT_THAT(output("complete 'get V'"), IsSupersetOf({"VrfSm", "VrfHwStatus"}));
  EXPECT_THAT(output("complete 'get VrfHelper '"), Not(Contains("createVrf")));
  EXPECT_EQ(output("complete 'get VrfHwStatus '"), json({"hwStatus"}));
  EXPECT_EQ(output("complete 'get VrfHwStatus hwStatus '"), json({"actionVrf", "green", "red"}));
  EXPECT_EQ(output("complete 'get VrfHwStatus hwStatus actionVrf r'"), json({"red"}));
  EXPECT_EQ(output("complete 'get VrfSm fallbackVrfInfo '"), json({"red"}));
  EXPECT_EQ(output("complete 'get VrfInstanceSm vrfName b'"), json({"blue"}));
}

TEST_F(Commands, CompletionOffersTheKeywordsOfAPacket) {
  EXPECT_EQ(output("complete 'explain e1 '"), json({"hex", "ipv4", "ipv6"}));
  EXPECT_EQ(output("complete 'explain e1 ipv4 192.0.2.1 '"), json({"to"}));
  EXPECT_EQ(output("complete 'explain e1 ipv4 192.0.2.1 to '"), json::array());
  EXPECT_EQ(output("complete 'explain e1 ipv4 192.0.2.1 to 192.0.2.2 '"),
            json({"carrying", "destination-port", "dscp", "ecn", "fragment-offset", "length",
                  "protocol", "source-port", "tcp-flags", "ttl"}));
  EXPECT_EQ(output("complete 'explain e1 ipv4 192.0.2.1 to 192.0.2.2 p'"), json({"protocol"}));
  EXPECT_EQ(output("complete 'explain e1 ipv4 192.0.2.1 to 192.0.2.2 ttl '"), json::array());
  EXPECT_EQ(output("complete 'explain e1 ipv4 192.0.2.1 to 192.0.2.2 carrying i'"),
            json({"ipv4", "ipv6"}));
}

TEST_F(Commands, CompletionOffersTheWordsOfCommandsToHelp) {
  EXPECT_EQ(output("complete 'help show vr'"), json({"vrfs"}));
  EXPECT_EQ(output("complete 'help vrf '"), json::array());
}

TEST_F(Commands, CompletionFollowsShortenedKeywords) {
  EXPECT_EQ(output("complete 'sh vr'"), json({"vrfs"}));
  EXPECT_EQ(output("complete 'pre ipv4 r'"), json({"red"}));
  EXPECT_EQ(output("complete 're '"), json::array());
}

TEST_F(Commands, ChoicesExplainTheKeywordsThatTheLastWordBegins) {
  EXPECT_EQ(text("choices 'show t'"),
            "trace  The last N messages of the trace; 20 if N is not given\n"
            "types  The registered types, their attributes, and the operations of each\n");
  EXPECT_EQ(output("choices 'ro'"),
            json::parse(R"([{"choice": "route", "help": "Add or remove a route"}])"));
}

TEST_F(Commands, ChoicesExplainAPlaceholderWithItsValues) {
  EXPECT_EQ(text("choices 'vrf '"), "NAME  a VRF: blue, default, green, red\n");
  EXPECT_EQ(text("choices 'vrf r'"), "NAME  a VRF: red\n");
  EXPECT_EQ(text("choices 'chip capacity '"), "N  a number\n");
  for (int vrf = 0; vrf < 9; ++vrf)
    text("vrf x" + std::to_string(vrf) + " add");
  EXPECT_EQ(text("choices 'vrf '"),
            "NAME  a VRF: blue, default, green, red, x0, x1, x2, x3, x4, x5 and 3 more\n");
}

TEST_F(Commands, ChoicesNameTheEndOfTheLine) {
  EXPECT_EQ(text("choices 'show trace '"),
            "N     a number\n"
            "<cr>  The last N messages of the trace; 20 if N is not given\n");
  EXPECT_EQ(text("choices 'reload '"),
            "<cr>  Read the configuration file again and apply it, as SIGHUP does\n");
  EXPECT_EQ(text("choices 'vrf red add '"),
            "id    The hardware reports a new status for the VRF\n"
            "<cr>  The hardware reports a new status for the VRF\n");
}

TEST_F(Commands, ChoicesRefuseALineThatBeginsNoCommand) {
  EXPECT_EQ(error("choices 'show nothing '"),
            "choices LINE: LINE must be the beginning of a command, found 'show nothing '");
  EXPECT_EQ(error("choices 'vrf \\'two w'"),
            "choices LINE: LINE must be the beginning of a command, found 'vrf \\'two w'");
}

TEST_F(Commands, KeywordsMayBeShortened) {
  EXPECT_EQ(text("sh vr"), text("show vrfs"));
  EXPECT_THAT(text("  pre ipv4  red 24   # remark"), StartsWith("prefix-lens ipv4 red 24\n"));
  EXPECT_THAT(text("vrf red i 7"), StartsWith("vrf red id 7\n"));
  EXPECT_THAT(text("decap-nh on"), StartsWith("decap-nh on\n"));  // not decap-nh-fallback
}

TEST_F(Commands, AWordThatIsShortForSeveralKeywordsIsAnErrorThatListsThem) {
  EXPECT_EQ(error("re"), "'re' may be reload or retry; type more of the word");
  EXPECT_EQ(error("show t"), "show: 't' may be trace or types; type more of the word");
}

TEST_F(Commands, OnlyKeywordsMayBeShortened) {
  (void)text("vrf an add");
  EXPECT_THAT(text("chip fail an 1"), StartsWith("chip fail an 1\n"));  // not any
  EXPECT_THAT(error("'show' vrfs"), StartsWith("a command must begin with "));
  EXPECT_THAT(error("'sho' vrfs"), StartsWith("a command must begin with "));
}

TEST_F(Commands, AnAnswerThatIsTooLongIsAnErrorInItsPlace) {
  ControlService tight(served_, 100);
  const Reply reply = tight.reply({RequestLine::Kind::whole, "{\"command\": \"show actions\"}"});
  const json answer = json::parse(reply.bytes);
  EXPECT_EQ(answer["status"], 1);
  EXPECT_THAT(answer["output"].get<std::string>(), HasSubstr("the limit is 100 bytes"));
  EXPECT_FALSE(reply.isLast);
}

TEST_F(Commands, ALineThatIsTooLongIsTheLast) {
  const Reply reply = service_.reply({RequestLine::Kind::tooLong, "{\"comm"});
  EXPECT_TRUE(reply.isLast);
  EXPECT_THAT(json::parse(reply.bytes)["output"].get<std::string>(), HasSubstr("65536 bytes"));
}

TEST_F(Commands, ALineThatWasCutOffIsNotRun) {
  const Reply reply = service_.reply({RequestLine::Kind::unfinished, "vrf red id 99"});
  EXPECT_THAT(reply.bytes, HasSubstr("must end with a newline, found the end after"));
  EXPECT_THAT(text("show vrfs"), Not(HasSubstr("99")));
}

TEST(ServedAgent, ABadFileAtTheStartIsAConfigError) {
  ServedAgent served(writeFile("bad.json", "7"), 8);
  EXPECT_THROW(served.start(), ConfigError);
}

// Ethernet7 is an interface of the system only, and the entry of Ethernet8 is not enabled.
constexpr const char* unusedInterfaces = R"({
  "interfaces": {"interface": [{"name": "Ethernet7"}]},
  "network-instances": {"network-instance": [
    {"name": "DEFAULT", "policy-forwarding": {
      "policies": {"policy": [{"policy-id": "P", "config": {"type": "VRF_SELECTION_POLICY"},
        "rules": {"rule": [{"sequence-id": 1, "action": {"config": {"discard": true}}}]}}]},
      "interfaces": {"interface": [{"interface-id": "Ethernet8", "config":
        {"enabled": false, "apply-vrf-selection-policy": "P"}}]}}}]}})";

TEST(CommandsOnUnusedInterfaces, ExplainAPacketByTheDefaultVrf) {
  ServedAgent served(writeFile("unused.json", unusedInterfaces), 8);
  (void)served.start();
  for (const std::string interface : {"Ethernet7", "Ethernet8"}) {
    EXPECT_EQ(runCommand(served, "explain " + interface + " ipv4 10.0.0.1 to 10.0.0.2", false),
              "packet ipv4 10.0.0.1 to 10.0.0.2 protocol 17 ttl 64, 28 bytes\n"
              "interface VRF default: no rule matches\n"
              "look up 10.0.0.2 in VRF default (id 1): miss\n"
              "drop noRoute: no VRF that it was looked up in has a route\n");
  }
}

}  // namespace
}  // namespace ZelAgent
