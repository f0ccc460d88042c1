#pragma once

#include <vector>

#include "PolicyMap/PolicyMapAclHelper.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The rules that the hardware should hold for an interface, and what became of each.
struct RuleList {
  Velo::String intf;
  std::vector<PolicyMap::AclRule> rules;
  /// By rule; set by programming.
  std::vector<PolicyMap::AclResult> results;
};

/// Makes the hardware's lists of the interfaces into `lists`, by the fewest calls of `helper`: on
/// every interface additions and moves, from the first rule on, and only then on every interface
/// removals, from the last rule on. So what rules use before and after is never without a user on
/// the way. Rules that were refused are asked for once more if the removals have made room.
///
/// Gives whether anything was different. A call that throws leaves lists that a later programming
/// mends.
ZEL_EXPORT bool programRules(PolicyMap::PolicyMapAclHelper& helper, std::vector<RuleList>& lists);

}  // namespace TrafficPolicy
