#pragma once

#include <set>
#include <string>

#include "agent/config/Configuration.h"

namespace ZelAgent {

/// The names that a configuration has anywhere.
struct ConfiguredNames {
  /// Interfaces of network instances, of policies and of static routes, and those that are named
  /// but not used.
  std::set<std::string> interfaces;
  /// Network instances, and the VRFs that fallbacks and rules name. The default VRF is among them.
  std::set<std::string> vrfs;
  /// Ids of policies.
  std::set<std::string> policies;
};

[[nodiscard]] ConfiguredNames configuredNames(const Configuration& configuration);

}  // namespace ZelAgent
