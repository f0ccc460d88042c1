// The whole text and the whole JSON of each served command, with each value that it shows.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "agent/commands/served/CommandDispatch.h"
#include "agent/commands/served/CommandTable.h"
#include "agent/language/Errors.h"
#include "tests/agent/FixedClock.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

class ShownValues : public ::testing::Test {
 protected:
  ShownValues() { served_.start(); }

  std::string shown(const std::string& command) {
    return runCommand(served_, command, false).get<std::string>();
  }
  std::string shownJson(const std::string& command) {
    return runCommand(served_, command, true).dump();
  }
  std::string refused(const std::string& command) {
    try {
      (void)runCommand(served_, command, false);
      return "";
    } catch (const EventError& error) {
      return error.what();
    }
  }

  // The text with the path of the file in place of $FILE.
  [[nodiscard]] std::string withFile(std::string text) const {
    const std::string word = "$FILE";
    const auto at = text.find(word);
    return at == std::string::npos ? text : text.replace(at, word.size(), file_);
  }

  std::string file_ =
      writeSmall("c.json", {{{"red", "blue"}, {"blue"}}, {"red", "green"}, {"e1", "e2"}});
  ServedAgent served_{file_, 8, Limits::clientTimeout, fixedTime};
};

TEST_F(ShownValues, AVrfHasAnIdOrNone) {
  shown("vrf red id 77");
  shown("vrf blue remove");
  shown("vrf spare add");
  EXPECT_EQ(shown("show vrfs"),
            "  VRF      ID  FALLBACK  IPV4-LENS  IPV6-LENS  CONFIGURED\n"
            "  default  1   -         -          -          yes\n"
            "  blue     -   -         -          -          yes\n"
            "  green    -   -         -          -          no\n"
            "  red      77  blue      -          -          yes\n"
            "  spare    0   -         -          -          no\n");
  const std::string noLengths = R"("exactMatchLens":null,"exactMatchLensV6":null,"configured":)";
  EXPECT_EQ(shownJson("show vrfs"),
            R"([{"vrfName":"default","vrfId":1,"fallbackVrfName":"",)" + noLengths +
                R"(true},{"vrfName":"blue","vrfId":null,"fallbackVrfName":"",)" + noLengths +
                R"(true},{"vrfName":"green","vrfId":null,"fallbackVrfName":"",)" + noLengths +
                R"(false},{"vrfName":"red","vrfId":77,"fallbackVrfName":"blue",)" + noLengths +
                R"(true},{"vrfName":"spare","vrfId":0,"fallbackVrfName":"",)" + noLengths +
                "false}]");
}

TEST_F(ShownValues, AVrfHasThePrefixLengthsOfEachFamily) {
  shown("prefix-lens ipv4 red 0 32");
  shown("prefix-lens ipv6 red 0 64 128");
  shown("prefix-lens ipv4 blue 24");
  EXPECT_EQ(shown("show vrfs"),
            "  VRF      ID  FALLBACK  IPV4-LENS  IPV6-LENS  CONFIGURED\n"
            "  default  1   -         -          -          yes\n"
            "  blue     3   -         24         -          yes\n"
            "  green    -   -         -          -          no\n"
            "  red      2   blue      0,32       0,64,128   yes\n");
  const nlohmann::json vrfs = runCommand(served_, "show vrfs", true);
  EXPECT_EQ(vrfs[3]["exactMatchLens"].dump(), "[0,32]");
  EXPECT_EQ(vrfs[3]["exactMatchLensV6"].dump(), "[0,64,128]");
  EXPECT_EQ(vrfs[1]["exactMatchLens"].dump(), "[24]");
  EXPECT_EQ(vrfs[1]["exactMatchLensV6"].dump(), "null");
}

TEST_F(ShownValues, TheConfigurationInForceHasItsSource) {
  const std::string file = R"({"file":")" + file_ + R"(","inForce":{"file":")";
  const std::string applied = "file         " + file_ + "\nin force     ";
  EXPECT_EQ(
      shown("show config"),
      applied + file_ +
          ", applied at start, 2027-01-15T08:00:00.000007Z\nreloads      0 applied, 0 refused\n");
  EXPECT_EQ(
      shownJson("show config"),
      file + file_ +
          R"(","by":"start","at":"2027-01-15T08:00:00.000007Z"},"reloads":{"applied":0,"refused":0,"lastRefusal":null,"lastRefusalAt":null}})");
  shown("reload");
  shown("reload");
  EXPECT_EQ(
      shown("show config"),
      applied + file_ +
          ", applied by reload, 2027-01-15T08:00:00.000007Z\nreloads      2 applied, 0 refused\n");
  EXPECT_EQ(
      shownJson("show config"),
      file + file_ +
          R"(","by":"reload","at":"2027-01-15T08:00:00.000007Z"},"reloads":{"applied":2,"refused":0,"lastRefusal":null,"lastRefusalAt":null}})");
  const std::string other = writeSmall("other.json", {{{"red"}}, {"red"}, {"e1"}});
  shown("config " + other);
  EXPECT_EQ(
      shown("show config"),
      applied + other +
          ", applied by config, 2027-01-15T08:00:00.000007Z\nreloads      2 applied, 0 refused\n");
  EXPECT_EQ(
      shownJson("show config"),
      file + other +
          R"(","by":"config","at":"2027-01-15T08:00:00.000007Z"},"reloads":{"applied":2,"refused":0,"lastRefusal":null,"lastRefusalAt":null}})");
}

TEST_F(ShownValues, ARefusedReloadHasItsReason) {
  writeFile("c.json", "7");
  EXPECT_THROW(shown("reload"), ConfigError);
  const std::string why = file_ + ": /: must be an object, not 7";
  EXPECT_EQ(
      shown("show config"),
      "file         " + file_ + "\nin force     " + file_ +
          ", applied at start, 2027-01-15T08:00:00.000007Z\nreloads      0 applied, 1 refused\n"
          "last reload  refused, 2027-01-15T08:00:00.000007Z: " +
          why + '\n');
  EXPECT_EQ(
      shownJson("show config"),
      R"({"file":")" + file_ + R"(","inForce":{"file":")" + file_ +
          R"(","by":"start","at":"2027-01-15T08:00:00.000007Z"},"reloads":{"applied":0,"refused":1,"lastRefusal":")" +
          why + "\",\"lastRefusalAt\":\"2027-01-15T08:00:00.000007Z\"}}");
}

TEST_F(ShownValues, WarningsStandInFrontOfTheOutput) {
  const std::string two = writeSmall("two.json", {{}, {"x", "y"}, {"e1"}});
  const std::string path = two +
                           ": /network-instances/network-instance[name=DEFAULT]/"
                           "policy-forwarding/policies/policy[policy-id=P]/rules/"
                           "rule[sequence-id=";
  const std::string member = "]/action/config/network-instance: names network instance ";
  const std::string text = shown("config " + two);
  EXPECT_EQ(text.substr(0, text.find("config " + two + '\n')),
            "warning: " + path + "1" + member + "\"x\", which is not configured\nwarning: " + path +
                "2" + member + "\"y\", which is not configured\n");
  const nlohmann::json json = runCommand(served_, "config " + two, true);
  EXPECT_EQ(json["warnings"],
            nlohmann::json({path + "1" + member + "\"x\", which is not configured",
                            path + "2" + member + "\"y\", which is not configured"}));
}

TEST_F(ShownValues, WithoutWarningsThereAreNone) {
  EXPECT_EQ(shown("decap-nh on"),
            "decap-nh on\n  updateVrf actionVrf red\n  updateVrf actionVrf green failed\n");
  const nlohmann::json json = runCommand(served_, "decap-nh off", true);
  EXPECT_EQ(json["warnings"].dump(), "[]");
  EXPECT_EQ(json["event"].dump(), R"({"text":"decap-nh off"})");
}

TEST_F(ShownValues, ActionsHaveTheFileInForce) {
  EXPECT_EQ(shown("show actions").substr(0, file_.size() + 9), file_ + " applied\n");
  const nlohmann::json json = runCommand(served_, "show actions", true);
  EXPECT_EQ(json["configuration"], file_);
  EXPECT_EQ(json["chip"].dump(),
            R"({"capacity":8,"creates":2,"deletes":0,"failures":1,"updates":0,"used":1})");
}

TEST_F(ShownValues, AnAttributeHasItsObjectAsLabel) {
  EXPECT_EQ(shown("get VrfInstanceSm vrfName blue"), "'blue': 'blue'\n");
  EXPECT_EQ(shownJson("get VrfInstanceSm vrfName red"), R"([{"object":"'red'","value":"'red'"}])");
  EXPECT_EQ(shownJson("get VrfSm fallbackVrfInfo red"), R"([{"object":"","value":"'blue'"}])");
}

TEST_F(ShownValues, ExplainNeedsAnInterfaceAndOnePacket) {
  EXPECT_EQ(
      refused("explain"),
      "explain INTERFACE PACKET: INTERFACE must be an interface name of 1 to 100 bytes, found "
      "the end of the line");
  EXPECT_EQ(
      refused("explain '' ipv4 192.0.2.1 to 192.0.2.2"),
      "explain INTERFACE PACKET: INTERFACE must be an interface name of 1 to 100 bytes, found "
      "''");
  EXPECT_EQ(
      refused("explain " + std::string(101, 'e') + " ipv4 192.0.2.1 to 192.0.2.2"),
      "explain INTERFACE PACKET: INTERFACE must be an interface name of 1 to 100 bytes, found "
      "'" +
          std::string(100, 'e') + "'...");
  EXPECT_EQ(
      shownJson("explain e1 hex 00"),
      R"([{"step":"drop","reason":"malformed","detail":"the IP version is neither 4 nor 6"}])");
}

// An attribute for each operation, with all operations that it has.
TEST_F(ShownValues, EachOperationOfAnAttributeHasItsName) {
  std::set<std::string> operations;
  std::map<std::string, std::string> byAttribute;
  const nlohmann::json modules = runCommand(served_, "show types", true);
  for (const auto& module : modules) {
    for (const auto& type : module["types"]) {
      for (const auto& attribute : type["attributes"]) {
        for (const auto& operation : attribute["operations"])
          operations.insert(operation.get<std::string>());
        byAttribute[type["type"].get<std::string>() + ' ' + attribute["name"].get<std::string>()] =
            attribute["operations"].dump();
      }
    }
  }
  EXPECT_EQ(operations, (std::set<std::string>{"call", "capacity", "delete", "iterate",
                                               "membership", "read", "size", "write"}));
  EXPECT_EQ(byAttribute["ZelVrfSelectionPolicy::VrfHelper createVrf"], R"(["call"])");
  EXPECT_EQ(byAttribute["ZelVrfSelectionPolicy::VrfHwConfig vrfRefCount"],
            R"(["read","write","delete","size","capacity","membership","iterate"])");
}

struct FormExample {
  const char* form;
  const char* command;
  const char* firstLine;
  const char* jsonBegin;
};

// Written so that each can be run on the fixture.
constexpr FormExample formExamples[] = {
    {"show actions [vrf VRF] [failed]", "show actions vrf red", "$FILE applied\n",
     R"({"configuration":"$FILE",)"},
    {"show users [interface INTERFACE] [policy POLICY] [vrf VRF] [failed]", "show users",
     "  ACTION           INTERFACE  POLICY  RULE", R"([{"vrfName":"green","fallbackVrfName":"",)"},
    {"show rules [interface INTERFACE] [policy POLICY] [vrf VRF] [failed]", "show rules",
     "  INTERFACE  POLICY  RULE  MATCH  ACTION           STATE", R"([{"interface":"e1",)"},
    {"show counters [interface INTERFACE] [policy POLICY] [vrf VRF] [failed]", "show counters",
     "  INTERFACE  POLICY  RULE  MATCH  ACTION           PACKETS  BYTES", R"({"rules":[{)"},
    {"show interfaces", "show interfaces",
     "  INTERFACE  VRF      POLICIES-OF  VRF-SELECTION  FORWARDING  PROGRAMMED  REFUSED  CLOSED\n",
     R"([{"interface":"e1","vrfName":"default","networkInstance":"default",)"},
    {"show policies", "show policies",
     "  NETWORK-INSTANCE  POLICY  TYPE           RULES  INTERFACES\n",
     R"([{"networkInstance":"default","policy":"P","type":"vrf-selection","rules":2,)"},
    {"show routes [VRF] [PREFIX]", "show routes red 10.0.0.0/8",
     "  VRF  PREFIX      ORIGIN  NEXT-HOPS  RESOLVED  STATE\n",
     R"([{"vrfName":"red","prefix":"10.0.0.0/8","origin":"event",)"},
    {"show vrfs", "show vrfs", "  VRF      ID  FALLBACK  IPV4-LENS  IPV6-LENS  CONFIGURED",
     R"([{"vrfName":"default",)"},
    {"show fallback", "show fallback", "VRF default", R"({"vrfs":[{)"},
    {"show limits", "show limits",
     "  LIMIT               VALUE       UNIT       OPTION                  MEANING",
     R"([{"name":"name",)"},
    {"show trace [N]", "show trace 0", "", "[]"},
    {"show types", "show types", "module ", R"([{"module":)"},
    {"get TYPE ATTRIBUTE [KEY...]", "get VrfSm fallbackVrfInfo", "'red': 'blue'",
     R"([{"object":"",)"},
    {"show config", "show config", "file         $FILE\n", R"({"file":"$FILE",)"},
    {"show version", "show version", "zel-agent ", R"({"version":")"},
    {"clear counters", "clear counters", "all counters are 0\n", R"({"cleared":"counters"})"},
    {"reload", "reload", "warning: $FILE: ", R"({"configuration":"$FILE",)"},
    {"diff", "diff", "warning: $FILE: ", R"({"equal":true,)"},
    {"config FILE", "config $FILE", "warning: $FILE: ", R"({"event":{"text":"config $FILE"})"},
    {"vrf NAME id N", "vrf red id 9", "vrf red id 9", R"({"event":{"text":"vrf red id 9"})"},
    {"vrf NAME add [id N]", "vrf red add id 9", "vrf red add id 9",
     R"({"event":{"text":"vrf red add id 9"})"},
    {"vrf NAME remove", "vrf red remove", "vrf red remove",
     R"({"event":{"text":"vrf red remove"})"},
    {"fallback NAME to NAME", "fallback red to green", "fallback red to green",
     R"({"event":{"text":"fallback red to green"})"},
    {"fallback NAME remove", "fallback red remove", "fallback red remove",
     R"({"event":{"text":"fallback red remove"})"},
    {"decap-nh on|off", "decap-nh off", "decap-nh off", R"({"event":{"text":"decap-nh off"})"},
    {"decap-nh-fallback on|off", "decap-nh-fallback on", "decap-nh-fallback on",
     R"({"event":{"text":"decap-nh-fallback on"})"},
    {"prefix-lens ipv4|ipv6 NAME LENGTH...", "prefix-lens ipv6 red 128", "prefix-lens ipv6 red 128",
     R"({"event":{"text":"prefix-lens ipv6 red 128"})"},
    {"prefix-lens ipv4|ipv6 NAME remove", "prefix-lens ipv4 red remove",
     "prefix-lens ipv4 red remove", R"({"event":{"text":"prefix-lens ipv4 red remove"})"},
    {"chip capacity N", "chip capacity 3", "chip capacity 3",
     R"({"event":{"text":"chip capacity 3"})"},
    {"chip rules N", "chip rules 9", "chip rules 9", R"({"event":{"text":"chip rules 9"})"},
    {"retry", "retry", "retry", R"({"event":{"text":"retry"})"},
    {"chip fail VRF|any COUNT", "chip fail any 2", "chip fail any 2",
     R"({"event":{"text":"chip fail any 2"})"},
    {"route VRF PREFIX decap", "route red 10.0.0.0/8 decap", "route red 10.0.0.0/8 decap",
     R"({"event":{"text":"route red 10.0.0.0/8 decap"})"},
    {"route VRF PREFIX via INTERFACE", "route red 10.0.0.0/8 via e1", "route red 10.0.0.0/8 via e1",
     R"({"event":{"text":"route red 10.0.0.0/8 via e1"})"},
    {"route VRF PREFIX remove", "route red 10.0.0.0/8 remove", "route red 10.0.0.0/8 remove",
     R"({"event":{"text":"route red 10.0.0.0/8 remove"})"},
    {"explain INTERFACE PACKET...", "explain e1 ipv4 192.0.2.1 to 192.0.2.2",
     "packet ipv4 192.0.2.1 to 192.0.2.2 protocol 17 ttl 64, 28 bytes", R"([{"step":"packet",)"},
    {"show", "show", "show", R"({"event":{"text":"show"})"},
    {"help [WORD...]", "help help",
     "help [WORD...]  The commands, or those that begin with the "
     "words",
     R"([{"form":"help [WORD...]","help":"The commands, or those that begin with the words"}])"},
    {"complete LINE", "complete 'relo'", "reload", R"(["reload"])"},
    {"choices LINE", "choices 'retr'", "retry  Ask the chip again for all that it has refused",
     R"([{"choice":"retry","help":"Ask the chip again for all that it has refused"}])"},
};

TEST_F(ShownValues, EachFormHasAnExampleWhoseOutputBeginsAsHere) {
  std::set<std::string> withExample;
  for (const FormExample& example : formExamples) {
    SCOPED_TRACE(example.command);
    withExample.insert(example.form);
    const std::string command = withFile(example.command);
    for (const bool asJson : {false, true}) {
      ServedAgent served(file_, 8);
      served.start();
      // What examples remove.
      (void)runCommand(served, "route red 10.0.0.0/8 decap", asJson);
      (void)runCommand(served, "prefix-lens ipv4 red 24", asJson);
      const CommandOutput output = runCommand(served, command, asJson);
      const std::string text = asJson ? output.dump() : output.get<std::string>();
      EXPECT_TRUE(text.starts_with(withFile(asJson ? example.jsonBegin : example.firstLine)))
          << text;
    }
  }
  std::set<std::string> inTable;
  for (const CommandRow& row : commandTable())
    inTable.insert(row.form);
  EXPECT_EQ(withExample, inTable);
}

TEST_F(ShownValues, EachCommandWithoutArgumentsRefusesAny) {
  for (const CommandForm& form : commandForms()) {
    if (form.hasArguments()) continue;
    std::string name;
    for (const std::string& word : form.name())
      name += (name.empty() ? "" : " ") + word;
    if (name == "show") continue;  // Other commands begin with it.
    EXPECT_EQ(refused(name + " 'x'"), name + ": the line must end here, found 'x'");
  }
}

TEST_F(ShownValues, TheHelpOfEachFormIsItsLine) {
  const std::string all = shown("help");
  const nlohmann::json json = runCommand(served_, "help", true);
  ASSERT_EQ(json.size(), commandTable().size());
  std::size_t row = 0;
  std::istringstream lines(all);
  for (std::string line; std::getline(lines, line); ++row) {
    const CommandRow& expected = commandTable()[row];
    EXPECT_TRUE(line.starts_with(std::string(expected.form) + "  ")) << line;
    EXPECT_TRUE(line.ends_with(std::string("  ") + expected.help)) << line;
    EXPECT_EQ(json[row], (nlohmann::json{{"form", expected.form}, {"help", expected.help}}));
  }
  EXPECT_EQ(row, commandTable().size());
}

}  // namespace
}  // namespace ZelAgent
