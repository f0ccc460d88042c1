#include "PolicyMap/ServicePolicySm.h"

namespace PolicyMap {

ServicePolicySm::~ServicePolicySm() = default;

void ServicePolicySm::allowL2IntfIs(bool allow) {
  if (allowL2Intf_ == allow) return;
  allowL2Intf_ = allow;
  handleAllowL2Intf();
}

}  // namespace PolicyMap
