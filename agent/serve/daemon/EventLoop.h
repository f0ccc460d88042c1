// Why: signals, clients and timers all come to one thread, one after the other, because nothing
// that the agent is made of may be called from two.
// Always: a handle is closed before its memory is freed, and every handle before its loop.
#pragma once

#include <uv.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace ZelAgent {

class EventLoop final {
 public:
  EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;
  // Precondition: no handle is left that was not given up.
  ~EventLoop();

  [[nodiscard]] uv_loop_t* get() noexcept { return &loop_; }
  // Until `stop`.
  void run() { uv_run(&loop_, UV_RUN_DEFAULT); }
  void stop() noexcept { uv_stop(&loop_); }

 private:
  uv_loop_t loop_{};
};

struct GiveUpHandle {
  // `data` becomes null at once, for callbacks that come late; the memory is freed by the loop.
  template <class Handle>
  void operator()(Handle* handle) const noexcept {
    handle->data = nullptr;
    uv_close(reinterpret_cast<uv_handle_t*>(handle),
             [](uv_handle_t* closed) { delete reinterpret_cast<Handle*>(closed); });
  }
};

template <class Handle>
using LoopHandle = std::unique_ptr<Handle, GiveUpHandle>;

// Throws what libuv says is wrong.
inline void needSuccess(int result, const char* what) {
  if (result < 0) throw std::runtime_error(std::string(what) + ": " + uv_strerror(result));
}

// A handle whose `data` is `owner`; `initialise` is one of libuv's.
template <class Handle, class Initialise, class... Arguments>
[[nodiscard]] LoopHandle<Handle> makeHandle(EventLoop& loop, void* owner, Initialise initialise,
                                            Arguments... arguments) {
  auto handle = std::make_unique<Handle>();
  needSuccess(initialise(loop.get(), handle.get(), arguments...), "the event loop");
  handle->data = owner;
  return LoopHandle<Handle>(handle.release());
}

}  // namespace ZelAgent
