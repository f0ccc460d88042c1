#include "agent/serve/console/Terminal.h"

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

namespace ZelAgent {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int /*signal*/) {
  interrupted = 1;
}

// The terminal of standard input passes on each key while this exists.
class KeyMode final {
 public:
  KeyMode() {
    isTerminal_ = tcgetattr(STDIN_FILENO, &before_) == 0;
    if (!isTerminal_) return;
    termios keys = before_;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSADRAIN, &keys);
  }
  KeyMode(const KeyMode&) = delete;
  KeyMode& operator=(const KeyMode&) = delete;
  ~KeyMode() {
    if (isTerminal_) tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
  }

 private:
  termios before_{};
  bool isTerminal_ = false;
};

}  // namespace

Screen screenOf(int descriptor) {
  winsize size{};
  if (ioctl(descriptor, TIOCGWINSZ, &size) != 0) return {};
  return {size.ws_row, size.ws_col};
}

int readKey() {
  const KeyMode mode;
  unsigned char key = 0;
  ssize_t got = -1;
  do {
    got = read(STDIN_FILENO, &key, 1);
  } while (got < 0 && errno == EINTR);
  return got == 1 ? key : -1;
}

InterruptWatch::InterruptWatch() {
  clear();
  struct sigaction action {};
  action.sa_handler = interrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, &before_);
}

InterruptWatch::~InterruptWatch() {
  sigaction(SIGINT, &before_, nullptr);
}

bool InterruptWatch::isInterrupted() noexcept {
  return interrupted != 0;
}

void InterruptWatch::clear() noexcept {
  interrupted = 0;
}

}  // namespace ZelAgent
