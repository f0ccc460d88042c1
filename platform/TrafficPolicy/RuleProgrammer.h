#pragma once

#include <vector>

#include "PolicyMap/PolicyMapAclHelper.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The configured rules of an interface, and the result of programming each.
struct RuleList {
  Velo::String intf;
  std::vector<PolicyMap::AclRule> rules;
  /// One for each rule; `programRules` writes them.
  std::vector<PolicyMap::AclResult> results;
};

/// Programs `lists` by the fewest calls of `helper`. First it adds and moves rules on every
/// interface, from the first rule on. Then it removes rules on every interface, from the last rule
/// on. So a resource that is used before and after always has a user. After the removals it adds
/// refused rules once more.
///
/// Returns whether anything differed. If a call throws, a later call of `programRules` corrects the
/// lists.
ZEL_EXPORT bool programRules(PolicyMap::PolicyMapAclHelper& helper, std::vector<RuleList>& lists);

}  // namespace TrafficPolicy
