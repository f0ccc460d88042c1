#include "agent/commands/served/ShowActions.h"

#include "agent/language/PrintableText.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

CommandOutput showActions(const CommandCall& call) {
  const AgentState state = call.served.agent().state();
  const std::string& file = call.served.record().inForce;
  return outputOf(
      call,
      [&](std::ostream& out) { writeTextReport(out, printable(file, 1000) + " applied", state); },
      [&] {
        OrderedJson report{{"configuration", file}};
        putState(report, state);
        return report;
      });
}

}  // namespace ZelAgent
