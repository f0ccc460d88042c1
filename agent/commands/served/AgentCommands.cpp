#include "agent/commands/served/ServedCommands.h"

#include <nlohmann/json.hpp>

#include "agent/commands/served/CommandCall.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/model/differences/ConfigurationDifference.h"
#include "agent/model/events/EventNames.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/packets/PacketText.h"
#include "agent/reports/ChangeReport.h"
#include "agent/reports/DifferenceReport.h"
#include "agent/reports/EventReport.h"
#include "agent/reports/PathReport.h"

namespace ZelAgent {
namespace {

CommandOutput showAll(const CommandCall& call, const Event& show) {
  const PlayedEvent played{{}, show, {}};
  const AgentState state = call.served.agent().state(userListsOf(call));
  return withWarnings(call, {},
                      outputOf(
                          call, [&](std::ostream& out) { writeTextReport(out, played, state); },
                          [&] { return reportJson(played, state); }));
}

}  // namespace

CommandOutput reload(const CommandCall& call) {
  EffectsRecorder recorder(call.served.agent());
  const std::vector<std::string> warnings = boundedWarnings(call.served.reload());
  const EventEffects effects = recorder.take();
  const std::string& file = call.served.record().file;
  return withWarnings(call, warnings,
                      outputOf(
                          call,
                          [&](std::ostream& out) {
                            writeChangeReport(out,
                                              printable(file, Limits::shownTextBytes) + " applied",
                                              effects, Counts::always);
                          },
                          [&] {
                            OrderedJson report{{"configuration", file}};
                            putChange(report, effects);
                            return report;
                          }));
}

CommandOutput diff(const CommandCall& call) {
  const ReadConfiguration read =
      readOpenConfigFile(call.served.record().file, call.served.leniency());
  const ConfigurationDifference difference =
      differenceOf(call.served.agent().configuration(), read.configuration);
  return withWarnings(call, read.warnings,
                      outputOf(
                          call, [&](std::ostream& out) { writeTextReport(out, difference); },
                          [&] { return toJson(difference); }));
}

CommandOutput playEvent(const CommandCall& call) {
  const Event event = checkedEvent(call.served.agent(), readEvent(call.line).value());
  const EventEffects effects = call.served.play(event);
  if (std::holds_alternative<Show>(event)) return showAll(call, event);
  const bool isConfiguration = std::holds_alternative<ApplyConfig>(event);
  return withWarnings(call, boundedWarnings(effects.warnings),
                      outputOf(
                          call,
                          [&](std::ostream& out) {
                            writeChangeReport(
                                out, toText(event), effects,
                                isConfiguration ? Counts::always : Counts::whenNeeded);
                          },
                          [&] {
                            OrderedJson report{{"event", {{"text", toText(event)}}}};
                            putChange(report, effects);
                            return report;
                          }));
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
