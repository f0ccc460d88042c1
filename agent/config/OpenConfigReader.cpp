#include "agent/config/OpenConfigReader.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "agent/config/JsonNode.h"
#include "agent/config/JsonText.h"
#include "agent/config/PolicyReader.h"
#include "agent/config/StaticRouteReader.h"
#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

// Checks that the whole configuration binds each interface only once.
class InterfaceOwners final {
 public:
  void add(const std::string& interface, const JsonNode& entry) {
    const auto [owner, added] = owners_.try_emplace(interface, entry.path());
    if (!added) {
      entry.fail("binds interface " + inQuotes(interface) + " again, which " + owner->second +
                 " does; bind it once");
    }
  }

 private:
  std::map<std::string, std::string> owners_;
};

class DocumentReader final {
 public:
  [[nodiscard]] Configuration read(const JsonNode& root) {
    const JsonObject document(root, {"network-instances"});
    if (document.find("network-instances") == nullptr) {
      root.fail("lacks its member \"network-instances\"");
    }
    Configuration configuration;
    UniqueKeys<std::string> names;
    for (const JsonNode& node : document.list("network-instances", "network-instance", {"name"})) {
      configuration.networkInstances.push_back(readInstance(node));
      names.add(configuration.networkInstances.back().name, node);
    }
    requireDefaultInstance(configuration, document.at("network-instances"));
    warnOfUnconfigured(configuration);
    return configuration;
  }

 private:
  NetworkInstance readInstance(const JsonNode& node) {
    const JsonObject entry(node,
                           {"name", "config", "interfaces", "protocols", "policy-forwarding"});
    const JsonObject config = entry.child("config", {"name", "type", "fallback-network-instance"});
    NetworkInstance instance;
    instance.name = readKey(entry, config, "name", readVrfName);
    instance.type = readType(config.at("type"), entry.at("name"));
    if (const JsonNode* const fallback = config.find("fallback-network-instance")) {
      instance.fallback = readVrfName(*fallback);
      references_.push_back({*fallback, instance.fallback});
    }
    readInterfaces(entry, instance);
    instance.staticRoutes = readStaticRoutes(entry);
    readPolicyForwarding(entry.child("policy-forwarding", {"policies", "interfaces"}), instance);
    return instance;
  }

  static InstanceType readType(const JsonNode& node, const JsonNode& name) {
    const std::string type = node.asIdentity();
    if (type != "DEFAULT_INSTANCE" && type != "L3VRF") {
      node.failExpecting("DEFAULT_INSTANCE or L3VRF");
    }
    const bool isDefaultType = type == "DEFAULT_INSTANCE";
    const bool isDefaultVrf = readVrfName(name) == defaultVrfName;
    if (isDefaultType && !isDefaultVrf) {
      node.fail("must be L3VRF; the default instance is the one called DEFAULT or default");
    }
    if (!isDefaultType && isDefaultVrf) {
      node.fail("must be DEFAULT_INSTANCE for the instance called " + name.shown());
    }
    return isDefaultType ? InstanceType::defaultInstance : InstanceType::l3Vrf;
  }

  void readInterfaces(const JsonObject& instanceEntry, NetworkInstance& instance) {
    UniqueKeys<std::string> ids;
    for (const JsonNode& node : instanceEntry.list("interfaces", "interface", {"id"})) {
      const JsonObject entry(node, {"id", "config"});
      const JsonObject config = entry.child("config", {"id", "interface", "subinterface"});
      const std::string id = readKey(entry, config, "id", readName);
      ids.add(id, node);
      const std::string interface = readInterface(config);
      instance.interfaces.push_back(interface.empty() ? id : interface);
      vrfOfInterface_.add(instance.interfaces.back(), node);
    }
  }

  void readPolicyForwarding(const JsonObject& policyForwarding, NetworkInstance& instance) {
    instance.policies = readPolicies(policyForwarding, references_);
    UniqueKeys<std::string> ids;
    for (const JsonNode& node :
         policyForwarding.list("interfaces", "interface", {"interface-id"})) {
      const JsonObject entry(node, {"interface-id", "config", "interface-ref"});
      const JsonObject config =
          entry.child("config", {"interface-id", "apply-vrf-selection-policy"});
      const std::string id = readKey(entry, config, "interface-id", readName);
      ids.add(id, node);
      const std::string interface = readInterface(
          entry.child("interface-ref", {"config"}).child("config", {"interface", "subinterface"}));
      const std::string bound = interface.empty() ? id : interface;
      policyOfInterface_.add(bound, node);
      instance.policyBindings.push_back({bound, readAppliedPolicy(config, instance)});
    }
  }

  static std::string readAppliedPolicy(const JsonObject& config, const NetworkInstance& instance) {
    const JsonNode* const node = config.find("apply-vrf-selection-policy");
    if (node == nullptr) return {};
    std::string id = readName(*node);
    const bool known = std::any_of(instance.policies.begin(), instance.policies.end(),
                                   [&id](const Policy& policy) { return policy.policyId == id; });
    if (!known) node->failExpecting("a policy of the same network instance");
    return id;
  }

  static void requireDefaultInstance(const Configuration& configuration, const JsonNode& node) {
    const bool found = std::any_of(
        configuration.networkInstances.begin(), configuration.networkInstances.end(),
        [](const auto& instance) { return instance.type == InstanceType::defaultInstance; });
    if (!found) {
      node.fail(
          "must have exactly one instance of type DEFAULT_INSTANCE, called DEFAULT or default");
    }
  }

  void warnOfUnconfigured(const Configuration& configuration) const {
    std::set<std::string> configured;
    for (const auto& instance : configuration.networkInstances)
      configured.insert(instance.name);
    for (const InstanceReference& reference : references_) {
      if (!configured.contains(reference.vrf)) {
        reference.node.warn("names network instance " + inQuotes(reference.vrf) +
                            ", which is not configured");
      }
    }
  }

  std::vector<InstanceReference> references_;
  InterfaceOwners vrfOfInterface_;
  InterfaceOwners policyOfInterface_;
};

ReadConfiguration readDocument(const nlohmann::json& document, const std::string& file) {
  Findings findings{file, {}};
  Configuration configuration = DocumentReader().read(JsonNode(document, "/", findings));
  return {std::move(configuration), std::move(findings.warnings)};
}

}  // namespace

ReadConfiguration readOpenConfigFile(const std::string& file) {
  return readDocument(readJsonFile(file), file);
}

ReadConfiguration readOpenConfig(const std::string& text, const std::string& file) {
  return readDocument(parseJson(text, file), file);
}

}  // namespace ZelAgent
