#include "agent/reports/RuleReport.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TextTable.h"
#include "agent/model/policies/PolicyObjects.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

std::string stateText(const RuleState& rule) {
  if (rule.isPrevious) return "programmed, of the previous policy";
  return rule.place ? "programmed"
                    : "not programmed: " + printable(rule.reason, Limits::shownTextBytes);
}

}  // namespace

std::string policyText(const ActionUser& user) {
  std::string policy = printable(user.policyId, Limits::shownTextBytes);
  if (user.networkInstance == defaultVrfName) return policy;
  return printable(user.networkInstance, Limits::shownTextBytes) + ": " + policy;
}

std::string toText(const PolicyMap::RuleAction& action) {
  if (const auto vrfAction = vrfActionOf(action)) return toText(*vrfAction);
  return action.type == PolicyMap::ActionType::discard ? "discard" : "-";
}

OrderedJson actionJson(const PolicyMap::RuleAction& action) {
  if (action.type == PolicyMap::ActionType::none) return nullptr;
  if (const auto vrfAction = vrfActionOf(action)) return nameJson(*vrfAction);
  return {{"action", stringValue(action.type).str()}};
}

std::vector<std::string> nameCells(const RuleState& rule) {
  return {printable(rule.user.interface, Limits::shownTextBytes), policyText(rule.user),
          std::to_string(rule.user.sequenceId), toText(rule.rule.match), toText(rule.rule.action)};
}

OrderedJson ruleJson(const RuleState& rule) {
  OrderedJson json = userJson(rule.user);
  json["match"] = toText(rule.rule.match);
  json["action"] = actionJson(rule.rule.action);
  json["programmed"] = rule.place.has_value();
  if (rule.isPrevious) json["previous"] = true;
  return json;
}

void writeTextReport(std::ostream& out, const RuleStates& rules) {
  if (rules.empty()) {
    out << "  no rules\n";
    return;
  }
  TextTable table{{"INTERFACE", "POLICY", "RULE", "MATCH", "ACTION", "STATE"}};
  for (const RuleState& rule : rules) {
    table.push_back(nameCells(rule));
    table.back().push_back(stateText(rule));
  }
  writeTable(out, table);
}

OrderedJson toJson(const RuleStates& rules) {
  OrderedJson json = OrderedJson::array();
  for (const RuleState& rule : rules) {
    json.push_back(ruleJson(rule));
    json.back()["reason"] = rule.reason;
  }
  return json;
}

void writeTextReport(std::ostream& out, const ActionUsers& users) {
  if (users.empty()) {
    out << "  no users\n";
    return;
  }
  TextTable table{{"ACTION", "INTERFACE", "POLICY", "RULE"}};
  for (const auto& [action, usersOfAction] : users) {
    for (const ActionUser& user : usersOfAction) {
      table.push_back({toText(action), printable(user.interface, Limits::shownTextBytes),
                       policyText(user), std::to_string(user.sequenceId)});
    }
  }
  writeTable(out, table);
}

OrderedJson toJson(const ActionUsers& users) {
  OrderedJson json = OrderedJson::array();
  for (const auto& [action, usersOfAction] : users) {
    OrderedJson entry = nameJson(action);
    entry["usedBy"] = OrderedJson::array();
    for (const ActionUser& user : usersOfAction)
      entry["usedBy"].push_back(userJson(user));
    json.push_back(std::move(entry));
  }
  return json;
}

}  // namespace ZelAgent
