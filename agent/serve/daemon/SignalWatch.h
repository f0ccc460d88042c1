// Why: a signal must not interrupt a change of the agent.
// Always: the handler runs on the loop, between its other work; a signal that comes before the loop
// runs is handled when it does.
#pragma once

#include <functional>

#include "agent/serve/daemon/EventLoop.h"

namespace ZelAgent {

class SignalWatch final {
 public:
  SignalWatch(EventLoop& loop, int signal, std::function<void()> handle);
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;
  ~SignalWatch() = default;

 private:
  std::function<void()> handle_;
  LoopHandle<uv_signal_t> watch_;
};

}  // namespace ZelAgent
