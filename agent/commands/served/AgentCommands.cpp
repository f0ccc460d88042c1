#include "agent/commands/served/ServedCommands.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "agent/commands/served/CommandCall.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
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

// The effects under a title, and as JSON in the report.
CommandOutput changeOutput(const OutputForm& form, const std::string& title, OrderedJson report,
                           const EventEffects& effects, Counts counts) {
  return withWarnings(
      form, boundedWarnings(effects.warnings),
      outputOf(
          form, [&](std::ostream& out) { writeChangeReport(out, title, effects, counts); },
          [&] {
            putChange(report, effects);
            return std::move(report);
          }));
}

CommandOutput eventOutput(const OutputForm& form, const Event& event, const EventEffects& effects,
                          Counts counts) {
  return changeOutput(form, toText(event), {{"event", {{"text", toText(event)}}}}, effects, counts);
}

// Begins a change when no other one is in progress, and waits for its end. `report` makes the
// output of the effects.
template <class Begin, class Report>
AwaitedOutput changeInSlices(ServedAgent& served, Begin begin, Report report) {
  return [&served, begin, report,
          change = SlicedChangePtr()]() mutable -> std::optional<CommandOutput> {
    if (!change && served.isChanging()) return std::nullopt;
    if (!change) change = begin();
    if (!change->isComplete) return std::nullopt;
    return report(effectsOf(*change));
  };
}

AwaitedOutput applyFile(const CommandCall& call, const ApplyConfig& event) {
  return changeInSlices(
      call.served, [&served = call.served, file = event.file] { return served.beginFile(file); },
      [form = OutputForm(call), event](const EventEffects& effects) {
        return eventOutput(form, event, effects, Counts::always);
      });
}

}  // namespace

AwaitedOutput reload(const CommandCall& call) {
  return changeInSlices(
      call.served, [&served = call.served] { return served.beginReload(); },
      [form = OutputForm(call), file = call.served.record().file](const EventEffects& effects) {
        return changeOutput(form, printable(file, Limits::shownTextBytes) + " applied",
                            {{"configuration", file}}, effects, Counts::always);
      });
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

AwaitedOutput playEvent(const CommandCall& call) {
  const Event event = readEvent(call.line).value();
  if (const auto* const config = std::get_if<ApplyConfig>(&event)) return applyFile(call, *config);
  return [&served = call.served, form = OutputForm(call), event]() -> std::optional<CommandOutput> {
    if (served.isChanging()) return std::nullopt;
    const Event checked = checkedEvent(served.agent(), event);
    return eventOutput(form, checked, served.play(checked), Counts::whenNeeded);
  };
}

CommandOutput showState(const CommandCall& call) {
  const PlayedEvent played{{}, Show{}, {}};
  const AgentState state = call.served.agent().state(userListsOf(call));
  return withWarnings(call, {},
                      outputOf(
                          call, [&](std::ostream& out) { writeTextReport(out, played, state); },
                          [&] { return reportJson(played, state); }));
}

AwaitedOutput explainPacket(const CommandCall& call) {
  call.arguments.formIs("explain INTERFACE PACKET");
  const std::string interface = call.arguments.needInterface("INTERFACE");
  const std::vector<std::uint8_t> packet = readPacket(call.arguments);
  const auto check = [&agent = call.served.agent(), interface] {
    checkInterface(agent, interface, "explain INTERFACE PACKET: INTERFACE");
  };
  check();
  return [&agent = call.served.agent(), form = OutputForm(call), check, interface,
          packet]() -> std::optional<CommandOutput> {
    if (agent.isBeingChanged(interface)) return std::nullopt;
    check();  // the change may have removed it
    const PathReport report = explain(agent, interface, packet);
    return outputOf(
        form, [&](std::ostream& out) { out << report.text(); }, [&] { return report.json(); });
  };
}

}  // namespace ZelAgent
