#pragma once

#include <uv.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

/// The loop that runs the callbacks of all signals, clients and timers, one after the other on one
/// thread. The agent must not be called from two threads.
///
/// When libuv gets no memory, the process ends by `Duolog::outOfMemory`.
///
/// A handle is closed before its memory is freed. Every handle is closed before the loop.
class EventLoop final : public Scheduler {
 public:
  EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;
  /// Precondition: every handle has been closed.
  ~EventLoop();

  [[nodiscard]] uv_loop_t* get() noexcept { return &loop_; }
  /// Runs until `stop`.
  void run() { uv_run(&loop_, UV_RUN_DEFAULT); }
  void stop() noexcept { uv_stop(&loop_); }

  [[nodiscard]] std::unique_ptr<RepeatedCall> every(std::chrono::milliseconds period,
                                                    Call call) override;
  [[nodiscard]] std::unique_ptr<RepeatedCall> everyRound(Call call) override;

 private:
  uv_loop_t loop_{};
};

/// Closes a handle. The loop frees its memory.
struct CloseHandle {
  /// `data` becomes null at once, so that later callbacks see that the owner is gone.
  template <class Handle>
  void operator()(Handle* handle) const noexcept {
    handle->data = nullptr;
    uv_close(reinterpret_cast<uv_handle_t*>(handle),
             [](uv_handle_t* closed) { delete reinterpret_cast<Handle*>(closed); });
  }
};

template <class Handle>
using LoopHandle = std::unique_ptr<Handle, CloseHandle>;

/// Throws a `std::runtime_error` with the message of libuv if the result is an error.
inline void needSuccess(int result, const char* what) {
  if (result < 0) throw std::runtime_error(std::string(what) + ": " + uv_strerror(result));
}

/// A handle whose `data` is `owner`. `initialise` is a function of libuv.
template <class Handle, class Initialise, class... Arguments>
[[nodiscard]] LoopHandle<Handle> makeHandle(EventLoop& loop, void* owner, Initialise initialise,
                                            Arguments... arguments) {
  auto handle = std::make_unique<Handle>();
  needSuccess(initialise(loop.get(), handle.get(), arguments...), "the event loop");
  handle->data = owner;
  return LoopHandle<Handle>(handle.release());
}

}  // namespace ZelAgent
