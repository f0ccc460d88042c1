#include "agent/reports/MissingReport.h"

#include <ostream>
#include <string>
#include <vector>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/reports/RuleReport.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

constexpr std::size_t maxLines = 20;

std::string nameOf(const ActionUser& user) {
  return "rule " + std::to_string(user.sequenceId) + " of " + policyText(user) + " on " +
         printable(user.interface, Limits::shownTextBytes);
}

}  // namespace

void writeMissing(std::ostream& err, const AgentState& state, const RuleStates& rules) {
  std::vector<std::string> missing;
  for (const RuleState& rule : rules) {
    if (!rule.place)
      missing.push_back(nameOf(rule.user) + ": " + printable(rule.reason, Limits::shownTextBytes));
  }
  for (const ActionState& action : state.actions) {
    if (!hasFailed(action)) continue;
    const std::string reason = action.status.failureDescription().str();
    missing.push_back(toText(action.action) + ": " + printable(reason, Limits::shownTextBytes));
  }
  for (std::size_t line = 0; line < missing.size() && line < maxLines; ++line)
    err << "not programmed: " << missing[line] << '\n';
  if (missing.size() > maxLines) {
    err << "not programmed: " << missing.size() - maxLines << " more\n";
  }
}

}  // namespace ZelAgent
