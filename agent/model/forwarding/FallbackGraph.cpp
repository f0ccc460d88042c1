#include "agent/model/forwarding/FallbackGraph.h"

#include <algorithm>

#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {
namespace {

using VrfsByName = std::map<L3::VrfName, GraphVrf>;

GraphVrf& vrfOf(VrfsByName& vrfs, const L3::VrfName& name) {
  GraphVrf& vrf = vrfs[name];
  vrf.name = name;
  return vrf;
}

// Follows the fallbacks from `start` up to a VRF that was visited before. Returns the cycle that
// this walk closes. Empty if it closes none.
FallbackCycle cycleFrom(const L3::VrfName& start, const VrfsByName& vrfs,
                        std::set<L3::VrfName>& visited) {
  FallbackCycle walk;
  L3::VrfName name = start;
  while (!name.empty() && visited.insert(name).second) {
    walk.push_back(name);
    name = vrfs.at(name).fallback;
  }
  walk.erase(walk.begin(), std::find(walk.begin(), walk.end(), name));
  return walk;
}

std::vector<FallbackCycle> cyclesOf(const VrfsByName& vrfs) {
  std::vector<FallbackCycle> cycles;
  std::set<L3::VrfName> visited;
  for (const auto& [name, vrf] : vrfs) {
    FallbackCycle cycle = cycleFrom(name, vrfs, visited);
    if (cycle.empty()) continue;
    std::rotate(cycle.begin(), std::min_element(cycle.begin(), cycle.end()), cycle.end());
    cycles.push_back(std::move(cycle));
  }
  std::sort(cycles.begin(), cycles.end(),
            [](const auto& a, const auto& b) { return a.front() < b.front(); });
  return cycles;
}

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

FallbackFacts factsOf(ForwardingAgent& agent) {
  FallbackFacts facts;
  facts.configured = configuredVrfs(agent);
  const auto& fallbacks = agent.fallbackConfig().fallbackVrf();
  for (auto entry = fallbacks.iterator(); entry; ++entry)
    facts.fallbacks.emplace(entry.key(), entry.value());
  for (const ActionState& action : agent.state(UserLists::none).actions)
    facts.actions.push_back(action.action);
  return facts;
}

}  // namespace

FallbackGraph fallbackGraphOf(const FallbackFacts& facts) {
  VrfsByName vrfs;
  for (const L3::VrfName& name : facts.configured)
    vrfOf(vrfs, name).isConfigured = true;
  for (const auto& [name, fallback] : facts.fallbacks) {
    vrfOf(vrfs, name).fallback = fallback;
    vrfOf(vrfs, fallback);
  }
  FallbackGraph graph;
  graph.actions = facts.actions;
  for (const VrfAction& action : graph.actions) {
    for (const NamedVrf& named : vrfsNamedBy(action))
      vrfOf(vrfs, named.vrf);
  }
  graph.cycles = cyclesOf(vrfs);
  for (const FallbackCycle& cycle : graph.cycles) {
    for (const L3::VrfName& name : cycle)
      vrfs[name].isOnCycle = true;
  }
  for (const auto& [name, vrf] : vrfs)
    graph.vrfs.push_back(vrf);
  return graph;
}

FallbackGraph fallbackGraphOf(const Configuration& configuration) {
  FallbackFacts facts;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    facts.configured.insert(instance.name);
    if (!instance.fallback.empty()) facts.fallbacks.emplace(instance.name, instance.fallback);
  }
  for (const auto& [action, users] : usersOfActions(configuration))
    facts.actions.push_back(action);
  return fallbackGraphOf(facts);
}

FallbackGraph fallbackGraphOf(ForwardingAgent& agent) {
  return fallbackGraphOf(factsOf(agent));
}

std::vector<NamedVrf> vrfsNamedBy(const VrfAction& action) {
  std::vector<NamedVrf> named;
  for (const NamedVrf& field : {NamedVrf{"vrfName", action.vrfName()},
                                NamedVrf{"fallbackVrfName", action.fallbackVrfName()},
                                NamedVrf{"postDecapVrfName", action.postDecapVrfName()}}) {
    if (!field.vrf.empty()) named.push_back(field);
  }
  return named;
}

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
