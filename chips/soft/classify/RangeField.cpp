#include "chips/soft/classify/RangeField.h"

#include <algorithm>
#include <map>

namespace Chips {
namespace {

// The rules that stop and that begin to match at a value.
struct Boundary {
  RuleSets::Members ended;
  RuleSets::Members begun;
};

}  // namespace

void RangeField::compile(RuleSets& sets, std::uint32_t rules,
                         const std::function<Ranges(std::uint32_t)>& rangesOf) {
  RuleSets::Members any;
  std::map<std::size_t, Boundary> boundaries;
  for (std::uint32_t rule = 0; rule < rules; ++rule) {
    const Ranges ranges = fewestRanges(rangesOf(rule));
    if (ranges.empty()) any.push_back(rule);
    for (const PolicyMap::NumberRange& range : ranges) {
      boundaries[range.first].begun.push_back(rule);
      boundaries[range.last + std::size_t{1}].ended.push_back(rule);
    }
  }
  any_ = sets.setIs(emptyRuleSet, any);
  RuleSet set = any_;
  for (const auto& [first, boundary] : boundaries) {
    set = sets.setIs(set, boundary.ended, boundary.begun);
    firsts_.push_back(first);
    sets_.push_back(set);
  }
}

RuleSet RangeField::setOf(std::size_t value) const noexcept {
  const auto next = std::upper_bound(firsts_.begin(), firsts_.end(), value);
  return next == firsts_.begin() ? any_
                                 : sets_[static_cast<std::size_t>(next - firsts_.begin()) - 1];
}

}  // namespace Chips
