#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

#include "agent/commands/served/RuleFilter.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/ReportPages.h"
#include "agent/reports/RuleReport.h"

namespace ZelAgent {

/// Reads the users of several actions, of one action after the other.
///
/// A reading of all rules finds the users of a group of actions. A group has the next actions that
/// together had at most `usersOfAGroup` users when the actions were listed, or one action with
/// more. The users of such a single action are not kept. So n users need at most 2 * n /
/// `usersOfAGroup` + 1 readings, and few users are kept. A change in between may give the actions
/// of a group more users, which are kept too.
class UserGroups final : public std::enable_shared_from_this<UserGroups> {
 public:
  static constexpr std::size_t usersOfAGroup = 1000;

  /// `filter` selects rules. The agent must outlive this.
  UserGroups(ForwardingAgent& agent, RuleFilter filter, std::vector<ActionState> actions);

  /// The users of the next action. It needs this object as a `shared_ptr`. Precondition: actions
  /// come in the order of the list, each once, and the users of the one before were all read.
  [[nodiscard]] ReadRows<UserRow> usersOf(const VrfAction& action);

 private:
  using Group = std::map<VrfAction, std::vector<UserRow>>;

  void startGroup();
  void readRules();

  ForwardingAgent& agent_;
  RuleFilter filter_;
  std::vector<ActionState> actions_;
  std::size_t next_ = 0;  // the first action after the group
  Group group_;
  ReadRows<RuleState> rules_;
  bool hasMore_ = false;  // not all rules were read for the group
};

}  // namespace ZelAgent
