#include "tests/agent/memory/ForkedProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

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
  // All that was put in by others, when they have closed it.
  [[nodiscard]] std::string contents() {
    close(ends_[1]);
    isOpen_ = false;
    std::string text;
    std::array<char, 4096> some{};
    for (ssize_t got = 0; (got = read(ends_[0], some.data(), some.size())) > 0;)
      text.append(some.data(), static_cast<std::size_t>(got));
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
  const pid_t process = fork();
  if (process == 0) workAndExit(work, errors, reports);
  EXPECT_GT(process, 0);
  Remains remains;
  remains.onStderr = errors.contents();
  remains.reported = reports.contents();
  EXPECT_EQ(waitpid(process, &remains.status, 0), process);
  return remains;
}

}  // namespace ZelAgent
