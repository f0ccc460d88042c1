#include "agent/commands/served/ServedCommands.h"

#include <nlohmann/json.hpp>

#include "agent/commands/served/CommandCall.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/model/differences/ConfigurationDifference.h"
#include "agent/model/events/EventNames.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/packets/PacketText.h"
#include "agent/reports/DifferenceReport.h"
#include "agent/reports/EventReport.h"
#include "agent/reports/PathReport.h"

namespace ZelAgent {

CommandOutput reload(const CommandCall& call) {
  const std::vector<std::string> warnings = call.served.reload();
  return withWarnings(call, warnings, showActions(call));
}

CommandOutput diff(const CommandCall& call) {
  const ReadConfiguration read = readOpenConfigFile(call.served.record().file);
  const ConfigurationDifference difference =
      differenceOf(call.served.agent().configuration(), read.configuration);
  return withWarnings(call, read.warnings,
                      outputOf(
                          call, [&](std::ostream& out) { writeTextReport(out, difference); },
                          [&] { return toJson(difference); }));
}

CommandOutput playEvent(const CommandCall& call) {
  const Event event = readEvent(call.line).value();
  checkNames(call.served.agent(), event);
  const PlayedEvent played{{}, event, call.served.play(event)};
  const AgentState state = call.served.agent().state(userListsOf(call));
  return withWarnings(call, played.effects.warnings,
                      outputOf(
                          call, [&](std::ostream& out) { writeTextReport(out, played, state); },
                          [&] { return reportJson(played, state); }));
}

CommandOutput explainPacket(const CommandCall& call) {
  call.arguments.formIs("explain INTERFACE PACKET");
  const std::string interface = call.arguments.needInterface("INTERFACE");
  const std::vector<std::uint8_t> packet = readPacket(call.arguments);
  checkInterface(call.served.agent(), interface, "explain INTERFACE PACKET: INTERFACE");
  const PathReport report = explain(call.served.agent(), interface, packet);
  return outputOf(
      call, [&](std::ostream& out) { out << report.text(); }, [&] { return report.json(); });
}

}  // namespace ZelAgent
