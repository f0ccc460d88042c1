#pragma once

#include <functional>
#include <memory>

#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/ListeningSocket.h"
#include "agent/serve/daemon/Stream.h"

namespace ZelAgent {

/// Accepts the clients of a socket on the event loop.
class PipeListener final {
 public:
  using OnClient = std::function<void(std::unique_ptr<Stream>)>;

  /// Calls `onClient` for each client that connects. The loop must outlive this.
  PipeListener(EventLoop& loop, ListeningSocket& socket, OnClient onClient);
  PipeListener(const PipeListener&) = delete;
  PipeListener& operator=(const PipeListener&) = delete;
  /// Accepts no more clients.
  ~PipeListener() = default;

 private:
  void accept();

  EventLoop& loop_;
  OnClient onClient_;
  LoopHandle<uv_pipe_t> listener_;
};

}  // namespace ZelAgent
