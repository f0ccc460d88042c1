#pragma once

#include <string>
#include <string_view>

#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/Stream.h"

namespace ZelAgent {

/// A stream over a connected Unix socket of the event loop.
class PipeStream final : public Stream {
 public:
  explicit PipeStream(LoopHandle<uv_pipe_t> pipe);

  void startReading(StreamUser& user) override;
  void stopReading() noexcept override;
  [[nodiscard]] std::size_t write(std::string_view bytes) override;
  void writeLater(std::string bytes, StreamUser& user) override;
  [[nodiscard]] std::size_t unwritten() const noexcept override;

 private:
  [[nodiscard]] uv_stream_t* stream() const noexcept;
  void noteRead(ssize_t result, const char* bytes);
  void noteWritten(int result);

  LoopHandle<uv_pipe_t> pipe_;
  StreamUser* user_ = nullptr;
};

}  // namespace ZelAgent
