#include "ZelVrfSelectionPolicy/vrf/RouteStatusReactors.h"

#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

namespace ZelVrfSelectionPolicy {

using RouteStatus = Routing::Hardware::RouteStatus;
using RouteStatus6 = Routing6::Hardware::RouteStatus;

VrfSm::MoxRoutingHwRouteStatus::MoxRoutingHwRouteStatus(const RouteStatusPtr& status, VrfSm* owner)
    : NotifieeConst(status), owner_(owner) {
  isRegisteredIs(true);
}

VrfSm::RouteStatusPtr VrfSm::MoxRoutingHwRouteStatus::status() const noexcept {
  return RouteStatusPtr(notifierAs<RouteStatus>());
}

void VrfSm::MoxRoutingHwRouteStatus::onAttribute(Mox::AttributeId attributeId, const void* key) {
  if (!notifier() || owner_ == nullptr) return;
  if (attributeId == RouteStatus::vrfStatusAttribute) {
    followVrfStatus(*static_cast<const L3::VrfName*>(key));
  } else if (attributeId == RouteStatus::prefixLensAttribute) {
    followPrefixLens(*static_cast<const Velo::String*>(key));
  } else if (!isZombie()) {
    followDecapNh(attributeId);
  }
}

void VrfSm::MoxRoutingHwRouteStatus::followVrfStatus(const L3::VrfName& name) {
  if (const VrfStatusPtr vrfStatus = status()->vrfStatus(name)) {
    owner_->vrfInstanceIs(vrfStatus);
  } else {
    owner_->vrfInstanceDel(name);
  }
}

void VrfSm::MoxRoutingHwRouteStatus::followPrefixLens(const Velo::String& name) {
  if (const PrefixLensPtr prefixLens = status()->vrfPrefixLensInExactMatch(name)) {
    owner_->vrfPrefixLensInExactMatchIs(prefixLens);
  } else {
    owner_->vrfPrefixLensInExactMatchDel(name);
  }
}

void VrfSm::MoxRoutingHwRouteStatus::followDecapNh(Mox::AttributeId attributeId) {
  if (attributeId == RouteStatus::decapNhFallbackEnabledAttribute) owner_->handleDecapNhFallback();
  if (attributeId == RouteStatus::decapNhEnabledAttribute) owner_->handleDecapNh();
}

VrfSm::MoxRouting6HwRouteStatus::MoxRouting6HwRouteStatus(const RouteStatus6Ptr& status,
                                                          VrfSm* owner)
    : NotifieeConst(status), owner_(owner) {
  isRegisteredIs(true);
}

VrfSm::RouteStatus6Ptr VrfSm::MoxRouting6HwRouteStatus::status() const noexcept {
  return RouteStatus6Ptr(notifierAs<RouteStatus6>());
}

void VrfSm::MoxRouting6HwRouteStatus::onAttribute(Mox::AttributeId attributeId, const void* key) {
  if (!notifier() || owner_ == nullptr) return;
  if (attributeId != RouteStatus6::prefixLensAttribute) return;
  const auto& name = *static_cast<const Velo::String*>(key);
  if (const PrefixLensPtr prefixLens = status()->vrfPrefixLensInExactMatch(name)) {
    owner_->vrfPrefixLensInExactMatchV6Is(prefixLens);
  } else {
    owner_->vrfPrefixLensInExactMatchV6Del(name);
  }
}

}  // namespace ZelVrfSelectionPolicy
