#include "tests/agent/serve/simulator/Promise.h"

#include <map>

#include "agent/reports/StateReport.h"
#include "tests/agent/model/HeldRule.h"

namespace ZelAgent {
namespace {

using ZelVrfSelectionPolicy::FailureCode;

bool hasReason(const ActionState& action, const ChipState& chip) {
  if (action.status.failureReason() == FailureCode::failureVrfResourceExhausted) {
    return chip.used >= chip.capacity;
  }
  const bool isPlanned =
      action.status.failureDescription().str().find("a planned fault") != std::string::npos;
  return isPlanned || !vrfWithoutId(action.currentProgram).empty();
}

std::string brokenFor(const ActionState& action, const ChipState& chip) {
  if (hasFailed(action)) {
    return hasReason(action, chip)
               ? ""
               : "is refused without a reason: " + action.status.failureDescription().str();
  }
  if (!action.resource) return "has no resource";
  return action.resourceIsStale() ? "has a stale resource" : "";
}

std::string brokenActions(const AgentState& state) {
  for (const ActionState& action : state.actions) {
    std::string broken = brokenFor(action, state.chip);
    if (!broken.empty()) return toText(action.action) + ' ' + broken;
    if (action.users != action.usedBy.size()) return toText(action.action) + " counts other users";
  }
  return "";
}

std::string brokenRules(ForwardingAgent& agent) {
  std::size_t held = 0;
  for (const RuleState& rule : agent.rules()) {
    if (!rule.place) continue;
    ++held;
    const auto& rules = agent.acl().rules(rule.user.interface);
    if (*rule.place >= rules.size() || !isRule(rules[*rule.place], rule.rule)) {
      return "the chip does not hold rule " + std::to_string(rule.user.sequenceId) + " of " +
             rule.user.interface + " at its place";
    }
  }
  return held == agent.acl().rulesInUse() ? "" : "the chip holds other rules";
}

std::string refusedDespiteRoom(ForwardingAgent& agent) {
  std::map<std::string, std::size_t> missing;  // rules by interface
  for (const RuleState& rule : agent.rules()) {
    if (!rule.place) ++missing[rule.user.interface];
  }
  for (const auto& [interface, rules] : missing) {
    if (agent.acl().rulesInUse() + rules <= agent.acl().capacity()) {
      return "the rules of " + interface + " are refused although there is room";
    }
  }
  return "";
}

}  // namespace

std::string missing(ForwardingAgent& agent) {
  for (const ActionState& action : agent.state().actions) {
    if (hasFailed(action)) {
      return toText(action.action) + ": " + action.status.failureDescription().str();
    }
  }
  for (const RuleState& rule : agent.rules()) {
    if (!rule.place) {
      return "rule " + std::to_string(rule.user.sequenceId) + " of " + rule.user.interface + ": " +
             rule.reason;
    }
  }
  return "";
}

std::string brokenPromise(ForwardingAgent& agent) {
  std::string broken = brokenActions(agent.state());
  if (broken.empty()) broken = brokenRules(agent);
  return broken.empty() ? refusedDespiteRoom(agent) : broken;
}

}  // namespace ZelAgent
