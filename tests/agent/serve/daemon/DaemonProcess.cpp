#include "tests/agent/serve/daemon/DaemonProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>

extern char** environ;

#include "tests/agent/ProcessArguments.h"

namespace ZelAgent {
namespace {

struct Pipe {
  int read = -1;
  int write = -1;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  return {ends[0], ends[1]};
}

std::vector<std::string> environmentWith(const std::vector<std::string>& added) {
  std::vector<std::string> variables = added;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (!std::string(*variable).starts_with("MOX_TRACE=")) variables.emplace_back(*variable);
  }
  return variables;
}

// The next byte; nothing at the end.
std::optional<char> readByte(int descriptor) {
  pollfd poll{descriptor, POLLIN, 0};
  if (::poll(&poll, 1, patience) != 1) {
    ADD_FAILURE() << "the daemon says nothing";
    return std::nullopt;
  }
  char byte = 0;
  return read(descriptor, &byte, 1) == 1 ? std::optional(byte) : std::nullopt;
}

std::optional<std::string> readLine(int descriptor) {
  std::string line;
  while (const auto byte = readByte(descriptor)) {
    if (*byte == '\n') return line;
    line += *byte;
  }
  return line.empty() ? std::nullopt : std::optional(line);
}

void closeOnce(int& descriptor) {
  if (descriptor >= 0) close(descriptor);
  descriptor = -1;
}

}  // namespace

SocketFolder::SocketFolder() : folder_(::testing::TempDir() + "zel-XXXXXX") {
  EXPECT_NE(mkdtemp(folder_.data()), nullptr) << folder_;
}

SocketFolder::~SocketFolder() {
  std::filesystem::remove_all(folder_);
}

DaemonProcess::DaemonProcess(const std::string& configuration, const std::string& socket,
                             const std::vector<std::string>& arguments,
                             const std::vector<std::string>& environment)
    : DaemonProcess(Unawaited{}, configuration, socket, arguments, environment) {
  EXPECT_EQ(outLine(), "serving on " + socket);
}

DaemonProcess::DaemonProcess(Unawaited /*unawaited*/, const std::string& configuration,
                             const std::string& socket, const std::vector<std::string>& arguments,
                             const std::vector<std::string>& environment)
    : socket_(socket) {
  const Pipe out = makePipe();
  const Pipe err = makePipe();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out.write, 1);
  posix_spawn_file_actions_adddup2(&actions, err.write, 2);
  std::vector<std::string> words{ZEL_AGENT_BINARY, "serve", configuration, "--socket", socket};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = environmentWith(environment);
  EXPECT_EQ(posix_spawn(&process_, ZEL_AGENT_BINARY, &actions, nullptr, pointersTo(words).data(),
                        pointersTo(variables).data()),
            0);
  posix_spawn_file_actions_destroy(&actions);
  close(out.write);
  close(err.write);
  out_ = out.read;
  err_ = err.read;
}

DaemonProcess::~DaemonProcess() {
  if (process_ > 0) {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  closeOnce(out_);
  closeOnce(err_);
}

void DaemonProcess::signal(int number) const {
  ASSERT_GT(process_, 0);
  EXPECT_EQ(kill(process_, number), 0);
}

int DaemonProcess::exitStatus() {
  int status = 0;
  EXPECT_EQ(waitpid(process_, &status, 0), process_);
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int DaemonProcess::end() {
  signal(SIGTERM);
  return exitStatus();
}

std::optional<std::string> DaemonProcess::outLine() {
  return readLine(out_);
}

std::optional<std::string> DaemonProcess::errLine() {
  return readLine(err_);
}

std::string DaemonProcess::restOfErr() {
  std::string text;
  while (const auto byte = readByte(err_))
    text += *byte;
  return text;
}

void DaemonProcess::closeErr() {
  closeOnce(err_);
}

}  // namespace ZelAgent
