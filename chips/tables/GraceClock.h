#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>

namespace ChipTables {

/// Counts grace periods. A grace period has ended when every packet that was on its way when the
/// period began has left.
///
/// What packets may still read is kept together with the number `current()` of the moment when it
/// was unlinked. It may be reused as soon as `hasEnded` says so of that number.
///
///     const std::uint64_t waited = clock.begins();   // then wait, perhaps in another thread
///     clock.ends(waited);
class GraceClock final {
 public:
  /// `wait` returns when every packet that was on its way when it was called has left.
  explicit GraceClock(std::function<void()> wait) : wait_(std::move(wait)) {}

  [[nodiscard]] std::uint64_t current() const noexcept { return current_; }
  [[nodiscard]] bool hasEnded(std::uint64_t period) const noexcept { return period <= ended_; }

  /// A wait begins for all that was unlinked before.
  [[nodiscard]] std::uint64_t begins() noexcept { return current_++; }
  /// The wait for the period and for all before it is over.
  void ends(std::uint64_t period) noexcept { ended_ = std::max(ended_, period); }
  /// Waits now. This costs milliseconds in the kernel, so it is for the case that nothing is free.
  void waitNow() {
    const std::uint64_t period = begins();
    wait_();
    ends(period);
  }

 private:
  std::function<void()> wait_;
  std::uint64_t current_ = 1;
  std::uint64_t ended_ = 0;
};

}  // namespace ChipTables
