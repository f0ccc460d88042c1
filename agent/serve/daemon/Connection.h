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
  /// A request waits for a turn.
  virtual void wantsTurn() = 0;
  /// The connection has nothing left to do and is to be destroyed. That may happen at once.
  virtual void isDone(Connection& connection) = 0;

 protected:
  ~ConnectionOwner() = default;
};

/// The connection of one client, which may be slow, silent, hostile or gone.
///
/// Requests are answered in order, one in each turn. The next is answered when the system has
/// accepted the whole answer before. While an answer waits, nothing is read. So at most one answer
/// and slightly more than the longest request are kept for a client. A client that accepts nothing
/// of an answer during `patience` is dropped.
class Connection final {
 public:
  /// `stream` is connected. The other objects must outlive this.
  Connection(EventLoop& loop, LoopHandle<uv_pipe_t> stream, ControlService& service,
             ConnectionOwner& owner, std::chrono::milliseconds patience);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() = default;

  [[nodiscard]] bool hasRequest() const noexcept;
  /// Answers one request, if there is one. This may end the connection.
  void takeTurn();

 private:
  [[nodiscard]] bool isDone() const noexcept;
  [[nodiscard]] uv_stream_t* stream() const noexcept;

  void goOn();
  void read();
  void receive(ssize_t size, const char* bytes);
  void send(std::string bytes);
  void sendLater(std::string bytes);
  void noteSent(int result);
  void watchProgress();
  void lookAtProgress();

  LoopHandle<uv_pipe_t> stream_;
  LoopHandle<uv_timer_t> timer_;
  ControlService& service_;
  ConnectionOwner& owner_;
  std::chrono::milliseconds patience_;
  RequestLines lines_;
  std::size_t unsent_ = 0;   // when progress was last looked at
  unsigned quietTicks_ = 0;  // in a row, without progress
  bool isSending_ = false;
  bool hasEnded_ = false;  // nothing more comes
  bool isDropped_ = false;
  bool isReading_ = false;
};

}  // namespace ZelAgent
