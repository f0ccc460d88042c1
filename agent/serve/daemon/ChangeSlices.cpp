#include "agent/serve/daemon/ChangeSlices.h"

namespace ZelAgent {

ChangeSlices::ChangeSlices(Scheduler& scheduler, ServedAgent& served)
    : served_(served), rounds_(scheduler.everyRound([this] { makeOne(); })) {
  served_.sliceObserverIs([this] { rounds_->start(); });
}

ChangeSlices::~ChangeSlices() {
  served_.sliceObserverIs({});
}

// A change that was made in one go meanwhile has left no slice.
void ChangeSlices::makeOne() {
  if (served_.isChanging()) served_.makeSlice();
  if (!served_.isChanging()) rounds_->stop();
}

}  // namespace ZelAgent
