#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "chips/tables/GraceClock.h"

namespace ChipTables {

/// Hands out the numbers from 1 to a capacity. 0 stands for none.
///
/// A number that was given back is not handed out again before a grace period has ended. So a
/// packet that read the number before still finds behind it what it read.
class Slots final {
 public:
  /// The clock must outlive the slots.
  Slots(std::uint32_t capacity, const GraceClock& clock);

  /// Nothing if no number is free now.
  [[nodiscard]] std::optional<std::uint32_t> take();
  /// Precondition: the number is taken.
  void giveBack(std::uint32_t slot);
  /// From now on exactly the numbers with `true` are taken, and the others are free. Index 0 and
  /// indexes above the capacity are ignored.
  void takenIs(const std::vector<bool>& taken);

  /// How many numbers are free now.
  [[nodiscard]] std::size_t available() const;
  /// Whether numbers are kept aside, so that waiting for a grace period is of use.
  [[nodiscard]] bool waits() const noexcept { return !waiting_.empty(); }

 private:
  struct Waiting {
    std::uint32_t slot;
    std::uint64_t period;
  };

  void collect();

  const GraceClock& clock_;
  std::uint32_t capacity_;
  // A number above 0 is taken, or in one of `free_` and `waiting_`, or at least `unused_`.
  std::uint32_t unused_ = 1;
  std::vector<std::uint32_t> free_;
  std::deque<Waiting> waiting_;  // in the order of their periods
};

}  // namespace ChipTables
