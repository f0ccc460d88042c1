// Why: which VRF falls back to which, and which actions that concerns, is spread over a whole
// configuration; a mistake such as a cycle is seen only when it stands together.
// Always: every VRF that is configured or named is there once; VRFs, actions and cycles are in the
// order of their names, so equal configurations give equal graphs. A VRF has at most one fallback,
// so it is on at most one cycle.
#pragma once

#include <map>
#include <set>
#include <vector>

#include "L3/VrfName.h"
#include "agent/config/Configuration.h"
#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {

struct GraphVrf {
  L3::VrfName name;
  L3::VrfName fallback;  // empty for none
  bool isConfigured = false;
  bool isOnCycle = false;

  friend bool operator==(const GraphVrf&, const GraphVrf&) = default;
};

// VRFs each of which falls back to the next, and the last to the first; the first has the least
// name.
using FallbackCycle = std::vector<L3::VrfName>;

// What a graph is made from.
struct FallbackFacts {
  std::set<L3::VrfName> configured;
  std::map<L3::VrfName, L3::VrfName> fallbacks;
  std::vector<VrfAction> actions;  // those that have users, in their order
};

struct FallbackGraph {
  std::vector<GraphVrf> vrfs;
  std::vector<VrfAction> actions;  // those that have users
  std::vector<FallbackCycle> cycles;
};

// A VRF that an action names, and the field that names it.
struct NamedVrf {
  const char* field;
  L3::VrfName vrf;
};

[[nodiscard]] FallbackGraph fallbackGraphOf(const FallbackFacts& facts);
[[nodiscard]] FallbackGraph fallbackGraphOf(const Configuration& configuration);

// In the order of the fields; fields that are empty are left out.
[[nodiscard]] std::vector<NamedVrf> vrfsNamedBy(const VrfAction& action);

}  // namespace ZelAgent
