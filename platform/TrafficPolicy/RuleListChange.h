#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The fewest additions, removals and moves that change one list of rules into another.
///
/// A longest common subsequence of the two lists stays. A rule that is in both lists, but not in
/// the subsequence, moves. The other rules are added or removed. Each rule outside of the
/// subsequence needs at least one step, and only a move handles one rule of each list in one step,
/// so no change is shorter.
///
/// Rules in equal beginnings and ends cost one comparison each. For the part between them each pair
/// of equal rules costs the logarithm of the length of that part. If that part has one rule more
/// than 32 times, the change may have a few more steps. Such duplicates have no effect on packets.
struct RuleListChange {
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  /// For each rule of the new list its place in the old list; `none` for a new rule.
  std::vector<std::size_t> from;
  /// For each rule of the old list, whether it stays at its place.
  std::vector<bool> stays;
};

/// Computes the change of the list `before` into the list `after`.
[[nodiscard]] ZEL_EXPORT RuleListChange changeOfRules(std::span<const PolicyMap::AclRule> before,
                                                      std::span<const PolicyMap::AclRule> after);

/// Computes a change that adds as few rules with a new match as it can. A rule that stays may have
/// another action in the list `after`; its action is to be replaced in place.
[[nodiscard]] ZEL_EXPORT RuleListChange changeOfRulesInPlace(
    std::span<const PolicyMap::AclRule> before, std::span<const PolicyMap::AclRule> after);

}  // namespace TrafficPolicy
