#include "agent/reports/StateReport.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/language/JsonEscapes.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TextTable.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

OrderedJson walkJson(const Chips::VrfWalk& walk) {
  OrderedJson json = OrderedJson::array();
  for (const Chips::VrfFacts& facts : walk) {
    json.push_back({{"vrfName", facts.name.str()},
                    {"vrfId", facts.vrfId},
                    {"exactMatchLens", facts.exactMatchLens},
                    {"exactMatchLensV6", facts.exactMatchLensV6}});
  }
  return json;
}

OrderedJson resourceJson(const ActionState& state) {
  if (!state.resource) return nullptr;
  const Chips::VrfProgram& program = state.resource->program;
  return {{"index", state.resource->index},
          {"current", !state.resourceIsStale()},
          {"lookUp", walkJson(program.lookUp)},
          {"fallback", walkJson(program.fallback)},
          {"postDecap", walkJson(program.postDecap)},
          {"decapNhEnabled", program.decapNhEnabled},
          {"decapNhFallbackEnabled", program.decapNhFallbackEnabled}};
}

OrderedJson usersJson(const std::set<ActionUser>& users) {
  OrderedJson json = OrderedJson::array();
  for (const ActionUser& user : users)
    json.push_back(userJson(user));
  return json;
}

OrderedJson actionJson(const ActionState& state) {
  OrderedJson json = nameJson(state.action);
  json["users"] = state.users;
  json["usedBy"] = usersJson(state.usedBy);
  json.update(statusJson(state.status));
  json["resource"] = resourceJson(state);
  return json;
}

OrderedJson chipJson(const ChipState& chip) {
  return {{"capacity", chip.capacity},          {"used", chip.used},
          {"creates", chip.hookCounts.creates}, {"updates", chip.hookCounts.updates},
          {"deletes", chip.hookCounts.deletes}, {"failures", chip.hookCounts.failures}};
}

OrderedJson ruleTableJson(const RuleTableState& table) {
  return {{"capacity", table.capacity},
          {"used", table.used},
          {"mostUsed", table.mostUsed},
          {"refused", table.refused}};
}

std::string resourceText(const ActionState& state) {
  if (!state.resource) return "-";
  const std::string index = std::to_string(state.resource->index);
  return state.resourceIsStale() ? index + " stale" : index;
}

std::vector<std::string> rowOf(const ActionState& state) {
  return {orDash(state.action.vrfName().bytes()),
          orDash(state.action.fallbackVrfName().bytes()),
          orDash(state.action.postDecapVrfName().bytes()),
          stringValue(state.action.action()).str(),
          std::to_string(state.users),
          resourceText(state),
          stringValue(state.status.status()).str(),
          stringValue(state.status.failureReason()).str(),
          orDash(state.status.failureDescription().bytes())};
}

void writeChip(std::ostream& out, const ChipState& chip) {
  out << "  chip: " << chip.used << " of " << chip.capacity << " VRF resources in use; "
      << chip.hookCounts.creates << " creates, " << chip.hookCounts.updates << " updates, "
      << chip.hookCounts.deletes << " deletes, " << chip.hookCounts.failures << " failed\n";
}

void writeRuleTable(std::ostream& out, const RuleTableState& table) {
  out << "  rules: " << table.used << " of " << table.capacity << " rule entries in use, at most "
      << table.mostUsed << "; " << table.refused << " refused\n";
}

std::string programText(const Chips::VrfProgram& program) {
  std::ostringstream text;
  text << program;
  return printable(text.str(), std::string_view::npos);
}

}  // namespace

OrderedJson nameJson(const VrfAction& action) {
  return {{"vrfName", action.vrfName().str()},
          {"fallbackVrfName", action.fallbackVrfName().str()},
          {"postDecapVrfName", action.postDecapVrfName().str()},
          {"action", stringValue(action.action()).str()}};
}

OrderedJson userJson(const ActionUser& user) {
  return {{"interface", user.interface},
          {"networkInstance", user.networkInstance},
          {"policy", user.policyId},
          {"rule", user.sequenceId}};
}

OrderedJson statusJson(const ZelVrfSelectionPolicy::HwStatus& status) {
  return {{"status", stringValue(status.status()).str()},
          {"failureReason", stringValue(status.failureReason()).str()},
          {"failureDescription", status.failureDescription().str()}};
}

void putState(OrderedJson& report, const AgentState& state) {
  OrderedJson actions = OrderedJson::array();
  for (const ActionState& action : state.actions)
    actions.push_back(actionJson(action));
  report["actions"] = std::move(actions);
  report["chip"] = chipJson(state.chip);
  report["ruleTable"] = ruleTableJson(state.ruleTable);
}

std::string oneLine(const OrderedJson& document) {
  return escapedJson(document.dump(-1, ' ', false, OrderedJson::error_handler_t::replace));
}

void writeTextReport(std::ostream& out, const std::string& title, const AgentState& state) {
  out << title << '\n';
  if (state.actions.empty()) {
    out << "  no VRF actions\n";
  } else {
    TextTable rows{{"VRF", "FALLBACK", "POST-DECAP", "ACTION", "USERS", "RESOURCE", "STATUS",
                    "REASON", "DESCRIPTION"}};
    std::transform(state.actions.begin(), state.actions.end(), std::back_inserter(rows), rowOf);
    writeTable(out, rows);
  }
  writeChip(out, state.chip);
  writeRuleTable(out, state.ruleTable);
}

void writeResourceReport(std::ostream& out, const AgentState& state) {
  for (const ActionState& action : state.actions) {
    if (!action.resource) continue;
    const bool isStale = action.resourceIsStale();
    out << "  resource " << action.resource->index << " of " << toText(action.action)
        << (isStale ? ", stale" : "") << ":\n"
        << "    " << programText(action.resource->program) << '\n';
    if (isStale) {
      out << "    an update would program: " << programText(action.currentProgram) << '\n';
    }
  }
}

void writeJsonReport(std::ostream& out, const std::optional<std::string>& configuration,
                     const AgentState& state) {
  OrderedJson report;
  report["configuration"] = configuration ? OrderedJson(*configuration) : OrderedJson(nullptr);
  putState(report, state);
  out << oneLine(report) << '\n';
}

std::string toText(const VrfAction& action) {
  std::string text = stringValue(action.action()).str() + ' ' + toWord(action.vrfName().bytes());
  if (!action.fallbackVrfName().empty()) {
    text += " fallback " + toWord(action.fallbackVrfName().bytes());
  }
  if (!action.postDecapVrfName().empty()) {
    text += " post-decap " + toWord(action.postDecapVrfName().bytes());
  }
  return text;
}

}  // namespace ZelAgent
