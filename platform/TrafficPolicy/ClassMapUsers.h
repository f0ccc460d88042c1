#pragma once

#include <map>
#include <set>

#include "PolicyMap/PolicyMapTypeConfig.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// Which policy maps have rules that name a class map, so that a change of one class map among
/// thousands is followed without looking at every rule.
class ZEL_EXPORT ClassMapUsers final {
 public:
  using Names = std::set<Velo::String>;

  /// `rules` are those of the policy map of that name from now on; null when it is gone.
  void policyMapIs(const Velo::String& policyMap, const PolicyMap::PolicyMapRules* rules);
  void clear() noexcept;
  /// The policy maps that name the class map.
  [[nodiscard]] const Names& policyMaps(const Velo::String& classMap) const;

 private:
  std::map<Velo::String, Names> classMaps_;   // by policy map
  std::map<Velo::String, Names> policyMaps_;  // by class map
};

}  // namespace TrafficPolicy
