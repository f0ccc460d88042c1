#pragma once

#include <chrono>
#include <string>

#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/protocol/ControlService.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

class Connection;

/// The owner of a connection, which the connection notifies.
class ConnectionOwner {
 public:
  /// The connection has a request that waits for its turn.
  virtual void wantsTurn() = 0;
  /// The connection has nothing left to do. The owner destroys it, possibly during the call.
  virtual void isDone(Connection& connection) = 0;

 protected:
  ~ConnectionOwner() = default;
};

/// The connection of one client. The client may be slow, silent, hostile or gone.
///
/// Requests are answered in order, one in each turn. The next one is answered when the system has
/// accepted the whole previous answer. While an answer waits, nothing is read. So at most one
/// answer and slightly more than the longest request are kept for a client. A client that reads
/// nothing of an answer during `timeout` is disconnected.
class Connection final {
 public:
  /// `stream` is connected. The other objects must outlive this.
  Connection(EventLoop& loop, LoopHandle<uv_pipe_t> stream, ControlService& service,
             ConnectionOwner& owner, std::chrono::milliseconds timeout);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() = default;

  [[nodiscard]] bool hasRequest() const noexcept;
  /// Answers one request, if there is one. This may end the connection.
  void takeTurn();

 private:
  [[nodiscard]] bool isDone() const noexcept;
  [[nodiscard]] uv_stream_t* stream() const noexcept;

  void proceed();
  void read();
  void receive(ssize_t size, const char* bytes);
  void send(std::string bytes);
  void sendLater(std::string bytes);
  void noteSent(int result);
  void watchProgress();
  void checkProgress();

  LoopHandle<uv_pipe_t> stream_;
  LoopHandle<uv_timer_t> timer_;
  ControlService& service_;
  ConnectionOwner& owner_;
  std::chrono::milliseconds timeout_;
  RequestLines lines_;
  std::size_t unsent_ = 0;   // at the last check of progress
  unsigned quietTicks_ = 0;  // in a row, without progress
  bool isSending_ = false;
  bool hasEnded_ = false;  // no more bytes will arrive
  bool isDropped_ = false;
  bool isReading_ = false;
};

}  // namespace ZelAgent
