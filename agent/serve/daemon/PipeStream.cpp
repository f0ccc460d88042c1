#include "agent/serve/daemon/PipeStream.h"

#include <array>
#include <memory>
#include <utility>

namespace ZelAgent {
namespace {

// Bytes that wait until the system accepts them. They may outlive the stream.
struct Writing {
  uv_write_t request{};
  std::string bytes;
};

// Bytes that were read are used before the next read, so all streams share one buffer.
uv_buf_t sharedBuffer() {
  static std::array<char, 65536> bytes;
  return uv_buf_init(bytes.data(), bytes.size());
}

uv_buf_t bufferOf(std::string_view bytes) {
  // libuv only reads them, but its buffers are not const.
  return uv_buf_init(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()));
}

}  // namespace

PipeStream::PipeStream(LoopHandle<uv_pipe_t> pipe) : pipe_(std::move(pipe)) {
  pipe_->data = this;
}

void PipeStream::startReading(StreamUser& user) {
  user_ = &user;
  const auto giveBuffer = [](uv_handle_t*, std::size_t, uv_buf_t* buffer) {
    *buffer = sharedBuffer();
  };
  const auto onRead = [](uv_stream_t* stream, ssize_t result, const uv_buf_t* buffer) {
    if (auto* const self = static_cast<PipeStream*>(stream->data)) {
      self->noteRead(result, buffer->base);
    }
  };
  uv_read_start(stream(), giveBuffer, onRead);  // cannot fail on a connected stream
}

void PipeStream::stopReading() noexcept {
  uv_read_stop(stream());
}

std::size_t PipeStream::write(std::string_view bytes) {
  const uv_buf_t buffer = bufferOf(bytes);
  const int written = uv_try_write(stream(), &buffer, 1);
  return written > 0 ? static_cast<std::size_t>(written) : 0;
}

void PipeStream::writeLater(std::string bytes, StreamUser& user) {
  user_ = &user;
  auto writing = std::make_unique<Writing>();
  writing->bytes = std::move(bytes);
  writing->request.data = writing.get();
  const auto onWritten = [](uv_write_t* request, int result) {
    const std::unique_ptr<Writing> done(static_cast<Writing*>(request->data));
    if (auto* const self = static_cast<PipeStream*>(request->handle->data)) {
      self->noteWritten(result);
    }
  };
  const uv_buf_t buffer = bufferOf(writing->bytes);
  if (uv_write(&writing->request, stream(), &buffer, 1, onWritten) != 0) return user_->failed();
  static_cast<void>(writing.release());
}

std::size_t PipeStream::unwritten() const noexcept {
  return uv_stream_get_write_queue_size(stream());
}

uv_stream_t* PipeStream::stream() const noexcept {
  return reinterpret_cast<uv_stream_t*>(pipe_.get());
}

void PipeStream::noteRead(ssize_t result, const char* bytes) {
  if (result > 0) {
    user_->received({bytes, static_cast<std::size_t>(result)});
  } else if (result == UV_EOF) {
    user_->receivedEnd();
  } else if (result < 0) {
    user_->failed();
  }
}

void PipeStream::noteWritten(int result) {
  if (result == 0) {
    user_->wrote();
  } else {
    user_->failed();
  }
}

}  // namespace ZelAgent
