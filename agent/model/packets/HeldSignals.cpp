#include "agent/model/packets/HeldSignals.h"

namespace ZelAgent {
namespace {

constexpr int ending[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXFSZ};

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

HeldSignals::HeldSignals() {
  sigemptyset(&held_);
  for (const int signal : ending) {
    if (!isIgnored(signal)) sigaddset(&held_, signal);
  }
  pthread_sigmask(SIG_BLOCK, &held_, &before_);
}

HeldSignals::~HeldSignals() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool HeldSignals::anyArrived() const noexcept {
  sigset_t pending{};
  sigpending(&pending);
  for (const int signal : ending) {
    if (sigismember(&held_, signal) == 1 && sigismember(&pending, signal) == 1) return true;
  }
  return false;
}

}  // namespace ZelAgent
