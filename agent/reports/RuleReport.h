#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "agent/model/forwarding/AgentState.h"
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
/// policy also has the member `previous`, which is true.
[[nodiscard]] OrderedJson ruleJson(const RuleState& rule);

/// Prints the rules of each interface in the order in which they are tried, and the state of each.
void writeTextReport(std::ostream& out, const RuleStates& rules);
[[nodiscard]] OrderedJson toJson(const RuleStates& rules);

/// Prints the users of each action.
void writeTextReport(std::ostream& out, const ActionUsers& users);
[[nodiscard]] OrderedJson toJson(const ActionUsers& users);

}  // namespace ZelAgent
