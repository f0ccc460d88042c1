#include "agent/commands/served/ShowRules.h"

#include "agent/reports/CounterReport.h"
#include "agent/reports/RuleReport.h"

namespace ZelAgent {
namespace {

template <class Shown>
CommandOutput show(const CommandCall& call, const Shown& shown) {
  return outputOf(
      call, [&](std::ostream& out) { writeTextReport(out, shown); }, [&] { return toJson(shown); });
}

}  // namespace

CommandOutput showRules(const CommandCall& call) {
  return show(call, call.served.agent().rules());
}

CommandOutput showUsers(const CommandCall& call) {
  return show(call, call.served.agent().users());
}

CommandOutput showCounters(const CommandCall& call) {
  return show(call, countersOf(call.served.agent()));
}

}  // namespace ZelAgent
