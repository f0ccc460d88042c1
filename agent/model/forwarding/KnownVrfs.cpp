#include "agent/model/forwarding/KnownVrfs.h"

#include "agent/model/forwarding/FallbackGraph.h"

namespace ZelAgent {
namespace {

template <class Collection>
void insertKeys(std::set<L3::VrfName>& names, const Collection& collection) {
  for (auto entry = collection.iterator(); entry; ++entry)
    names.insert(entry.key());
}

void insertFallbacks(std::set<L3::VrfName>& names,
                     const VrfSelectionPolicy::VrfSelectionFallbackVrf& config) {
  const auto& fallbacks = config.fallbackVrf();
  for (auto entry = fallbacks.iterator(); entry; ++entry) {
    names.insert(entry.key());
    names.insert(entry.value());
  }
}

void insertNamed(std::set<L3::VrfName>& names, const ForwardingAgent& agent) {
  for (const auto& [action, status] : agent.statuses()) {
    for (const NamedVrf& named : vrfsNamedBy(action))
      names.insert(named.vrf);
  }
}

}  // namespace

std::set<L3::VrfName> configuredVrfs(const ForwardingAgent& agent) {
  std::set<L3::VrfName> names;
  for (const NetworkInstance& instance : agent.configuration().networkInstances)
    names.insert(instance.name);
  return names;
}

std::set<L3::VrfName> knownVrfs(ForwardingAgent& agent) {
  std::set<L3::VrfName> names = configuredVrfs(agent);
  insertKeys(names, agent.routeStatus().vrfStatus());
  insertKeys(names, agent.routeStatus().vrfPrefixLensInExactMatch());
  insertKeys(names, agent.routeStatusV6().vrfPrefixLensInExactMatch());
  insertFallbacks(names, agent.fallbackConfig());
  insertNamed(names, agent);
  return names;
}

}  // namespace ZelAgent
