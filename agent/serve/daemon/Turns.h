#pragma once

#include <deque>
#include <memory>

#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

/// One that takes turns.
class TurnTaker {
 public:
  /// The call may destroy this, or ask for another turn.
  virtual void takeTurn() = 0;

 protected:
  ~TurnTaker() = default;
};

/// The queue of all that wait for a turn.
///
/// In each round of the loop, each one that waited at its beginning gets one turn. One that asks
/// for another turn waits behind the others. So nobody waits for all turns of another. While nobody
/// waits, the loop may sleep.
class Turns final {
 public:
  /// The scheduler must outlive this.
  explicit Turns(Scheduler& scheduler);
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;
  ~Turns() = default;

  /// Precondition: `taker` does not wait yet. It must exist when its turn comes.
  void add(TurnTaker& taker);

 private:
  void giveOneToEach();

  std::deque<TurnTaker*> waiting_;
  std::unique_ptr<RepeatedCall> rounds_;  // run while one waits
};

}  // namespace ZelAgent
