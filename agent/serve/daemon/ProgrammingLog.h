#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

#include "PolicyMap/PolicyMapTypeStatus.h"
#include "Velo/Subscriber.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/serve/daemon/CoalescedCall.h"
#include "agent/serve/daemon/FailureLines.h"
#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

/// Logs which actions, and the rules of which interfaces, are not programmed, and when they are
/// programmed again. `FailureLines` limits the lines.
///
/// It subscribes to the tables of statuses, so it costs nothing while nothing changes. The line of
/// an action is printed during the change. That of an interface is printed in the next round of the
/// loop in which no change is in progress, when the statuses of all its rules are known.
class ProgrammingLog final {
 public:
  /// The scheduler and the agent must outlive this.
  ProgrammingLog(Scheduler& scheduler, const ForwardingAgent& agent, FailureLines::Print print);
  ProgrammingLog(const ProgrammingLog&) = delete;
  ProgrammingLog& operator=(const ProgrammingLog&) = delete;
  ~ProgrammingLog();

 private:
  // A rule of an interface: its policy map and its sequence number.
  using Rule = std::pair<Velo::String, std::uint32_t>;

  void followAction(const VrfAction& action);
  void followRule(const PolicyMap::RuleKey& rule);
  void reportInterfaces();
  [[nodiscard]] std::string failureOf(const Velo::String& intf, const std::set<Rule>& rules) const;

  const ForwardingAgent& agent_;
  const ZelVrfSelectionPolicy::VrfHwStatus& actions_;
  const PolicyMap::PolicyMapTypeStatus& rules_;
  FailureLines lines_;
  std::map<Velo::String, std::set<Rule>> failedRules_;  // by interface; no set is empty
  std::set<Velo::String> changedIntfs_;                 // to report
  CoalescedCall reports_;
  Velo::MemberSubscriber<ProgrammingLog> actionSubscriber_{*this};
  Velo::MemberSubscriber<ProgrammingLog> ruleSubscriber_{*this};
};

}  // namespace ZelAgent
