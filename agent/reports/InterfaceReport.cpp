#include "agent/reports/InterfaceReport.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Words.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

using InterfacesByName = std::map<std::string, InterfaceState>;

InterfaceState& interfaceOf(InterfacesByName& interfaces, const std::string& name) {
  InterfaceState& state = interfaces[name];
  state.name = name;
  if (state.vrf.empty()) state.vrf = defaultVrfName;
  return state;
}

InterfacesByName configuredInterfaces(const Configuration& configuration) {
  InterfacesByName interfaces;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const std::string& name : instance.interfaces)
      interfaceOf(interfaces, name).vrf = instance.name;
    for (const PolicyBinding& binding : instance.policyBindings) {
      InterfaceState& state = interfaceOf(interfaces, binding.interface);
      state.policyInstance = instance.name;
      state.policyId = binding.policyId;
      state.forwardingPolicyId = binding.forwardingPolicyId;
    }
  }
  return interfaces;
}

std::vector<std::string> cellsOf(const InterfaceState& state) {
  return {orDash(state.name),
          orDash(state.vrf),
          orDash(state.policyInstance),
          orDash(state.policyId),
          orDash(state.forwardingPolicyId),
          std::to_string(state.programmed),
          std::to_string(state.refused),
          state.isClosed ? "yes" : "no"};
}

OrderedJson orNull(const std::string& name) {
  return name.empty() ? OrderedJson() : OrderedJson(name);
}

std::string elementOf(const InterfaceState& state) {
  return oneLine({{"interface", state.name},
                  {"vrfName", state.vrf},
                  {"networkInstance", orNull(state.policyInstance)},
                  {"vrfSelectionPolicy", orNull(state.policyId)},
                  {"forwardingPolicy", orNull(state.forwardingPolicyId)},
                  {"programmed", state.programmed},
                  {"refused", state.refused},
                  {"closed", state.isClosed}});
}

const char* toText(PolicyType type) {
  return type == PolicyType::forwarding ? "forwarding" : "vrf-selection";
}

// The first names, and the number of the others.
std::string namesText(const std::vector<std::string>& names) {
  const std::size_t shown = std::min(names.size(), Limits::shownInterfaces);
  std::vector<std::string> printed;
  printed.reserve(shown);
  for (std::size_t at = 0; at < shown; ++at)
    printed.push_back(printable(names[at], Limits::shownTextBytes));
  if (shown < names.size())
    printed.push_back("... and " + std::to_string(names.size() - shown) + " more");
  return printed.empty() ? "-" : joined(printed, ", ");
}

std::vector<std::string> policyCells(const PolicyState& policy) {
  return {orDash(policy.networkInstance), orDash(policy.policyId), toText(policy.type),
          std::to_string(policy.rules), namesText(policy.interfaces)};
}

std::string policyElement(const PolicyState& policy) {
  return oneLine({{"networkInstance", policy.networkInstance},
                  {"policy", policy.policyId},
                  {"type", toText(policy.type)},
                  {"rules", policy.rules},
                  {"interfaces", policy.interfaces}});
}

}  // namespace

std::vector<InterfaceState> interfaceStates(const ForwardingAgent& agent) {
  std::vector<InterfaceState> states;
  for (auto& [name, state] : configuredInterfaces(agent.configuration())) {
    const RuleCounts rules = agent.ruleCounts(name);
    InterfaceState& complete = states.emplace_back(state);
    complete.programmed = rules.programmed;
    complete.refused = rules.refused;
    complete.isClosed = rules.isClosed;
  }
  return states;
}

ReportPagesPtr interfacePages(std::vector<InterfaceState> interfaces, bool asJson) {
  const RowFormat<InterfaceState> format{{"INTERFACE", "VRF", "POLICIES-OF", "VRF-SELECTION",
                                          "FORWARDING", "PROGRAMMED", "REFUSED", "CLOSED"},
                                         "  no interfaces\n",
                                         cellsOf,
                                         elementOf};
  return pagesOf(format, rowsOfList(std::move(interfaces)), asJson);
}

std::vector<PolicyState> policyStates(const Configuration& configuration) {
  std::vector<PolicyState> states;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    std::map<std::string, std::vector<std::string>> interfaces;
    for (const PolicyBinding& binding : instance.policyBindings) {
      for (const std::string& policy : {binding.policyId, binding.forwardingPolicyId})
        interfaces[policy].push_back(binding.interface);
    }
    for (const Policy& policy : instance.policies) {
      states.push_back({instance.name, policy.policyId, policy.type, policy.rules.size(),
                        std::move(interfaces[policy.policyId])});
    }
  }
  return states;
}

ReportPagesPtr policyPages(std::vector<PolicyState> policies, bool asJson) {
  const RowFormat<PolicyState> format{{"NETWORK-INSTANCE", "POLICY", "TYPE", "RULES", "INTERFACES"},
                                      "  no policies\n",
                                      policyCells,
                                      policyElement};
  return pagesOf(format, rowsOfList(std::move(policies)), asJson);
}

}  // namespace ZelAgent
