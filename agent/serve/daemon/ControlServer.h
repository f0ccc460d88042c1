#pragma once

#include <chrono>
#include <cstddef>
#include <list>

#include "agent/serve/daemon/Connection.h"
#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/ListeningSocket.h"
#include "agent/serve/protocol/ControlService.h"

namespace ZelAgent {

/// The limits of a daemon for its clients.
struct ServerLimits {
  std::size_t clients = 256;
  /// The longest answer. At most one answer waits for each client.
  std::size_t unsentBytes = std::size_t{8} * 1024 * 1024;
  /// How long a client may read nothing of an answer that waits. 0 is without a limit.
  std::chrono::milliseconds clientTimeout = std::chrono::seconds(30);
};

/// Serves the clients of one socket.
///
/// In each turn of the loop, one request of every client that has requests is answered. So no
/// client waits for all requests of another. Clients beyond the limit get an error and are closed.
class ControlServer final : private ConnectionOwner {
 public:
  /// The objects that are passed by reference must outlive this.
  ControlServer(EventLoop& loop, ListeningSocket& socket, ServedAgent& served,
                const ServerLimits& limits);
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;
  /// Closes every connection.
  ~ControlServer() = default;

 private:
  void wantsTurn() override;
  void isDone(Connection& connection) override;

  void accept();
  void refuse(uv_pipe_t& stream) const;
  void giveTurns();

  EventLoop& loop_;
  ServerLimits limits_;
  ControlService service_;
  std::list<Connection> connections_;
  LoopHandle<uv_idle_t> turns_;  // runs while a request waits
  LoopHandle<uv_pipe_t> listener_;
};

}  // namespace ZelAgent
