#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "PolicyMap/PolicyMapAclHelper.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The configured rules of an interface, and the result of programming them. Interfaces with equal
/// rules share one vector, so that what they have in common is computed once.
struct RuleList {
  using Rules = std::shared_ptr<const std::vector<PolicyMap::AclRule>>;

  Velo::String intf;
  Rules rules;
  /// Either all rules are accepted or none.
  PolicyMap::AclResult result;

  [[nodiscard]] bool isRefused() const noexcept { return !rules->empty() && !result.accepted; }
  /// Number of rules that are programmed.
  [[nodiscard]] std::size_t programmed() const noexcept {
    return result.accepted ? rules->size() : 0;
  }
};

/// What the programming of rules did.
struct RuleChanges {
  /// Whether anything differed.
  bool isDifferent = false;
  /// Whether rules were removed, so that others may fit now.
  bool madeRoom = false;
};

/// Programs the rules of interfaces in steps. After each call of the helper, each packet is treated
/// as by the rules before or as by the wanted rules of its interface.
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
/// Without refusals these are the fewest possible additions, moves and removals. A step makes one
/// of the four for one interface. The rules of interfaces change only by steps, until the last step
/// is made. If a call throws, the additions of its interface are undone as far as possible. Then no
/// further step may be made, and another programming corrects the lists.
class ZEL_EXPORT RuleProgramming final {
 public:
  /// The lists must outlive this. It writes their results.
  RuleProgramming(PolicyMap::PolicyMapAclHelper& helper, std::vector<RuleList>& lists);
  RuleProgramming(const RuleProgramming&) = delete;
  RuleProgramming& operator=(const RuleProgramming&) = delete;
  ~RuleProgramming();

  /// Makes the next step. Returns whether there was one.
  bool step();
  /// What the steps so far did.
  [[nodiscard]] RuleChanges changes() const noexcept;

 private:
  class Steps;
  std::unique_ptr<Steps> steps_;
};

/// Makes all steps of the programming of `lists`.
ZEL_EXPORT RuleChanges programRules(PolicyMap::PolicyMapAclHelper& helper,
                                    std::vector<RuleList>& lists);

}  // namespace TrafficPolicy
