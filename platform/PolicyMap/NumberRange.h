#pragma once

#include <compare>
#include <cstdint>
#include <vector>

#include "Velo/Export.h"

namespace PolicyMap {

/// The numbers from `first` to `last`, both included. Precondition: `first` is at most `last`.
struct NumberRange {
  std::uint16_t first = 0;
  std::uint16_t last = 0;

  [[nodiscard]] constexpr bool contains(std::uint16_t number) const noexcept {
    return first <= number && number <= last;
  }

  auto operator<=>(const NumberRange&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

/// The fewest ranges with the same numbers, in ascending order.
[[nodiscard]] ZEL_EXPORT std::vector<NumberRange> fewestRanges(std::vector<NumberRange> ranges);

}  // namespace PolicyMap
