// Why: a client may be slow, silent, hostile or gone, and none of that may matter to others.
// Always: requests are answered in their order, one a turn, the next only when the answer before
// has been taken by the system; while one waits nothing is read. So what is kept for a client is at
// most one answer and a little more than the longest request. A client that takes nothing of an
// answer for the time allowed is dropped.
#pragma once

#include <chrono>
#include <string>

#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/protocol/ControlService.h"
#include "agent/serve/protocol/RequestLines.h"

namespace ZelAgent {

class Connection;

// Whom a connection tells of itself.
class ConnectionOwner {
 public:
  // A request waits for a turn.
  virtual void wantsTurn() = 0;
  // There is nothing left to do: the connection is to be destroyed, and may be at once.
  virtual void isDone(Connection& connection) = 0;

 protected:
  ~ConnectionOwner() = default;
};

class Connection final {
 public:
  // `stream` is connected. The others outlive this.
  Connection(EventLoop& loop, LoopHandle<uv_pipe_t> stream, ControlService& service,
             ConnectionOwner& owner, std::chrono::milliseconds patience);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() = default;

  [[nodiscard]] bool hasRequest() const noexcept;
  // Answers one request, if there is one. It may be the end of the connection.
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
