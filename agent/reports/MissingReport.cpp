#include "agent/reports/MissingReport.h"

#include <ostream>
#include <string>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/reports/RuleReport.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

std::string nameOf(const ActionUser& user) {
  return "rule " + std::to_string(user.sequenceId) + " of " + policyText(user) + " on " +
         printable(user.interface, Limits::shownTextBytes);
}

}  // namespace

void writeMissing(std::ostream& err, const AgentState& state, const RuleStates& rules) {
  const auto write = [&err](const std::string& name, const std::string& reason) {
    err << "not programmed: " << name << ": " << printable(reason, Limits::shownTextBytes) << '\n';
  };
  for (const RuleState& rule : rules) {
    if (!rule.place) write(nameOf(rule.user), rule.reason);
  }
  for (const ActionState& action : state.actions) {
    if (hasFailed(action)) write(toText(action.action), action.status.failureDescription().str());
  }
}

}  // namespace ZelAgent
