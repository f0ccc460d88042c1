// Why: operators and programs talk to the daemon over one socket, many at a time.
// Always: every client that has requests has one of them answered in each turn of the loop, so none
// waits for all that another has sent. There are never more clients than allowed; those who come
// then are told so.
#pragma once

#include <chrono>
#include <cstddef>
#include <list>

#include "agent/serve/daemon/Connection.h"
#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/ListeningSocket.h"
#include "agent/serve/protocol/ControlService.h"

namespace ZelAgent {

struct ServerLimits {
  std::size_t clients = 256;
  // Of one answer, which is all that can wait to be sent to a client.
  std::size_t unsentBytes = std::size_t{8} * 1024 * 1024;
  // How long a client may take nothing of an answer that waits; 0 for ever.
  std::chrono::milliseconds patience = std::chrono::seconds(30);
};

class ControlServer final : private ConnectionOwner {
 public:
  // The others outlive this.
  ControlServer(EventLoop& loop, ListeningSocket& socket, ServedAgent& served,
                const ServerLimits& limits);
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;
  // Closes every connection.
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
