#pragma once

#include <iosfwd>

#include "agent/model/differences/ConfigurationDifference.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// Prints a line for each difference, in groups: "+" was added, "-" was removed, "~" changed or
/// moved. Prints "no difference" if there is none.
///
///     interfaces
///       ~ Ethernet1: VRF default, policy edge -> VRF red, policy edge
///     rules
///       + 30 of edge on Ethernet1: ipv4 dscp 10, actionVrf red
///       ~ 25 of edge on Ethernet1: moved from 20: ipv4, discard
///     actions
///       ~ actionVrf red: 1 user -> 2 users
void writeTextReport(std::ostream& out, const ConfigurationDifference& difference);

/// {equal, instances, prefixSets, interfaces, fallbacks, routes, policies, rules, actions}. The
/// members after `equal` are arrays. Each element has the member `change`, which is "added",
/// "removed", "changed" or "moved", the members that name it, and `before` and `after`, of which
/// one is null if there is none:
///
///   instances    name                                    before and after are true
///   prefixSets   family, name                            {prefixes, excluded}
///   interfaces   interface                               {vrfName, policy, forwardingPolicy}; a
///                                                        policy is null or {networkInstance,
///                                                        policy}
///   fallbacks    vrfName                                 the name of the fallback VRF
///   routes       vrfName, prefix                         array of {address, interface, drops}
///   policies     networkInstance, policy                 its type
///   rules        networkInstance, policy, interfaces, rules; in place of the members above, each
///                element of `rules` has `change`, `before` and `after`: {rule, match, action}
///   actions      as StateReport.h names an action        its number of users
[[nodiscard]] OrderedJson toJson(const ConfigurationDifference& difference);

}  // namespace ZelAgent
