#pragma once

#include <optional>
#include <string>

#include "agent/commands/served/CommandCall.h"
#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/ReportPages.h"

namespace ZelAgent {

/// Selects rules: those for which each filter that is given holds.
struct RuleFilter {
  std::optional<std::string> interface;
  std::optional<std::string> policy;
  std::optional<std::string> vrf;  // the action names the VRF
  bool failed = false;             // the chip does not hold the rule, and it is not being changed

  [[nodiscard]] bool isEmpty() const { return !interface && !policy && !vrf && !failed; }
};

/// Whether the action names the VRF.
[[nodiscard]] bool namesVrf(const VrfAction& action, const std::string& vrf);

/// Reads "[interface NAME] [policy NAME] [vrf NAME] [failed]", in any order. Throws an `EventError`
/// for other words, for a filter that occurs twice and for a name that nothing has.
[[nodiscard]] RuleFilter readRuleFilter(const CommandCall& call);
/// The same for "[vrf NAME] [failed]".
[[nodiscard]] RuleFilter readActionFilter(const CommandCall& call);

/// The rules of the agent that the filter selects. The agent must outlive the result.
[[nodiscard]] ReadRows<RuleState> selectedRules(ForwardingAgent& agent, const RuleFilter& filter);

}  // namespace ZelAgent
