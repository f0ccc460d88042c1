#include "Isolation.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <system_error>

#include "tests/waiting/ChildProcess.h"
#include "tests/waiting/Descriptor.h"

namespace VrfModel {
namespace {

constexpr int failed = 101;
constexpr std::size_t longestReport = 4000;

// Throws for a system call that failed.
[[noreturn]] void failCall(const char* call) {
  throw std::system_error(errno, std::generic_category(), call);
}

// Runs in the child. Writes its stderr and its result into `pipe`.
[[noreturn]] void workAndExit(const std::function<std::string()>& work, int pipe) {
  dup2(pipe, STDERR_FILENO);
  close(pipe);
  const std::string report = work();
  std::fputs(report.c_str(), stderr);
  std::exit(report.empty() ? EXIT_SUCCESS : failed);
}

std::string howItEnded(int status) {
  if (WIFSIGNALED(status)) return "the process died of signal " + std::to_string(WTERMSIG(status));
  return "the process exited with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

std::string isolated(const std::function<std::string()>& work, std::chrono::milliseconds limit) {
  const Waiting::Deadline deadline(limit);
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) failCall("pipe");
  std::fflush(nullptr);
  Waiting::ChildProcess child(fork());
  if (child.id() < 0) failCall("fork");
  if (child.id() == 0) {
    close(ends[0]);
    workAndExit(work, ends[1]);
  }
  close(ends[1]);
  std::string report;
  const bool isComplete = Waiting::readToEnd(ends[0], report, deadline);
  close(ends[0]);
  const auto status = isComplete ? child.end(deadline) : std::nullopt;
  if (!status) return deadline.expiry("a child process to end", report);
  if (WIFEXITED(*status) && WEXITSTATUS(*status) == EXIT_SUCCESS) return {};
  if (WIFEXITED(*status) && WEXITSTATUS(*status) == failed) return report;
  if (report.size() > longestReport) report.resize(longestReport);
  return howItEnded(*status) + ":\n" + report;
}

}  // namespace VrfModel
