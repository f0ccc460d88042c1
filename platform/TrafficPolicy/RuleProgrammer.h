#pragma once

#include <vector>

#include "PolicyMap/PolicyMapAclHelper.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The configured rules of an interface, and the result of programming each.
struct RuleList {
  Velo::String intf;
  std::vector<PolicyMap::AclRule> rules;
  /// One for each rule; `programRules` writes them. Either all rules are accepted or none.
  std::vector<PolicyMap::AclResult> results;

  [[nodiscard]] bool isRefused() const noexcept {
    return !results.empty() && !results.front().accepted;
  }
};

/// What `programRules` did.
struct RuleChanges {
  /// Whether anything differed.
  bool isDifferent = false;
  /// Whether rules were removed, so that others may fit now.
  bool madeRoom = false;
};

/// Programs `lists`. After each call of `helper`, each packet is treated as by the rules before or
/// as by the wanted rules of its interface.
///
/// The calls are in this order:
/// 1. On every interface, from the first rule on: new rules are added, and rules that move up are
///    moved. If a rule is refused, the calls of its interface are undone.
/// 2. On every other interface, from the last rule on: old rules are removed, and rules that move
///    down are moved. So a resource that is used before and after always has a user.
/// 3. Both for each interface with a refused rule, again if rules were removed since. If that does
///    not help, again with actions replaced in place. Then only rules with a new match, and rules
///    that move and get another action, need room. If the attempts before found too little room for
///    them, nothing is replaced.
/// 4. An interface whose rules are refused keeps its rules. If it has none, `helper.whenFull()`
///    decides.
///
/// Without refusals these are the fewest possible additions, moves and removals. If a call throws,
/// the additions of its interface are undone as far as possible, and a later call of
/// `programRules` corrects the lists.
ZEL_EXPORT RuleChanges programRules(PolicyMap::PolicyMapAclHelper& helper,
                                    std::vector<RuleList>& lists);

}  // namespace TrafficPolicy
