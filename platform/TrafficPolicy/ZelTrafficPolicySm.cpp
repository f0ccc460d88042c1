#include "TrafficPolicy/ZelTrafficPolicySm.h"

namespace TrafficPolicy {

Mox::Ptr<ZelTrafficPolicySm> ZelTrafficPolicySm::ZelTrafficPolicySmIs() {
  return Mox::makeActivePtr<ZelTrafficPolicySm>();
}

const Mox::Type* ZelTrafficPolicySm::fwkType() const {
  return &moxType;
}

void ZelTrafficPolicySm::readyIs(bool ready) {
  if (ready_ == ready) return;
  ready_ = ready;
  const Mox::Ptr<ZelTrafficPolicySm> alive(this);
  publisher().publish(readyAttribute, nullptr, &ready);
}

}  // namespace TrafficPolicy
