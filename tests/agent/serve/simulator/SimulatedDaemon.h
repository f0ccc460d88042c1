// A daemon without sockets, signals and a clock.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/daemon/ControlServer.h"
#include "agent/serve/daemon/RecoveryTimer.h"
#include "agent/serve/daemon/RequestedReloads.h"
#include "tests/agent/serve/daemon/ManualScheduler.h"
#include "tests/agent/serve/daemon/ScriptedClient.h"

namespace ZelAgent {

// The parts that a daemon consists of, in the same order, on a scheduler that a test drives.
class SimulatedDaemon final {
 public:
  static constexpr std::chrono::milliseconds clientTimeout = std::chrono::seconds(10);

  SimulatedDaemon(const std::string& file, std::uint32_t chipCapacity);

  // Applies the file, and serves from then on.
  void start();
  void accept(ScriptedClient& client) { server_->accept(client.connect()); }
  // As a SIGHUP.
  void hangUp() { reloads_.request(); }
  // As a SIGTERM: closes the clients, then removes the configuration.
  void terminate();

  [[nodiscard]] ManualScheduler& scheduler() { return scheduler_; }
  [[nodiscard]] ServedAgent& served() { return served_; }
  // The lines about reloads, without what an earlier call returned.
  [[nodiscard]] std::vector<std::string> printed();

 private:
  void print(const std::vector<std::string>& lines);

  ManualScheduler scheduler_;
  ServedAgent served_;
  std::vector<std::string> printed_;
  RequestedReloads reloads_{scheduler_, served_, [this](const auto& lines) { print(lines); }};
  std::optional<RecoveryTimer> recovery_;
  std::optional<ControlServer> server_;
};

}  // namespace ZelAgent
