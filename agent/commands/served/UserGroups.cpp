#include "agent/commands/served/UserGroups.h"

#include <optional>
#include <utility>

namespace ZelAgent {
namespace {

std::optional<VrfAction> usedAction(const RuleState& rule) {
  if (!rule.place) return std::nullopt;
  return vrfActionOf(rule.rule.action);
}

ReadRows<UserRow> usersOfOne(const VrfAction& action, ReadRows<RuleState> read) {
  return [action, read = std::move(read)](std::vector<UserRow>& users) {
    RuleStates rules;
    const bool hasMore = read(rules);
    for (RuleState& rule : rules) {
      if (usedAction(rule) == action) users.push_back({action, std::move(rule.user)});
    }
    return hasMore;
  };
}

}  // namespace

UserGroups::UserGroups(ForwardingAgent& agent, RuleFilter filter, std::vector<ActionState> actions)
    : agent_(agent), filter_(std::move(filter)), actions_(std::move(actions)) {}

ReadRows<UserRow> UserGroups::usersOf(const VrfAction& action) {
  if (!group_.contains(action)) startGroup();
  if (group_.size() == 1) return usersOfOne(action, selectedRules(agent_, filter_));
  return [self = shared_from_this(), action,
          read = ReadRows<UserRow>()](std::vector<UserRow>& users) mutable {
    if (self->hasMore_) {
      self->readRules();
      return true;
    }
    if (!read) read = rowsOfList(std::move(self->group_[action]));
    return read(users);
  };
}

void UserGroups::startGroup() {
  group_.clear();
  for (std::size_t users = 0; next_ < actions_.size(); ++next_) {
    users += actions_[next_].users;
    if (!group_.empty() && users > usersOfAGroup) break;
    group_[actions_[next_].action];
  }
  rules_ = selectedRules(agent_, filter_);
  hasMore_ = true;
}

void UserGroups::readRules() {
  RuleStates rules;
  hasMore_ = rules_(rules);
  for (RuleState& rule : rules) {
    const auto action = usedAction(rule);
    if (!action) continue;
    const auto found = group_.find(*action);
    if (found != group_.end()) found->second.push_back({*action, std::move(rule.user)});
  }
}

}  // namespace ZelAgent
