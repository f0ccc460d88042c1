#include "agent/reports/DifferenceReport.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "agent/config/RuleMatchText.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Words.h"
#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {
namespace {

using PrefixSetName = ConfigurationDifference::PrefixSetName;
using RouteName = ConfigurationDifference::RouteName;

// The most interfaces that the line of a rule names.
constexpr std::size_t namedInterfaces = 3;

// The texts of names and values.

std::string textOf(const PolicyName& name) {
  if (name.networkInstance == defaultVrfName) return toWord(name.policyId);
  return toWord(name.networkInstance) + ": " + toWord(name.policyId);
}

std::string textOf(const VrfAction& action) {
  return toText(action);
}

std::string textOf(const IpPrefix& prefix) {
  return toText(prefix);
}

std::string textOf(const std::string& name) {
  return toWord(name);
}

std::string textOf(const RouteName& name) {
  return toWord(name.first) + ' ' + toText(name.second);
}

std::string textOf(const PrefixSetName& name) {
  return toText(name.first) + ' ' + toWord(name.second);
}

std::string textOf(const std::monostate& /*present*/) {
  return {};
}

std::string textOf(std::size_t users) {
  return std::to_string(users) + (users == 1 ? " user" : " users");
}

std::string textOf(PolicyType type) {
  return type == PolicyType::forwarding ? "forwarding policy" : "VRF selection policy";
}

std::string textOf(const InterfaceSettings& settings) {
  std::string text = "VRF " + toWord(settings.vrf);
  if (settings.vrfSelectionPolicy) text += ", policy " + textOf(*settings.vrfSelectionPolicy);
  if (settings.forwardingPolicy)
    text += ", forwarding policy " + textOf(*settings.forwardingPolicy);
  return text;
}

std::string textOf(const NextHop& nextHop) {
  if (nextHop.drops) return "drop";
  std::string text = "via";
  if (nextHop.address) text += ' ' + toText(*nextHop.address);
  if (!nextHop.interface.empty()) text += ' ' + toWord(nextHop.interface);
  return text;
}

// The first elements, and the number of the others.
template <class Element>
std::string listText(const std::vector<Element>& elements) {
  const std::size_t shown = std::min(elements.size(), Limits::shownListValues);
  std::vector<std::string> texts;
  texts.reserve(shown);
  for (std::size_t i = 0; i < shown; ++i)
    texts.push_back(textOf(elements[i]));
  const std::size_t others = elements.size() - shown;
  const std::string text = joined(texts, ", ");
  return others == 0 ? text : text + ",... and " + std::to_string(others) + " more";
}

std::string textOf(const std::vector<NextHop>& nextHops) {
  return listText(nextHops);
}

std::string textOf(const AddressSet& set) {
  const std::string text = set.prefixes.empty() ? "none" : listText(set.prefixes);
  return set.excluded.empty() ? text : text + " except " + listText(set.excluded);
}

std::string actionText(const RuleAction& action) {
  if (const auto vrfAction = vrfActionOf(action)) return toText(*vrfAction);
  return std::holds_alternative<Discard>(action) ? "discard" : "no action";
}

// Leaves the lowest elements of the list. Returns " (and 7 more of NAME)" for the others.
template <class Element>
std::string cut(std::vector<Element>& list, const char* name) {
  if (list.size() <= Limits::shownListValues) return {};
  const std::size_t others = list.size() - Limits::shownListValues;
  std::sort(list.begin(), list.end());
  list.resize(Limits::shownListValues);
  return " (and " + std::to_string(others) + " more of " + name + ')';
}

std::string matchText(RuleMatch match) {
  const std::string others = cut(match.fragmentOffsets, "fragment-offset") +
                             cut(match.sourcePorts, "source-port") +
                             cut(match.destinationPorts, "destination-port");
  return toText(match) + others;
}

std::string contentText(const Rule& rule) {
  return matchText(rule.match) + ", " + actionText(rule.action);
}

std::string placeText(const std::vector<std::string>& interfaces) {
  if (interfaces.empty()) return " on no interface";
  const std::size_t shown = std::min(interfaces.size(), namedInterfaces);
  std::vector<std::string> words;
  for (std::size_t i = 0; i < shown; ++i)
    words.push_back(toWord(interfaces[i]));
  const std::string text = " on " + joined(words, ", ");
  const std::size_t others = interfaces.size() - shown;
  return others == 0 ? text : text + " and " + std::to_string(others) + " more";
}

// The text report.

template <class Value>
char signOf(const Difference<Value>& difference) {
  if (!difference.before) return '+';
  return difference.after ? '~' : '-';
}

// "BEFORE -> AFTER". Both have the same text if they differ only in what is not shown of a list.
std::string arrowText(const std::string& before, const std::string& after) {
  return before + " -> " + (before == after ? "other values that are not shown" : after);
}

template <class Value>
std::string changeText(const Difference<Value>& difference) {
  if (!difference.before) return textOf(*difference.after);
  if (!difference.after) return textOf(*difference.before);
  return arrowText(textOf(*difference.before), textOf(*difference.after));
}

bool isLong(const AddressSet& set) {
  return std::max(set.prefixes.size(), set.excluded.size()) > Limits::shownListValues;
}

// Of sorted lists. "; WHAT PREFIX, PREFIX" for the prefixes that only the second one has.
std::string onlyInSecond(const char* what, const std::vector<IpPrefix>& first,
                         const std::vector<IpPrefix>& second) {
  std::vector<IpPrefix> only;
  std::set_difference(second.begin(), second.end(), first.begin(), first.end(),
                      std::back_inserter(only));
  return only.empty() ? "" : std::string("; ") + what + ' ' + listText(only);
}

// Of a long set only what differs is shown.
std::string changeText(const Difference<AddressSet>& difference) {
  const auto& [before, after] = difference;
  if (!before || !after || !(isLong(*before) || isLong(*after))) {
    return changeText<AddressSet>(difference);
  }
  return std::to_string(before->prefixes.size()) + " -> " + std::to_string(after->prefixes.size()) +
         " prefixes" + onlyInSecond("added", before->prefixes, after->prefixes) +
         onlyInSecond("removed", after->prefixes, before->prefixes) +
         onlyInSecond("excepted", before->excluded, after->excluded) +
         onlyInSecond("no longer excepted", after->excluded, before->excluded);
}

void writeLine(std::ostream& out, char sign, const std::string& name, const std::string& change) {
  out << "  " << sign << ' ' << name << (change.empty() ? "" : ": ") << change << '\n';
}

template <class Key, class Value>
void writeGroup(std::ostream& out, const char* title, const Differences<Key, Value>& differences) {
  if (differences.empty()) return;
  out << title << '\n';
  for (const auto& [name, difference] : differences)
    writeLine(out, signOf(difference), textOf(name), changeText(difference));
}

bool hasMoved(const Difference<Rule>& rule) {
  return rule.before && rule.after && rule.before->sequenceId != rule.after->sequenceId;
}

std::string ruleChangeText(const Difference<Rule>& rule) {
  if (!rule.before) return contentText(*rule.after);
  if (!rule.after) return contentText(*rule.before);
  if (hasMoved(rule)) {
    return "moved from " + std::to_string(rule.before->sequenceId) + ": " +
           contentText(*rule.after);
  }
  return arrowText(contentText(*rule.before), contentText(*rule.after));
}

void writeRules(std::ostream& out, const std::map<PolicyName, PolicyDifference>& policies) {
  if (policies.empty()) return;
  out << "rules\n";
  for (const auto& [name, policy] : policies) {
    const std::string place = " of " + textOf(name) + placeText(policy.interfaces);
    for (const Difference<Rule>& rule : policy.rules) {
      const Rule& named = rule.after ? *rule.after : *rule.before;
      writeLine(out, signOf(rule), std::to_string(named.sequenceId) + place, ruleChangeText(rule));
    }
  }
}

// The JSON report.

OrderedJson namesJson(const std::string& member, const std::string& name) {
  return {{member, name}};
}

OrderedJson namesJson(const PolicyName& name) {
  return {{"networkInstance", name.networkInstance}, {"policy", name.policyId}};
}

OrderedJson namesJson(const RouteName& name) {
  return {{"vrfName", name.first}, {"prefix", toText(name.second)}};
}

OrderedJson namesJson(const PrefixSetName& name) {
  return {{"family", toText(name.first)}, {"name", name.second}};
}

OrderedJson valueJson(const std::monostate& /*present*/) {
  return true;
}

OrderedJson valueJson(const std::string& name) {
  return name;
}

OrderedJson valueJson(std::size_t users) {
  return users;
}

OrderedJson valueJson(PolicyType type) {
  return type == PolicyType::forwarding ? "forwarding" : "vrfSelection";
}

OrderedJson policyJson(const std::optional<PolicyName>& name) {
  return name ? namesJson(*name) : OrderedJson(nullptr);
}

OrderedJson valueJson(const InterfaceSettings& settings) {
  return {{"vrfName", settings.vrf},
          {"policy", policyJson(settings.vrfSelectionPolicy)},
          {"forwardingPolicy", policyJson(settings.forwardingPolicy)}};
}

OrderedJson valueJson(const std::vector<NextHop>& nextHops) {
  OrderedJson json = OrderedJson::array();
  for (const NextHop& nextHop : nextHops) {
    json.push_back({{"address", nextHop.address ? toText(*nextHop.address) : ""},
                    {"interface", nextHop.interface},
                    {"drops", nextHop.drops}});
  }
  return json;
}

OrderedJson prefixesJson(const std::vector<IpPrefix>& prefixes) {
  OrderedJson json = OrderedJson::array();
  for (const IpPrefix& prefix : prefixes)
    json.push_back(toText(prefix));
  return json;
}

OrderedJson valueJson(const AddressSet& set) {
  return {{"prefixes", prefixesJson(set.prefixes)}, {"excluded", prefixesJson(set.excluded)}};
}

OrderedJson ruleActionJson(const RuleAction& action) {
  if (const auto vrfAction = vrfActionOf(action)) return nameJson(*vrfAction);
  if (std::holds_alternative<NoAction>(action)) return nullptr;
  return {{"action", "discard"}};
}

OrderedJson valueJson(const Rule& rule) {
  return {{"rule", rule.sequenceId},
          {"match", toText(rule.match)},
          {"action", ruleActionJson(rule.action)}};
}

template <class Value>
const char* changeWord(const Difference<Value>& difference) {
  if (!difference.before) return "added";
  return difference.after ? "changed" : "removed";
}

template <class Value>
OrderedJson optionalJson(const std::optional<Value>& value) {
  return value ? valueJson(*value) : OrderedJson(nullptr);
}

template <class Value>
OrderedJson differenceJson(const char* change, const OrderedJson& names,
                           const Difference<Value>& difference) {
  OrderedJson json{{"change", change}};
  json.update(names);
  json["before"] = optionalJson(difference.before);
  json["after"] = optionalJson(difference.after);
  return json;
}

template <class Key, class Value, class NamesOf>
OrderedJson groupJson(const Differences<Key, Value>& differences, NamesOf namesOf) {
  OrderedJson json = OrderedJson::array();
  for (const auto& [name, difference] : differences)
    json.push_back(differenceJson(changeWord(difference), namesOf(name), difference));
  return json;
}

OrderedJson rulesJson(const std::map<PolicyName, PolicyDifference>& policies) {
  OrderedJson json = OrderedJson::array();
  for (const auto& [name, policy] : policies) {
    OrderedJson rules = OrderedJson::array();
    for (const Difference<Rule>& rule : policy.rules) {
      rules.push_back(
          differenceJson(hasMoved(rule) ? "moved" : changeWord(rule), OrderedJson::object(), rule));
    }
    OrderedJson one = namesJson(name);
    one["interfaces"] = policy.interfaces;
    one["rules"] = std::move(rules);
    json.push_back(std::move(one));
  }
  return json;
}

}  // namespace

void writeTextReport(std::ostream& out, const ConfigurationDifference& difference) {
  if (difference.isEmpty()) out << "no difference\n";
  writeGroup(out, "instances", difference.instances);
  writeGroup(out, "prefix sets", difference.prefixSets);
  writeGroup(out, "interfaces", difference.interfaces);
  writeGroup(out, "fallback VRFs", difference.fallbacks);
  writeGroup(out, "routes", difference.routes);
  writeGroup(out, "policies", difference.policies);
  writeRules(out, difference.rules);
  writeGroup(out, "actions", difference.actions);
}

OrderedJson toJson(const ConfigurationDifference& difference) {
  const auto named = [](const char* member) {
    return [member](const std::string& name) { return namesJson(member, name); };
  };
  const auto names = [](const auto& name) { return namesJson(name); };
  return {{"equal", difference.isEmpty()},
          {"instances", groupJson(difference.instances, named("name"))},
          {"prefixSets", groupJson(difference.prefixSets, names)},
          {"interfaces", groupJson(difference.interfaces, named("interface"))},
          {"fallbacks", groupJson(difference.fallbacks, named("vrfName"))},
          {"routes", groupJson(difference.routes, names)},
          {"policies", groupJson(difference.policies, names)},
          {"rules", rulesJson(difference.rules)},
          {"actions", groupJson(difference.actions,
                                [](const VrfAction& action) { return nameJson(action); })}};
}

}  // namespace ZelAgent
