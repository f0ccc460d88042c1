#include "chips/tables/Slots.h"

#include <algorithm>

namespace ChipTables {

Slots::Slots(std::uint32_t capacity, const GraceClock& clock)
    : clock_(clock), capacity_(capacity) {}

std::optional<std::uint32_t> Slots::take() {
  collect();
  if (!free_.empty()) {
    const std::uint32_t slot = free_.back();
    free_.pop_back();
    return slot;
  }
  if (unused_ > capacity_) return std::nullopt;
  return unused_++;
}

void Slots::giveBack(std::uint32_t slot) {
  waiting_.push_back({slot, clock_.current()});
}

void Slots::takenIs(const std::vector<bool>& taken) {
  free_.clear();
  waiting_.clear();
  unused_ = 1;
  for (std::uint32_t slot = 1; slot < taken.size() && slot <= capacity_; ++slot) {
    if (!taken[slot]) continue;
    while (unused_ < slot)
      free_.push_back(unused_++);
    ++unused_;
  }
}

std::size_t Slots::available() const {
  const auto firstBusy = std::find_if(waiting_.begin(), waiting_.end(), [this](const auto& slot) {
    return !clock_.hasEnded(slot.period);
  });
  return free_.size() + static_cast<std::size_t>(firstBusy - waiting_.begin()) + capacity_ + 1 -
         unused_;
}

void Slots::collect() {
  while (!waiting_.empty() && clock_.hasEnded(waiting_.front().period)) {
    free_.push_back(waiting_.front().slot);
    waiting_.pop_front();
  }
}

}  // namespace ChipTables
