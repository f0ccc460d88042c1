#include "tests/agent/OpenConfigBuilder.h"

#include <stdexcept>

#include "agent/config/OpenConfigReader.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

// A list entry, which repeats its key inside its config.
json entryOf(const std::string& key, const json& value, json config = json::object()) {
  config[key] = value;
  return {{key, value}, {"config", std::move(config)}};
}

}  // namespace

Leaves toVrf(const std::string& vrf) {
  return {{"network-instance", vrf}};
}

Leaves toDecap(const std::string& decap, const std::string& fallback,
               const std::string& postDecap) {
  return {{"decap-network-instance", decap},
          {"decap-fallback-network-instance", fallback},
          {"post-decap-network-instance", postDecap}};
}

Leaves toDiscard() {
  return {{"discard", true}};
}

json ruleOf(std::uint32_t sequenceId, const std::string& family, const Leaves& match,
            const Leaves& action) {
  json rule = entryOf("sequence-id", sequenceId);
  if (!family.empty()) rule[family]["config"] = match.is_null() ? json::object() : match;
  rule["action"]["config"] = action;
  return rule;
}

OpenConfigBuilder::OpenConfigBuilder() {
  instances_.push_back(
      entryOf("name", "DEFAULT", {{"type", "openconfig-network-instance-types:DEFAULT_INSTANCE"}}));
}

OpenConfigBuilder& OpenConfigBuilder::vrf(const std::string& name, const std::string& fallback) {
  json config{{"type", "openconfig-network-instance-types:L3VRF"}};
  if (!fallback.empty()) config["fallback-network-instance"] = fallback;
  instances_.push_back(entryOf("name", name, std::move(config)));
  return *this;
}

OpenConfigBuilder& OpenConfigBuilder::intf(const std::string& vrf, const std::string& interface) {
  instance(vrf)["interfaces"]["interface"].push_back(
      entryOf("id", interface, {{"interface", interface}}));
  return *this;
}

OpenConfigBuilder& OpenConfigBuilder::route(const std::string& vrf, const std::string& prefix,
                                            const std::string& interface) {
  json nextHop = entryOf("index", "0");
  nextHop["interface-ref"] = {{"config", {{"interface", interface}}}};
  addRoute(vrf, prefix, std::move(nextHop));
  return *this;
}

OpenConfigBuilder& OpenConfigBuilder::gateway(const std::string& vrf, const std::string& prefix,
                                              const std::string& address) {
  addRoute(vrf, prefix, entryOf("index", "0", {{"next-hop", address}}));
  return *this;
}

OpenConfigBuilder& OpenConfigBuilder::dropRoute(const std::string& vrf, const std::string& prefix) {
  addRoute(vrf, prefix, entryOf("index", "0", {{"next-hop", "DROP"}}));
  return *this;
}

OpenConfigBuilder& OpenConfigBuilder::policy(const std::string& id, const std::vector<json>& rules,
                                             const std::vector<std::string>& interfaces,
                                             const std::string& vrf) {
  json& forwarding = instance(vrf)["policy-forwarding"];
  json policy = entryOf("policy-id", id, {{"type", "VRF_SELECTION_POLICY"}});
  policy["rules"]["rule"] = rules;
  forwarding["policies"]["policy"].push_back(std::move(policy));
  for (const std::string& interface : interfaces) {
    forwarding["interfaces"]["interface"].push_back(
        entryOf("interface-id", interface, {{"apply-vrf-selection-policy", id}}));
  }
  return *this;
}

std::string OpenConfigBuilder::text() const {
  const json document{
      {"openconfig-network-instance:network-instances", {{"network-instance", instances_}}}};
  return document.dump(1) + '\n';
}

Configuration OpenConfigBuilder::configuration() const {
  return readOpenConfig(text(), "built").configuration;
}

json& OpenConfigBuilder::instance(const std::string& vrf) {
  for (json& candidate : instances_) {
    if (candidate["name"] == vrf) return candidate;
  }
  throw std::logic_error("no VRF " + vrf);
}

void OpenConfigBuilder::addRoute(const std::string& vrf, const std::string& prefix, json nextHop) {
  json route = entryOf("prefix", prefix);
  route["next-hops"]["next-hop"].push_back(std::move(nextHop));
  json& protocols = instance(vrf)["protocols"]["protocol"];
  if (protocols.is_null()) {
    json config{{"name", "static"}};
    json statics = entryOf("identifier", "openconfig-policy-types:STATIC", std::move(config));
    statics["name"] = "static";
    protocols.push_back(std::move(statics));
  }
  protocols[0]["static-routes"]["static"].push_back(std::move(route));
}

}  // namespace ZelAgent
