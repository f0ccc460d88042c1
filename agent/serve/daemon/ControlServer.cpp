#include "agent/serve/daemon/ControlServer.h"

#include <string>
#include <utility>

#include "agent/serve/protocol/Answer.h"

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

ControlServer::ControlServer(EventLoop& loop, ListeningSocket& socket, ServedAgent& served,
                             const ServerLimits& limits)
    : loop_(loop),
      limits_(limits),
      service_(served, limits.unsentBytes),
      turns_(makeHandle<uv_idle_t>(loop, this, uv_idle_init)),
      listener_(makePipe(loop, this)) {
  needSuccess(uv_pipe_open(listener_.get(), socket.release()), "the socket cannot be served");
  const auto onConnection = [](uv_stream_t* listener, int status) {
    auto* const self = static_cast<ControlServer*>(listener->data);
    if (self != nullptr && status == 0) self->accept();
  };
  needSuccess(uv_listen(streamOf(*listener_), backlog, onConnection),
              "the socket cannot be served");
}

void ControlServer::wantsTurn() {
  const auto onTurn = [](uv_idle_t* turns) {
    if (auto* const self = static_cast<ControlServer*>(turns->data)) self->giveTurns();
  };
  uv_idle_start(turns_.get(), onTurn);
}

void ControlServer::isDone(Connection& connection) {
  connections_.remove_if([&](const Connection& other) { return &other == &connection; });
}

void ControlServer::accept() {
  LoopHandle<uv_pipe_t> stream = makePipe(loop_, nullptr);
  if (uv_accept(streamOf(*listener_), streamOf(*stream)) != 0) return;
  if (connections_.size() >= limits_.clients) return refuse(*stream);
  ConnectionOwner& owner = *this;  // converted here: the base is private
  connections_.emplace_back(loop_, std::move(stream), service_, owner, limits_.clientTimeout);
}

// The framing of the client is not known yet. Any client can read a line of JSON.
void ControlServer::refuse(uv_pipe_t& stream) const {
  const Answer tooMany{ExitStatus::failure, std::to_string(limits_.clients) +
                                                " clients are connected, which is the limit; "
                                                "try again later"};
  std::string bytes = toBytes(tooMany, Framing::json);
  const uv_buf_t buffer = uv_buf_init(bytes.data(), static_cast<unsigned>(bytes.size()));
  uv_try_write(streamOf(stream), &buffer, 1);
}

// A turn may destroy its connection, and no other.
void ControlServer::giveTurns() {
  bool isWaiting = false;
  for (auto next = connections_.begin(); next != connections_.end();) {
    Connection& connection = *next++;
    const bool hadRequest = connection.hasRequest();
    if (hadRequest) connection.takeTurn();
    isWaiting = isWaiting || hadRequest;
  }
  if (!isWaiting) uv_idle_stop(turns_.get());
}

}  // namespace ZelAgent
