#include "agent/control/commands/ShowActions.h"

#include "agent/config/PrintableText.h"
#include "agent/render/TextReport.h"

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
