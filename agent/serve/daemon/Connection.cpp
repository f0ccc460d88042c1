#include "agent/serve/daemon/Connection.h"

#include <cstddef>
#include <utility>

namespace ZelAgent {

Connection::Connection(std::unique_ptr<Stream> stream, Scheduler& scheduler,
                       ControlService& service, AnswerRoom& room, ConnectionOwner& owner,
                       const ServerLimits& limits)
    : stream_(std::move(stream)),
      patience_(scheduler, *stream_, limits, [this] { failed(); }),
      service_(service),
      room_(room),
      waiting_(room),
      owner_(owner) {
  proceed();
}

void Connection::takeTurn() {
  const std::size_t room = room_.forNext();
  Reply reply =
      rest_ ? service_.continued(std::move(rest_), room) : service_.reply(lines_.next(), room);
  rest_ = std::move(reply.rest);
  isLast_ = reply.isLast;
  send(std::move(reply.bytes));
}

void Connection::received(std::string_view bytes) {
  lines_.append(bytes);
  if (!lines_.hasNext()) return;
  stream_->stopReading();
  proceed();
}

void Connection::receivedEnd() {
  lines_.end();
  hasEnded_ = true;
  proceed();
}

void Connection::wrote() {
  patience_.stop();
  waiting_.leave();
  proceed();
}

void Connection::failed() {
  owner_.isDone(*this);
}

// Starts the next step of a connection that neither reads nor waits. The step may destroy this
// object, so nothing may follow a call.
void Connection::proceed() {
  if (!isLast_ && (rest_ || lines_.hasNext())) {
    owner_.wantsTurn(*this);
  } else if (isLast_ || hasEnded_) {
    owner_.isDone(*this);
  } else {
    stream_->startReading(*this);
  }
}

// Nothing may follow a call, as for `proceed`.
void Connection::send(std::string bytes) {
  const std::size_t whole = bytes.size();
  if (!bytes.empty()) bytes.erase(0, stream_->write(bytes));
  if (bytes.empty()) return proceed();
  waiting_.enter(whole);
  patience_.start(bytes.size());
  stream_->writeLater(std::move(bytes), *this);
}

}  // namespace ZelAgent
