#pragma once

#include <uv.h>

#include <csignal>
#include <functional>

#include "Blinklog/FileHandle.h"
#include "agent/serve/daemon/EventLoop.h"

namespace ZelAgent {

/// Blocks a signal. Of the signals that arrive then, the system keeps one for a `SignalWatch`. A
/// process must block a signal before it starts threads. Throws a `std::runtime_error` for a signal
/// that cannot be blocked.
void blockSignal(int signal);

/// Blocks a signal during its lifetime. A signal that has arrived and has not been handled at the
/// end is dropped. A signal that was blocked before stays blocked.
class BlockedSignal final {
 public:
  /// Throws as `blockSignal`.
  explicit BlockedSignal(int signal);
  BlockedSignal(const BlockedSignal&) = delete;
  BlockedSignal& operator=(const BlockedSignal&) = delete;
  ~BlockedSignal();

  /// The signal alone.
  [[nodiscard]] const sigset_t& set() const noexcept { return set_; }

 private:
  sigset_t set_{};
  bool wasBlocked_;
};

/// Handles a signal on the loop. A signal that arrives before the loop runs is handled when the
/// loop runs.
///
/// The signal is blocked, and the loop reads it from a descriptor. So nothing is interrupted.
/// Several signals that arrive before the loop reads them are handled as one, and no number of
/// them prevents another signal.
class SignalWatch final {
 public:
  /// Throws a `std::runtime_error`. The loop must outlive this.
  SignalWatch(EventLoop& loop, int signal, std::function<void()> handle);
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;
  ~SignalWatch() = default;

 private:
  // Takes the signals that have arrived. Returns whether there was one.
  [[nodiscard]] bool take() const noexcept;

  std::function<void()> handle_;
  BlockedSignal blocked_;
  Blinklog::FileHandle arrivals_;
  LoopHandle<uv_poll_t> watch_;
};

}  // namespace ZelAgent
