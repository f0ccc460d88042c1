// The trace in the file of a process that has ended.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Blinklog/Ring.h"
#include "agent/commands/offline/OfflineCommands.h"
#include "agent/reports/TraceReport.h"
#include "tests/agent/AgentProcess.h"
#include "tests/agent/LogTimes.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"
#include "tests/agent/serve/daemon/SocketClient.h"
#include "tests/vrf/FrameFixture.h"

namespace ZelAgent {
namespace {

using nlohmann::json;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::KilledBySignal;
using ::testing::StartsWith;

constexpr const char* allOfIt = "show trace 1000000";

// The messages alone, as `zel-agent trace` shows them.
std::string messagesIn(const std::string& file) {
  const AgentOutcome outcome = runAgent({"trace", file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, StartsWith("process "));
  return outcome.out.substr(outcome.out.find('\n') + 1);
}

std::string refusal(const std::vector<std::string>& arguments, int status) {
  const AgentOutcome outcome = runAgent(arguments);
  EXPECT_EQ(outcome.status, status);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, StartsWith("error: "));
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  return outcome.err;
}

std::string newPath(const std::string& name) {
  const std::string path = pathInTestFolder(name);
  for (const char* const suffix : {"", ".new", ".previous"})
    std::filesystem::remove_all(path + suffix);
  return path;
}

class TraceOfADaemon : public ::testing::Test {
 protected:
  SocketFolder folder_;
  std::string socket_ = folder_.path("s");
  std::string file_ = newPath("ring");
  std::string config_ = writeFile("red.json", toJson({{{"red"}}, {"red"}, {"e1"}}).dump());
};

TEST_F(TraceOfADaemon, IsWhatTheDaemonPrintsItself) {
  const DaemonProcess daemon(config_, socket_, {"--trace-ring", file_});
  SocketClient client(socket_);
  EXPECT_EQ(messagesIn(file_), client.text(allOfIt));
  const json told = runAgent({"trace", "--json", file_}).documents().at(0);
  EXPECT_EQ(told["messages"], client.output(allOfIt));
  EXPECT_GT(told["process"], 1);
  EXPECT_THAT(told["madeAt"].get<std::string>(),
              ::testing::ContainsRegex("^20..-..-..T..:..:..Z$"));
}

TEST_F(TraceOfADaemon, IsCompleteAfterAKill) {
  std::string told;
  {
    DaemonProcess daemon(config_, socket_, {"--trace-ring", file_});
    SocketClient client(socket_);
    for (const char* const event : {"vrf red id 5", "decap-nh on", "vrf red id 7"})
      client.text(event);
    told = client.text(allOfIt);
    daemon.signal(SIGKILL);
    EXPECT_EQ(daemon.exitStatus(), -1);
  }
  EXPECT_THAT(told, EndsWith("Updating VRF HW instance for: red\n"));
  EXPECT_EQ(messagesIn(file_), told);
}

TEST_F(TraceOfADaemon, IsKeptAsPreviousAtTheNextStart) {
  std::string told;
  {
    DaemonProcess daemon(config_, socket_, {"--trace-ring", file_});
    SocketClient(socket_).text("vrf red id 5");
    told = SocketClient(socket_).text(allOfIt);
    daemon.signal(SIGKILL);
    EXPECT_EQ(daemon.exitStatus(), -1);
  }
  DaemonProcess again(config_, socket_, {"--trace-ring", file_});
  EXPECT_EQ(messagesIn(file_ + ".previous"), told);
  EXPECT_EQ(messagesIn(file_), SocketClient(socket_).text(allOfIt));
  EXPECT_EQ(again.end(), 0);
}

TEST_F(TraceOfADaemon, HasTheMessagesUpToItsEnd) {
  DaemonProcess daemon(config_, socket_, {"--trace-ring", file_});
  EXPECT_EQ(daemon.end(), 0);
  EXPECT_THAT(messagesIn(file_), HasSubstr("Deleting VRF Hw resource. VRF:red"));
}

TEST_F(TraceOfADaemon, IsNotReplacedByAnotherProcess) {
  const DaemonProcess daemon(config_, socket_, {"--trace-ring", file_});
  EXPECT_EQ(refusal({"run", config_, "--trace-ring", file_}, 1),
            "error: " + file_ +
                ": another process writes its trace there; end it, or give another file\n");
  EXPECT_EQ(messagesIn(file_), SocketClient(socket_).text(allOfIt));
}

TEST_F(TraceOfADaemon, ContinuesInMemoryWhenItsFileIsTruncated) {
  DaemonProcess daemon(config_, socket_, {"--trace-ring", file_});
  SocketClient client(socket_);
  std::filesystem::resize_file(file_, 0);
  EXPECT_EQ(client.text(allOfIt), "");
  client.text("vrf red id 5");
  EXPECT_THAT(client.text(allOfIt), EndsWith("Updating VRF HW instance for: red\n"));
  EXPECT_EQ(daemon.end(), 0);
  const std::string line = daemon.restOfLog();
  EXPECT_TRUE(beginsWithTime(line)) << line;
  EXPECT_EQ(withoutTimes(line),
            "warning: " + file_ +
                ": was truncated, or its disk failed; the trace is in memory only from now on\n");
}

class TraceOfARun : public ::testing::Test {
 protected:
  std::string file_ = newPath("ring");
  std::string config_ = writeFile("red.json", toJson({{{"red"}}, {"red"}, {"e1"}}).dump());
};

TEST_F(TraceOfARun, IsKeptByEachCommandThatRunsTheLibrary) {
  const std::string capture = examplePath("tunnels.pcap");
  const std::vector<std::vector<std::string>> commands{
      {"run", config_},
      {"forward", config_, "--in", "e1=" + capture, "--out", pathInTestFolder("out")},
      {"explain", config_, "--in", "e1", "--packet", "ipv4 192.0.2.1 to 192.0.2.2"}};
  for (std::vector<std::string> command : commands) {
    command.insert(command.end(), {"--trace-ring", file_});
    const AgentOutcome outcome = runAgent(command);
    EXPECT_EQ(outcome.status, 0) << command[0] << outcome.err;
    EXPECT_THAT(messagesIn(file_), HasSubstr("updateAllVrfActions red")) << command[0];
    std::filesystem::remove(file_);
  }
}

TEST_F(TraceOfARun, ThatCannotBeKeptEndsTheCommandAtTheStart) {
  const std::string precious = writeFile("precious", "keep me");
  const std::string message = "error: " + precious +
                              ": is a file that holds no trace ring and would be lost; move it "
                              "away, or give another file\n";
  EXPECT_EQ(refusal({"run", config_, "--trace-ring", precious}, 1), message);
  EXPECT_EQ(refusal({"serve", config_, "--socket", "s", "--trace-ring", precious}, 1), message);
  EXPECT_EQ(readFile(precious), "keep me");
}

TEST_F(TraceOfARun, IsRefusedWhereItsFileIsDamaged) {
  EXPECT_EQ(runAgent({"run", config_, "--trace-ring", file_}).status, 0);
  std::filesystem::resize_file(file_, 1000000);
  EXPECT_EQ(refusal({"trace", file_}, 2),
            "error: " + file_ +
                ": is damaged: it has 1000000 bytes where its header tells 1310720; give an "
                "undamaged copy\n");
  EXPECT_EQ(refusal({"trace", "--json", config_}, 2),
            "error: " + config_ +
                ": is no trace ring: it does not begin with \"Blinklog\"; give a file that holds a "
                "trace ring\n");
  EXPECT_EQ(refusal({"trace", "no\nfile"}, 2),
            "error: no\\x0afile: cannot be opened: No such file or directory; give a file that "
            "holds a trace ring\n");
}

TEST_F(TraceOfARun, HarmsNoTerminalWhateverTheFileHolds) {
  EXPECT_EQ(runAgent({"run", config_, "--trace-ring", file_}).status, 0);
  std::string bytes = readFile(file_);
  for (std::size_t at = 0; (at = bytes.find("handleInitialized", at)) != std::string::npos; ++at)
    bytes.replace(at, 2, "\x1b\n");
  std::ofstream(file_, std::ios::binary) << bytes;
  EXPECT_THAT(messagesIn(file_), HasSubstr(" \\x1b\\x0andleInitialized: "));
}

TEST_F(TraceOfARun, ReportsThatStandardOutputCannotBeWritten) {
  EXPECT_EQ(runAgent({"run", config_, "--trace-ring", file_}).status, 0);
  const AgentOutcome outcome = runAgentInto("/dev/full", {"trace", file_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "error: standard output cannot be written\n");
}

// A SIGBUS that the ring of the process does not cause ends the process as before.
class BusErrorBesideATrace : public ::testing::Test {
 protected:
  // Runs in the process that will end.
  void keepTrace() const {
    std::signal(SIGBUS, SIG_DFL);
    std::ostringstream err;
    if (keepTraceIn(file_, err) != ExitStatus::success) std::abort();
  }

  std::string file_ = newPath("ring");
};

TEST_F(BusErrorBesideATrace, EndsTheProcessWhenAnotherFileIsTruncated) {
  const std::string other = writeFile("other", std::string(4096, 'x'));
  EXPECT_EXIT(
      {
        keepTrace();
        const int descriptor = open(other.c_str(), O_RDWR);
        auto* const bytes = static_cast<volatile char*>(
            mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0));
        if (ftruncate(descriptor, 0) != 0) std::abort();
        *bytes = 'y';
      },
      KilledBySignal(SIGBUS), "^$");
}

TEST_F(BusErrorBesideATrace, EndsTheProcessWhenAProcessSendsIt) {
  EXPECT_EXIT(
      {
        keepTrace();
        kill(getpid(), SIGBUS);
        _exit(0);
      },
      KilledBySignal(SIGBUS), "^$");
}

std::string* expectedAtAbort = nullptr;

// The content of the ring when the process stopped, printed by that process.
void writeExpected(int /*signal*/) {
  std::ofstream out(*expectedAtAbort);
  writeTrace(out, Blinklog::ring().dump());
}

// Each test ends a process by a fatal assertion. Another process then reads the file.
class TraceOfAFatalAssertion : public ZelVrfSelectionPolicy::Testing::VrfSmFrameFixture {
 protected:
  // Runs in the process that will abort.
  void keepTrace() {
    Blinklog::ring().fileIs(file_);
    expectedAtAbort = &expected_;
    std::signal(SIGABRT, &writeExpected);
    resourcesAre({blue});
    start();
    routes->vrfStatusIs("blue")->vrfIdIs(4);
  }
  // Checks the file, and returns the last line.
  std::string lastMessage() {
    const std::string told = messagesIn(file_);
    EXPECT_EQ(told, readFile(expected_));
    EXPECT_THAT(told, HasSubstr("Updating VRF HW instance for: blue"));
    const std::string lines = "\n" + told.substr(0, told.size() - 1);
    return lines.substr(lines.rfind('\n') + 1);
  }

  std::string file_ = newPath("ring");
  std::string expected_ = pathInTestFolder("expected");
};

TEST_F(TraceOfAFatalAssertion, OnACountOfTwoWithoutAStatusEndsWithWhatLedToIt) {
  EXPECT_EXIT(
      {
        keepTrace();
        users->vrfRefCountIs(red, 2);
      },
      KilledBySignal(SIGABRT), "Invalid ref count increment");
  EXPECT_THAT(lastMessage(),
              EndsWith("Invalid ref count for a vrf that has not yer been created VRF:red"));
}

TEST_F(TraceOfAFatalAssertion, OnARemovalWithoutAStatusEndsWithWhatLedToIt) {
  EXPECT_EXIT(
      {
        keepTrace();
        users->vrfRefCountIs(red, 0);
      },
      KilledBySignal(SIGABRT), "Trying to delete a vrf HW resource");
  EXPECT_THAT(
      lastMessage(),
      EndsWith("Trying to delete a vrf HW resource that has not been created yet. VRF:red"));
}

TEST_F(TraceOfAFatalAssertion, OnADecapFlagWithoutARouteStatusEndsWithWhatCameBefore) {
  EXPECT_EXIT(
      {
        keepTrace();
        const auto withoutRoutes = ZelVrfSelectionPolicy::VrfSm::VrfSmIs(
            users, statuses, chip, fallback, nullptr, routes6);
        withoutRoutes->handleDecapNh();
      },
      KilledBySignal(SIGABRT), "a decap handler needs an IPv4 route status");
  EXPECT_THAT(lastMessage(), EndsWith("handleInitialized Initialize VRF SM"));
}

TEST_F(TraceOfAFatalAssertion, OnAnIteratorAtItsEndEndsWithWhatCameBefore) {
  EXPECT_EXIT(
      {
        keepTrace();
        auto entry = users->vrfRefCount().iterator();
        while (entry)
          ++entry;
        ++entry;
      },
      KilledBySignal(SIGABRT), "iterator does not stand on an entry");
  EXPECT_THAT(lastMessage(), EndsWith("Updating VRF HW instance for: blue"));
}

}  // namespace
}  // namespace ZelAgent
