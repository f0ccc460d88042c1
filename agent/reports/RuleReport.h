// Why: operators ask which rules an interface has, what became of each, and which of them use an
// action.
// Always: by interface in the order in which rules are tried; users by action. As JSON a rule is
// {interface, networkInstance, policy, rule, match, action, programmed}, and a user the first four;
// `action` is null where the rule has none.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/StateJson.h"

namespace ZelAgent {

// What the rule does: an action's text, "discard" or "-".
[[nodiscard]] std::string toText(const PolicyMap::RuleAction& action);
// The members that name the action; null where there is none.
[[nodiscard]] OrderedJson actionJson(const PolicyMap::RuleAction& action);

// Interface, policy, rule, match and action, printable.
[[nodiscard]] std::vector<std::string> nameCells(const RuleState& rule);
[[nodiscard]] OrderedJson ruleJson(const RuleState& rule);

void writeTextReport(std::ostream& out, const RuleStates& rules);
[[nodiscard]] OrderedJson toJson(const RuleStates& rules);

void writeTextReport(std::ostream& out, const ActionUsers& users);
[[nodiscard]] OrderedJson toJson(const ActionUsers& users);

}  // namespace ZelAgent
