#pragma once

#include <map>
#include <string>

#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/ClassMatch.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "agent/config/Configuration.h"

namespace ZelAgent {

/// What a rule matches, on one line. Two matches have the same text exactly if they are equal:
/// "ipv4 protocol 4 dscp 10,12 source 198.18.0.1/32 destination 203.0.113.0/24", "any".
[[nodiscard]] std::string toText(const PolicyMap::ClassMatch& match);

/// Where a policy map comes from.
struct PolicyOrigin {
  std::string networkInstance;
  std::string policyId;
};

/// The policies of a configuration in the platform's form: class maps, policy maps, and what is
/// applied to which interface.
///
/// The name of a class map is the text of its match, so a class map never changes. Policies with
/// the same id in two network instances are two policy maps. Interfaces without a policy are
/// absent.
struct PolicyObjects {
  std::map<Velo::String, PolicyMap::ClassMatch> classMaps;
  std::map<Velo::String, PolicyMap::PolicyMapRules> policyMaps;
  std::map<Velo::String, PolicyMap::IntfPolicy> intfs;
  std::map<Velo::String, PolicyOrigin> origins;  // by policy map
};

[[nodiscard]] PolicyObjects policyObjectsOf(const Configuration& configuration);

}  // namespace ZelAgent
