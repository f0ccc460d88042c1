#include "PolicyMap/PolicyMapTypeStatus.h"

#include "Mox/Hash.h"
#include "Mox/Ptr.h"

namespace PolicyMap {

unsigned RuleKey::hash(unsigned seed) const noexcept {
  Mox::Hash running(seed, sequence);
  running.hashMix(intf.hash(seed));
  running.hashMix(policyMap.hash(seed));
  return running.result();
}

Mox::Ptr<PolicyMapTypeStatus> PolicyMapTypeStatus::PolicyMapTypeStatusIs(const Velo::String& name) {
  return Mox::makeActivePtr<PolicyMapTypeStatus>(name);
}

}  // namespace PolicyMap
