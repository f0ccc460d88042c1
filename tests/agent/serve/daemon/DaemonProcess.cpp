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

extern char** environ;

#include "tests/agent/AgentProcess.h"
#include "tests/agent/LogTimes.h"
#include "tests/agent/ProcessArguments.h"
#include "tests/waiting/Descriptor.h"

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

// The next byte; nothing at the end. `seen` is what was read before it.
std::optional<char> readByte(int descriptor, const std::string& seen,
                             const Waiting::Deadline& deadline) {
  if (deadline.hasPassed() || Waiting::waitForEvents(descriptor, POLLIN, deadline) == 0) {
    ADD_FAILURE() << deadline.expiry("output of the daemon", seen);
    return std::nullopt;
  }
  char byte = 0;
  return read(descriptor, &byte, 1) == 1 ? std::optional(byte) : std::nullopt;
}

std::optional<std::string> readLine(int descriptor) {
  const Waiting::Deadline deadline;
  std::string line;
  while (const auto byte = readByte(descriptor, line, deadline)) {
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
  std::vector<std::string> words{agentBinary(), "serve", configuration, "--socket", socket};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = environmentWith(environment);
  pid_t process = -1;
  EXPECT_EQ(posix_spawn(&process, words[0].c_str(), &actions, nullptr, pointersTo(words).data(),
                        pointersTo(variables).data()),
            0);
  process_ = Waiting::ChildProcess(process);
  posix_spawn_file_actions_destroy(&actions);
  close(out.write);
  close(err.write);
  out_ = out.read;
  err_ = err.read;
}

DaemonProcess::~DaemonProcess() {
  closeOnce(out_);
  closeOnce(err_);
}

void DaemonProcess::signal(int number) const {
  EXPECT_TRUE(process_.signal(number));
}

int DaemonProcess::exitStatus() {
  const Waiting::Deadline deadline;
  const std::optional<int> status = process_.end(deadline);
  EXPECT_TRUE(status) << deadline.expiry("the daemon to end", "");
  return status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1;
}

int DaemonProcess::end() {
  signal(SIGTERM);
  return exitStatus();
}

std::optional<std::string> DaemonProcess::outLine() {
  return readLine(out_);
}

std::optional<std::string> DaemonProcess::errLine() {
  const std::optional<std::string> line = readLine(err_);
  if (!line) return line;
  EXPECT_TRUE(beginsWithTime(*line)) << *line;
  return withoutTimes(*line);
}

std::string DaemonProcess::restOfLog() {
  const Waiting::Deadline deadline;
  std::string text;
  EXPECT_TRUE(Waiting::readToEnd(err_, text, deadline))
      << deadline.expiry("the end of the daemon's standard error", text);
  return text;
}

std::string DaemonProcess::restOfErr() {
  return withoutTimes(restOfLog());
}

void DaemonProcess::closeErr() {
  closeOnce(err_);
}

}  // namespace ZelAgent
