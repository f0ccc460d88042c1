#include "tests/agent/memory/ForkedProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <optional>

#include "tests/waiting/ChildProcess.h"
#include "tests/waiting/Descriptor.h"

namespace ZelAgent {
namespace {

class Pipe final {
 public:
  Pipe() { EXPECT_EQ(pipe(ends_.data()), 0); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    close(ends_[0]);
    if (isOpen_) close(ends_[1]);
  }

  [[nodiscard]] int input() const noexcept { return ends_[1]; }
  // Reads all that other processes put in, until they have closed it.
  [[nodiscard]] std::string contents(const Waiting::Deadline& deadline) {
    close(ends_[1]);
    isOpen_ = false;
    std::string text;
    EXPECT_TRUE(Waiting::readToEnd(ends_[0], text, deadline))
        << deadline.expiry("the end of a pipe", text);
    return text;
  }

 private:
  std::array<int, 2> ends_{};
  bool isOpen_ = true;
};

void put(int input, const std::string& text) {
  if (write(input, text.data(), text.size()) != static_cast<ssize_t>(text.size())) _exit(1);
}

[[noreturn]] void workAndExit(const std::function<void(const Report&)>& work, const Pipe& errors,
                              const Pipe& reports) noexcept {
  dup2(errors.input(), STDERR_FILENO);
  work([&](const std::string& text) { put(reports.input(), text); });
  _exit(0);
}

}  // namespace

Remains inForkedProcess(const std::function<void(const Report&)>& work) {
  Pipe errors;
  Pipe reports;
  Waiting::ChildProcess process(fork());
  if (process.id() == 0) workAndExit(work, errors, reports);
  EXPECT_GT(process.id(), 0);
  const Waiting::Deadline deadline;
  Remains remains;
  remains.onStderr = errors.contents(deadline);
  remains.reported = reports.contents(deadline);
  const std::optional<int> status = process.end(deadline);
  EXPECT_TRUE(status) << deadline.expiry("the forked process to end", remains.onStderr);
  remains.status = status.value_or(0);
  return remains;
}

}  // namespace ZelAgent
