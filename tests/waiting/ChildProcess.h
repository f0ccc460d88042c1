#pragma once

#include <sys/types.h>

#include <optional>

#include "tests/waiting/Deadline.h"

namespace Waiting {

/// Owns a child process. The process has always ended and is reaped when the object is gone: the
/// destructor kills a process that still runs.
class ChildProcess final {
 public:
  /// Owns nothing.
  ChildProcess() = default;
  /// `id` is a child that nobody has reaped. A value below 1, as of a `fork` that failed, is none.
  explicit ChildProcess(pid_t id) noexcept : id_(id) {}
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&& other) noexcept;
  ~ChildProcess();

  /// The process, or a value below 1 after its end.
  [[nodiscard]] pid_t id() const noexcept { return id_; }
  /// Sends a signal. Returns whether there was a process to send it to.
  bool signal(int number) const noexcept;
  /// Waits for the end. Returns the status as `waitpid` has it. When the deadline passes first,
  /// kills the process and returns nothing.
  [[nodiscard]] std::optional<int> end(const Deadline& deadline = Deadline());
  /// Kills the process, if it still runs.
  void kill() noexcept;

 private:
  pid_t id_ = -1;
};

}  // namespace Waiting
