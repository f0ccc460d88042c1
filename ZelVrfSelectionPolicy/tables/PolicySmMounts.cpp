#include "ZelVrfSelectionPolicy/tables/PolicySmMounts.h"

namespace ZelVrfSelectionPolicy {

PolicySmMounts::~PolicySmMounts() = default;

Mox::Ptr<PolicySmMounts> PolicySmMounts::PolicySmMountsIs() {
  return Mox::makeActivePtr<PolicySmMounts>();
}

Mox::Ptr<PolicySmMounts> policySmMountsFactory() {
  return PolicySmMounts::PolicySmMountsIs();
}

}  // namespace ZelVrfSelectionPolicy
