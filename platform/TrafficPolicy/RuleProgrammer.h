#pragma once

#include <span>
#include <vector>

#include "PolicyMap/PolicyMapAclHelper.h"

namespace TrafficPolicy {

/// Makes the hardware's list of rules for `intf` into `wanted`, by the fewest calls of `helper`:
/// additions and moves from the first rule on, then removals from the last. So what is used before
/// and after is never without a user on the way. Gives what became of each wanted rule; those that
/// were refused for want of room are asked for once more after the removals.
///
/// A call that throws leaves a list that a later programming mends.
[[nodiscard, gnu::visibility("default")]] std::vector<PolicyMap::AclResult> programRules(
    PolicyMap::PolicyMapAclHelper& helper, const Velo::String& intf,
    std::span<const PolicyMap::AclRule> wanted);

}  // namespace TrafficPolicy
