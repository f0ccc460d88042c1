#include "agent/model/policies/PolicyObjects.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>
#include <variant>

#include "Mox/QuotedString.h"
#include "agent/config/IpPrefix.h"
#include "agent/config/RuleMatchText.h"
#include "agent/language/Limits.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

using PolicyMap::ActionType;
using PolicyMap::ClassMatch;
using PolicyMap::NumberRange;
using PolicyMap::SharedClassMatch;
using PolicyMap::TcpFlagsMatch;

// All parts are quoted, so no two policies and no two pairs of policies have the same name.
Velo::String policyMapName(const std::string& networkInstance,
                           const std::vector<const Policy*>& policies) {
  std::string name = Mox::quoted(networkInstance);
  for (const Policy* const policy : policies)
    name += ' ' + Mox::quoted(policy->policyId);
  return name;
}

std::optional<std::uint64_t> dscpsOf(const RuleMatch& match) {
  std::optional<std::uint64_t> dscps;
  for (const std::uint8_t dscp : match.dscpSet)
    dscps = dscps.value_or(0) | std::uint64_t{1} << dscp;
  if (match.dscp) dscps = dscps.value_or(~std::uint64_t{0}) & std::uint64_t{1} << *match.dscp;
  return dscps;
}

std::vector<TcpFlagsMatch> withoutRepetitions(std::vector<TcpFlagsMatch> matches) {
  std::sort(matches.begin(), matches.end());
  matches.erase(std::unique(matches.begin(), matches.end()), matches.end());
  return matches;
}

ClassMatch classMatchOf(const RuleMatch& match) {
  ClassMatch classMatch;
  classMatch.family = match.family;
  classMatch.protocol = match.protocol;
  classMatch.dscps = dscpsOf(match);
  classMatch.source = match.source;
  classMatch.destination = match.destination;
  classMatch.hopLimit = match.hopLimit;
  classMatch.length = match.length;
  classMatch.fragmentOffsets = fewestRanges(match.fragmentOffsets);
  classMatch.sourcePorts = fewestRanges(match.sourcePorts);
  classMatch.destinationPorts = fewestRanges(match.destinationPorts);
  classMatch.tcpFlags = withoutRepetitions(match.tcpFlags);
  classMatch.isFragment = match.isFragment;
  classMatch.sourceSet = match.sourceSet;
  classMatch.destinationSet = match.destinationSet;
  return classMatch;
}

struct ToRuleAction {
  PolicyMap::RuleAction operator()(const NoAction& /*action*/) const { return {}; }
  PolicyMap::RuleAction operator()(const Discard& /*action*/) const {
    return {ActionType::discard, {}, {}, {}};
  }
  PolicyMap::RuleAction operator()(const LookUp& action) const {
    return {ActionType::vrf, action.vrf, {}, {}};
  }
  PolicyMap::RuleAction operator()(const Decapsulate& action) const {
    return {ActionType::decapVrf, action.decapVrf, action.fallbackVrf, action.postDecapVrf};
  }
};

const Policy* policyNamed(const NetworkInstance& instance, const std::string& id) {
  const auto found = std::find_if(instance.policies.begin(), instance.policies.end(),
                                  [&](const Policy& policy) { return policy.policyId == id; });
  return found == instance.policies.end() ? nullptr : &*found;
}

// The policies of the interface, in the order in which they are tried.
std::vector<const Policy*> policiesOf(const NetworkInstance& instance,
                                      const PolicyBinding& binding) {
  std::vector<const Policy*> policies;
  for (const std::string& id : {binding.policyId, binding.forwardingPolicyId}) {
    if (const Policy* const policy = policyNamed(instance, id)) policies.push_back(policy);
  }
  return policies;
}

SharedClassMatch addClassMap(const Rule& rule, PolicyObjects& objects, Velo::String& name) {
  ClassMatch match = classMatchOf(rule.match);
  name = toText(match);
  const auto present = objects.classMaps.find(name);
  if (present != objects.classMaps.end()) return present->second;
  return objects.classMaps.emplace(name, std::move(match)).first->second;
}

// Adds the policy map of the policies unless it is there. Returns its name.
Velo::String addPolicyMap(const NetworkInstance& instance,
                          const std::vector<const Policy*>& policies, PolicyObjects& objects) {
  Velo::String name = policyMapName(instance.name, policies);
  if (objects.policyMaps.contains(name)) return name;
  PolicyMap::PolicyMapRules rules;
  PolicyMapOrigin origin{instance.name, {}, {}};
  for (const Policy* const policy : policies) {
    for (const Rule& rule : policy->rules) {
      Velo::String classMap;
      SharedClassMatch match = addClassMap(rule, objects, classMap);
      const auto number =
          policies.size() == 1 ? rule.sequenceId : static_cast<std::uint32_t>(rules.size() + 1);
      rules.push_back({number, classMap, std::visit(ToRuleAction(), rule.action)});
      origin.rules.push_back({origin.policyIds.size(), rule.sequenceId, number, std::move(match)});
    }
    origin.policyIds.push_back(policy->policyId);
  }
  objects.policyMaps.emplace(name, std::move(rules));
  objects.origins.emplace(name, std::make_shared<const PolicyMapOrigin>(std::move(origin)));
  return name;
}

constexpr std::size_t allValues = std::numeric_limits<std::size_t>::max();

// The values with commas between them. At most `most` of them, and the number of the others.
template <class Values, class ToText>
std::string listed(const Values& values, std::size_t most, ToText toText) {
  std::string text;
  std::size_t left = most;
  for (const auto& value : values) {
    if (left-- == 0) return text + ",... and " + std::to_string(values.size() - most) + " more";
    text += (text.empty() ? "" : ",") + toText(value);
  }
  return text;
}

std::string toText(std::uint64_t dscps) {
  std::vector<unsigned> values;
  for (unsigned dscp = 0; dscp < 64; ++dscp) {
    if ((dscps >> dscp & 1) != 0) values.push_back(dscp);
  }
  if (values.empty()) return "none";
  return listed(values, allValues, [](unsigned dscp) { return std::to_string(dscp); });
}

std::string toText(const std::vector<NumberRange>& ranges, std::size_t most) {
  return listed(ranges, most, [](const NumberRange& range) { return ZelAgent::toText(range); });
}

std::string toText(const std::vector<TcpFlagsMatch>& matches) {
  return listed(matches, allValues,
                [](const TcpFlagsMatch& match) { return ZelAgent::toText(match); });
}

struct SetPrefix {
  const Ip::Prefix* prefix;
  bool isExcluded;
};

std::string prefixesText(const Classification::PrefixSet& set, std::size_t most) {
  std::vector<SetPrefix> prefixes;
  for (const Ip::Prefix& prefix : set.prefixes)
    prefixes.push_back({&prefix, false});
  for (const Ip::Prefix& prefix : set.excluded)
    prefixes.push_back({&prefix, true});
  if (prefixes.empty()) return "none";
  return listed(prefixes, most, [](const SetPrefix& prefix) {
    return (prefix.isExcluded ? "!" : "") + ZelAgent::toText(*prefix.prefix);
  });
}

// The sets are texts; an empty one is no set. `most` is for each list of ranges.
std::string textOf(const PolicyMap::HeaderMatch& match, const std::string& sourceSet,
                   const std::string& destinationSet, std::size_t most) {
  if (!match.family) return "any";
  std::string text = ZelAgent::toText(*match.family);
  const auto add = [&](std::string_view field, const std::string& value) {
    text.append(" ").append(field).append(" ").append(value);
  };
  if (match.protocol) add("protocol", std::to_string(*match.protocol));
  if (match.dscps) add("dscp", toText(*match.dscps));
  if (match.source) add("source", ZelAgent::toText(*match.source));
  if (match.destination) add("destination", ZelAgent::toText(*match.destination));
  if (!sourceSet.empty()) add("source-set", sourceSet);
  if (!destinationSet.empty()) add("destination-set", destinationSet);
  if (match.hopLimit) add("hop-limit", std::to_string(*match.hopLimit));
  if (match.length) add("length", std::to_string(*match.length));
  if (match.isFragment) text += " fragment";
  if (!match.fragmentOffsets.empty()) add("fragment-offset", toText(match.fragmentOffsets, most));
  if (!match.sourcePorts.empty()) add("source-port", toText(match.sourcePorts, most));
  if (!match.destinationPorts.empty())
    add("destination-port", toText(match.destinationPorts, most));
  if (!match.tcpFlags.empty()) add("tcp-flags", toText(match.tcpFlags));
  return text;
}

std::string textOf(const ClassMatch& match, std::size_t most) {
  return textOf(match, match.sourceSet.empty() ? "" : toWord(match.sourceSet.bytes()),
                match.destinationSet.empty() ? "" : toWord(match.destinationSet.bytes()), most);
}

std::string textOf(const PolicyMap::AclMatch& match, std::size_t most) {
  return textOf(match, match.sourceSet ? prefixesText(**match.sourceSet, most) : "",
                match.destinationSet ? prefixesText(**match.destinationSet, most) : "", most);
}

}  // namespace

PolicyObjects policyObjectsOf(const Configuration& configuration) {
  PolicyObjects objects;
  for (const PrefixSet& set : configuration.prefixSets) {
    objects.prefixSets.emplace(Classification::PrefixSetName{set.family, set.name},
                               Classification::PrefixSet{set.prefixes, set.excluded});
  }
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const Policy& policy : instance.policies)
      static_cast<void>(addPolicyMap(instance, {&policy}, objects));
    for (const PolicyBinding& binding : instance.policyBindings) {
      const std::vector<const Policy*> policies = policiesOf(instance, binding);
      if (policies.empty()) continue;
      const Velo::String name = addPolicyMap(instance, policies, objects);
      objects.intfs.emplace(binding.interface,
                            PolicyMap::IntfPolicy{PolicyMap::IntfKind::routed, name});
    }
  }
  return objects;
}

std::string toText(const PolicyMap::ClassMatch& match) {
  return textOf(match, allValues);
}

std::string toText(const PolicyMap::AclMatch& match) {
  return textOf(match, allValues);
}

std::string shownText(const PolicyMap::ClassMatch& match) {
  return textOf(match, Limits::shownListValues);
}

std::string shownText(const PolicyMap::AclMatch& match) {
  return textOf(match, Limits::shownListValues);
}

}  // namespace ZelAgent
