// How the decapsulation flags of the IPv4 route status are followed: whatever they become, every
// created resource is programmed anew. The flag is read for the trace alone, and both handlers show
// the same one.

#include "Mox/SassertHelper.h"
#include "ZelVrfSelectionPolicy/vrf/RouteStatusReactors.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"

namespace ZelVrfSelectionPolicy {

bool VrfSm::decapNhFlag() const {
  if (!routingReactor_) {
    Mox::SassertHelper("routingHwRouteStatus()", sourcePath, 0, "VrfSm::decapNhFlag").stream()
        << "a decap handler needs an IPv4 route status";
  }
  return routingReactor_->status()->decapNhEnabled();
}

template <class Visitor>
void VrfSm::forEachCreatedAction(Visitor&& visitor) {
  const Mox::Ptr<VrfHwStatus> statuses = vrfHwStatus_;
  for (auto entry = statuses->hwStatus().iterator(); entry; ++entry) {
    const VrfAction action = entry.key();
    if (!resourceIsGoing(action)) visitor(action);
  }
}

void VrfSm::handleDecapNh() {
  const Mox::Ptr<VrfSm> alive(this);
  vrfSmMessages.decapNh(decapNhFlag());
  forEachCreatedAction([&](const VrfAction& action) {
    const auto code = static_cast<unsigned char>(action.action());
    vrfSmMessages.decapNhAction(
        Duolog::Argument(unsigned{code}, PolicyMap::actionTypeNames().name(code)));
    updateVrfAction(action);
  });
}

void VrfSm::handleDecapNhFallback() {
  const Mox::Ptr<VrfSm> alive(this);
  vrfSmMessages.decapNhFallback(decapNhFlag());
  forEachCreatedAction([&](const VrfAction& action) { updateVrfAction(action); });
}

}  // namespace ZelVrfSelectionPolicy
