// Rules and users as the whole text, and the whole JSON, of their pages.
#pragma once

#include <string>
#include <vector>

#include "agent/reports/CounterReport.h"
#include "agent/reports/RuleReport.h"

namespace ZelAgent {

[[nodiscard]] inline std::string textOf(const RuleStates& rules, bool asJson = false) {
  return wholeText(*rulePages(rowsOfList(rules), asJson));
}

[[nodiscard]] inline std::string textOf(const ActionUsers& users, bool asJson = false) {
  std::vector<VrfAction> actions;
  for (const auto& [action, usersOfAction] : users)
    actions.push_back(action);
  const auto readUsers = [&users](const VrfAction& action) {
    std::vector<UserRow> rows;
    for (const ActionUser& user : users.at(action))
      rows.push_back({action, user});
    return rowsOfList(std::move(rows));
  };
  return wholeText(*userPages(actions, readUsers, asJson));
}

[[nodiscard]] inline std::string jsonOf(const RuleStates& rules) {
  return textOf(rules, true);
}
[[nodiscard]] inline std::string jsonOf(const ActionUsers& users) {
  return textOf(users, true);
}
[[nodiscard]] inline std::string jsonOf(const ForwardCounters& counters) {
  return wholeText(*counterPages(rowsOfList(counters.rules), counters, true));
}

}  // namespace ZelAgent
