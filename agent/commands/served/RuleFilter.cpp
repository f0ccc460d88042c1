#include "agent/commands/served/RuleFilter.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "agent/language/Words.h"
#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/model/forwarding/RuleWalk.h"

namespace ZelAgent {
namespace {

bool hasInterface(ForwardingAgent& agent, const std::string& name) {
  return agent.names().interfaces.contains(name);
}

bool hasPolicy(ForwardingAgent& agent, const std::string& name) {
  return agent.names().policies.contains(name) || agent.policiesInForce().contains(name);
}

std::string vrfOf(ForwardingAgent& agent, const std::string& name) {
  return vrfNamed(name, agent.configuration().defaultName);
}

bool hasVrf(ForwardingAgent& agent, const std::string& name) {
  return knownVrfs(agent).contains(L3::VrfName(vrfOf(agent, name)));
}

// Reads the filters that a command has.
class FilterReader final {
 public:
  FilterReader(const CommandCall& call, std::vector<std::string> words)
      : call_(call), words_(std::move(words)) {}

  RuleFilter read() {
    while (const auto word = call_.arguments.next())
      readFilter(*word);
    return std::move(filter_);
  }

 private:
  void readFilter(const Word& word) {
    const auto allowed = std::find(words_.begin(), words_.end(), word.text);
    if (word.isQuoted || allowed == words_.end()) failAt(word);
    words_.erase(allowed);
    if (word.text == "interface") filter_.interface = nameOf("interface", hasInterface);
    if (word.text == "policy") filter_.policy = nameOf("policy", hasPolicy);
    if (word.text == "vrf") filter_.vrf = vrfOf(call_.served.agent(), nameOf("vrf", hasVrf));
    if (word.text == "failed") filter_.failed = true;
  }

  [[noreturn]] void failAt(const Word& word) const {
    std::vector<std::string> choices = words_;
    choices.emplace_back("the end of the line");
    call_.arguments.fail("a filter must be " + alternatives(choices), word);
  }

  std::string nameOf(const std::string& kind, bool (*has)(ForwardingAgent&, const std::string&)) {
    const auto name = call_.arguments.next();
    if (!name || !has(call_.served.agent(), name->text))
      call_.arguments.fail(kind + " must be followed by the name of one that exists", name);
    return name->text;
  }

  const CommandCall& call_;
  std::vector<std::string> words_;  // that may follow
  RuleFilter filter_;
};

bool matches(const RuleFilter& filter, const RuleState& rule) {
  if (filter.policy && rule.user.policyId != *filter.policy) return false;
  if (filter.failed && (rule.place || rule.isBeingChanged)) return false;
  if (!filter.vrf) return true;
  const auto action = vrfActionOf(rule.rule.action);
  return action && namesVrf(*action, *filter.vrf);
}

}  // namespace

bool namesVrf(const VrfAction& action, const std::string& vrf) {
  const std::vector<NamedVrf> named = vrfsNamedBy(action);
  return std::any_of(named.begin(), named.end(),
                     [&](const NamedVrf& field) { return field.vrf.bytes() == vrf; });
}

RuleFilter readRuleFilter(const CommandCall& call) {
  return FilterReader(call, {"interface", "policy", "vrf", "failed"}).read();
}

RuleFilter readActionFilter(const CommandCall& call) {
  return FilterReader(call, {"vrf", "failed"}).read();
}

ReadRows<RuleState> selectedRules(ForwardingAgent& agent, const RuleFilter& filter) {
  constexpr std::size_t rulesOfARead = 200;
  RuleWalk walk = filter.interface ? RuleWalk(agent, *filter.interface) : RuleWalk(agent);
  return [walk, filter](RuleStates& selected) mutable {
    RuleStates rules;
    const bool hasMore = walk.read(rules, rulesOfARead);
    std::erase_if(rules, [&](const RuleState& rule) { return !matches(filter, rule); });
    std::move(rules.begin(), rules.end(), std::back_inserter(selected));
    return hasMore;
  };
}

}  // namespace ZelAgent
