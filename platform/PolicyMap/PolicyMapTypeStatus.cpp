#include "PolicyMap/PolicyMapTypeStatus.h"

#include "Mox/Ptr.h"

namespace PolicyMap {

Mox::Ptr<PolicyMapTypeStatus> PolicyMapTypeStatus::PolicyMapTypeStatusIs(const Velo::String& name) {
  return Mox::makeActivePtr<PolicyMapTypeStatus>(name);
}

}  // namespace PolicyMap
