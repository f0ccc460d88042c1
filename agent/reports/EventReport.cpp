#include "agent/reports/EventReport.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "agent/model/events/Event.h"
#include "agent/reports/EffectReport.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

template <class Element>
void writeLines(std::ostream& out, const std::vector<Element>& elements) {
  for (const Element& element : elements)
    out << "  " << toText(element) << '\n';
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

template <class Element>
OrderedJson listJson(const std::vector<Element>& elements) {
  OrderedJson json = OrderedJson::array();
  for (const Element& element : elements)
    json.push_back(toJson(element));
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
  if (played.effects.calls.empty()) out << "  no hook call\n";
  writeLines(out, played.effects.calls);
  writeLines(out, played.effects.statusChanges);
}

OrderedJson reportJson(const PlayedEvent& played, const AgentState& state) {
  OrderedJson report;
  report["event"] = eventJson(played);
  report["calls"] = listJson(played.effects.calls);
  report["statuses"] = listJson(played.effects.statusChanges);
  putState(report, state);
  return report;
}

void writeJsonReport(std::ostream& out, const PlayedEvent& played, const AgentState& state) {
  out << oneLine(reportJson(played, state)) << '\n';
}

}  // namespace ZelAgent
