#pragma once

#include <chrono>
#include <cstddef>
#include <list>

#include "agent/serve/daemon/Connection.h"
#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/ListeningSocket.h"
#include "agent/serve/protocol/ControlService.h"

namespace ZelAgent {

/// What one daemon allows its clients.
struct ServerLimits {
  std::size_t clients = 256;
  /// Of one answer, which is all that can wait to be sent to a client.
  std::size_t unsentBytes = std::size_t{8} * 1024 * 1024;
  /// How long a client may accept nothing of an answer that waits. 0 is without a limit.
  std::chrono::milliseconds patience = std::chrono::seconds(30);
};

/// Serves the clients of one socket.
///
/// In each turn of the loop every client that has requests gets one of them answered, so no client
/// waits for all requests of another. Clients beyond the limit get an error and are closed.
class ControlServer final : private ConnectionOwner {
 public:
  /// All that is passed by reference must outlive this.
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
