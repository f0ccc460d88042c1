#include "tests/agent/serve/daemon/ManualScheduler.h"

#include <algorithm>
#include <utility>

namespace ZelAgent {

using std::chrono::milliseconds;

// A period of 0 means each round.
class ManualScheduler::ManualCall final : public RepeatedCall {
 public:
  ManualCall(ManualScheduler& scheduler, milliseconds period, Call call)
      : scheduler_(scheduler), period_(period), call_(std::move(call)) {
    scheduler_.calls_.push_back(this);
  }
  ManualCall(const ManualCall&) = delete;
  ManualCall& operator=(const ManualCall&) = delete;
  ~ManualCall() override { std::erase(scheduler_.calls_, this); }

  void start() override {
    isRunning_ = true;
    due_ = scheduler_.now_ + period_;
  }
  void stop() noexcept override { isRunning_ = false; }

  [[nodiscard]] bool isRunningInRounds() const { return isRunning_ && period_ == milliseconds(0); }
  [[nodiscard]] bool isRunningInTime() const { return isRunning_ && period_ != milliseconds(0); }
  [[nodiscard]] milliseconds due() const { return due_; }

  // Nothing may follow: the call may destroy this.
  void make() {
    due_ += period_;
    call_();
  }

 private:
  ManualScheduler& scheduler_;
  milliseconds period_;
  Call call_;
  milliseconds due_{0};
  bool isRunning_ = false;
};

std::unique_ptr<RepeatedCall> ManualScheduler::every(milliseconds period, Call call) {
  return std::make_unique<ManualCall>(*this, period, std::move(call));
}

std::unique_ptr<RepeatedCall> ManualScheduler::everyRound(Call call) {
  return std::make_unique<ManualCall>(*this, milliseconds(0), std::move(call));
}

void ManualScheduler::pass(milliseconds time) {
  const milliseconds end = now_ + time;
  while (ManualCall* const next = nextDue(end)) {
    now_ = next->due();
    next->make();
  }
  now_ = end;
}

ManualScheduler::ManualCall* ManualScheduler::nextDue(milliseconds end) const {
  ManualCall* next = nullptr;
  for (ManualCall* const call : calls_) {
    if (!call->isRunningInTime() || call->due() > end) continue;
    if (next == nullptr || call->due() < next->due()) next = call;
  }
  return next;
}

void ManualScheduler::round() {
  const std::vector<ManualCall*> atFirst = calls_;
  for (ManualCall* const call : atFirst) {
    const bool isThere = std::find(calls_.begin(), calls_.end(), call) != calls_.end();
    if (isThere && call->isRunningInRounds()) call->make();
  }
}

int ManualScheduler::rounds(int limit) {
  int made = 0;
  for (; made < limit && !isIdle(); ++made)
    round();
  return made;
}

bool ManualScheduler::isIdle() const {
  return std::none_of(calls_.begin(), calls_.end(),
                      [](const ManualCall* call) { return call->isRunningInRounds(); });
}

std::size_t ManualScheduler::running() const {
  return static_cast<std::size_t>(
      std::count_if(calls_.begin(), calls_.end(),
                    [](const ManualCall* call) { return call->isRunningInTime(); }));
}

}  // namespace ZelAgent
