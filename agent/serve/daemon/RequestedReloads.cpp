#include "agent/serve/daemon/RequestedReloads.h"

#include <utility>

#include "agent/serve/daemon/ReloadReport.h"

namespace ZelAgent {

RequestedReloads::RequestedReloads(Scheduler& scheduler, ServedAgent& served, Print print)
    : served_(served),
      print_(std::move(print)),
      rounds_(scheduler.everyRound([this] { proceed(); })) {}

void RequestedReloads::request() {
  isRequested_ = true;
  rounds_->start();
}

void RequestedReloads::proceed() {
  if (!present_ && isRequested_ && !served_.isChanging()) {
    isRequested_ = false;
    present_ = served_.beginReload();
  }
  if (present_ && present_->isComplete) {
    const SlicedChangePtr complete = std::exchange(present_, nullptr);
    print_(reportReload(served_.record().file, [&] { return effectsOf(*complete).warnings; }));
  }
  if (!present_ && !isRequested_) rounds_->stop();
}

}  // namespace ZelAgent
