#pragma once

#include <chrono>
#include <cstddef>
#include <list>
#include <memory>

#include "agent/serve/daemon/Connection.h"
#include "agent/serve/daemon/Scheduler.h"
#include "agent/serve/daemon/Stream.h"
#include "agent/serve/daemon/Turns.h"
#include "agent/serve/protocol/Answer.h"
#include "agent/serve/protocol/ControlService.h"

namespace ZelAgent {

/// The limits of a daemon for its clients.
struct ServerLimits {
  std::size_t clients = 256;
  /// The longest answer. At most one answer waits for each client.
  std::size_t unsentBytes = longestAnswer;
  /// How long a client may read nothing of an answer that waits. 0 is without a limit. Other values
  /// are at least 2 ms.
  std::chrono::milliseconds clientTimeout = std::chrono::seconds(30);
};

/// Serves clients, wherever their streams come from.
///
/// Clients that have requests take turns, one request in each turn. Clients beyond the limit get an
/// error and are closed.
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
  Turns turns_;
  std::list<Connection> connections_;
};

}  // namespace ZelAgent
