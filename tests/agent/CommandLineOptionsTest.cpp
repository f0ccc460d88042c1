// Each option of each command with both of its values, and each exit status.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "tests/agent/AgentCall.h"
#include "tests/agent/CaptureFile.h"
#include "tests/agent/LogTimes.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

constexpr const char* unwritable = "error: standard output cannot be written\n";

class CommandLineOptions : public ::testing::Test {
 protected:
  // Two actions. The chip has no room for the second if its capacity is 1.
  const std::string two_ = writeSmall("two.json", {{{"red"}, {"blue"}}, {"blue", "red"}, {"e1"}});
  const std::string empty_ = writeSmall("empty.json", {{}, {}, {}});
  // Interfaces only.
  const std::string ports_ = writeFile(
      "ports.json",
      OpenConfigBuilder().intf("DEFAULT", "e1").intf("DEFAULT", "e2").intf("DEFAULT", "e9").text());
  const std::string wrong_ = writeFile("wrong.json", "7");
  const std::string noFile_ = pathInTestFolder("missing");
  const std::string exhausted_ =
      "the chip had no free VRF resource; the action is programmed when it gets one\n";
  const std::string wrongError_ = "error: " + wrong_ + ": /: must be an object, not 7\n";
};

std::string chipLine(const std::string& capacity) {
  return "  chip: 0 of " + capacity +
         " VRF resources in use; 0 creates, 0 updates, 0 deletes, 0 failed\n"
         "  rules: 0 of 65536 rule entries in use, at most 0; 0 refused\n";
}

void expectCall(const CallOutcome& outcome, int status, const std::string& out,
                const std::string& err) {
  EXPECT_EQ(outcome.status, status);
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, err);
}

std::string emptyRun(const std::string& file, const std::string& capacity) {
  return file + " applied\n  no VRF actions\n" + chipLine(capacity) +
         "all removed\n  no VRF actions\n" + chipLine(capacity);
}

TEST_F(CommandLineOptions, RunPrintsTextOrJson) {
  expectCall(callAgent({"run", empty_}), 0, emptyRun(empty_, "1024"), "");
  const std::string rest =
      R"("actions":[],"chip":{"capacity":1024,"used":0,"creates":0,"updates":0,"deletes":0,)"
      R"("failures":0},"ruleTable":{"capacity":65536,"used":0,"mostUsed":0,"refused":0}})"
      "\n";
  expectCall(callAgent({"run", "--json", empty_}), 0,
             R"({"configuration":")" + empty_ + "\"," + rest + R"({"configuration":null,)" + rest,
             "");
}

TEST_F(CommandLineOptions, RunTakesEachCapacityOfTheChip) {
  for (const std::string capacity : {"0", "1", "00", "4294967295"}) {
    const std::string shown = capacity == "00" ? "0" : capacity;
    expectCall(callAgent({"run", "--chip-capacity", capacity, empty_}), 0, emptyRun(empty_, shown),
               "");
    expectCall(callAgent({"run", empty_, "--chip-capacity=" + capacity}), 0,
               emptyRun(empty_, shown), "");
  }
}

TEST_F(CommandLineOptions, RunAppliesEachConfigurationInItsOrder) {
  const auto documents = callAgent({"run", "--json", two_, empty_, two_}).documents();
  ASSERT_EQ(documents.size(), 4U);
  EXPECT_EQ(documents[0]["configuration"], two_);
  EXPECT_EQ(documents[0]["chip"]["used"], 2);
  EXPECT_EQ(documents[1]["configuration"], empty_);
  EXPECT_EQ(documents[1]["chip"]["used"], 0);
  EXPECT_EQ(documents[2]["configuration"], two_);
  EXPECT_EQ(documents[3]["configuration"], nullptr);
}

TEST_F(CommandLineOptions, RunPlaysEventsAfterTheConfigurations) {
  const std::string events = writeFile("events", "decap-nh on\nchip capacity 9\n");
  const auto documents = callAgent({"run", "--json", "--events", events, two_, empty_}).documents();
  ASSERT_EQ(documents.size(), 5U);
  EXPECT_EQ(documents[1]["configuration"], empty_);
  EXPECT_EQ(documents[2]["event"]["text"], "decap-nh on");
  EXPECT_EQ(documents[3]["event"].dump(),
            R"({"file":")" + events + R"(","line":2,"text":"chip capacity 9"})");
  EXPECT_EQ(documents[4]["configuration"], nullptr);
}

struct StatusRow {
  const char* name;
  std::vector<std::string> options;
  bool canBeWritten;
  bool hasWrongFile;
  int status;
};

// The highest status that applies is returned.
TEST_F(CommandLineOptions, RunReturnsTheHighestStatus) {
  const StatusRow rows[] = {
      {"nothing failed", {}, true, false, 0},
      {"nothing failed, strict", {"--strict"}, true, false, 0},
      {"failed", {"--chip-capacity=1"}, true, false, 0},
      {"failed, strict", {"--strict", "--chip-capacity=1"}, true, false, 1},
      {"failed, strict as JSON", {"--strict", "--json", "--chip-capacity=1"}, true, false, 1},
      {"not written", {}, false, false, 1},
      {"wrong file", {}, true, true, 2},
      {"wrong file, strict", {"--strict", "--chip-capacity=1"}, true, true, 2},
      {"wrong file, not written", {}, false, true, 2},
  };
  for (const StatusRow& row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<std::string> arguments{"run", two_};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    if (row.hasWrongFile) arguments.push_back(wrong_);
    const CallOutcome outcome =
        row.canBeWritten ? callAgent(arguments) : callAgentWithoutOutput(arguments);
    EXPECT_EQ(outcome.status, row.status);
    const bool isMissing = row.options.size() > 1;
    const std::string missing = isMissing ? "not programmed: actionVrf red: " + exhausted_ : "";
    EXPECT_EQ(outcome.err, (row.hasWrongFile ? wrongError_ : "") + missing +
                               (row.canBeWritten ? "" : unwritable));
  }
}

TEST_F(CommandLineOptions, RunIsStrictAboutEventsToo) {
  const std::string events = writeFile("events", "chip fail any 1\nvrf red id 9\nvrf red id 2\n");
  EXPECT_EQ(callAgent({"run", "--events", events, two_}).status, 0);
  EXPECT_EQ(callAgent({"run", "--strict", "--events", events, two_}).status, 1);
}

TEST_F(CommandLineOptions, RunWithoutItsEventFileAppliesNothing) {
  expectCall(callAgent({"run", two_, "--events", noFile_}), 2,
             "all removed\n  no VRF actions\n" + chipLine("1024"),
             "error: " + noFile_ +
                 ": cannot be read: No such file or directory; give a readable event file\n");
}

TEST_F(CommandLineOptions, FallbackGraphPrintsTextOrADrawing) {
  expectCall(callAgent({"fallback-graph", empty_}), 0, "VRF default\n", "");
  expectCall(callAgent({"fallback-graph", empty_, "--dot"}), 0,
             "digraph fallbacks {\n  rankdir=LR;\n  vrf1 [label=\"default\"];\n}\n", "");
}

TEST_F(CommandLineOptions, FallbackGraphWarnsOfEachCycle) {
  const std::string cyclic =
      writeSmall("cyclic.json", {{{"red", "blue"}, {"blue", "red"}, {"me", "me"}}, {}, {}});
  const std::string warning =
      "warning: " + cyclic + ": fallback VRFs form a cycle; a lookup uses no VRF twice: ";
  for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--dot"}}) {
    std::vector<std::string> arguments{"fallback-graph", cyclic};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const CallOutcome outcome = callAgent(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, warning + "blue -> red -> blue\n" + warning + "me -> me\n");
  }
}

TEST_F(CommandLineOptions, FallbackGraphReturnsEachStatus) {
  expectCall(callAgentWithoutOutput({"fallback-graph", empty_}), 1, "", unwritable);
  expectCall(callAgent({"fallback-graph", wrong_}), 2, "", wrongError_);
}

// A configuration whose only rule has a match that is not supported.
std::string writeUnsupported() {
  return writeFile("unsupported.json", R"({"network-instances": {"network-instance": [
      {"name": "default", "policy-forwarding": {
        "policies": {"policy": [{"policy-id": "P", "rules": {"rule": [
          {"sequence-id": 1, "l2": {}, "action": {"config": {"network-instance": "default"}}}]}}]},
        "interfaces": {"interface": [
          {"interface-id": "e1", "config": {"apply-forwarding-policy": "P"}}]}}}]}})");
}

std::string unsupportedLine(const std::string& file) {
  return file +
         ": /network-instances/network-instance[name=default]/policy-forwarding/policies/"
         "policy[policy-id=P]/rules/rule[sequence-id=1]/l2: is not supported; supported here: "
         "action, config, ipv4, ipv6, sequence-id or transport";
}

TEST_F(CommandLineOptions, CheckPrintsAllErrorsAndWarningsOfEachFile) {
  const std::string file = writeFile("many.json", R"({"network-instances": {"network-instance": [
      {"name": "default", "mtu": 5, "config": {"enabled": 1}}, {"name": "red"}]}})");
  const std::string list = file + ": /network-instances/network-instance";
  expectCall(callAgent({"check", empty_, file, empty_}), 2,
             empty_ + ": right\n" + empty_ + ": right\n",
             "warning: " + list + "[name=default]/mtu: unknown member, ignored\nerror: " + list +
                 "[name=default]/config/enabled: must be true or false, not 1\nerror: " + list +
                 "[name=red]/config: lacks its member \"type\"\n");
  expectCall(callAgent({"check", empty_}), 0, empty_ + ": right\n", "");
  expectCall(callAgentWithoutOutput({"check", empty_}), 1, "", unwritable);
}

TEST_F(CommandLineOptions, EachCommandLeavesOutRulesThatAreNotSupportedIfItIsLenient) {
  const std::string file = writeUnsupported();
  const std::string events = writeFile("events", "config " + file + "\n");
  const std::vector<std::string> packet{"--in", "e1", "--packet", "ipv4 192.0.2.1 to 192.0.2.2"};
  std::vector<std::vector<std::string>> commands{
      {"run", file},
      {"check", file},
      {"fallback-graph", file},
      {"run", empty_, "--events", events},
      {"explain", file},
      {"explain", empty_, "--events", events},
      {"forward", file, "--in", "e1=" + noFile_, "--out", "out"},
  };
  for (auto& command : commands) {
    if (command[0] == "explain") command.insert(command.end(), packet.begin(), packet.end());
    const CallOutcome strict = callAgent(command);
    EXPECT_THAT(strict.err, ::testing::HasSubstr(unsupportedLine(file) + '\n')) << command[0];
    EXPECT_EQ(strict.status, 2);
    command.emplace_back("--lenient");
    const CallOutcome lenient = callAgent(command);
    EXPECT_THAT(lenient.err, ::testing::HasSubstr("warning: " + unsupportedLine(file) +
                                                  "; the rule is left out\n"))
        << command[0];
    EXPECT_EQ(lenient.status, command[0] == "forward" ? 2 : 0);
  }
}

std::vector<std::string> explainOf(const std::string& file,
                                   const std::vector<std::string>& options) {
  std::vector<std::string> arguments{"explain", file,       "--in",
                                     "e1",      "--packet", "ipv4 192.0.2.1 to 192.0.2.2"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

TEST_F(CommandLineOptions, ExplainPrintsTextOrJson) {
  expectCall(callAgent(explainOf(ports_, {})), 0,
             "packet ipv4 192.0.2.1 to 192.0.2.2 protocol 17 ttl 64, 28 bytes\n"
             "interface VRF default: no rule matches\n"
             "look up 192.0.2.2 in VRF default (id 1): miss\n"
             "drop noRoute: no VRF that it was looked up in has a route\n",
             "");
  expectCall(
      callAgent(explainOf(ports_, {"--json"})), 0,
      R"([{"step":"packet","packet":{"family":"ipv4","source":"192.0.2.1",)"
      R"("destination":"192.0.2.2","protocol":17,"dscp":0,"ecn":0,"ttl":64,"bytes":28,"sourcePort":0,"destinationPort":0}},)"
      R"({"step":"interfaceVrf","vrfName":"default","because":"no rule matches"},)"
      R"({"step":"lookUp","vrfName":"default","vrfId":1,"destination":"192.0.2.2",)"
      R"("prefix":null,"route":null,"exactMatch":false},)"
      R"({"step":"drop","reason":"noRoute",)"
      R"("detail":"no VRF that it was looked up in has a route"}])"
      "\n",
      "");
}

TEST_F(CommandLineOptions, ExplainPlaysEventsFirst) {
  const std::string events = writeFile("events", "route default 0.0.0.0/0 via e9\n");
  const CallOutcome outcome = callAgent(explainOf(ports_, {"--events", events}));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.out.ends_with(
      "\nforward via e9: ipv4 192.0.2.1 to 192.0.2.2 protocol 17 ttl 63, 28 bytes\n"))
      << outcome.out;
}

TEST_F(CommandLineOptions, ExplainReturnsEachStatus) {
  expectCall(callAgentWithoutOutput(explainOf(ports_, {})), 1, "", unwritable);
  expectCall(callAgentWithoutOutput(explainOf(ports_, {"--json"})), 1, "", unwritable);
  expectCall(callAgent(explainOf(wrong_, {})), 2, "", wrongError_);
  const std::string events = writeFile("events", "\nwalk\n");
  const CallOutcome outcome = callAgent(explainOf(ports_, {"--events", events}));
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(outcome.err.starts_with("error: " + events + ":2: ")) << outcome.err;
  const CallOutcome noPacket =
      callAgent({"explain", ports_, "--in", "e1", "--packet", "ipv4 192.0.2.1 to 192.0.2.2 x"});
  EXPECT_EQ(noPacket.status, 2);
  EXPECT_TRUE(noPacket.err.starts_with("error: --packet: ")) << noPacket.err;
}

class ForwardOptionsTest : public CommandLineOptions {
 protected:
  ForwardOptionsTest() {
    writeCapture(capture_, CaptureLink::ethernet,
                 {{inEthernet(ipv4Packet({"192.0.2.1", "192.0.2.2"}))}, {PacketBytes(60)}});
  }
  std::vector<std::string> forward(const std::string& file,
                                   const std::vector<std::string>& options) const {
    std::vector<std::string> arguments{"forward", file, "--in", "e1=" + capture_, "--out", out_};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
  }

  const std::string capture_ = pathInTestFolder("in.pcap");
  const std::filesystem::path out_ = emptyFolder("out");
};

TEST_F(ForwardOptionsTest, ForwardPrintsTextOrJson) {
  expectCall(callAgent(forward(ports_, {})), 0,
             "  DROPPED  PACKETS  BYTES\n  noRoute  1        30\n  frames without IP: 1\n", "");
  expectCall(callAgent(forward(ports_, {"--json"})), 0,
             R"({"rules":[],"vrfs":[],"drops":[{"reason":"noRoute","packets":1,"bytes":30}],)"
             R"("notIp":1})"
             "\n",
             "");
  EXPECT_EQ(namesIn(out_), std::vector<std::string>{});
}

TEST_F(ForwardOptionsTest, ForwardPlaysEventsFirst) {
  const std::string events = writeFile("events", "route default 0.0.0.0/0 via e9\n");
  expectCall(callAgent(forward(ports_, {"--events", events})), 0,
             "  VRF      PACKETS  BYTES\n  default  1        30\n  frames without IP: 1\n", "");
  EXPECT_EQ(namesIn(out_), std::vector<std::string>{"e9.pcap"});
}

TEST_F(ForwardOptionsTest, ForwardTakesSeveralCaptures) {
  expectCall(callAgent(forward(ports_, {"--in", "e2=" + capture_})), 0,
             "  DROPPED  PACKETS  BYTES\n  noRoute  2        60\n  frames without IP: 2\n", "");
}

TEST_F(ForwardOptionsTest, ForwardReturnsEachStatus) {
  expectCall(callAgentWithoutOutput(forward(ports_, {})), 1, "", unwritable);
  expectCall(callAgentWithoutOutput(forward(ports_, {"--json"})), 1, "", unwritable);
  expectCall(callAgent(forward(wrong_, {})), 2, "", wrongError_);
  expectCall(callAgent(forward(ports_, {"--events", noFile_})), 2, "",
             "error: " + noFile_ +
                 ": cannot be read: No such file or directory; give a readable event file\n");
  for (const char* const in : {"e1", "=f", ""}) {
    expectCall(callAgent(forward(ports_, {"--in", in})), 2, "",
               std::string("error: --in must be INTERFACE=FILE, not \"") + in + "\"\n");
  }
}

TEST_F(CommandLineOptions, ServeReturnsTwoForAWrongConfiguration) {
  const std::string socket = pathInTestFolder("s");
  CallOutcome outcome = callAgent({"serve", wrong_, "--socket", socket});
  outcome.err = withoutTimes(outcome.err);
  expectCall(outcome, 2, "", wrongError_);
  EXPECT_FALSE(std::filesystem::exists(socket));
}

TEST_F(CommandLineOptions, CtlReturnsOneIfNoDaemonAnswers) {
  const std::string socket = pathInTestFolder("s");
  for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--json"}}) {
    std::vector<std::string> arguments{"ctl", "--socket", socket, "show", "actions"};
    arguments.insert(arguments.begin() + 1, options.begin(), options.end());
    const CallOutcome outcome = callAgent(arguments);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("error: " + socket + ": ")) << outcome.err;
  }
}

TEST_F(CommandLineOptions, TraceReturnsTwoForWhatIsNoTrace) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--json"}}) {
    for (const std::string& file : {wrong_, noFile_}) {
      std::vector<std::string> arguments{"trace", file};
      arguments.insert(arguments.end(), options.begin(), options.end());
      const CallOutcome outcome = callAgent(arguments);
      EXPECT_EQ(outcome.status, 2);
      EXPECT_EQ(outcome.out, "");
      EXPECT_TRUE(outcome.err.starts_with("error: " + file + ": ")) << outcome.err;
    }
  }
}

TEST_F(CommandLineOptions, ShowPrintsTheLimitsAsTextOrJson) {
  const CallOutcome text = callAgent({"show", "limits"});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.err, "");
  EXPECT_TRUE(text.out.starts_with(
      "  LIMIT               VALUE       UNIT       OPTION                  MEANING\n"
      "  name                100         bytes      -                       name of a VRF"))
      << text.out;
  const CallOutcome json = callAgent({"show", "limits", "--json"});
  EXPECT_EQ(json.status, 0);
  const nlohmann::json rows = json.documents().at(0);
  EXPECT_EQ(static_cast<std::size_t>(std::count(text.out.begin(), text.out.end(), '\n')),
            rows.size() + 1);
  EXPECT_EQ(rows.at(0)["value"], 100);
  EXPECT_EQ(rows.at(0)["option"], nullptr);
  EXPECT_EQ(rows.at(6), nlohmann::json({{"name", "number"},
                                        {"value", 4294967295U},
                                        {"unit", nullptr},
                                        {"option", nullptr},
                                        {"meaning",
                                         "a number of an event, a command or an option; a larger "
                                         "one is an error"}}));
  EXPECT_EQ(rows.at(10)["option"], "--chip-capacity");
}

TEST_F(CommandLineOptions, ShowThatCannotBeWrittenIsAnError) {
  expectCall(callAgentWithoutOutput({"show", "limits"}), 1, "", unwritable);
}

TEST_F(CommandLineOptions, ATraceRingThatCannotBeMadeEndsEachCommandThatHasTheOption) {
  const std::string ring = pathInTestFolder("no-folder") + "/ring";
  const std::vector<std::vector<std::string>> commands = {
      {"run", empty_},
      explainOf(empty_, {}),
      {"forward", empty_, "--in", "e1=" + noFile_, "--out", noFile_},
      {"serve", empty_, "--socket", noFile_}};
  for (std::vector<std::string> arguments : commands) {
    arguments.insert(arguments.end(), {"--trace-ring", ring});
    const CallOutcome outcome = callAgent(arguments);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "error: " + ring +
                               ".new: cannot be made: No such file or directory; give another "
                               "file\n");
  }
}

struct HelpRow {
  const char* command;  // empty for none
  std::vector<std::string> options;
  std::vector<std::string> positionals;
};

const HelpRow helpRows[] = {
    {"", {"-h,--help", "--version"}, {}},
    {"run",
     {"-h,--help", "--events FILE", "--dry-run", "--json", "--strict", "--lenient", "--trace",
      "--chip-capacity UINT:N=1024", "--rule-capacity UINT:N=65536",
      "--when-full closed|open=closed", "--trace-ring FILE"},
     {"CONFIG"}},
    {"check", {"-h,--help", "--lenient", "--yang DIR"}, {"CONFIG"}},
    {"diff", {"-h,--help", "--json", "--lenient"}, {"BEFORE", "AFTER"}},
    {"fallback-graph", {"-h,--help", "--dot", "--lenient"}, {"CONFIG"}},
    {"forward",
     {"-h,--help", "--events FILE", "--in INTERFACE=FILE", "--out DIR", "--json", "--lenient",
      "--trace-ring FILE"},
     {"CONFIG"}},
    {"explain",
     {"-h,--help", "--events FILE", "--in INTERFACE", "--packet TEXT", "--json", "--lenient",
      "--trace-ring FILE"},
     {"CONFIG"}},
    {"serve",
     {"-h,--help", "--socket PATH", "--lenient", "--chip-capacity UINT:N=1024",
      "--rule-capacity UINT:N=65536", "--when-full closed|open=closed",
      "--client-timeout UINT:N=30", "--trace-ring FILE"},
     {"CONFIG"}},
    {"ctl",
     {"-h,--help", "--socket PATH", "--json", "--no-pager", "--timeout UINT:N=300"},
     {"COMMAND"}},
    {"trace", {"-h,--help", "--json"}, {"FILE"}},
    {"show", {"-h,--help", "--json"}, {"WHAT"}},
};

// The lines of the help below the title, up to a blank line, without their indentation.
std::vector<std::string> helpLines(const std::string& help, const std::string& title) {
  std::vector<std::string> found;
  std::istringstream lines(help);
  bool isBelow = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty()) isBelow = false;
    const auto begin = line.find_first_not_of(' ');
    if (isBelow && begin == 2) found.push_back(line.substr(begin));
    if (line == title) isBelow = true;
  }
  return found;
}

void expectBeginnings(const std::vector<std::string>& lines,
                      const std::vector<std::string>& beginnings) {
  ASSERT_EQ(lines.size(), beginnings.size());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_TRUE(lines[i] == beginnings[i] || lines[i].starts_with(beginnings[i] + ' ')) << lines[i];
  }
}

TEST(CommandLineHelp, ListsEachOptionAndItsUsualValue) {
  for (const HelpRow& row : helpRows) {
    SCOPED_TRACE(row.command);
    std::vector<std::string> arguments{"--help"};
    if (*row.command != '\0') arguments.insert(arguments.begin(), row.command);
    const CallOutcome outcome = callAgent(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    expectBeginnings(helpLines(outcome.out, "Options:"), row.options);
    expectBeginnings(helpLines(outcome.out, "Positionals:"), row.positionals);
  }
}

TEST(CommandLineHelp, ListsEachCommand) {
  std::vector<std::string> commands;
  for (const HelpRow& row : helpRows)
    if (*row.command != '\0') commands.emplace_back(row.command);
  expectBeginnings(helpLines(callAgent({"--help"}).out, "Subcommands:"), commands);
}

TEST(CommandLineHelp, ThatCannotBeWrittenIsAnError) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--help"}, {"--version"}, {"run", "--help"}, {"ctl", "--help"}}) {
    expectCall(callAgentWithoutOutput(arguments), 1, "", unwritable);
  }
}

}  // namespace
}  // namespace ZelAgent
