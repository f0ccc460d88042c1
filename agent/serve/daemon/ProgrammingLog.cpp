#include "agent/serve/daemon/ProgrammingLog.h"

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

using PolicyMap::PolicyMapTypeStatus;
using PolicyMap::RuleKey;
using PolicyMap::RuleStatus;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;

std::string subjectOf(const Velo::String& intf) {
  return "rules on " + printable(intf.str(), Limits::shownTextBytes);
}

std::string textOf(const HwStatus& status) {
  const std::string reason = stringValue(status.failureReason()).str();
  const std::string text = printable(status.failureDescription().str(), Limits::shownTextBytes);
  return text.empty() ? reason : reason + ": " + text;
}

}  // namespace

ProgrammingLog::ProgrammingLog(Scheduler& scheduler, const ForwardingAgent& agent,
                               FailureLines::Print print)
    : agent_(agent),
      actions_(agent.actionStatus()),
      rules_(agent.ruleStatus()),
      lines_(scheduler, std::move(print)),
      reports_(scheduler, [this] { reportInterfaces(); }) {
  actionSubscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                                  const void* key, const void*) {
    Velo::MemberSubscriber<ProgrammingLog>::ownerOf(subscriber)
        .followAction(*static_cast<const VrfAction*>(key));
  };
  ruleSubscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attribute,
                                const void* key, const void*) {
    if (attribute != PolicyMapTypeStatus::ruleStatusAttribute) return;
    Velo::MemberSubscriber<ProgrammingLog>::ownerOf(subscriber)
        .followRule(*static_cast<const RuleKey*>(key));
  };
  actions_.publisher().subscriberIs(actionSubscriber_);
  rules_.publisher().subscriberIs(ruleSubscriber_);
}

ProgrammingLog::~ProgrammingLog() {
  actions_.publisher().subscriberDel(actionSubscriber_);
  rules_.publisher().subscriberDel(ruleSubscriber_);
}

void ProgrammingLog::followAction(const VrfAction& action) {
  const bool exists = actions_.hwStatusHas(action);
  const HwStatus status = actions_.hwStatus(action);
  if (exists && status.status() != ProgrammingResult::programmedInHw) {
    lines_.failed(toText(action), textOf(status));
  } else if (lines_.remembersAny()) {
    exists ? lines_.recovered(toText(action)) : lines_.gone(toText(action));
  }
}

void ProgrammingLog::followRule(const RuleKey& rule) {
  const RuleStatus* const status = rules_.ruleStatus(rule);
  const Rule place(rule.policyMap, rule.sequence);
  const auto failed = failedRules_.find(rule.intf);
  if (status != nullptr && !status->programmed) {
    failedRules_[rule.intf].insert(place);
  } else if (failed == failedRules_.end()) {
    return;
  } else if (failed->second.erase(place) > 0 && failed->second.empty()) {
    failedRules_.erase(failed);
  }
  changedIntfs_.insert(rule.intf);
  reports_.request();
}

// During a change the agent has the interfaces before it.
void ProgrammingLog::reportInterfaces() {
  if (agent_.isChanging()) return reports_.request();
  for (const Velo::String& intf : std::exchange(changedIntfs_, {})) {
    const auto failed = failedRules_.find(intf);
    if (failed != failedRules_.end()) {
      lines_.failed(subjectOf(intf), failureOf(intf, failed->second));
    } else if (agent_.policyIntfs().contains(intf)) {
      lines_.recovered(subjectOf(intf));
    } else {
      lines_.gone(subjectOf(intf));
    }
  }
}

std::string ProgrammingLog::failureOf(const Velo::String& intf, const std::set<Rule>& rules) const {
  const auto& [policyMap, sequence] = *rules.begin();
  const RuleStatus* const first = rules_.ruleStatus({intf, policyMap, sequence});
  const std::string reason = first == nullptr ? "" : ": " + first->reason.str();
  return std::to_string(rules.size()) + (rules.size() == 1 ? " rule" : " rules") +
         printable(reason, Limits::shownTextBytes);
}

}  // namespace ZelAgent
