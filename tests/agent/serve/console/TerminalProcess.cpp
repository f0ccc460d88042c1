#include "tests/agent/serve/console/TerminalProcess.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <optional>

extern char** environ;

#include "tests/agent/AgentProcess.h"
#include "tests/agent/ProcessArguments.h"
#include "tests/waiting/Descriptor.h"
#include "tests/waiting/Wait.h"

namespace ZelAgent {

TerminalProcess::TerminalProcess(std::vector<std::string> arguments,
                                 const std::vector<std::string>& environment) {
  arguments.insert(arguments.begin(), agentBinary());
  std::vector<std::string> variables = environment;
  for (char** variable = environ; *variable != nullptr; ++variable)
    variables.emplace_back(*variable);
  const std::vector<char*> argumentPointers = pointersTo(arguments);
  const std::vector<char*> variablePointers = pointersTo(variables);
  winsize size{};
  size.ws_row = 50;
  size.ws_col = 200;
  process_ = Waiting::ChildProcess(forkpty(&terminal_, nullptr, nullptr, &size));
  if (process_.id() == 0) {
    execve(argumentPointers[0], argumentPointers.data(), variablePointers.data());
    _exit(127);
  }
  EXPECT_GT(process_.id(), 0);
}

TerminalProcess::~TerminalProcess() {
  close(terminal_);
}

void TerminalProcess::type(std::string_view keys) const {
  EXPECT_TRUE(Waiting::waitUntil(
      "a line editor that takes keys", [this] { return isTakenByKey(); },
      [this] { return screen_; }));
  EXPECT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

void TerminalProcess::interrupt() const {
  EXPECT_TRUE(Waiting::waitUntil(
      "a terminal whose Ctrl-C is a signal", [this] { return !isTakenByKey(); },
      [this] { return screen_; }));
  EXPECT_EQ(write(terminal_, "\x03", 1), 1);
}

std::string TerminalProcess::waitFor(const std::string& text) {
  const Waiting::Deadline deadline;
  std::size_t found = screen_.find(text);
  while (found == std::string::npos && readMore(deadline))
    found = screen_.find(text);
  EXPECT_NE(found, std::string::npos) << "no '" << text << "' on the screen:\n" << screen_;
  if (found == std::string::npos) return {};
  const std::string before = screen_.substr(0, found + text.size());
  screen_.erase(0, before.size());
  return before;
}

int TerminalProcess::exitStatus() {
  const Waiting::Deadline deadline;
  while (readMore(deadline)) {
  }
  const std::optional<int> status = process_.end(deadline);
  EXPECT_TRUE(status) << deadline.expiry("the agent to end", screen_);
  return status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1;
}

bool TerminalProcess::isTakenByKey() const {
  termios modes{};
  return tcgetattr(terminal_, &modes) == 0 && (modes.c_lflag & ICANON) == 0U;
}

bool TerminalProcess::readMore(const Waiting::Deadline& deadline) {
  if (hasLeft_ || deadline.hasPassed()) return false;
  if (Waiting::waitForEvents(terminal_, POLLIN, deadline) == 0) return false;
  std::array<char, 4096> block{};
  const auto got = read(terminal_, block.data(), block.size());
  hasLeft_ = got <= 0;
  if (hasLeft_) return false;
  screen_.append(block.data(), static_cast<std::size_t>(got));
  return true;
}

}  // namespace ZelAgent
