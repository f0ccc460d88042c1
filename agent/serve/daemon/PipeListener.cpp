#include "agent/serve/daemon/PipeListener.h"

#include <utility>

#include "agent/serve/daemon/PipeStream.h"

namespace ZelAgent {
namespace {

constexpr int backlog = 128;

uv_stream_t* streamOf(uv_pipe_t& pipe) noexcept {
  return reinterpret_cast<uv_stream_t*>(&pipe);
}

LoopHandle<uv_pipe_t> makePipe(EventLoop& loop, void* owner) {
  return makeHandle<uv_pipe_t>(loop, owner, uv_pipe_init, 0);
}

}  // namespace

PipeListener::PipeListener(EventLoop& loop, ListeningSocket& socket, OnClient onClient)
    : loop_(loop), onClient_(std::move(onClient)), listener_(makePipe(loop, this)) {
  needSuccess(uv_pipe_open(listener_.get(), socket.release()), "the socket cannot be served");
  const auto onConnection = [](uv_stream_t* listener, int status) {
    auto* const self = static_cast<PipeListener*>(listener->data);
    if (self != nullptr && status == 0) self->accept();
  };
  needSuccess(uv_listen(streamOf(*listener_), backlog, onConnection),
              "the socket cannot be served");
}

void PipeListener::accept() {
  LoopHandle<uv_pipe_t> client = makePipe(loop_, nullptr);
  if (uv_accept(streamOf(*listener_), streamOf(*client)) != 0) return;
  onClient_(std::make_unique<PipeStream>(std::move(client)));
}

}  // namespace ZelAgent
