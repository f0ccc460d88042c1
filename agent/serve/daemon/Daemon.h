// Why: an agent that serves has one life: it takes its configuration, listens, changes when it is
// told, and leaves as it came.
// Always: at the end nothing is left: no client, then no socket file, then no configuration on the
// chip. A configuration that is wrong ends it only at the start.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "agent/commands/served/ServedAgent.h"
#include "agent/language/ExitStatus.h"
#include "agent/serve/daemon/ControlServer.h"
#include "agent/serve/daemon/EventLoop.h"

namespace ZelAgent {

struct DaemonOptions {
  std::string configuration;
  std::string socket;
  std::uint32_t chipCapacity = 1024;
  ServerLimits limits;
};

class Daemon final {
 public:
  Daemon(const DaemonOptions& options, std::ostream& out, std::ostream& err);
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  // Removes all configuration from the agent.
  ~Daemon();

  // Serves until SIGTERM or SIGINT. Throws a ConfigError, a SocketError, or another
  // std::runtime_error of the system.
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

}  // namespace ZelAgent
