#pragma once

#include <array>
#include <cstdint>

#include "chips/soft/classify/RuleSets.h"

namespace Chips {

/// The set of rules that each value of a field of at most eight bits satisfies.
class ByteField final {
 public:
  using Members = RuleSets::Members;

  /// Compiles the rules with numbers below `rules`. `compares(rule)` is whether the rule compares
  /// the field, and `matches(rule, value)` whether a rule that compares it matches the value.
  template <class Compares, class Matches>
  void compile(RuleSets& sets, std::uint32_t rules, Compares compares, Matches matches) {
    Members any;
    std::array<Members, 256> only;
    for (std::uint32_t rule = 0; rule < rules; ++rule) {
      if (!compares(rule)) {
        any.push_back(rule);
        continue;
      }
      for (unsigned value = 0; value < only.size(); ++value) {
        if (matches(rule, static_cast<std::uint8_t>(value))) only[value].push_back(rule);
      }
    }
    isUsed_ = any.size() < rules;
    any_ = sets.setIs(emptyRuleSet, any);
    for (unsigned value = 0; value < only.size(); ++value)
      sets_[value] = sets.setIs(any_, only[value]);
  }

  /// Whether any rule compares the field. Otherwise all sets are that of all rules.
  [[nodiscard]] bool isUsed() const noexcept { return isUsed_; }
  [[nodiscard]] RuleSet setOf(std::uint8_t value) const noexcept { return sets_[value]; }
  /// Of a packet without the field: the rules that do not compare it.
  [[nodiscard]] RuleSet any() const noexcept { return any_; }

 private:
  bool isUsed_ = false;
  RuleSet any_ = emptyRuleSet;
  std::array<RuleSet, 256> sets_{};
};

}  // namespace Chips
