#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>
#include <vector>

#include "agent/commands/served/RuleFilter.h"
#include "agent/commands/served/ServedCommands.h"
#include "agent/commands/served/UserGroups.h"
#include "agent/language/PrintableText.h"
#include "agent/reports/CounterReport.h"
#include "agent/reports/RuleReport.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

AgentState selectedState(const CommandCall& call, const RuleFilter& filter, UserLists lists) {
  AgentState state = call.served.agent().state(lists);
  std::erase_if(state.actions, [&](const ActionState& action) {
    return (filter.vrf && !namesVrf(action.action, *filter.vrf)) ||
           (filter.failed && !hasFailed(action));
  });
  return state;
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
  const AgentState state = selectedState(call, filter, userListsOf(call));
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
  RuleFilter filter = readRuleFilter(call);
  std::vector<ActionState> states = selectedState(call, filter, UserLists::none).actions;
  std::vector<VrfAction> actions;
  actions.reserve(states.size());
  for (const ActionState& state : states)
    actions.push_back(state.action);
  filter.failed = false;  // it has selected actions, and selects no rules
  const auto groups =
      std::make_shared<UserGroups>(call.served.agent(), std::move(filter), std::move(states));
  return userPages(
      std::move(actions), [groups](const VrfAction& action) { return groups->usersOf(action); },
      call.asJson);
}

CommandOutput clearCounters(const CommandCall& call) {
  call.served.agent().acl().countersReset();
  call.served.agent().forwarder().countersReset();
  return outputOf(
      call, [](std::ostream& out) { out << "all counters are 0\n"; },
      [] {
        return OrderedJson{{"cleared", "counters"}};
      });
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
