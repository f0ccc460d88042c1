#include "tests/agent/serve/simulator/SimulatedDaemon.h"

#include <utility>

#include "tests/agent/FixedClock.h"

namespace ZelAgent {

SimulatedDaemon::SimulatedDaemon(const std::string& file, std::uint32_t chipCapacity)
    : served_(file, chipCapacity, clientTimeout, fixedTime) {}

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

void SimulatedDaemon::print(const std::vector<std::string>& lines) {
  printed_.insert(printed_.end(), lines.begin(), lines.end());
}

}  // namespace ZelAgent
