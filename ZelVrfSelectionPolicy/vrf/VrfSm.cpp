#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

#include "Mox/SassertHelper.h"
#include "ZelVrfSelectionPolicy/trace/Source.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/RouteStatusReactors.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"

namespace ZelVrfSelectionPolicy {
namespace {

using FallbackVrf = VrfSelectionPolicy::VrfSelectionFallbackVrf;

// Gets the memory that subscribing to `source`, unless that is done already, takes.
template <class Source>
void makeRoomForSubscription(const Source& source, const Velo::Subscriber& subscriber) {
  if (!source || subscriber.dispatch != nullptr) return;
  source->publisher().makeRoom();
  source->followers().makeRoom();
}

// Adds `subscriber` to the publisher of `source` and `follower` to its followers, or takes them
// off, unless that is done already.
template <class Source>
void subscriptionIs(const Source& source, Velo::Subscriber& subscriber,
                    Velo::Subscriber::Dispatch dispatch, Velo::Follower& follower,
                    bool subscribed) {
  if (!source || (subscriber.dispatch != nullptr) == subscribed) return;
  if (subscribed) {
    source->followers().followerIs(follower);
    source->publisher().subscriberIs(subscriber);
    subscriber.dispatch = dispatch;
  } else {
    source->followers().followerDel(follower);
    source->publisher().subscriberDel(subscriber);
    subscriber.dispatch = nullptr;
  }
}

template <class Machines, class Visitor>
void forEach(const Machines& machines, Visitor& visitor) {
  for (auto entry = machines.iterator(); entry; ++entry) {
    const auto machine = entry.value();
    visitor(*machine);
  }
}

}  // namespace

VrfSm::VrfSm(const Mox::Ptr<VrfHwConfig>& vrfHwConfig, const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
             const Mox::Ptr<VrfHelper>& vrfHelper, const FallbackConfigPtr& vrfFallbackConfig,
             const RouteStatusPtr& routingHwRouteStatus,
             const RouteStatus6Ptr& routing6HwRouteStatus)
    : vrfHwConfig_(vrfHwConfig),
      vrfHwStatus_(vrfHwStatus),
      vrfHelper_(vrfHelper),
      vrfFallbackConfig_(vrfFallbackConfig),
      vrfHwConfigSubscriber_(*this),
      vrfFallbackConfigSubscriber_(*this) {
  try {
    reactorsIs(routingHwRouteStatus, routing6HwRouteStatus);
    subscriptionsIs(true);
    handleWhatIsThere();
  } catch (...) {
    tearDown();
    throw;
  }
}

VrfSm::~VrfSm() {
  tearDown();
}

Mox::Ptr<VrfSm> VrfSm::VrfSmIs(const Mox::Ptr<VrfHwConfig>& vrfHwConfig,
                               const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
                               const Mox::Ptr<VrfHelper>& vrfHelper,
                               const FallbackConfigPtr& vrfFallbackConfig,
                               const RouteStatusPtr& routingHwRouteStatus,
                               const RouteStatus6Ptr& routing6HwRouteStatus) {
  return Mox::makeActivePtr<VrfSm>(vrfHwConfig, vrfHwStatus, vrfHelper, vrfFallbackConfig,
                                   routingHwRouteStatus, routing6HwRouteStatus);
}

VrfSm::RouteStatusPtr VrfSm::routingHwRouteStatus() const noexcept {
  return routingReactor_ ? routingReactor_->status() : nullptr;
}

VrfSm::RouteStatus6Ptr VrfSm::routing6HwRouteStatus() const noexcept {
  return routing6Reactor_ ? routing6Reactor_->status() : nullptr;
}

void VrfSm::reactorsIs(const RouteStatusPtr& routes, const RouteStatus6Ptr& routes6) {
  if (routes) routingReactor_ = Mox::makeActivePtr<MoxRoutingHwRouteStatus>(routes, this);
  if (routes6) routing6Reactor_ = Mox::makeActivePtr<MoxRouting6HwRouteStatus>(routes6, this);
}

void VrfSm::subscriptionsIs(bool subscribed) {
  if (subscribed) {
    makeRoomForSubscription(vrfHwConfig_, vrfHwConfigSubscriber_);
    makeRoomForSubscription(vrfFallbackConfig_, vrfFallbackConfigSubscriber_);
  }
  subscriptionIs(vrfHwConfig_, vrfHwConfigSubscriber_, &vrfHwConfigDispatch, vrfHwConfigFollower_,
                 subscribed);
  subscriptionIs(vrfFallbackConfig_, vrfFallbackConfigSubscriber_, &vrfFallbackConfigDispatch,
                 vrfFallbackConfigFollower_, subscribed);
}

// The IPv4 route status alone has the VRFs; of the IPv6 one only the prefix lengths matter.
void VrfSm::handleWhatIsThere() {
  handleInitialized();
  if (const RouteStatusPtr routes = routingHwRouteStatus()) {
    for (auto entry = routes->vrfStatus().iterator(); entry; ++entry) {
      vrfInstanceIs(VrfStatusPtr(entry.value()));
    }
    for (auto entry = routes->vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
      vrfPrefixLensInExactMatchIs(PrefixLensPtr(entry.value()));
    }
  }
  if (const RouteStatus6Ptr routes6 = routing6HwRouteStatus()) {
    for (auto entry = routes6->vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
      vrfPrefixLensInExactMatchV6Is(PrefixLensPtr(entry.value()));
    }
  }
}

void VrfSm::handleInitialized() {
  const Mox::Ptr<VrfSm> alive(this);
  vrfSmMessages.initialize();
  const Mox::Ptr<FallbackVrf const> config = vrfFallbackConfig_;
  for (auto entry = config->fallbackVrf().iterator(); entry; ++entry) {
    handleVrfFallbackConfig(entry.key());
  }
}

template <class Visitor>
void VrfSm::forEachNestedSm(Visitor&& visitor) {
  forEach(vrfInstance_, visitor);
  forEach(vrfPrefixLensInExactMatch_, visitor);
  forEach(vrfPrefixLensInExactMatchV6_, visitor);
}

void VrfSm::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  subscriptionsIs(active);
  PtrInterface::hasNotificationActiveIs(active);
  if (routingReactor_) routingReactor_->hasNotificationActiveIs(active);
  if (routing6Reactor_) routing6Reactor_->hasNotificationActiveIs(active);
  forEachNestedSm([&](auto& machine) { machine.hasNotificationActiveIs(active); });
}

void VrfSm::moxDoZombieReactors(bool zombie) {
  if (isZombie() == zombie) return;
  const Mox::Ptr<VrfSm> alive(this);
  if (const auto reactor = routingReactor_) reactor->moxDoZombieReactors(zombie);
  if (const auto reactor = routing6Reactor_) reactor->moxDoZombieReactors(zombie);
  forEachNestedSm([&](auto& machine) { machine.moxDoZombieReactors(zombie); });
  zombieIs(zombie);
}

// What the destructor and an unwinding constructor have in common. Touches no hardware.
void VrfSm::tearDown() noexcept {
  tearingDown_ = true;
  moxDoZombieReactors(true);
  subscriptionsIs(false);
  if (routingReactor_) routingReactor_->ownerIs(nullptr);
  if (routing6Reactor_) routing6Reactor_->ownerIs(nullptr);
  forEachNestedSm([](auto& machine) { machine.vrfSmIs(nullptr); });
  dependentVrfInfoDelAll();
}

void VrfSm::vrfHwConfigDispatch(Velo::Publisher* /*publisher*/, Velo::Subscriber* subscriber,
                                short attributeId, const void* key, const void* /*value*/) {
  if (attributeId != VrfHwConfig::vrfRefCountAttribute) return;
  VrfSm& vrfSm = Velo::MemberSubscriber<VrfSm>::ownerOf(subscriber);
  if (vrfSm.isDeaf()) return;
  const auto& action = *static_cast<const VrfAction*>(key);
  if (!vrfSm.anotherEndedResource(action)) vrfSm.handleVrfRefCountChange(action);
}

void VrfSm::vrfFallbackConfigDispatch(Velo::Publisher* /*publisher*/, Velo::Subscriber* subscriber,
                                      short attributeId, const void* key, const void* /*value*/) {
  if (attributeId != FallbackVrf::fallbackVrfAttribute) return;
  VrfSm& vrfSm = Velo::MemberSubscriber<VrfSm>::ownerOf(subscriber);
  if (vrfSm.isDeaf()) return;
  vrfSm.mox_handleVrfFallbackConfig_fallbackVrf(*static_cast<const L3::VrfName*>(key));
}

void VrfSm::mox_handleVrfFallbackConfig_fallbackVrf(const L3::VrfName& vrf) {
  handleVrfFallbackConfig(vrf);
}

Mox::Ptr<VrfSm> vrfSmFactory(const Mox::Ptr<VrfHwConfig>& vrfHwConfig,
                             const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
                             const Mox::Ptr<VrfHelper>& vrfHelper,
                             const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
                             const VrfSm::RouteStatusPtr& routingHwRouteStatus,
                             const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus) {
  return VrfSm::VrfSmIs(vrfHwConfig, vrfHwStatus, vrfHelper, vrfFallbackConfig,
                        routingHwRouteStatus, routing6HwRouteStatus);
}

}  // namespace ZelVrfSelectionPolicy
