#include "agent/serve/daemon/Patience.h"

#include <utility>

namespace ZelAgent {

Patience::Patience(Scheduler& scheduler, const Stream& stream, const ServerLimits& limits,
                   std::function<void()> onEnd)
    : stream_(stream), onEnd_(std::move(onEnd)), mostChecks_(2 * limits.answerTimeouts) {
  if (limits.clientTimeout.count() == 0) return;
  checks_ = scheduler.every(limits.clientTimeout / 2, [this] { check(); });
}

void Patience::start(std::size_t unwritten) {
  if (!checks_) return;
  unwritten_ = unwritten;
  madeChecks_ = 0;
  quietChecks_ = 0;
  checks_->start();
}

void Patience::stop() noexcept {
  if (checks_) checks_->stop();
}

// After a long call the loop runs a check before it writes bytes that could be written. It writes
// between two checks, so two checks without progress are needed.
void Patience::check() {
  const std::size_t unwritten = stream_.unwritten();
  quietChecks_ = unwritten == unwritten_ ? quietChecks_ + 1 : 0;
  unwritten_ = unwritten;
  if (quietChecks_ == 2 || ++madeChecks_ == mostChecks_) onEnd_();
}

}  // namespace ZelAgent
