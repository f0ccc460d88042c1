#include "tests/agent/serve/simulator/NameOracle.h"

#include <string>

namespace ZelAgent {
namespace {

bool names(const RuleAction& action, const std::string& vrf) {
  if (const auto* const lookUp = std::get_if<LookUp>(&action)) return lookUp->vrf == vrf;
  const auto* const decap = std::get_if<Decapsulate>(&action);
  return decap != nullptr &&
         (decap->decapVrf == vrf || decap->fallbackVrf == vrf || decap->postDecapVrf == vrf);
}

bool hasVrf(const Configuration& configuration, const std::string& vrf) {
  if (vrf == defaultVrfName) return true;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    if (instance.name == vrf || instance.fallback == vrf) return true;
    for (const Policy& policy : instance.policies) {
      for (const Rule& rule : policy.rules) {
        if (names(rule.action, vrf)) return true;
      }
    }
  }
  return false;
}

bool hasInterface(const Configuration& configuration, const std::string& interface) {
  for (const NetworkInstance& instance : configuration.networkInstances) {
    for (const std::string& own : instance.interfaces) {
      if (own == interface) return true;
    }
    for (const PolicyBinding& binding : instance.policyBindings) {
      if (binding.interface == interface) return true;
    }
    for (const StaticRoute& route : instance.staticRoutes) {
      for (const NextHop& nextHop : route.nextHops) {
        if (nextHop.interface == interface) return true;
      }
    }
  }
  return false;
}

struct Names {
  const KeptFacts& facts;

  [[nodiscard]] bool knows(const std::string& vrf) const {
    return facts.hasStatus(vrf) || hasVrf(facts.configuration(), vrf);
  }
  bool operator()(const SetVrfId& event) const { return knows(event.vrf); }
  bool operator()(const SetFallback& event) const {
    return knows(event.vrf) && knows(event.fallback);
  }
  bool operator()(const SetPrefixLens& event) const { return knows(event.vrf); }
  bool operator()(const PlanChipFaults& event) const { return !event.vrf || knows(*event.vrf); }
  bool operator()(const SetDecapRoute& event) const { return knows(event.vrf); }
  bool operator()(const SetEgressRoute& event) const {
    return knows(event.vrf) && hasInterface(facts.configuration(), event.interface);
  }
  template <class Other>
  bool operator()(const Other& /*event*/) const {
    return true;
  }
};

}  // namespace

bool namesOnlyKnown(const Event& event, const KeptFacts& facts) {
  return std::visit(Names{facts}, event);
}

}  // namespace ZelAgent
