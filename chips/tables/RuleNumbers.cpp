#include "chips/tables/RuleNumbers.h"

#include <algorithm>
#include <bit>

namespace ChipTables {
namespace {

using Numbers = RuleNumbers::Numbers;

// How far from the last rule a rule is added behind it, so that others fit between. The same in
// front of the first rule.
constexpr std::uint32_t stride = 3;

// A good number for a rule in front of the rule at `place`, free or not.
std::uint32_t wishFor(const Numbers& present, std::size_t place) {
  if (present.empty()) return zelRules / 8;
  if (place == present.size()) {
    const std::uint32_t last = present.back();
    return last + std::min(stride, (zelRules - last) / 2);
  }
  const std::uint32_t next = present[place];
  if (place == 0) return next - std::min(stride, (next + 1) / 2);
  return (present[place - 1] + next) / 2;
}

// How loosely rules lie in a window: free numbers for each rule. The widest window is as loose as
// the whole list. The smaller a window, the more dense it may be, so that the windows in one where
// rules have been spread take many rules before they are too dense again.
class Looseness {
 public:
  Looseness(std::size_t free, std::size_t rules) : free_(free), rules_(rules) {}

  // Windows have levels, up to `widest`.
  [[nodiscard]] bool isEnough(std::size_t free, std::size_t rules, std::size_t level) const {
    return free * widest * rules_ >= rules * (widest * rules_ + (free_ - rules_) * level);
  }

  static constexpr std::size_t widest = std::countr_zero(std::size_t{zelRules});

 private:
  std::size_t free_;
  std::size_t rules_;
};

Numbers evenlyFrom(const Numbers& free, std::size_t rules) {
  Numbers numbers;
  for (std::size_t rule = 0; rule < rules; ++rule)
    numbers.push_back(free[(2 * rule + 1) * free.size() / (2 * rules)]);
  return numbers;
}

}  // namespace

std::optional<RuleNumbers::Plan> RuleNumbers::planFor(const Numbers& present,
                                                      std::size_t place) const {
  if (free_.count() <= present.size()) return std::nullopt;
  const Looseness looseness(free_.count(), present.size() + 1);
  const std::uint32_t wish = wishFor(present, place);
  const auto at = present.begin() + static_cast<std::ptrdiff_t>(place);
  for (std::size_t level = 0;; ++level) {
    const std::uint32_t reach = (1U << level) - 1;
    const std::uint32_t low = wish - std::min(reach, wish);
    const std::uint32_t end = std::min<std::uint32_t>(wish + reach + 1, zelRules);
    const auto first = std::lower_bound(present.begin(), at, low);
    const auto last = std::lower_bound(at, present.end(), end);
    const auto rules = static_cast<std::size_t>(last - first) + 1;
    const Numbers free = freeFrom(low, end);
    if (level == Looseness::widest || looseness.isEnough(free.size(), rules, level))
      return Plan{static_cast<std::size_t>(first - present.begin()), evenlyFrom(free, rules)};
  }
}

Numbers RuleNumbers::freeFrom(std::uint32_t first, std::uint32_t end) const {
  Numbers free;
  for (std::uint32_t number = first; number < end; ++number) {
    if (free_.test(number)) free.push_back(number);
  }
  return free;
}

}  // namespace ChipTables
