// Why: a configuration tells policies as lists of rules, and the platform takes them as class maps,
// policy maps, and what is applied to which interface.
// Always: a class map is named by what it matches and so never changes; policies of one id in two
// network instances are two policy maps; interfaces to which nothing is applied are absent.
#pragma once

#include <map>
#include <string>

#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "agent/config/Configuration.h"

namespace ZelAgent {

// Where a policy map comes from.
struct PolicyOrigin {
  std::string networkInstance;
  std::string policyId;
};

struct PolicyObjects {
  std::map<Velo::String, PolicyMap::ClassMatch> classMaps;
  std::map<Velo::String, PolicyMap::PolicyMapRules> policyMaps;
  std::map<Velo::String, PolicyMap::IntfPolicy> intfs;
  std::map<Velo::String, PolicyOrigin> origins;  // by policy map
};

[[nodiscard]] PolicyObjects policyObjectsOf(const Configuration& configuration);

}  // namespace ZelAgent
