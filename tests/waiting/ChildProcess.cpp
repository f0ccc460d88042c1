#include "tests/waiting/ChildProcess.h"

#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

namespace Waiting {

ChildProcess::ChildProcess(ChildProcess&& other) noexcept : id_(std::exchange(other.id_, -1)) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  if (this != &other) {
    kill();
    id_ = std::exchange(other.id_, -1);
  }
  return *this;
}

ChildProcess::~ChildProcess() {
  kill();
}

bool ChildProcess::signal(int number) const noexcept {
  return id_ > 0 && ::kill(id_, number) == 0;
}

std::optional<int> ChildProcess::end(const Deadline& deadline) {
  constexpr std::chrono::microseconds longest{1000};
  std::chrono::microseconds pause{50};
  int status = 0;
  pid_t ended = 0;
  while (id_ > 0 && (ended = waitpid(id_, &status, WNOHANG)) == 0) {
    if (deadline.hasPassed()) {
      kill();
      return std::nullopt;
    }
    std::this_thread::sleep_for(pause);
    pause = std::min(2 * pause, longest);
  }
  id_ = -1;
  return ended > 0 ? std::optional(status) : std::nullopt;
}

// The kernel ends every process that gets SIGKILL, so that this wait is finite without a deadline.
void ChildProcess::kill() noexcept {
  if (!signal(SIGKILL)) return;
  while (waitpid(id_, nullptr, 0) < 0 && errno == EINTR) {
  }
  id_ = -1;
}

}  // namespace Waiting
