// `zel-agent ctl` from end to end, other than at a terminal.
#include <gmock/gmock.h>

#include <csignal>
#include <map>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"

namespace ZelAgent {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class Ctl : public ::testing::Test {
 protected:
  AgentOutcome ctl(std::vector<std::string> words) const {
    words.insert(words.begin(), {"ctl", "--socket", path_});
    return runAgent(std::move(words));
  }

  AgentOutcome ctlReading(const std::string& input, std::vector<std::string> words = {}) const {
    words.insert(words.begin(), {"ctl", "--socket", path_});
    return runAgentReading(writeFile("input", input), std::move(words));
  }

  SocketFolder folder_;
  std::string path_ = folder_.path("s");
  std::string config_ = writeFile("red.json", toJson({{{"red"}}, {"red"}, {"e1"}}).dump());
};

TEST_F(Ctl, PrintsTheOutputOfOneCommand) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome = ctl({"vrf", "red", "id", "2"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "vrf red id 2\n  no hook call\n");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(Ctl, ExitsWithTheStatusOfTheAnswer) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome = ctl({"vrf", "nobody", "id", "2"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err,
            "error: vrf NAME id N: NAME must be a VRF of the configuration or of the hardware, "
            "found 'nobody'; a new one needs first: vrf nobody add\n");
}

TEST_F(Ctl, PrintsJsonOnOneLineOnRequest) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome = ctl({"--json", "show", "vrfs"});
  ASSERT_EQ(outcome.documents().size(), 1U);
  EXPECT_EQ(outcome.documents()[0][1]["vrfName"], "red");
}

TEST_F(Ctl, ShowsTheLimitsThatOptionsOfTheDaemonSet) {
  const DaemonProcess daemon(
      config_, path_, {"--chip-capacity", "7", "--rule-capacity", "8", "--client-timeout", "5"});
  const auto documents = ctl({"--json", "show", "limits"}).documents();
  ASSERT_EQ(documents.size(), 1U);
  std::map<std::string, int> values;
  for (const auto& limit : documents[0])
    if (limit["option"] != nullptr) values[limit["name"]] = limit["value"];
  EXPECT_EQ(
      values,
      (std::map<std::string, int>{
          {"chip resources", 7}, {"chip rules", 8}, {"client timeout", 5}, {"ctl timeout", 300}}));
}

TEST_F(Ctl, QuotesWordsWhereNecessary) {
  const DaemonProcess daemon(config_, path_);
  EXPECT_EQ(ctl({"vrf", "two words", "add"}).out, "vrf 'two words' add\n  no hook call\n");
  EXPECT_EQ(ctl({"vrf", "it's", "add"}).out, "vrf 'it\\'s' add\n  no hook call\n");
  EXPECT_EQ(ctl({"vrf", "#1", "add"}).out, "vrf '#1' add\n  no hook call\n");
  EXPECT_THAT(ctl({"vrf", "", "add"}).err, HasSubstr("must be a VRF name of 1 to 100 bytes"));
}

TEST_F(Ctl, ASingleArgumentWithBlanksIsAWholeLine) {
  const DaemonProcess daemon(config_, path_);
  EXPECT_EQ(ctl({"vrf 'two words' add"}).out, "vrf 'two words' add\n  no hook call\n");
  EXPECT_EQ(ctl({"show vrfs | include red | count"}).out, "1\n");
  EXPECT_EQ(ctl({"vrf", "|", "add"}).out, "vrf | add\n  no hook call\n");
  EXPECT_EQ(ctl({"show vrfs | include '|' | count"}).out, "1\n");
}

TEST_F(Ctl, TakesFiltersAsSeparateWords) {
  const DaemonProcess daemon(config_, path_);
  EXPECT_EQ(ctl({"show", "vrfs", "|", "count"}).out, "2\n");
  EXPECT_EQ(ctl({"show", "vrfs", "|", "include", "red", "|", "exclude", "  ", "|", "c"}).out,
            "0\n");
  EXPECT_EQ(ctl({"show", "vrfs", "|", "include", "2", "-", "|", "count"}).out, "0\n");
  EXPECT_EQ(ctl({"vrf", "|", "add"}).out, "vrf | add\n  no hook call\n");
  EXPECT_EQ(ctl({"show", "users", "vrf", "|", "|", "count"}).out, "1\n") << "a VRF and a filter";
  EXPECT_EQ(ctl({"show", "vrfs", "|", "include"}).err, "error: | include TEXT: TEXT is missing\n");
}

TEST_F(Ctl, ReportsAWrongFilterWithoutRunningTheCommand) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome =
      ctlReading("vrf blue add | grep x\nshow vrfs | include blue | count\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "0\n");
  EXPECT_THAT(outcome.err, StartsWith("error: | must be followed by include, "));
  EXPECT_EQ(ctl({"--json", "show vrfs | count"}).err,
            "error: | filters lines of text; leave out --json\n");
}

TEST_F(Ctl, ReadsCommandsLineByLineFromStandardInput) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome = ctlReading("# a remark\nchip capacity 5\nshw\n\nchip capacity 6\n");
  EXPECT_EQ(outcome.out, "chip capacity 5\n  no hook call\nchip capacity 6\n  no hook call\n");
  EXPECT_THAT(outcome.err, StartsWith("error: a command must begin with "));
  EXPECT_EQ(outcome.status, 2);
}

TEST_F(Ctl, RunsALastLineWithoutALineEnd) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome = ctlReading("chip capacity 5");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "chip capacity 5\n  no hook call\n");
}

TEST_F(Ctl, DoesNothingIfStandardInputIsEmpty) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome = ctlReading("");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out + outcome.err, "");
}

TEST_F(Ctl, ReportsInOneLineThatNoDaemonAnswers) {
  const AgentOutcome outcome = ctl({"show", "actions"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "error: " + path_ +
                             ": no daemon can be reached: No such file or directory; start one "
                             "with: zel-agent serve CONFIG --socket " +
                             path_ + "\n");
}

TEST_F(Ctl, ReportsInOneLineThatTheDaemonOfASocketWasKilled) {
  DaemonProcess daemon(config_, path_);
  daemon.signal(SIGKILL);
  EXPECT_EQ(daemon.exitStatus(), -1);
  const AgentOutcome outcome = ctl({"show", "actions"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "error: " + path_ +
                             ": no daemon can be reached: Connection refused; start one with: "
                             "zel-agent serve CONFIG --socket " +
                             path_ + "\n");
}

TEST_F(Ctl, ReportsThatStandardOutputCannotBeWritten) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome =
      runAgentInto("/dev/full", {"ctl", "--socket", path_, "show", "actions"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "error: standard output cannot be written\n");
}

TEST_F(Ctl, ReportsThatTheRequestIsTooLong) {
  const DaemonProcess daemon(config_, path_);
  const AgentOutcome outcome = ctlReading("vrf " + std::string(300000, 'x') + " add\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("a request must be a line of at most 65536 bytes"));
}

}  // namespace
}  // namespace ZelAgent
