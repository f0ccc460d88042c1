#include "agent/serve/daemon/SignalWatch.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <utility>

namespace ZelAgent {
namespace {

using Blinklog::FileHandle;

constexpr const char* unhandled = "a signal cannot be handled";

sigset_t setOf(int signal) {
  sigset_t set{};
  sigemptyset(&set);
  sigaddset(&set, signal);
  return set;
}

bool isBlocked(int signal) {
  sigset_t now{};
  pthread_sigmask(SIG_BLOCK, nullptr, &now);
  return sigismember(&now, signal) == 1;
}

FileHandle arrivalsOf(const sigset_t& set) {
  FileHandle arrivals(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!arrivals.isOpen()) needSuccess(-errno, unhandled);
  return arrivals;
}

}  // namespace

// The system ignores the wish to block SIGKILL.
void blockSignal(int signal) {
  const sigset_t set = setOf(signal);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  if (!isBlocked(signal)) needSuccess(UV_EINVAL, unhandled);
}

BlockedSignal::BlockedSignal(int signal) : set_(setOf(signal)), wasBlocked_(isBlocked(signal)) {
  blockSignal(signal);
}

BlockedSignal::~BlockedSignal() {
  const timespec now{};
  while (sigtimedwait(&set_, nullptr, &now) > 0) {
  }
  if (!wasBlocked_) pthread_sigmask(SIG_UNBLOCK, &set_, nullptr);
}

SignalWatch::SignalWatch(EventLoop& loop, int signal, std::function<void()> handle)
    : handle_(std::move(handle)),
      blocked_(signal),
      arrivals_(arrivalsOf(blocked_.set())),
      watch_(makeHandle<uv_poll_t>(loop, this, uv_poll_init, arrivals_.get())) {
  const auto onArrival = [](uv_poll_t* watch, int /*status*/, int /*events*/) {
    auto* const self = static_cast<SignalWatch*>(watch->data);
    if (self != nullptr && self->take()) self->handle_();
  };
  needSuccess(uv_poll_start(watch_.get(), UV_READABLE, onArrival), unhandled);
}

bool SignalWatch::take() const noexcept {
  bool hasArrived = false;
  signalfd_siginfo arrival{};
  while (read(arrivals_.get(), &arrival, sizeof arrival) > 0)
    hasArrived = true;
  return hasArrived;
}

}  // namespace ZelAgent
