#pragma once

#include <functional>
#include <string>
#include <vector>

#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/ReportPages.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// The action of a rule as text; "discard" for a discard, "-" for no action.
[[nodiscard]] std::string toText(const PolicyMap::RuleAction& action);
/// The JSON members that name the action. Null for no action.
[[nodiscard]] OrderedJson actionJson(const PolicyMap::RuleAction& action);

/// The policy of a user: "edge", or "red: edge" for a policy of a network instance other than the
/// default one.
[[nodiscard]] std::string policyText(const ActionUser& user);

/// The cells that name a rule: interface, policy, rule, match and action, printable.
[[nodiscard]] std::vector<std::string> nameCells(const RuleState& rule);
/// {interface, networkInstance, policy, rule, match, action, programmed}. A rule of a previous
/// policy also has the member `previous`, which is true. If the rules of the interface are being
/// changed, `programmed` is null, and the member `beingChanged` is true.
[[nodiscard]] OrderedJson ruleJson(const RuleState& rule);

/// The rules of each interface in the order in which they are tried, and the state of each. Each
/// element of the JSON array has the members of `ruleJson` and `reason`.
[[nodiscard]] ReportPagesPtr rulePages(ReadRows<RuleState> read, bool asJson);

/// A rule that the chip holds, and the action that it uses.
struct UserRow {
  VrfAction action;
  ActionUser user;
};

/// The users of each action. `readUsers` returns those of one action.
///
/// As JSON it is an array of {vrfName, fallbackVrfName, postDecapVrfName, action, usedBy}.
[[nodiscard]] ReportPagesPtr userPages(
    std::vector<VrfAction> actions,
    std::function<ReadRows<UserRow>(const VrfAction& action)> readUsers, bool asJson);

}  // namespace ZelAgent
