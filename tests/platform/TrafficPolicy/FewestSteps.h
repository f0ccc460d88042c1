#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "PolicyMap/AclRule.h"

namespace TrafficPolicy {

/// The length of a longest common subsequence, by the table of all beginnings.
[[nodiscard]] inline std::size_t longestCommon(const std::vector<PolicyMap::AclRule>& a,
                                               const std::vector<PolicyMap::AclRule>& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (const PolicyMap::AclRule& rule : a) {
    std::size_t diagonal = 0;
    for (std::size_t at = 1; at <= b.size(); ++at) {
      const std::size_t above = row[at];
      row[at] = rule == b[at - 1] ? diagonal + 1 : std::max(row[at], row[at - 1]);
      diagonal = above;
    }
  }
  return row.back();
}

/// How many rules of `a` can be paired with equal ones of `b`.
[[nodiscard]] inline std::size_t commonRules(const std::vector<PolicyMap::AclRule>& a,
                                             std::vector<PolicyMap::AclRule> b) {
  std::size_t common = 0;
  for (const PolicyMap::AclRule& rule : a) {
    const auto equal = std::find(b.begin(), b.end(), rule);
    if (equal == b.end()) continue;
    b.erase(equal);
    ++common;
  }
  return common;
}

/// The fewest additions, removals and moves that make one list into the other: those that neither
/// stay nor move are removed or added, and what is common but not in a common order moves.
[[nodiscard]] inline std::size_t fewestSteps(const std::vector<PolicyMap::AclRule>& before,
                                             const std::vector<PolicyMap::AclRule>& after) {
  return before.size() + after.size() - commonRules(before, after) - longestCommon(before, after);
}

}  // namespace TrafficPolicy
