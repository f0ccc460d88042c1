#include "Duolog/OutOfMemory.h"

#include <sys/poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

#include "Blinklog/Ring.h"

namespace Duolog {
namespace {

constexpr std::string_view what = "out of memory";

const Blinklog::SiteId site =
    Blinklog::siteIs({"Duolog/OutOfMemory.cpp", 0, "outOfMemory", 0, {std::string(what), "%s"}});

/// `what`, the size if it is known, and a newline.
class Line {
 public:
  explicit Line(std::size_t size) noexcept {
    append(what);
    if (size != 0) {
      append(": ");
      end_ = std::to_chars(end_, bytes_.data() + bytes_.size(), size).ptr;
      append(" bytes");
    }
    append("\n");
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  [[nodiscard]] std::string_view bytes() const noexcept { return {bytes_.data(), end_}; }
  /// The text between `what` and the newline.
  [[nodiscard]] std::string_view size() const noexcept {
    return {bytes_.data() + what.size(), end_ - 1};
  }

 private:
  void append(std::string_view text) noexcept { end_ = std::copy(text.begin(), text.end(), end_); }

  std::array<char, 64> bytes_;
  char* end_ = bytes_.data();
};

void writeToRing(const Line& line) noexcept {
  Blinklog::Ring::Message message(Blinklog::ring(), site);
  message.put({'s', 0, line.size()});
}

// The process must end although nobody reads stderr. A pipe that can be written to takes the whole
// line without a wait.
bool isStderrWritable() noexcept {
  constexpr int milliseconds = 100;
  pollfd stderrEvents{STDERR_FILENO, POLLOUT, 0};
  int ready = -1;
  do {
    ready = poll(&stderrEvents, 1, milliseconds);
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

void writeToStderr(const Line& line) noexcept {
  std::signal(SIGPIPE, SIG_IGN);  // stderr may be a closed pipe, and the process must abort
  std::string_view left = line.bytes();
  while (!left.empty() && isStderrWritable()) {
    const ssize_t written = write(STDERR_FILENO, left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    left.remove_prefix(static_cast<std::size_t>(written));
  }
}

void onOutOfMemory() {
  outOfMemory();
}

/// Makes `onOutOfMemory` the new-handler of a process that has none.
class NewHandler {
 public:
  NewHandler() noexcept {
    if (std::get_new_handler() == nullptr) std::set_new_handler(onOutOfMemory);
  }
  NewHandler(const NewHandler&) = delete;
  NewHandler& operator=(const NewHandler&) = delete;
  ~NewHandler() {
    if (std::get_new_handler() == onOutOfMemory) std::set_new_handler(nullptr);
  }
};

// Constructed after the site, which it needs, and after the ring.
const NewHandler newHandler;

}  // namespace

void outOfMemory(std::size_t size) noexcept {
  static std::atomic_flag isReported;
  if (!isReported.test_and_set()) {
    const Line line(size);
    writeToRing(line);
    writeToStderr(line);
  } else {
    // A handler of the abort has no memory either, and would call this again without end.
    std::signal(SIGABRT, SIG_DFL);
  }
  std::abort();
}

}  // namespace Duolog
