#include "tests/agent/serve/console/TerminalProcess.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <thread>

extern char** environ;

#include "tests/agent/ProcessArguments.h"

namespace ZelAgent {
namespace {

constexpr std::chrono::milliseconds lookAgain{1};

}  // namespace

TerminalProcess::TerminalProcess(std::vector<std::string> arguments,
                                 const std::vector<std::string>& environment) {
  arguments.insert(arguments.begin(), ZEL_AGENT_BINARY);
  std::vector<std::string> variables = environment;
  for (char** variable = environ; *variable != nullptr; ++variable)
    variables.emplace_back(*variable);
  const std::vector<char*> argumentPointers = pointersTo(arguments);
  const std::vector<char*> variablePointers = pointersTo(variables);
  winsize size{};
  size.ws_row = 50;
  size.ws_col = 200;
  process_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (process_ == 0) {
    execve(ZEL_AGENT_BINARY, argumentPointers.data(), variablePointers.data());
    _exit(127);
  }
  EXPECT_GT(process_, 0);
}

TerminalProcess::~TerminalProcess() {
  if (process_ > 0) {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  close(terminal_);
}

void TerminalProcess::type(std::string_view keys) const {
  EXPECT_TRUE(isTakenByKey()) << "no line editor took the keys";
  EXPECT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

std::string TerminalProcess::waitFor(const std::string& text) {
  std::size_t found = screen_.find(text);
  while (found == std::string::npos && readMore())
    found = screen_.find(text);
  EXPECT_NE(found, std::string::npos) << "no '" << text << "' on the screen:\n" << screen_;
  if (found == std::string::npos) return {};
  const std::string before = screen_.substr(0, found + text.size());
  screen_.erase(0, before.size());
  return before;
}

int TerminalProcess::exitStatus() {
  while (readMore()) {
  }
  if (!hasLeft_) {
    ADD_FAILURE() << "it did not end; on the screen:\n" << screen_;
    kill(process_, SIGKILL);
  }
  int status = 0;
  EXPECT_EQ(waitpid(process_, &status, 0), process_);
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool TerminalProcess::isTakenByKey() const {
  for (int looks = 0; looks < patience; ++looks) {
    termios modes{};
    if (tcgetattr(terminal_, &modes) != 0) return false;
    if ((modes.c_lflag & ICANON) == 0U) return true;
    std::this_thread::sleep_for(lookAgain);
  }
  return false;
}

bool TerminalProcess::readMore() {
  pollfd poll{terminal_, POLLIN, 0};
  if (::poll(&poll, 1, patience) != 1) return false;
  std::array<char, 4096> block{};
  const auto got = read(terminal_, block.data(), block.size());
  hasLeft_ = got <= 0;
  if (hasLeft_) return false;
  screen_.append(block.data(), static_cast<std::size_t>(got));
  return true;
}

}  // namespace ZelAgent
