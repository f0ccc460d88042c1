#pragma once

#include <list>
#include <memory>

#include "agent/serve/daemon/AnswerRoom.h"
#include "agent/serve/daemon/ChangeSlices.h"
#include "agent/serve/daemon/Connection.h"
#include "agent/serve/daemon/Scheduler.h"
#include "agent/serve/daemon/ServerLimits.h"
#include "agent/serve/daemon/Stream.h"
#include "agent/serve/daemon/Turns.h"
#include "agent/serve/protocol/ControlService.h"

namespace ZelAgent {

/// Serves clients, wherever their streams come from.
///
/// Clients that have requests take turns, one request in each turn, also between the slices of a
/// change of the configuration. A request that changes the agent waits until that change is
/// complete. Clients beyond the limit get an error and are closed. All other clients are answered,
/// whatever some of them do: an answer either has room (`AnswerRoom`) or is replaced by a short
/// error, and its room is free again within `clientTimeout` * `answerTimeouts`.
class ControlServer final : private ConnectionOwner {
 public:
  /// The objects that are passed by reference must outlive this.
  ControlServer(Scheduler& scheduler, ServedAgent& served, const ServerLimits& limits);
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;
  /// Closes every connection.
  ~ControlServer() = default;

  /// Serves a client that has connected, or refuses it.
  void accept(std::unique_ptr<Stream> stream);

 private:
  void wantsTurn(Connection& connection) override;
  void isDone(Connection& connection) override;

  void refuse(Stream& stream) const;

  Scheduler& scheduler_;
  ServerLimits limits_;
  ControlService service_;
  AnswerRoom room_;
  Turns turns_;
  ChangeSlices slices_;
  std::list<Connection> connections_;
};

}  // namespace ZelAgent
