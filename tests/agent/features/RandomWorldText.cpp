// A configuration written from its values.
#include <nlohmann/json.hpp>

#include "agent/model/events/Event.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/features/RandomWorld.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

std::string instanceName(const std::string& vrf) {
  return vrf == defaultVrfName ? defaultInstanceName : vrf;
}

// A list entry, which repeats its key inside its config.
json entryOf(const std::string& key, const json& value, json config = json::object()) {
  config[key] = value;
  return {{key, value}, {"config", std::move(config)}};
}

json leavesOf(const RuleMatch& match) {
  json leaves = json::object();
  if (match.protocol) leaves["protocol"] = *match.protocol;
  if (match.protocol == std::uint8_t{4}) leaves["protocol"] = "IP_IN_IP";
  if (match.dscp) leaves["dscp"] = *match.dscp;
  if (!match.dscpSet.empty()) leaves["dscp-set"] = match.dscpSet;
  if (match.source) leaves["source-address"] = toText(*match.source);
  if (match.destination) leaves["destination-address"] = toText(*match.destination);
  return leaves;
}

json leavesOf(const RuleAction& action) {
  if (const auto* const lookUp = std::get_if<LookUp>(&action)) {
    return toVrf(instanceName(lookUp->vrf));
  }
  if (const auto* const decap = std::get_if<Decapsulate>(&action)) {
    return toDecap(instanceName(decap->decapVrf), instanceName(decap->fallbackVrf),
                   instanceName(decap->postDecapVrf));
  }
  return std::holds_alternative<Discard>(action) ? toDiscard() : json::object();
}

// From the last to the first, since it is their numbers that order them.
json rulesOf(const Policy& policy) {
  json rules = json::array();
  for (auto rule = policy.rules.rbegin(); rule != policy.rules.rend(); ++rule) {
    const auto family = rule->match.family ? toText(*rule->match.family) : std::string();
    rules.push_back(
        ruleOf(rule->sequenceId, family, leavesOf(rule->match), leavesOf(rule->action)));
  }
  return rules;
}

json nextHopOf(const NextHop& nextHop) {
  json config = json::object();
  if (nextHop.address) config["next-hop"] = toText(*nextHop.address);
  if (nextHop.drops) config["next-hop"] = "DROP";
  json entry = entryOf("index", nextHop.index, std::move(config));
  if (!nextHop.interface.empty()) {
    entry["interface-ref"]["config"]["interface"] = nextHop.interface;
  }
  return entry;
}

json routesOf(const NetworkInstance& instance) {
  json protocol = entryOf("identifier", "STATIC", {{"name", "static"}});
  protocol["name"] = "static";
  for (const StaticRoute& route : instance.staticRoutes) {
    json entry = entryOf("prefix", toText(route.prefix));
    for (const NextHop& nextHop : route.nextHops)
      entry["next-hops"]["next-hop"].push_back(nextHopOf(nextHop));
    protocol["static-routes"]["static"].push_back(std::move(entry));
  }
  return json::array({protocol});
}

json policiesOf(const NetworkInstance& instance) {
  json forwarding = json::object();
  for (const Policy& policy : instance.policies) {
    json entry = entryOf("policy-id", policy.policyId, {{"type", "VRF_SELECTION_POLICY"}});
    if (!policy.rules.empty()) entry["rules"]["rule"] = rulesOf(policy);
    forwarding["policies"]["policy"].push_back(std::move(entry));
  }
  for (const PolicyBinding& binding : instance.policyBindings) {
    forwarding["interfaces"]["interface"].push_back(entryOf(
        "interface-id", binding.interface, {{"apply-vrf-selection-policy", binding.policyId}}));
  }
  return forwarding;
}

json instanceOf(const NetworkInstance& instance) {
  const bool isDefault = instance.type == InstanceType::defaultInstance;
  json config{{"type", isDefault ? "DEFAULT_INSTANCE" : "L3VRF"}};
  if (!instance.fallback.empty()) {
    config["fallback-network-instance"] = instanceName(instance.fallback);
  }
  json entry = entryOf("name", instanceName(instance.name), std::move(config));
  for (const std::string& interface : instance.interfaces) {
    entry["interfaces"]["interface"].push_back(
        entryOf("id", interface, {{"interface", interface}}));
  }
  if (!instance.staticRoutes.empty()) entry["protocols"]["protocol"] = routesOf(instance);
  if (!instance.policies.empty()) entry["policy-forwarding"] = policiesOf(instance);
  return entry;
}

}  // namespace

std::string openConfigOf(const Configuration& configuration) {
  json instances = json::array();
  for (const NetworkInstance& instance : configuration.networkInstances)
    instances.push_back(instanceOf(instance));
  const json document{{"network-instances", {{"network-instance", std::move(instances)}}}};
  return document.dump(1) + '\n';
}

std::string eventLinesOf(const std::vector<Event>& events) {
  std::string lines;
  for (const Event& event : events)
    lines += toText(event) + '\n';
  return lines;
}

}  // namespace ZelAgent
