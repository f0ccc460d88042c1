// Two connected sockets in one process: a stream of an event loop, and the client's end.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Blinklog/FileHandle.h"
#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/PipeStream.h"

namespace ZelAgent {

class SocketPair final {
 public:
  // The daemon's end has a small buffer for the bytes that it sends.
  explicit SocketPair(EventLoop& loop);

  [[nodiscard]] std::unique_ptr<PipeStream> stream() { return std::move(stream_); }

  // These never block. They use the client's end.
  void send(std::string_view bytes) const;
  // The bytes that have arrived, but at most `most`.
  [[nodiscard]] std::string receive(std::size_t most) const;
  void endSending() const;
  void close() { client_ = Blinklog::FileHandle(-1); }

 private:
  std::unique_ptr<PipeStream> stream_;
  Blinklog::FileHandle client_{-1};
};

}  // namespace ZelAgent
