#include "agent/serve/daemon/EventLoop.h"

#include <utility>

namespace ZelAgent {

EventLoop::EventLoop() {
  needSuccess(uv_loop_init(&loop_), "the event loop");
}

EventLoop::~EventLoop() {
  uv_run(&loop_, UV_RUN_DEFAULT);
  uv_loop_close(&loop_);
}

SignalWatch::SignalWatch(EventLoop& loop, int signal, std::function<void()> handle)
    : handle_(std::move(handle)), watch_(makeHandle<uv_signal_t>(loop, this, uv_signal_init)) {
  const auto onSignal = [](uv_signal_t* watch, int /*signal*/) {
    if (auto* const self = static_cast<SignalWatch*>(watch->data)) self->handle_();
  };
  needSuccess(uv_signal_start(watch_.get(), onSignal, signal), "a signal cannot be handled");
}

}  // namespace ZelAgent
