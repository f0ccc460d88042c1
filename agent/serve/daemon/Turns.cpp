#include "agent/serve/daemon/Turns.h"

#include <cstddef>

namespace ZelAgent {

Turns::Turns(Scheduler& scheduler) : rounds_(scheduler.everyRound([this] { giveOneToEach(); })) {}

void Turns::add(TurnTaker& taker) {
  if (waiting_.empty()) rounds_->start();
  waiting_.push_back(&taker);
}

void Turns::giveOneToEach() {
  for (std::size_t left = waiting_.size(); left > 0; --left) {
    TurnTaker& next = *waiting_.front();
    waiting_.pop_front();
    next.takeTurn();
  }
  if (waiting_.empty()) rounds_->stop();
}

}  // namespace ZelAgent
