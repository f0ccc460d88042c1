#include "agent/language/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace ZelAgent {
namespace {

void must(int error, const char* what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

// A pipe whose ends are closed in programs that are started, and at the end.
class Pipe final {
 public:
  Pipe() { must(pipe2(ends_.data(), O_CLOEXEC) == 0 ? 0 : errno, "pipe2"); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }

  [[nodiscard]] int readEnd() const noexcept { return ends_[0]; }
  [[nodiscard]] int writeEnd() const noexcept { return ends_[1]; }
  void closeWriteEnd() noexcept { closeEnd(1); }

 private:
  void closeEnd(std::size_t end) noexcept {
    if (ends_[end] >= 0) ::close(ends_[end]);
    ends_[end] = -1;
  }

  std::array<int, 2> ends_{-1, -1};
};

// The standard descriptors of a program: an empty input, and one pipe for all output.
class Descriptors final {
 public:
  explicit Descriptors(int output) {
    must(posix_spawn_file_actions_init(&actions_), "posix_spawn_file_actions_init");
    must(posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0),
         "posix_spawn_file_actions_addopen");
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
      must(posix_spawn_file_actions_adddup2(&actions_, output, descriptor),
           "posix_spawn_file_actions_adddup2");
    }
  }
  Descriptors(const Descriptors&) = delete;
  Descriptors& operator=(const Descriptors&) = delete;
  ~Descriptors() { posix_spawn_file_actions_destroy(&actions_); }

  [[nodiscard]] const posix_spawn_file_actions_t* actions() const noexcept { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

std::string readOutput(int descriptor, std::size_t keptBytes) {
  std::string kept;
  std::array<char, 4096> bytes{};
  while (true) {
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return kept;
    kept.append(bytes.data(), std::min(static_cast<std::size_t>(count), keptBytes - kept.size()));
  }
}

int endOf(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) must(errno, "waitpid");
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

std::optional<ChildOutcome> runProgram(const std::string& program,
                                       const std::vector<std::string>& arguments,
                                       std::size_t keptBytes) {
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words)
    pointers.push_back(word.data());
  pointers.push_back(nullptr);

  Pipe pipe;
  const Descriptors descriptors(pipe.writeEnd());
  pid_t child = 0;
  const int error = posix_spawnp(&child, program.c_str(), descriptors.actions(), nullptr,
                                 pointers.data(), environ);
  if (error == ENOENT) return std::nullopt;
  must(error, program.c_str());
  pipe.closeWriteEnd();
  std::string output = readOutput(pipe.readEnd(), keptBytes);
  return ChildOutcome{endOf(child), std::move(output)};
}

}  // namespace ZelAgent
