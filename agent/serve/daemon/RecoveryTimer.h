#pragma once

#include <chrono>
#include <memory>

#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

/// Makes a step of an agent's recovery in each period, while the agent has something to recover. A
/// daemon needs no event for that. While there is nothing to recover, the loop may sleep.
class RecoveryTimer final {
 public:
  static constexpr std::chrono::milliseconds period = std::chrono::seconds(1);

  /// The scheduler and the agent must outlive this. This is the agent's only observer.
  RecoveryTimer(Scheduler& scheduler, ServedAgent& served);
  RecoveryTimer(const RecoveryTimer&) = delete;
  RecoveryTimer& operator=(const RecoveryTimer&) = delete;
  ~RecoveryTimer();

 private:
  void step();
  void startOrStop();

  ServedAgent& served_;
  std::unique_ptr<RepeatedCall> steps_;
  bool isRunning_ = false;
};

}  // namespace ZelAgent
