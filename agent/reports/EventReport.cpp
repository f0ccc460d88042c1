#include "agent/reports/EventReport.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/model/events/Event.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

using SoftChip::Hook;
using SoftChip::HookCall;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;

const char* hookName(Hook hook) {
  switch (hook) {
    case Hook::createVrf:
      return "createVrf";
    case Hook::updateVrf:
      return "updateVrf";
    case Hook::deleteVrf:
      break;
  }
  return "deleteVrf";
}

std::string statusText(const std::optional<HwStatus>& status) {
  if (!status) return "none";
  std::string result = stringValue(status->status()).str();
  if (status->status() == ProgrammingResult::programmedInHw) return result;
  return result + " (" + stringValue(status->failureReason()).str() + ": " +
         printable(status->failureDescription().bytes(), Limits::shownTextBytes) + ')';
}

void writeCalls(std::ostream& out, const std::vector<HookCall>& calls) {
  if (calls.empty()) out << "  no hook call\n";
  for (const HookCall& call : calls) {
    out << "  " << hookName(call.hook) << ' ' << toText(call.action)
        << (call.failed ? " failed" : "") << '\n';
  }
}

void writeStatusChanges(std::ostream& out, const std::vector<StatusChange>& changes) {
  for (const StatusChange& change : changes) {
    out << "  status of " << toText(change.action) << ": " << statusText(change.before) << " -> "
        << statusText(change.after) << '\n';
  }
}

std::string titleOf(const PlayedEvent& played) {
  const std::string event = toText(played.event);
  return played.place ? played.place->text() + ": " + event : event;
}

OrderedJson eventJson(const PlayedEvent& played) {
  OrderedJson json = OrderedJson::object();
  if (played.place) json = {{"file", played.place->file}, {"line", played.place->line}};
  json["text"] = toText(played.event);
  return json;
}

OrderedJson callsJson(const std::vector<HookCall>& calls) {
  OrderedJson json = OrderedJson::array();
  for (const HookCall& call : calls) {
    OrderedJson one;
    one["hook"] = hookName(call.hook);
    one.update(nameJson(call.action));
    one["failed"] = call.failed;
    json.push_back(std::move(one));
  }
  return json;
}

OrderedJson optionalStatusJson(const std::optional<HwStatus>& status) {
  return status ? statusJson(*status) : OrderedJson(nullptr);
}

OrderedJson statusChangesJson(const std::vector<StatusChange>& changes) {
  OrderedJson json = OrderedJson::array();
  for (const StatusChange& change : changes) {
    OrderedJson one = nameJson(change.action);
    one["before"] = optionalStatusJson(change.before);
    one["after"] = optionalStatusJson(change.after);
    json.push_back(std::move(one));
  }
  return json;
}

}  // namespace

void writeTextReport(std::ostream& out, const PlayedEvent& played, const AgentState& state) {
  const std::string title = titleOf(played);
  if (std::holds_alternative<Show>(played.event)) {
    writeTextReport(out, title, state);
    writeResourceReport(out, state);
    return;
  }
  out << title << '\n';
  writeCalls(out, played.effects.calls);
  writeStatusChanges(out, played.effects.statusChanges);
}

OrderedJson reportJson(const PlayedEvent& played, const AgentState& state) {
  OrderedJson report;
  report["event"] = eventJson(played);
  report["calls"] = callsJson(played.effects.calls);
  report["statuses"] = statusChangesJson(played.effects.statusChanges);
  putState(report, state);
  return report;
}

void writeJsonReport(std::ostream& out, const PlayedEvent& played, const AgentState& state) {
  out << oneLine(reportJson(played, state)) << '\n';
}

}  // namespace ZelAgent
