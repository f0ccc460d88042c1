#include "agent/serve/daemon/Connection.h"

#include <array>
#include <utility>

namespace ZelAgent {
namespace {

// An answer that is being sent. It may outlive the connection that sent it.
struct Sending {
  uv_write_t request{};
  std::string bytes;
};

// Bytes that were read are copied before the next read, so all connections share one buffer.
uv_buf_t sharedBuffer() {
  static std::array<char, 65536> bytes;
  return uv_buf_init(bytes.data(), bytes.size());
}

uv_buf_t bufferOf(std::string& bytes) {
  return uv_buf_init(bytes.data(), static_cast<unsigned>(bytes.size()));
}

}  // namespace

Connection::Connection(EventLoop& loop, LoopHandle<uv_pipe_t> stream, ControlService& service,
                       ConnectionOwner& owner, std::chrono::milliseconds timeout)
    : stream_(std::move(stream)),
      timer_(makeHandle<uv_timer_t>(loop, this, uv_timer_init)),
      service_(service),
      owner_(owner),
      timeout_(timeout) {
  stream_->data = this;
  read();
}

bool Connection::hasRequest() const noexcept {
  return !isSending_ && !isDropped_ && lines_.hasNext();
}

void Connection::takeTurn() {
  if (!hasRequest()) return;
  Reply reply = service_.reply(lines_.next());
  hasEnded_ = hasEnded_ || reply.isLast;
  send(std::move(reply.bytes));
  proceed();
}

bool Connection::isDone() const noexcept {
  return isDropped_ || (hasEnded_ && !isSending_ && !lines_.hasNext());
}

uv_stream_t* Connection::stream() const noexcept {
  return reinterpret_cast<uv_stream_t*>(stream_.get());
}

// Starts the next step of the connection. It may destroy this object, so nothing may follow a call.
void Connection::proceed() {
  if (isDone()) {
    owner_.isDone(*this);
  } else if (hasRequest()) {
    owner_.wantsTurn();
  } else if (!isSending_ && !hasEnded_) {
    read();
  }
}

void Connection::read() {
  if (isReading_) return;
  const auto giveBuffer = [](uv_handle_t*, std::size_t, uv_buf_t* buffer) {
    *buffer = sharedBuffer();
  };
  const auto onRead = [](uv_stream_t* stream, ssize_t size, const uv_buf_t* buffer) {
    if (auto* const self = static_cast<Connection*>(stream->data)) {
      self->receive(size, buffer->base);
    }
  };
  isReading_ = true;
  uv_read_start(stream(), giveBuffer, onRead);  // cannot fail on a connected stream
}

void Connection::receive(ssize_t size, const char* bytes) {
  if (size == 0) return;
  if (size == UV_EOF) {
    lines_.end();
    hasEnded_ = true;
  } else if (size < 0) {
    isDropped_ = true;
  } else {
    lines_.append({bytes, static_cast<std::size_t>(size)});
  }
  if (lines_.hasNext() || hasEnded_ || isDropped_) {
    uv_read_stop(stream());
    isReading_ = false;
  }
  proceed();
}

void Connection::send(std::string bytes) {
  uv_buf_t buffer = bufferOf(bytes);
  const int sent = uv_try_write(stream(), &buffer, 1);
  if (sent > 0) bytes.erase(0, static_cast<std::size_t>(sent));
  if (!bytes.empty()) sendLater(std::move(bytes));
}

void Connection::sendLater(std::string bytes) {
  auto sending = std::make_unique<Sending>();
  sending->bytes = std::move(bytes);
  sending->request.data = sending.get();
  const auto onSent = [](uv_write_t* request, int result) {
    const std::unique_ptr<Sending> done(static_cast<Sending*>(request->data));
    if (auto* const self = static_cast<Connection*>(request->handle->data)) self->noteSent(result);
  };
  const uv_buf_t buffer = bufferOf(sending->bytes);
  isSending_ = uv_write(&sending->request, stream(), &buffer, 1, onSent) == 0;
  isDropped_ = !isSending_;
  if (isDropped_) return;
  static_cast<void>(sending.release());
  watchProgress();
}

void Connection::noteSent(int result) {
  isSending_ = false;
  uv_timer_stop(timer_.get());
  if (result < 0) isDropped_ = true;
  proceed();
}

void Connection::watchProgress() {
  if (timeout_.count() == 0) return;
  const auto onTick = [](uv_timer_t* timer) {
    if (auto* const self = static_cast<Connection*>(timer->data)) self->checkProgress();
  };
  const auto half = static_cast<std::uint64_t>(timeout_.count() / 2);
  unsent_ = uv_stream_get_write_queue_size(stream());
  quietTicks_ = 0;
  uv_update_time(timer_->loop);  // computing the answer may have taken long
  uv_timer_start(timer_.get(), onTick, half, half);
}

// After a long callback the loop runs the timer before it sends bytes that could be sent. It sends
// between two ticks, so two ticks without progress are needed.
void Connection::checkProgress() {
  const std::size_t unsent = uv_stream_get_write_queue_size(stream());
  quietTicks_ = unsent == unsent_ ? quietTicks_ + 1 : 0;
  unsent_ = unsent;
  isDropped_ = quietTicks_ == 2;
  proceed();
}

}  // namespace ZelAgent
