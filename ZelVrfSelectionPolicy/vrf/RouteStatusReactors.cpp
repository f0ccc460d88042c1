#include "ZelVrfSelectionPolicy/vrf/RouteStatusReactors.h"

#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

namespace ZelVrfSelectionPolicy {

using RouteStatus = Routing::Hardware::RouteStatus;
using RouteStatus6 = Routing6::Hardware::RouteStatus;

namespace {

// The entity that `value` points at the pointer to.
template <class Entity>
const Entity& entityOf(const void* value) noexcept {
  return **static_cast<const Mox::Ptr<Entity>*>(value);
}

}  // namespace

VrfSm::MoxRoutingHwRouteStatus::MoxRoutingHwRouteStatus(const RouteStatusPtr& status, VrfSm* owner)
    : NotifieeConst(status), owner_(owner) {
  isRegisteredIs(true);
  status->followers().followerIs(follower_);
}

VrfSm::MoxRoutingHwRouteStatus::~MoxRoutingHwRouteStatus() {
  moxDoZombieReactors(true);
  status()->followers().followerDel(follower_);
}

void VrfSm::MoxRoutingHwRouteStatus::makeRoom(Velo::Follower* follower, short attributeId,
                                              const void* /*key*/, const void* value) {
  const auto& reactor = Velo::MemberFollower<MoxRoutingHwRouteStatus>::ownerOf(follower);
  if (reactor.isDeaf()) return;
  if (attributeId == RouteStatus::vrfStatusAttribute) {
    reactor.owner_->makeRoomForVrfStatus(entityOf<Routing::Hardware::VrfStatus>(value));
  } else {
    reactor.owner_->makeRoomForPrefixLens(
        entityOf<Routing::Hardware::PrefixLensInExactMatch>(value));
  }
}

VrfSm::RouteStatusPtr VrfSm::MoxRoutingHwRouteStatus::status() const noexcept {
  return RouteStatusPtr(notifierAs<RouteStatus>());
}

void VrfSm::MoxRoutingHwRouteStatus::onAttribute(Mox::AttributeId attributeId, const void* key) {
  if (isDeaf()) return;
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
  status->followers().followerIs(follower_);
}

VrfSm::MoxRouting6HwRouteStatus::~MoxRouting6HwRouteStatus() {
  moxDoZombieReactors(true);
  status()->followers().followerDel(follower_);
}

void VrfSm::MoxRouting6HwRouteStatus::makeRoom(Velo::Follower* follower, short attributeId,
                                               const void* /*key*/, const void* value) {
  const auto& reactor = Velo::MemberFollower<MoxRouting6HwRouteStatus>::ownerOf(follower);
  if (reactor.isDeaf()) return;
  if (attributeId != RouteStatus6::prefixLensAttribute) return;
  reactor.owner_->makeRoomForPrefixLensV6(
      entityOf<Routing::Hardware::PrefixLensInExactMatch>(value));
}

VrfSm::RouteStatus6Ptr VrfSm::MoxRouting6HwRouteStatus::status() const noexcept {
  return RouteStatus6Ptr(notifierAs<RouteStatus6>());
}

void VrfSm::MoxRouting6HwRouteStatus::onAttribute(Mox::AttributeId attributeId, const void* key) {
  if (attributeId != RouteStatus6::prefixLensAttribute) return;
  if (isDeaf()) return;
  const auto& name = *static_cast<const Velo::String*>(key);
  if (const PrefixLensPtr prefixLens = status()->vrfPrefixLensInExactMatch(name)) {
    owner_->vrfPrefixLensInExactMatchV6Is(prefixLens);
  } else {
    owner_->vrfPrefixLensInExactMatchV6Del(name);
  }
}

}  // namespace ZelVrfSelectionPolicy
