#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "agent/commands/served/ServedAgent.h"
#include "agent/language/ExitStatus.h"
#include "agent/language/Limits.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/serve/daemon/ControlServer.h"
#include "agent/serve/daemon/DaemonLog.h"
#include "agent/serve/daemon/EventLoop.h"

namespace ZelAgent {

struct DaemonOptions {
  std::string configuration;
  std::string socket;
  ChipOptions chip;
  ServerLimits limits;
  Leniency leniency = Leniency::strict;
};

/// An agent that applies its configuration and serves clients until a signal ends it. While the
/// chip refuses actions, it asks again once a second, as RecoveryTimer.h describes.
///
/// Its clients and signals do not block it. Any number of SIGHUPs that arrive before a reload are
/// one reload, and clients have their turn between two reloads. A large configuration is applied in
/// slices, and clients have their turn between them. It prints lines, and the text trace, on
/// streams that must not wait for a reader; see `LineStream`. Each line of the log has a time or a
/// priority; see `DaemonLog`. When memory runs out, the process ends by `Duolog::outOfMemory`.
///
/// At the end the clients are closed, then the socket file is removed, then a change in progress is
/// completed, then the configuration is removed from the chip. A wrong configuration ends the
/// daemon only at its start.
class Daemon final {
 public:
  Daemon(const DaemonOptions& options, std::ostream& out, DaemonLog& log);
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  /// Removes all configuration from the agent.
  ~Daemon();

  /// Serves until SIGTERM or SIGINT. Throws a `ConfigError`, a `SocketError`, or another
  /// `std::runtime_error` of the system.
  [[nodiscard]] ExitStatus serve();

 private:
  // Applies the configuration for the first time. Returns warnings.
  [[nodiscard]] std::vector<std::string> start();
  void printLines(const std::vector<std::string>& lines);
  // Prints that the daemon serves. Returns whether the line could be written.
  [[nodiscard]] bool announce();

  DaemonOptions options_;
  std::ostream& out_;
  DaemonLog& log_;
  EventLoop loop_;
  ServedAgent served_;
};

/// `zel-agent serve`. Returns `success` if a signal ended the daemon. Otherwise prints one line of
/// the log on `err` that says why it ended.
[[nodiscard]] ExitStatus serve(const DaemonOptions& options, std::ostream& out, std::ostream& err);

}  // namespace ZelAgent
