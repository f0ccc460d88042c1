// A scheduler without a clock and without a loop. A test decides when time and rounds pass.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

class ManualScheduler final : public Scheduler {
 public:
  [[nodiscard]] std::unique_ptr<RepeatedCall> every(std::chrono::milliseconds period,
                                                    Call call) override;
  [[nodiscard]] std::unique_ptr<RepeatedCall> everyRound(Call call) override;

  // Time passes. The calls that become due are made in their order.
  void pass(std::chrono::milliseconds time);
  // One round of the loop.
  void round();
  // Rounds until the loop may sleep. Returns how many; at most `limit`.
  int rounds(int limit = 100000);
  // Whether the loop may sleep.
  [[nodiscard]] bool isIdle() const;
  // How many calls wait for the end of a period.
  [[nodiscard]] std::size_t running() const;

 private:
  class ManualCall;

  // The call that is due next, at that time at the latest; null for none.
  [[nodiscard]] ManualCall* nextDue(std::chrono::milliseconds end) const;

  std::chrono::milliseconds now_{0};
  std::vector<ManualCall*> calls_;
};

}  // namespace ZelAgent
