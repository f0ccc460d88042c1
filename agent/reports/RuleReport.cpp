#include "agent/reports/RuleReport.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TextTable.h"
#include "agent/model/policies/PolicyObjects.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

std::string stateText(const RuleState& rule) {
  if (rule.isBeingChanged) return "the rules of the interface are being changed";
  if (rule.isPrevious) return "programmed, of the previous policy";
  return rule.place ? "programmed"
                    : "not programmed: " + printable(rule.reason, Limits::shownTextBytes);
}

std::vector<std::string> cellsOf(const RuleState& rule) {
  std::vector<std::string> cells = nameCells(rule);
  cells.push_back(stateText(rule));
  return cells;
}

using ReadUsers = std::function<ReadRows<UserRow>(const VrfAction& action)>;

std::vector<std::string> userCells(const UserRow& row) {
  return {toText(row.action), printable(row.user.interface, Limits::shownTextBytes),
          policyText(row.user), std::to_string(row.user.sequenceId)};
}

// The rows of one action after the other.
ReadRows<std::vector<std::string>> userCells(std::vector<VrfAction> actions, ReadUsers readUsers) {
  return [actions = std::move(actions), readUsers = std::move(readUsers), at = std::size_t{0},
          read = ReadRows<UserRow>()](TextTable& cells) mutable {
    if (at == actions.size()) return false;
    if (!read) read = readUsers(actions[at]);
    std::vector<UserRow> rows;
    if (!read(rows)) {
      read = nullptr;
      ++at;
    }
    for (const UserRow& row : rows)
      cells.push_back(userCells(row));
    return at < actions.size();
  };
}

// The array of actions, each with the array of its users.
class UserArray final : public ReportPages {
 public:
  UserArray(std::vector<VrfAction> actions, ReadUsers readUsers)
      : actions_(std::move(actions)), readUsers_(std::move(readUsers)) {}

  [[nodiscard]] bool hasNext() const override { return !isDone_; }
  [[nodiscard]] std::string next() override {
    std::string page;
    if (!users_ && at_ == 0) page = "[";
    if (at_ < actions_.size()) page += nextOfAction();
    isDone_ = at_ == actions_.size();
    return isDone_ ? page + ']' : page;
  }

 private:
  std::string nextOfAction() {
    std::string page;
    if (!users_) {
      page = (at_ == 0 ? "" : ",") + beginningOf(actions_[at_]);
      users_ = pagesOf<UserRow>(
          {{}, {}, userCells, [](const UserRow& row) { return oneLine(userJson(row.user)); }},
          readUsers_(actions_[at_]), true);
    }
    page += users_->next();
    if (users_->hasNext()) return page;
    users_.reset();
    ++at_;
    return page + '}';
  }

  // The JSON of the action without its last brace, up to the users.
  static std::string beginningOf(const VrfAction& action) {
    std::string json = oneLine(nameJson(action));
    json.back() = ',';
    return json + R"("usedBy":)";
  }

  std::vector<VrfAction> actions_;
  ReadUsers readUsers_;
  ReportPagesPtr users_;  // of the action at at_, if their array has begun
  std::size_t at_ = 0;
  bool isDone_ = false;
};

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
          std::to_string(rule.user.sequenceId), shownText(*rule.rule.match),
          toText(rule.rule.action)};
}

OrderedJson ruleJson(const RuleState& rule) {
  OrderedJson json = userJson(rule.user);
  json["match"] = shownText(*rule.rule.match);
  json["action"] = actionJson(rule.rule.action);
  json["programmed"] = rule.isBeingChanged ? OrderedJson() : OrderedJson(rule.place.has_value());
  if (rule.isPrevious) json["previous"] = true;
  if (rule.isBeingChanged) json["beingChanged"] = true;
  return json;
}

ReportPagesPtr rulePages(ReadRows<RuleState> read, bool asJson) {
  const RowFormat<RuleState> format{{"INTERFACE", "POLICY", "RULE", "MATCH", "ACTION", "STATE"},
                                    "  no rules\n",
                                    cellsOf,
                                    [](const RuleState& rule) {
                                      OrderedJson json = ruleJson(rule);
                                      json["reason"] = rule.reason;
                                      return oneLine(json);
                                    }};
  return pagesOf(format, std::move(read), asJson);
}

ReportPagesPtr userPages(std::vector<VrfAction> actions,
                         std::function<ReadRows<UserRow>(const VrfAction& action)> readUsers,
                         bool asJson) {
  if (asJson) return std::make_unique<UserArray>(std::move(actions), std::move(readUsers));
  return tablePages({"ACTION", "INTERFACE", "POLICY", "RULE"},
                    userCells(std::move(actions), std::move(readUsers)), "  no users\n");
}

}  // namespace ZelAgent
