#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "agent/serve/daemon/AnswerRoom.h"
#include "agent/serve/daemon/Patience.h"
#include "agent/serve/daemon/Scheduler.h"
#include "agent/serve/daemon/ServerLimits.h"
#include "agent/serve/daemon/Stream.h"
#include "agent/serve/daemon/Turns.h"
#include "agent/serve/protocol/ControlService.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

class Connection;

/// The owner of a connection, which the connection notifies.
class ConnectionOwner {
 public:
  /// The connection has a request and waits for its turn. Meanwhile it does not end.
  virtual void wantsTurn(Connection& connection) = 0;
  /// The connection has nothing left to do. The owner destroys it, possibly during the call.
  virtual void isDone(Connection& connection) = 0;

 protected:
  ~ConnectionOwner() = default;
};

/// The connection of one client. The client may be slow, silent, hostile or gone.
///
/// At each moment it does one of three things: it reads until it has a request, waits for the turn
/// of that request, or waits until the system has accepted the whole answer. While it waits,
/// nothing is read. So at most one answer and slightly more than the longest request are kept for a
/// client. Requests are answered in order, one in each turn. Each part of an answer in parts has
/// a turn too, after the part before it was accepted: it is made when its client can take it, and
/// others are answered between two parts. An answer that waits for a change in progress asks for a
/// turn in each round. For room and patience a part is an answer. A client that
/// does not read its answer in time is disconnected; see `Patience`.
class Connection final : public TurnTaker, private StreamUser {
 public:
  /// The objects that are passed by reference must outlive this.
  Connection(std::unique_ptr<Stream> stream, Scheduler& scheduler, ControlService& service,
             AnswerRoom& room, ConnectionOwner& owner, const ServerLimits& limits);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() = default;

  /// Answers one request, or sends the next part of its answer. This may end the connection.
  /// Precondition: it asked for the turn.
  void takeTurn() override;

 private:
  void received(std::string_view bytes) override;
  void receivedEnd() override;
  void wrote() override;
  void failed() override;

  void proceed();
  void send(std::string bytes);

  std::unique_ptr<Stream> stream_;
  Patience patience_;
  ControlService& service_;
  AnswerRoom& room_;
  WaitingAnswer waiting_;
  ConnectionOwner& owner_;
  RequestLines lines_;
  std::unique_ptr<AnswerParts> rest_;  // of the present answer, if it has more parts
  bool isLast_ = false;                // the connection ends after the present answer
  bool hasEnded_ = false;              // no bytes will be read any more
};

}  // namespace ZelAgent
