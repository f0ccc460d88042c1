#pragma once

#include <memory>
#include <utility>

#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

/// A call that is made once in the next round of the loop, however often it was requested before.
///
/// A request during the call is for the round after it. So everything else on the loop has its turn
/// between two calls.
class CoalescedCall final {
 public:
  /// The scheduler must outlive this.
  CoalescedCall(Scheduler& scheduler, Scheduler::Call call)
      : call_(std::move(call)), rounds_(scheduler.everyRound([this] { make(); })) {}
  CoalescedCall(const CoalescedCall&) = delete;
  CoalescedCall& operator=(const CoalescedCall&) = delete;
  ~CoalescedCall() = default;

  void request() { rounds_->start(); }

 private:
  void make() {
    rounds_->stop();
    call_();
  }

  Scheduler::Call call_;
  std::unique_ptr<RepeatedCall> rounds_;  // run while a call is requested
};

}  // namespace ZelAgent
