#include "agent/model/forwarding/ConfiguredNames.h"

#include <variant>

namespace ZelAgent {
namespace {

class NamesOfAction final {
 public:
  explicit NamesOfAction(std::set<std::string>& vrfs) : vrfs_(vrfs) {}

  void operator()(const NoAction& /*action*/) const {}
  void operator()(const Discard& /*action*/) const {}
  void operator()(const LookUp& action) const { vrfs_.insert(action.vrf); }
  void operator()(const Decapsulate& action) const {
    vrfs_.insert({action.decapVrf, action.fallbackVrf, action.postDecapVrf});
  }

 private:
  std::set<std::string>& vrfs_;
};

void addInterfaces(const NetworkInstance& instance, std::set<std::string>& interfaces) {
  interfaces.insert(instance.interfaces.begin(), instance.interfaces.end());
  for (const PolicyBinding& binding : instance.policyBindings)
    interfaces.insert(binding.interface);
  for (const StaticRoute& route : instance.staticRoutes) {
    for (const NextHop& nextHop : route.nextHops) {
      if (!nextHop.interface.empty()) interfaces.insert(nextHop.interface);
    }
  }
}

void addVrfs(const NetworkInstance& instance, std::set<std::string>& vrfs) {
  vrfs.insert(instance.name);
  if (!instance.fallback.empty()) vrfs.insert(instance.fallback);
  for (const Policy& policy : instance.policies) {
    for (const Rule& rule : policy.rules)
      std::visit(NamesOfAction(vrfs), rule.action);
  }
}

void addPolicies(const NetworkInstance& instance, std::set<std::string>& policies) {
  for (const Policy& policy : instance.policies)
    policies.insert(policy.policyId);
}

}  // namespace

ConfiguredNames configuredNames(const Configuration& configuration) {
  ConfiguredNames names;
  names.vrfs.insert(defaultVrfName);
  names.interfaces = configuration.otherInterfaces;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    addInterfaces(instance, names.interfaces);
    addVrfs(instance, names.vrfs);
    addPolicies(instance, names.policies);
  }
  return names;
}

}  // namespace ZelAgent
