// Configurations that a test can be read with: some VRFs, one policy, and where it is applied.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/values/VrfAction.h"
#include "agent/config/OpenConfigReader.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {

struct SmallVrf {
  std::string name;
  std::string fallback = {};
};

struct SmallConfiguration {
  std::vector<SmallVrf> vrfs;  // besides DEFAULT
  // Rule n of the policy looks packets up in the nth of these VRFs.
  std::vector<std::string> rules;
  std::vector<std::string> interfaces;
};

[[nodiscard]] inline nlohmann::json toJson(const SmallConfiguration& small) {
  using nlohmann::json;
  json rules = json::array();
  for (const std::string& vrf : small.rules) {
    rules.push_back(
        {{"sequence-id", rules.size() + 1}, {"action", {{"config", {{"network-instance", vrf}}}}}});
  }
  json interfaces = json::array();
  for (const std::string& name : small.interfaces) {
    interfaces.push_back(
        {{"interface-id", name}, {"config", {{"apply-vrf-selection-policy", "P"}}}});
  }
  json policy{{"policy-id", "P"},
              {"config", {{"type", "VRF_SELECTION_POLICY"}}},
              {"rules", {{"rule", rules}}}};
  json instances = json::array();
  instances.push_back({{"name", "DEFAULT"},
                       {"config", {{"type", "DEFAULT_INSTANCE"}}},
                       {"policy-forwarding",
                        {{"policies", {{"policy", json::array({policy})}}},
                         {"interfaces", {{"interface", interfaces}}}}}});
  for (const SmallVrf& vrf : small.vrfs) {
    json config{{"type", "L3VRF"}};
    if (!vrf.fallback.empty()) config["fallback-network-instance"] = vrf.fallback;
    instances.push_back({{"name", vrf.name}, {"config", config}});
  }
  return {{"network-instances", {{"network-instance", instances}}}};
}

// Writes the configuration to a file of the test that runs, and gives its path.
inline std::string writeSmall(const std::string& name, const SmallConfiguration& small) {
  return writeFile(name, toJson(small).dump());
}

// What rules that look packets up in these VRFs ask for.
inline const ZelVrfSelectionPolicy::VrfAction red("red", PolicyMap::ActionType::vrf);
inline const ZelVrfSelectionPolicy::VrfAction blue("blue", PolicyMap::ActionType::vrf);

[[nodiscard]] inline Configuration configurationOf(const SmallConfiguration& small) {
  return readOpenConfig(toJson(small).dump(), "small").configuration;
}

}  // namespace ZelAgent
