#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// How to make one list of rules into another by the fewest additions, removals and moves.
///
/// What is in both lists and in the same order, as much of it as possible (a longest common
/// subsequence), stays untouched. Of the rest, each rule that is in both lists moves; what is left
/// is added or removed. Each rule outside the longest common subsequence costs one step at least,
/// and a move is the only step that settles one of each list at once, so there is no shorter way.
///
/// Equal beginnings and ends cost one comparison a rule. What lies between costs time by the
/// logarithm of its length for each pair of equal rules in it. Where a list holds one rule more
/// than 32 times in there, which no packet can tell, a few steps more may be taken.
struct RuleListChange {
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  /// For each rule of the new list, its place in the old one; `none` for one that is new.
  std::vector<std::size_t> from;
  /// For each rule of the old list, whether it stays where it is.
  std::vector<bool> stays;
};

[[nodiscard]] ZEL_EXPORT RuleListChange changeOfRules(std::span<const PolicyMap::AclRule> before,
                                                      std::span<const PolicyMap::AclRule> after);

}  // namespace TrafficPolicy
