#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

#include "Mox/SassertHelper.h"
#include "ZelVrfSelectionPolicy/vrf/FactsAtStart.h"
#include "ZelVrfSelectionPolicy/vrf/FallbackLinks.h"
#include "ZelVrfSelectionPolicy/vrf/RouteStatusReactors.h"
#include "ZelVrfSelectionPolicy/vrf/VrfResources.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"
#include "ZelVrfSelectionPolicy/vrf/VrfWatches.h"

namespace ZelVrfSelectionPolicy {
namespace {

using FallbackVrf = VrfSelectionPolicy::VrfSelectionFallbackVrf;

}  // namespace

VrfSm::VrfSm(const Mox::Ptr<VrfHwConfig>& vrfHwConfig, const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
             const Mox::Ptr<VrfHelper>& vrfHelper, const FallbackConfigPtr& vrfFallbackConfig,
             const RouteStatusPtr& routingHwRouteStatus,
             const RouteStatus6Ptr& routing6HwRouteStatus)
    : vrfHwConfig_(vrfHwConfig),
      vrfHwStatus_(vrfHwStatus),
      vrfHelper_(vrfHelper),
      vrfFallbackConfig_(vrfFallbackConfig),
      resources_(std::make_unique<VrfResources>(vrfHwConfig_, vrfHwStatus_, vrfHelper_)),
      fallbackLinks_(std::make_unique<FallbackLinks>(vrfFallbackConfig_, *resources_)),
      watches_(std::make_unique<VrfWatches>(*this)),
      vrfHwConfigSubscriber_(*this),
      vrfFallbackConfigSubscriber_(*this) {
  if (routingHwRouteStatus) {
    routingReactor_ = Mox::makeActivePtr<MoxRoutingHwRouteStatus>(routingHwRouteStatus, this);
  }
  if (routing6HwRouteStatus) {
    routing6Reactor_ = Mox::makeActivePtr<MoxRouting6HwRouteStatus>(routing6HwRouteStatus, this);
  }
  subscriptionsAre(true);
  try {
    handlePresentState();
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

void VrfSm::subscriptionsAre(bool subscribed) {
  if (vrfHwConfig_) {
    vrfHwConfig_->publisher().subscriptionIs(vrfHwConfigSubscriber_, &vrfHwConfigDispatch,
                                             subscribed);
  }
  if (vrfFallbackConfig_) {
    vrfFallbackConfig_->publisher().subscriptionIs(vrfFallbackConfigSubscriber_,
                                                   &vrfFallbackConfigDispatch, subscribed);
  }
}

// Only the IPv4 route status has VRF statuses. Of the IPv6 one only the prefix lengths are used.
void VrfSm::handlePresentState() {
  const RouteStatusPtr routes = routingHwRouteStatus();
  const RouteStatus6Ptr routes6 = routing6HwRouteStatus();
  const VrfIdsAtStart vrfIds(routes);
  const PrefixLensAtStart prefixLens(routes);
  const PrefixLensAtStart prefixLensV6(routes6);
  handleInitialized();
  if (routes) {
    for (auto entry = routes->vrfStatus().iterator(); entry; ++entry)
      vrfInstanceIs(VrfStatusPtr(entry.value()));
    vrfIds.handleChanges(*this);
    for (auto entry = routes->vrfPrefixLensInExactMatch().iterator(); entry; ++entry)
      vrfPrefixLensInExactMatchIs(PrefixLensPtr(entry.value()));
    prefixLens.handleChanges(*this);
  }
  if (routes6) {
    for (auto entry = routes6->vrfPrefixLensInExactMatch().iterator(); entry; ++entry)
      vrfPrefixLensInExactMatchV6Is(PrefixLensPtr(entry.value()));
    prefixLensV6.handleChanges(*this);
  }
}

void VrfSm::handleInitialized() {
  const Mox::Ptr<VrfSm> alive(this);
  vrfSmMessages.initialize();
  for (auto entry = vrfFallbackConfig_->fallbackVrf().iterator(); entry; ++entry)
    handleVrfFallbackConfig(entry.key());
}

void VrfSm::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  PtrInterface::hasNotificationActiveIs(active);
  subscriptionsAre(active);
  if (routingReactor_) routingReactor_->hasNotificationActiveIs(active);
  if (routing6Reactor_) routing6Reactor_->hasNotificationActiveIs(active);
  watches_->forEach([&](auto& machine) { machine.hasNotificationActiveIs(active); });
}

void VrfSm::moxDoZombieReactors(bool zombie) {
  if (isZombie() == zombie) return;
  const Mox::Ptr<VrfSm> alive(this);
  if (const auto reactor = routingReactor_) reactor->moxDoZombieReactors(zombie);
  if (const auto reactor = routing6Reactor_) reactor->moxDoZombieReactors(zombie);
  watches_->forEach([&](auto& machine) { machine.moxDoZombieReactors(zombie); });
  zombieIs(zombie);
}

// Used by the destructor, and by the constructor if a handler throws. Calls no hook.
void VrfSm::tearDown() noexcept {
  tearingDown_ = true;
  moxDoZombieReactors(true);
  subscriptionsAre(false);
  if (routingReactor_) routingReactor_->ownerIs(nullptr);
  if (routing6Reactor_) routing6Reactor_->ownerIs(nullptr);
  watches_->forEach([](auto& machine) { machine.vrfSmIs(nullptr); });
}

void VrfSm::vrfHwConfigDispatch(Velo::Publisher* /*publisher*/, Velo::Subscriber* subscriber,
                                short attributeId, const void* key, const void* /*value*/) {
  if (attributeId != VrfHwConfig::vrfRefCountAttribute) return;
  VrfSm& vrfSm = Velo::MemberSubscriber<VrfSm>::ownerOf(subscriber);
  if (vrfSm.ignoresChanges()) return;
  const Mox::Ptr<VrfSm> alive(&vrfSm);
  vrfSm.resources_->handleRefCountChange(*static_cast<const VrfAction*>(key));
}

void VrfSm::vrfFallbackConfigDispatch(Velo::Publisher* /*publisher*/, Velo::Subscriber* subscriber,
                                      short attributeId, const void* key, const void* /*value*/) {
  if (attributeId != FallbackVrf::fallbackVrfAttribute) return;
  VrfSm& vrfSm = Velo::MemberSubscriber<VrfSm>::ownerOf(subscriber);
  if (vrfSm.ignoresChanges()) return;
  vrfSm.mox_handleVrfFallbackConfig_fallbackVrf(*static_cast<const L3::VrfName*>(key));
}

void VrfSm::mox_handleVrfFallbackConfig_fallbackVrf(L3::VrfName vrf) {
  handleVrfFallbackConfig(std::move(vrf));
}

void VrfSm::handleVrfRefCountChange(const VrfAction& vrfAction) {
  const Mox::Ptr<VrfSm> alive(this);
  const VrfAction action = vrfAction;  // a hook may destroy the caller's object
  resources_->handleRefCountChange(action);
}

void VrfSm::updateVrfAction(const VrfAction& vrfAction) {
  const Mox::Ptr<VrfSm> alive(this);
  resources_->update(vrfAction);
}

void VrfSm::updateAllVrfActions(L3::VrfName vrfName) {
  const Mox::Ptr<VrfSm> alive(this);
  resources_->updateNaming(vrfName);
}

// The handlers of both flags show this one. Its value has no effect on the updates.
bool VrfSm::decapNhFlag() const {
  if (!routingReactor_) {
    Mox::SassertHelper("routingHwRouteStatus()", sourcePath, 0, "VrfSm::decapNhFlag").stream()
        << "a decap handler needs an IPv4 route status";
  }
  return routingReactor_->status()->decapNhEnabled();
}

void VrfSm::handleDecapNh() {
  const Mox::Ptr<VrfSm> alive(this);
  vrfSmMessages.decapNh(decapNhFlag());
  resources_->updateAll([](const VrfAction& action) {
    const PolicyMap::ActionType type = action.action();
    vrfSmMessages.decapNhAction(
        Duolog::Argument(static_cast<unsigned>(type), PolicyMap::actionTypes.name(type)));
  });
}

void VrfSm::handleDecapNhFallback() {
  const Mox::Ptr<VrfSm> alive(this);
  vrfSmMessages.decapNhFallback(decapNhFlag());
  resources_->updateAll([](const VrfAction& /*action*/) {});
}

void VrfSm::handleVrfUpdates(L3::VrfName vrfName, bool fallbackConfigChange) {
  if (tearingDown_) return;
  const Mox::Ptr<VrfSm> alive(this);
  fallbackLinks_->propagate(vrfName, fallbackConfigChange);
}

void VrfSm::handleVrfFallbackConfig(L3::VrfName vrf) {
  const Mox::Ptr<VrfSm> alive(this);
  fallbackLinks_->handleChange(vrf);
}

void VrfSm::fallbackVrfInfoIs(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  fallbackLinks_->fallbackVrfInfoIs(vrf, fallback);
}
L3::VrfName VrfSm::fallbackVrfInfoDel(const L3::VrfName& vrf) {
  return fallbackLinks_->fallbackVrfInfoDel(vrf);
}
void VrfSm::fallbackVrfInfoDelAll() {
  fallbackLinks_->fallbackVrfInfoDelAll();
}
L3::VrfName VrfSm::fallbackVrfInfo(const L3::VrfName& vrf) const noexcept {
  return fallbackLinks_->fallbackVrfInfo(vrf);
}
const VrfSm::FallbackVrfInfo& VrfSm::fallbackVrfInfo() const noexcept {
  return fallbackLinks_->fallbackVrfInfo();
}

Mox::Ptr<DependentVrfInfo> VrfSm::dependentVrfInfoIs(const L3::VrfName& vrfName) {
  return fallbackLinks_->dependentVrfInfoIs(vrfName);
}
Mox::Ptr<DependentVrfInfo> VrfSm::dependentVrfInfoDel(const L3::VrfName& vrfName) {
  return fallbackLinks_->dependentVrfInfoDel(vrfName);
}
void VrfSm::dependentVrfInfoDelAll() {
  fallbackLinks_->dependentVrfInfoDelAll();
}
Mox::Ptr<DependentVrfInfo> VrfSm::dependentVrfInfo(const L3::VrfName& vrfName) const noexcept {
  return fallbackLinks_->dependentVrfInfo(vrfName);
}
const VrfSm::DependentVrfInfos& VrfSm::dependentVrfInfo() const noexcept {
  return fallbackLinks_->dependentVrfInfo();
}

Mox::Ptr<VrfSm::VrfInstanceSm> VrfSm::vrfInstanceIs(const VrfStatusPtr& vrfStatus) {
  const Mox::Ptr<VrfSm> alive(this);
  return watches_->instanceIs(vrfStatus);
}
Mox::Ptr<VrfSm::VrfInstanceSm> VrfSm::vrfInstanceDel(const L3::VrfName& vrfName) {
  return watches_->instanceDel(vrfName);
}
void VrfSm::vrfInstanceDelAll() {
  const Mox::Ptr<VrfSm> alive(this);
  watches_->instanceDelAll();
}
bool VrfSm::moxVrfInstanceHas(const L3::VrfName& vrfName) const noexcept {
  return moxVrfInstance().has(vrfName);
}
const VrfSm::VrfInstances& VrfSm::moxVrfInstance() const noexcept {
  return watches_->instances();
}

void VrfSm::vrfPrefixLensInExactMatchIs(const PrefixLensPtr& prefixLens) {
  const Mox::Ptr<VrfSm> alive(this);
  watches_->prefixLens().is(prefixLens);
}
void VrfSm::vrfPrefixLensInExactMatchDel(const Velo::String& name) {
  watches_->prefixLens().del(name);
}
void VrfSm::vrfPrefixLensInExactMatchDelAll() {
  const Mox::Ptr<VrfSm> alive(this);
  watches_->prefixLens().delAll();
}
const VrfSm::PrefixLensSms<VrfSm::NestedSm_VrfPrefixLensInExactMatch>&
VrfSm::vrfPrefixLensInExactMatch() const noexcept {
  return watches_->prefixLens().machines();
}

void VrfSm::vrfPrefixLensInExactMatchV6Is(const PrefixLensPtr& prefixLens) {
  const Mox::Ptr<VrfSm> alive(this);
  watches_->prefixLensV6().is(prefixLens);
}
void VrfSm::vrfPrefixLensInExactMatchV6Del(const Velo::String& name) {
  watches_->prefixLensV6().del(name);
}
void VrfSm::vrfPrefixLensInExactMatchV6DelAll() {
  const Mox::Ptr<VrfSm> alive(this);
  watches_->prefixLensV6().delAll();
}
const VrfSm::PrefixLensSms<VrfSm::NestedSm_VrfPrefixLensInExactMatchV6>&
VrfSm::vrfPrefixLensInExactMatchV6() const noexcept {
  return watches_->prefixLensV6().machines();
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
