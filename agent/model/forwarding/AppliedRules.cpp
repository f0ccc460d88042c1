#include "agent/model/forwarding/AppliedRules.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace ZelAgent {

using PolicyMap::PolicyMapRules;
using PolicyMap::RuleStatus;

AppliedRules::AppliedRules(Mox::Ptr<Chips::ChipAclHelper> acl,
                           Mox::Ptr<TrafficPolicy::Status> status)
    : acl_(std::move(acl)), status_(std::move(status)), reached_(*status_) {}

void AppliedRules::policiesAre(PolicyObjects policies) {
  policies_ = std::move(policies);
}

RuleStates AppliedRules::rules() const {
  RuleStates states;
  for (const auto& [intf, applied] : policies_.intfs) {
    RuleStates ofIntf = rules(intf);
    std::move(ofIntf.begin(), ofIntf.end(), std::back_inserter(states));
  }
  return states;
}

RuleStates AppliedRules::rules(const Velo::String& intf) const {
  RuleCursor cursor;
  return rules(intf, cursor, std::numeric_limits<std::size_t>::max());
}

RuleStates AppliedRules::rules(const Velo::String& intf, RuleCursor& cursor,
                               std::size_t most) const {
  if (!policies_.intfs.contains(intf)) return {};
  RuleStates states;
  if (!cursor.isInPrevious) states = rulesOf(intf, cursor, most);
  if (states.size() == most) return states;
  if (!std::exchange(cursor.isInPrevious, true)) cursor.nextSequence = 0;
  RuleStates previous = previousRulesOf(intf, cursor, most - states.size());
  std::move(previous.begin(), previous.end(), std::back_inserter(states));
  return states;
}

std::set<std::string> AppliedRules::policiesInForce() const {
  std::set<PolicyMapOriginPtr> origins;
  for (const auto& [intf, origin] : inForce_)
    origins.insert(origin);
  std::set<std::string> policies;
  for (const PolicyMapOriginPtr& origin : origins)
    policies.insert(origin->policyIds.begin(), origin->policyIds.end());
  return policies;
}

RuleCounts AppliedRules::counts(const Velo::String& intf) const {
  RuleCounts counts{acl_->rules(intf).size(), 0, acl_->intfClosed(intf)};
  const auto applied = policies_.intfs.find(intf);
  if (applied != policies_.intfs.end() && !isBeingChanged(intf) &&
      !holdsRulesOf(intf, applied->second.policyMap)) {
    counts.refused = policies_.policyMaps.at(applied->second.policyMap).size();
  }
  return counts;
}

std::size_t AppliedRules::refused() const {
  std::size_t rules = 0;
  for (const auto& [intf, applied] : policies_.intfs)
    rules += policies_.policyMaps.at(applied.policyMap).size();
  std::size_t programmed = 0;
  for (const auto& [policyMap, mapRules] : policies_.policyMaps) {
    const PolicyMap::PolicyStatus* const status = status_->policyStatus(policyMap);
    if (status != nullptr) programmed += status->rulesProgrammed;
  }
  return rules - std::min(rules, programmed);
}

bool AppliedRules::holdsRulesOf(const Velo::String& intf, const Velo::String& policyMap) const {
  const PolicyMapRules& rules = policies_.policyMaps.at(policyMap);
  return std::any_of(rules.begin(), rules.end(), [&](const PolicyMap::PolicyMapRule& rule) {
    const RuleStatus* const status = status_->ruleStatus({intf, policyMap, rule.sequence});
    return status != nullptr && status->programmed;
  });
}

// The chip holds all rules of the policy or none, so the place of a rule is its index.
RuleState AppliedRules::ruleStateOf(const Velo::String& intf, const Velo::String& policyMap,
                                    std::size_t index) const {
  const PolicyMapOrigin& origin = *policies_.origins.at(policyMap);
  const PolicyMapOrigin::Rule& from = origin.rules[index];
  const PolicyMap::PolicyMapRule& rule = policies_.policyMaps.at(policyMap)[index];
  const RuleStatus* const status = status_->ruleStatus({intf, policyMap, rule.sequence});
  RuleState state{{intf.str(), origin.networkInstance, origin.policyOf(from), from.sequence},
                  {from.match, rule.action},
                  {},
                  {},
                  {},
                  false,
                  isBeingChanged(intf)};
  if (state.isBeingChanged) return state;
  state.reason = status == nullptr ? "not programmed yet" : status->reason.str();
  if (status != nullptr && status->programmed && index < acl_->rules(intf).size()) {
    state.counter = acl_->counter(intf, index);
    state.place = index;
  }
  return state;
}

// The rules of the policy that is applied to the interface.
RuleStates AppliedRules::rulesOf(const Velo::String& intf, RuleCursor& cursor,
                                 std::size_t most) const {
  RuleStates states;
  const Velo::String& policyMap = policies_.intfs.at(intf).policyMap;
  const PolicyMapRules& rules = policies_.policyMaps.at(policyMap);
  auto rule = std::lower_bound(rules.begin(), rules.end(), cursor.nextSequence,
                               [](const PolicyMap::PolicyMapRule& other, std::uint64_t sequence) {
                                 return other.sequence < sequence;
                               });
  for (; rule != rules.end() && states.size() < most; ++rule) {
    states.push_back(ruleStateOf(intf, policyMap, static_cast<std::size_t>(rule - rules.begin())));
    cursor.nextSequence = std::uint64_t{rule->sequence} + 1;
  }
  return states;
}

// The rules that the chip holds for the interface although its policy is another one.
RuleStates AppliedRules::previousRulesOf(const Velo::String& intf, RuleCursor& cursor,
                                         std::size_t most) const {
  RuleStates states;
  const auto found = inForce_.find(intf);
  if (found == inForce_.end() || isBeingChanged(intf) ||
      holdsRulesOf(intf, policies_.intfs.at(intf).policyMap))
    return states;
  const PolicyMapOrigin& origin = *found->second;
  const auto& rules = acl_->rules(intf);
  const std::size_t count = std::min(rules.size(), origin.rules.size());
  const auto first = std::lower_bound(
      origin.rules.begin(), origin.rules.end(), cursor.nextSequence,
      [](const PolicyMapOrigin::Rule& rule, std::uint64_t number) { return rule.number < number; });
  for (auto place = static_cast<std::size_t>(first - origin.rules.begin());
       place < count && states.size() < most; ++place) {
    const PolicyMapOrigin::Rule& from = origin.rules[place];
    states.push_back({{intf.str(), origin.networkInstance, origin.policyOf(from), from.sequence},
                      {from.match, rules[place].action},
                      place,
                      "",
                      acl_->counter(intf, place),
                      true});
    cursor.nextSequence = std::uint64_t{from.number} + 1;
  }
  return states;
}

// An interface whose rules were refused keeps its record.
void AppliedRules::recordInForce(const std::vector<Velo::String>& refused) {
  std::erase_if(inForce_,
                [this](const auto& entry) { return !policies_.intfs.contains(entry.first); });
  for (const auto& [intf, applied] : policies_.intfs) {
    if (!std::binary_search(refused.begin(), refused.end(), intf))
      inForce_[intf] = policies_.origins.at(applied.policyMap);
  }
}

}  // namespace ZelAgent
