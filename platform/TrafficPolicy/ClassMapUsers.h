#pragma once

#include <map>
#include <set>

#include "PolicyMap/PolicyMapTypeConfig.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The policy maps that use each class map. With it a change of one class map does not have to
/// search every rule.
class ZEL_EXPORT ClassMapUsers final {
 public:
  using Names = std::set<Velo::String>;

  /// Sets the rules of the policy map of that name; null removes it.
  void policyMapIs(const Velo::String& policyMap, const PolicyMap::PolicyMapRules* rules);
  void clear() noexcept;
  /// The policy maps that use the class map.
  [[nodiscard]] const Names& policyMaps(const Velo::String& classMap) const;

 private:
  std::map<Velo::String, Names> classMaps_;   // by policy map
  std::map<Velo::String, Names> policyMaps_;  // by class map
};

}  // namespace TrafficPolicy
