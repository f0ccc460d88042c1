#include "agent/serve/daemon/RecoveryTimer.h"

namespace ZelAgent {

RecoveryTimer::RecoveryTimer(Scheduler& scheduler, ServedAgent& served)
    : served_(served), steps_(scheduler.every(period, [this] { step(); })) {
  served_.changeObserverIs([this] { startOrStop(); });
  startOrStop();
}

RecoveryTimer::~RecoveryTimer() {
  served_.changeObserverIs({});
}

// A change in progress ends with a step of the recovery.
void RecoveryTimer::step() {
  if (served_.isChanging()) return;
  served_.agent().complete();
  startOrStop();
}

void RecoveryTimer::startOrStop() {
  const bool isNeeded = served_.agent().isRecovering();
  if (isNeeded == isRunning_) return;
  isRunning_ = isNeeded;
  if (isNeeded) {
    steps_->start();
  } else {
    steps_->stop();
  }
}

}  // namespace ZelAgent
