// `zel-agent ctl` at a terminal.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/serve/console/TerminalProcess.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"
#include "tests/agent/serve/daemon/SocketClient.h"

namespace ZelAgent {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* prompt = "zel-agent> ";
constexpr const char* upKey = "\x10";     // Ctrl-P
constexpr const char* leaveKey = "\x04";  // Ctrl-D

class ConsoleAtATerminal : public ::testing::Test {
 protected:
  [[nodiscard]] std::vector<std::string> arguments() const { return {"ctl", "--socket", path_}; }
  [[nodiscard]] std::vector<std::string> environment() const {
    return {"XDG_STATE_HOME=" + folder_.path("state"), "TERM=vt100"};
  }

  SocketFolder folder_;
  std::string path_ = folder_.path("s");
  std::string history_ = folder_.path("state/zel-agent/history");
  std::string config_ = writeFile("red.json", toJson({{{"red"}}, {"red"}, {"e1"}}).dump());
};

TEST_F(ConsoleAtATerminal, RunsCommandsUntilTheEndOfInput) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("chip capacity 5\n");
  console.waitFor("  no hook call");
  console.waitFor(prompt);
  console.type("shw\n");
  console.waitFor("error: a command must begin with ");
  console.waitFor(prompt);
  console.type(leaveKey);
  console.waitFor("\r\n");
  EXPECT_EQ(console.exitStatus(), 0);
  EXPECT_EQ(SocketClient(path_).output("show actions")["chip"]["capacity"], 5);
}

TEST_F(ConsoleAtATerminal, EndsOnExitAndQuit) {
  const DaemonProcess daemon(config_, path_);
  for (const char* const word : {"exit\n", "quit\n"}) {
    TerminalProcess console(arguments(), environment());
    console.waitFor(prompt);
    console.type(word);
    EXPECT_EQ(console.exitStatus(), 0);
  }
}

TEST_F(ConsoleAtATerminal, CompletesWordsOfCommandsAndNamesOfVrfs) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("vr\tre\ti\t2\n");
  console.waitFor("vrf red id 2\r\n  no hook call");
}

TEST_F(ConsoleAtATerminal, ListsTheCompletionsOfAWord) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("show t\t\t");
  const std::string listed = console.waitFor("types");
  EXPECT_THAT(listed, HasSubstr("trace"));
  EXPECT_THAT(listed, Not(HasSubstr("vrfs")));
}

TEST_F(ConsoleAtATerminal, KeepsItsHistoryAcrossConsoles) {
  const DaemonProcess daemon(config_, path_);
  {
    TerminalProcess console(arguments(), environment());
    console.waitFor(prompt);
    console.type("chip capacity 5\n");
    console.waitFor("no hook call");
    console.waitFor(prompt);
    console.type(leaveKey);
    EXPECT_EQ(console.exitStatus(), 0);
  }
  SocketClient(path_).text("chip capacity 9");
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type(upKey);
  console.waitFor("chip capacity 5");
  console.type("\n");
  console.waitFor("no hook call");
  EXPECT_EQ(SocketClient(path_).output("show actions")["chip"]["capacity"], 5);
}

TEST_F(ConsoleAtATerminal, KeepsNoBlankAndNoRepeatedLines) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  for (const char* const line : {"chip capacity 5\n", "  \n", "chip capacity 5\n"}) {
    console.waitFor(prompt);
    console.type(line);
  }
  console.waitFor(prompt);
  EXPECT_EQ(readFile(history_), "_HiStOrY_V2_\nchip\\040capacity\\0405\n");
}

TEST_F(ConsoleAtATerminal, KeepsItsHistoryForItsOwnerOnly) {
  const DaemonProcess daemon(config_, path_);
  const mode_t before = umask(0);
  TerminalProcess console(arguments(), environment());
  umask(before);
  console.waitFor(prompt);
  console.type("chip capacity 5\n");
  console.waitFor("no hook call");
  struct stat file {};
  ASSERT_EQ(stat(history_.c_str(), &file), 0);
  EXPECT_EQ(file.st_mode & 0777U, 0600U);
}

TEST_F(ConsoleAtATerminal, DoesNotWriteItsHistoryThroughALink) {
  const DaemonProcess daemon(config_, path_);
  const std::string precious = writeFile("precious", "keep me");
  std::filesystem::create_directories(folder_.path("state/zel-agent"));
  std::filesystem::create_symlink(precious, history_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("chip capacity 5\n");
  console.waitFor("no hook call");
  EXPECT_EQ(readFile(precious), "keep me");
}

TEST_F(ConsoleAtATerminal, DoesNotWaitForAFifoInPlaceOfItsHistory) {
  const DaemonProcess daemon(config_, path_);
  std::filesystem::create_directories(folder_.path("state/zel-agent"));
  ASSERT_EQ(mkfifo(history_.c_str(), 0600), 0);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("chip capacity 5\n");
  console.waitFor("no hook call");
}

TEST_F(ConsoleAtATerminal, KeepsItsHistoryInTheHomeFolderByDefault) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(),
                          {"XDG_STATE_HOME=", "HOME=" + folder_.path(""), "TERM=vt100"});
  console.waitFor(prompt);
  console.type("chip capacity 5\n");
  console.waitFor("no hook call");
  EXPECT_TRUE(std::filesystem::exists(folder_.path(".zel-agent_history")));
}

TEST_F(ConsoleAtATerminal, ContinuesWithTheNextDaemon) {
  DaemonProcess first(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  EXPECT_EQ(first.end(), 0);
  console.type("show\n");
  console.waitFor("no daemon can be reached");
  console.waitFor(prompt);
  const DaemonProcess second(config_, path_);
  console.type("chip capacity 5\n");
  console.waitFor("no hook call");
}

TEST_F(ConsoleAtATerminal, AQuestionMarkExplainsWhatMayFollowAndKeepsTheLine) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("chip capacity ?");
  console.waitFor("\r\nN  a number\r\nzel-agent> chip capacity ");
  console.type("5\n");
  console.waitFor("no hook call");
}

TEST_F(ConsoleAtATerminal, AQuestionMarkInAQuotedWordIsPartOfIt) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("vrf 'a?' add\n");
  console.waitFor("\r\nvrf a? add\r\n");
}

TEST_F(ConsoleAtATerminal, CtrlCGivesUpTheLine) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("chip capacity 5\x03");
  console.waitFor("^C\r\n");
  console.waitFor(prompt);
  console.type("show actions | begin chip\n");
  console.waitFor("of 1024 VRF resources");
}

TEST_F(ConsoleAtATerminal, CtrlCEndsTheWaitForAnAnswer) {
  DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  daemon.signal(SIGSTOP);
  console.type("show vrfs\n");
  console.waitFor("waiting for the answer of " + path_ + ": show vrfs (1 s)");
  console.interrupt();
  console.waitFor("error: " + path_ +
                  ": interrupted; the daemon may still run the command \"show vrfs\"");
  console.waitFor(prompt);
  daemon.signal(SIGCONT);
  console.type("show vrfs\n");
  console.waitFor("CONFIGURED");
}

TEST_F(ConsoleAtATerminal, WaitsForAKeyAfterEachScreen) {
  const DaemonProcess daemon(config_, path_);
  TerminalProcess console(arguments(), environment());
  console.waitFor(prompt);
  console.type("terminal length 4\n");
  console.waitFor(prompt);
  console.type("help\n");
  console.waitFor("show rules");
  console.waitFor("--More--");
  console.type("q");
  console.waitFor(prompt);
  console.type("terminal length 0\n");
  console.waitFor(prompt);
  console.type("help\n");
  EXPECT_THAT(console.waitFor("choices LINE"), Not(HasSubstr("--More--")));
}

TEST_F(ConsoleAtATerminal, NeverWaitsForAKeyWithoutAPager) {
  const DaemonProcess daemon(config_, path_);
  std::vector<std::string> words = arguments();
  words.emplace_back("--no-pager");
  TerminalProcess console(words, environment());
  console.waitFor(prompt);
  console.type("terminal length 4\n");
  console.waitFor(prompt);
  console.type("help\n");
  EXPECT_THAT(console.waitFor("choices LINE"), Not(HasSubstr("--More--")));
}

TEST_F(ConsoleAtATerminal, FailsToStartWithoutADaemon) {
  TerminalProcess console(arguments(), environment());
  console.waitFor("error: " + path_ + ": no daemon can be reached");
  EXPECT_EQ(console.exitStatus(), 1);
}

}  // namespace
}  // namespace ZelAgent
