#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "PolicyMap/NumberRange.h"
#include "chips/soft/classify/RuleSets.h"

namespace Chips {

/// The set of rules that each value of a field of 16 bits satisfies. The rules divide the values
/// into intervals, and the values of an interval satisfy the same rules. A lookup is a binary
/// search for the interval.
class RangeField final {
 public:
  using Ranges = std::vector<PolicyMap::NumberRange>;

  /// Compiles the rules with numbers below `rules`. `rangesOf(rule)` are the values that the rule
  /// matches; with no range it does not compare the field.
  void compile(RuleSets& sets, std::uint32_t rules,
               const std::function<Ranges(std::uint32_t)>& rangesOf);

  /// Whether any rule compares the field. Otherwise all sets are that of all rules.
  [[nodiscard]] bool isUsed() const noexcept { return !firsts_.empty(); }
  [[nodiscard]] RuleSet setOf(std::size_t value) const noexcept;
  /// Of a packet without the field: the rules that do not compare it.
  [[nodiscard]] RuleSet any() const noexcept { return any_; }

 private:
  RuleSet any_ = emptyRuleSet;
  std::vector<std::size_t> firsts_;  // of each interval after the first one
  std::vector<RuleSet> sets_;        // of the same intervals; that of the first one is `any_`
};

}  // namespace Chips
