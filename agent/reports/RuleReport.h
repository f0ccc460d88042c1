#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// What a rule does: an action's text, "discard" or "-".
[[nodiscard]] std::string toText(const PolicyMap::RuleAction& action);
/// The members that name the action. Null if there is none.
[[nodiscard]] OrderedJson actionJson(const PolicyMap::RuleAction& action);

/// Interface, policy, rule, match and action, printable.
[[nodiscard]] std::vector<std::string> nameCells(const RuleState& rule);
/// {interface, networkInstance, policy, rule, match, action, programmed}.
[[nodiscard]] OrderedJson ruleJson(const RuleState& rule);

/// The rules of each interface, in the order in which they are tried, and the state of each.
void writeTextReport(std::ostream& out, const RuleStates& rules);
[[nodiscard]] OrderedJson toJson(const RuleStates& rules);

/// The users of each action.
void writeTextReport(std::ostream& out, const ActionUsers& users);
[[nodiscard]] OrderedJson toJson(const ActionUsers& users);

}  // namespace ZelAgent
