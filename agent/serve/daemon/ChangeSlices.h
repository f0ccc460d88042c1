#pragma once

#include <memory>

#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

/// Makes the slices of each change of a configuration after the first, one in each round of the
/// loop. So everything else on the loop has its turn between two slices. While no change is in
/// progress, the loop may sleep.
class ChangeSlices final {
 public:
  /// The scheduler and the agent must outlive this. This is the only observer of slices.
  ChangeSlices(Scheduler& scheduler, ServedAgent& served);
  ChangeSlices(const ChangeSlices&) = delete;
  ChangeSlices& operator=(const ChangeSlices&) = delete;
  ~ChangeSlices();

 private:
  void makeOne();

  ServedAgent& served_;
  std::unique_ptr<RepeatedCall> rounds_;  // run while a change is in progress
};

}  // namespace ZelAgent
