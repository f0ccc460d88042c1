#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "agent/commands/served/ServedAgent.h"
#include "agent/language/ExitStatus.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/serve/daemon/ControlServer.h"
#include "agent/serve/daemon/EventLoop.h"

namespace ZelAgent {

struct DaemonOptions {
  std::string configuration;
  std::string socket;
  std::uint32_t chipCapacity = usualChipCapacity;
  ServerLimits limits;
};

/// An agent that serves: it applies its configuration, listens, changes on request, and ends.
///
/// At the end the clients are closed, then the socket file is removed, then the configuration is
/// removed from the chip. A wrong configuration ends the daemon at its start only.
class Daemon final {
 public:
  Daemon(const DaemonOptions& options, std::ostream& out, std::ostream& err);
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  /// Removes all configuration from the agent.
  ~Daemon();

  /// Serves until SIGTERM or SIGINT. Throws a `ConfigError`, a `SocketError`, or another
  /// `std::runtime_error` of the system.
  [[nodiscard]] ExitStatus serve();

 private:
  void reload();
  // A line on `err`, which may be closed.
  void tell(const std::string& line);
  void warn(const std::vector<std::string>& warnings);
  [[nodiscard]] bool announce();

  DaemonOptions options_;
  std::ostream& out_;
  std::ostream& err_;
  EventLoop loop_;
  ServedAgent served_;
};

/// `zel-agent serve`. Returns `success` only if a signal ended the daemon. Prints anything else
/// that ends it on `err`, in one line.
[[nodiscard]] ExitStatus serve(const DaemonOptions& options, std::ostream& out, std::ostream& err);

}  // namespace ZelAgent
