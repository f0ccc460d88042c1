#include "TrafficPolicy/ClassMapUsers.h"

namespace TrafficPolicy {

void ClassMapUsers::policyMapIs(const Velo::String& policyMap,
                                const PolicyMap::PolicyMapRules* rules) {
  for (const Velo::String& classMap : classMaps_[policyMap]) {
    const auto users = policyMaps_.find(classMap);
    users->second.erase(policyMap);
    if (users->second.empty()) policyMaps_.erase(users);
  }
  classMaps_.erase(policyMap);
  if (rules == nullptr) return;
  Names& named = classMaps_[policyMap];
  for (const PolicyMap::PolicyMapRule& rule : *rules) {
    policyMaps_[rule.classMap].insert(policyMap);  // first, so that every name in `named` has users
    named.insert(rule.classMap);
  }
}

void ClassMapUsers::clear() noexcept {
  classMaps_.clear();
  policyMaps_.clear();
}

const ClassMapUsers::Names& ClassMapUsers::policyMaps(const Velo::String& classMap) const {
  static const Names none;
  const auto found = policyMaps_.find(classMap);
  return found == policyMaps_.end() ? none : found->second;
}

}  // namespace TrafficPolicy
