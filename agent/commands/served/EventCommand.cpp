#include "agent/commands/served/EventCommand.h"

#include "agent/commands/served/Warnings.h"
#include "agent/model/events/EventReader.h"
#include "agent/reports/EventReport.h"

namespace ZelAgent {

CommandOutput playEvent(const CommandCall& call) {
  const Event event = readEvent(call.line).value();
  const PlayedEvent played{{}, event, call.served.play(event)};
  const AgentState state = call.served.agent().state();
  return withWarnings(call, played.effects.warnings,
                      outputOf(
                          call, [&](std::ostream& out) { writeTextReport(out, played, state); },
                          [&] { return reportJson(played, state); }));
}

}  // namespace ZelAgent
