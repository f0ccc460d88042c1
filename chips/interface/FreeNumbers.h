#pragma once

#include <cstdint>
#include <set>

namespace Chips {

/// Hands out numbers from 1, always the lowest free one.
class FreeNumbers final {
 public:
  /// The lowest free number, which is taken from now on.
  [[nodiscard]] std::uint32_t take() {
    return freed_.empty() ? next_++ : freed_.extract(freed_.begin()).value();
  }

  /// Makes a taken number free again.
  void giveBack(std::uint32_t number) { freed_.insert(number); }

 private:
  std::set<std::uint32_t> freed_;  // all below next_
  std::uint32_t next_ = 1;
};

}  // namespace Chips
