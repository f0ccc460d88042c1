#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "agent/commands/served/RuleFilter.h"
#include "agent/commands/served/ServedCommands.h"
#include "agent/language/PrintableText.h"
#include "agent/reports/CounterReport.h"
#include "agent/reports/RuleReport.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

AgentState selectedState(const CommandCall& call, const RuleFilter& filter) {
  AgentState state = call.served.agent().state(userListsOf(call));
  std::erase_if(state.actions, [&](const ActionState& action) {
    return (filter.vrf && !namesVrf(action.action, *filter.vrf)) ||
           (filter.failed && !hasFailed(action));
  });
  return state;
}

// The filters for actions; `failed` selects actions here and not rules.
std::vector<VrfAction> selectedActions(ForwardingAgent& agent, const RuleFilter& filter) {
  std::vector<VrfAction> actions;
  for (const ActionState& action : agent.state(UserLists::none).actions) {
    if (filter.vrf && !namesVrf(action.action, *filter.vrf)) continue;
    if (!filter.failed || hasFailed(action)) actions.push_back(action.action);
  }
  return actions;
}

ReadRows<UserRow> usersOf(ForwardingAgent& agent, RuleFilter filter, const VrfAction& action) {
  filter.failed = false;
  return [read = selectedRules(agent, filter), action](std::vector<UserRow>& users) {
    RuleStates rules;
    const bool hasMore = read(rules);
    for (RuleState& rule : rules) {
      if (rule.place && vrfActionOf(rule.rule.action) == action)
        users.push_back({action, std::move(rule.user)});
    }
    return hasMore;
  };
}

std::vector<VrfCount> countOf(ForwardingAgent& agent, const RuleFilter& filter) {
  if (!filter.vrf) return {};
  const auto counters = agent.forwarder().vrfCounters();
  const auto found = counters.find(L3::VrfName(*filter.vrf));
  if (found == counters.end()) return {};
  return {{found->first, found->second}};
}

}  // namespace

CommandOutput showActions(const CommandCall& call) {
  const RuleFilter filter = readActionFilter(call);
  const AgentState state = selectedState(call, filter);
  const std::string& file = call.served.record().inForce;
  return outputOf(
      call,
      [&](std::ostream& out) {
        writeTextReport(out, printable(file, Limits::shownTextBytes) + " applied", state);
      },
      [&] {
        OrderedJson report{{"configuration", file}};
        putState(report, state);
        return report;
      });
}

ReportPagesPtr showRules(const CommandCall& call) {
  const RuleFilter filter = readRuleFilter(call);
  return rulePages(selectedRules(call.served.agent(), filter), call.asJson);
}

ReportPagesPtr showUsers(const CommandCall& call) {
  const RuleFilter filter = readRuleFilter(call);
  ForwardingAgent& agent = call.served.agent();
  return userPages(
      selectedActions(agent, filter),
      [&agent, filter](const VrfAction& action) { return usersOf(agent, filter, action); },
      call.asJson);
}

ReportPagesPtr showCounters(const CommandCall& call) {
  const RuleFilter filter = readRuleFilter(call);
  ForwardingAgent& agent = call.served.agent();
  auto rules = selectedRules(agent, filter);
  if (filter.isEmpty())
    return counterPages(std::move(rules), countersWithoutRules(agent), call.asJson);
  return counterPages(std::move(rules), countOf(agent, filter), call.asJson);
}

}  // namespace ZelAgent
