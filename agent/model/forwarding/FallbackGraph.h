#pragma once

#include <map>
#include <set>
#include <vector>

#include "L3/VrfName.h"
#include "agent/config/Configuration.h"
#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {

class ForwardingAgent;

struct GraphVrf {
  L3::VrfName name;
  L3::VrfName fallback;  // empty for none
  bool isConfigured = false;
  bool isOnCycle = false;

  friend bool operator==(const GraphVrf&, const GraphVrf&) = default;
};

/// VRFs of which each falls back to the next, and the last to the first. The first has the lowest
/// name.
using FallbackCycle = std::vector<L3::VrfName>;

/// What a graph is made from.
struct FallbackFacts {
  std::set<L3::VrfName> configured;
  std::map<L3::VrfName, L3::VrfName> fallbacks;
  std::vector<VrfAction> actions;  // those with users, in their order
};

/// Which VRF falls back to which, and which actions name the VRFs.
///
/// Each VRF that is configured or named occurs once. VRFs, actions and cycles are in the order of
/// their names, so equal configurations have equal graphs. A VRF has at most one fallback, so it is
/// on at most one cycle.
struct FallbackGraph {
  std::vector<GraphVrf> vrfs;
  std::vector<VrfAction> actions;  // those with users
  std::vector<FallbackCycle> cycles;
};

/// A VRF that an action names, and the field that names it.
struct NamedVrf {
  const char* field;
  L3::VrfName vrf;
};

[[nodiscard]] FallbackGraph fallbackGraphOf(const FallbackFacts& facts);
[[nodiscard]] FallbackGraph fallbackGraphOf(const Configuration& configuration);
/// The graph of the agent's present fallbacks and actions, which events may have changed.
[[nodiscard]] FallbackGraph fallbackGraphOf(ForwardingAgent& agent);

/// The VRFs of the action in the order of the fields. Empty fields are left out.
[[nodiscard]] std::vector<NamedVrf> vrfsNamedBy(const VrfAction& action);

[[nodiscard]] std::set<L3::VrfName> configuredVrfs(const ForwardingAgent& agent);

/// Every VRF that the agent knows of: from its configuration, from the hardware, and from actions,
/// fallbacks and prefix lengths that name it. The default VRF comes first, then the others in the
/// order of their names.
[[nodiscard]] std::set<L3::VrfName> knownVrfs(ForwardingAgent& agent);

}  // namespace ZelAgent
