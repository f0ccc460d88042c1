#include "tests/agent/serve/simulator/SimulatedDaemon.h"

#include <utility>

#include "agent/serve/daemon/ReloadReport.h"
#include "tests/agent/FixedClock.h"

namespace ZelAgent {

SimulatedDaemon::SimulatedDaemon(const std::string& file, std::uint32_t chipCapacity)
    : file_(file), served_(file, chipCapacity, clientTimeout, fixedTime) {}

void SimulatedDaemon::start() {
  recovery_.emplace(scheduler_, served_);
  static_cast<void>(served_.start());
  ServerLimits limits;
  limits.clientTimeout = clientTimeout;
  server_.emplace(scheduler_, served_, limits);
}

void SimulatedDaemon::terminate() {
  server_.reset();
  recovery_.reset();
  served_.agent().removeAll();
}

std::vector<std::string> SimulatedDaemon::printed() {
  return std::exchange(printed_, {});
}

void SimulatedDaemon::reload() {
  for (const std::string& line : reportReload(file_, [this] { return served_.reload(); }))
    printed_.push_back(line);
}

}  // namespace ZelAgent
