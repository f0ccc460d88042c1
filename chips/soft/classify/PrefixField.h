#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "Classification/PrefixSet.h"
#include "chips/soft/classify/RuleSets.h"
#include "chips/soft/routes/PrefixTrie.h"

namespace Chips {

/// The set of rules that each address satisfies.
///
/// Every prefix that a rule names, as a match or as an exclusion, has its set: the rules that match
/// the addresses in it that are in no longer one. So the longest prefix that covers an address has
/// the set of the address.
class PrefixField final {
 public:
  using PrefixSetOf =
      std::function<std::optional<Classification::SharedPrefixSet>(std::uint32_t rule)>;

  /// Compiles the rules with numbers below `rules`. `prefixSetOf(rule)` has the addresses that the
  /// rule matches; without one it does not compare the field.
  void compile(RuleSets& sets, std::uint32_t rules, const PrefixSetOf& prefixSetOf);

  /// Whether any rule compares the field. Otherwise all sets are that of all rules.
  [[nodiscard]] bool isUsed() const noexcept { return isUsed_; }
  [[nodiscard]] RuleSet setOf(const Ip::Address& address) const {
    const auto match = sets_.longestMatch(address);
    return match ? match->value : any_;
  }

 private:
  bool isUsed_ = false;
  RuleSet any_ = emptyRuleSet;
  PrefixTrie<RuleSet> sets_;
};

}  // namespace Chips
