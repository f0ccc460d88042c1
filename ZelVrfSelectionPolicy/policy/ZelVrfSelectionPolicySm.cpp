#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"

#include <utility>

#include "ZelVrfSelectionPolicy/trace/Source.h"

namespace ZelVrfSelectionPolicy {
namespace {

using TrafficPolicy::ZelTrafficPolicySm;

const Duolog::Message policySmReady =
    message(7, 302, "handlePolicySmReady", {"handlePolicySmReady"});

// Pauses the present state machine while its successor is created, since both program the same
// rules. It stays subscribed, so that it can continue if the creation fails, unless it was replaced
// or removed meanwhile.
class PauseScope {
 public:
  explicit PauseScope(const Mox::Ptr<ZelTrafficPolicySm>& present)
      : sm_(isToBePaused(present) ? present : nullptr) {
    if (sm_) sm_->pausedIs(true);
  }
  PauseScope(const PauseScope&) = delete;
  PauseScope& operator=(const PauseScope&) = delete;
  ~PauseScope() { end(); }
  // Programs the present configuration. If that throws, as the creation of the successor did, the
  // next change of the configuration programs it again.
  void end() noexcept {
    try {
      if (sm_) sm_->pausedIs(false);
    } catch (...) {  // NOLINT(bugprone-empty-catch): the first failure is the one to report
    }
    sm_ = nullptr;
  }

 private:
  static bool isToBePaused(const Mox::Ptr<ZelTrafficPolicySm>& present) noexcept {
    return present && present->hasNotificationActive() && !present->isPaused();
  }

  Mox::Ptr<ZelTrafficPolicySm> sm_;
};

}  // namespace

ZelVrfSelectionPolicySm::ZelVrfSelectionPolicySm(
    const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
    const Mox::Ptr<PolicySmMounts>& policySmMounts, const Mox::Ptr<VrfHelper>& vrfHelper,
    const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
    const VrfSm::RouteStatusPtr& routingHwRouteStatus,
    const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus) noexcept
    : policyHelper_(policyHelper),
      policySmMounts_(policySmMounts),
      vrfHelper_(vrfHelper),
      vrfFallbackConfig_(vrfFallbackConfig),
      routingHwRouteStatus_(routingHwRouteStatus),
      routing6HwRouteStatus_(routing6HwRouteStatus),
      policySmSubscriber_(*this) {}

ZelVrfSelectionPolicySm::~ZelVrfSelectionPolicySm() {
  ZelVrfSelectionPolicySm::moxDoZombieReactors(true);
  policySmDel();
  vrfSmDel();
}

Mox::Ptr<ZelVrfSelectionPolicySm> ZelVrfSelectionPolicySm::ZelVrfSelectionPolicySmIs(
    const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
    const Mox::Ptr<PolicySmMounts>& policySmMounts, const Mox::Ptr<VrfHelper>& vrfHelper,
    const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
    const VrfSm::RouteStatusPtr& routingHwRouteStatus,
    const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus) {
  return Mox::makeActivePtr<ZelVrfSelectionPolicySm>(policyHelper, policySmMounts, vrfHelper,
                                                     vrfFallbackConfig, routingHwRouteStatus,
                                                     routing6HwRouteStatus);
}

void ZelVrfSelectionPolicySm::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  PtrInterface::hasNotificationActiveIs(active);
  policySmSubscriptionIs(active);
  if (vrfSm_) vrfSm_->hasNotificationActiveIs(active);
}

void ZelVrfSelectionPolicySm::moxDoZombieReactors(bool zombie) {
  if (isZombie() != zombie) zombieIs(zombie);
}

void ZelVrfSelectionPolicySm::handlePolicySmReady() {
  policySmReady();
}

void ZelVrfSelectionPolicySm::policySmDispatch(Velo::Publisher* /*publisher*/,
                                               Velo::Subscriber* subscriber, short attributeId,
                                               const void* /*key*/, const void* /*value*/) {
  auto& sm = Velo::MemberSubscriber<ZelVrfSelectionPolicySm>::ownerOf(subscriber);
  if (attributeId != ZelTrafficPolicySm::readyAttribute || sm.isZombie()) return;
  const Mox::Ptr<ZelVrfSelectionPolicySm> alive(&sm);
  sm.handlePolicySmReady();
}

void ZelVrfSelectionPolicySm::policySmSubscriptionIs(bool subscribed) {
  if (!policySm_) return;
  policySm_->publisher().subscriptionIs(policySmSubscriber_, &policySmDispatch, subscribed);
}

Mox::Ptr<ZelTrafficPolicySm> ZelVrfSelectionPolicySm::policySmIs(
    const Mox::Ptr<PolicyMap::IntfConfig const>& intfConfig,
    const Mox::Ptr<PolicyMap::PolicyMapTypeConfig const>& policyConfig,
    const Mox::Ptr<PolicyMap::ClassMapTypeConfig const>& classTypeConfig,
    const Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir const>& statusRequestDir,
    const Mox::Ptr<PolicyMap::PolicyMapTypeStatus>& status,
    const Mox::Ptr<Acl::Config const>& aclConfig,
    const Mox::Ptr<Classification::FieldSetConfig const>& fieldSetConfig,
    const Mox::Ptr<Lag::Input::Config const>& lagConfig, const Mox::Ptr<Ip::Config const>& ipConfig,
    const Mox::Ptr<Ip6::Config const>& ip6Config, const Mox::Ptr<Ip::Status const>& ipStatus,
    const Mox::Ptr<Ip6::Status const>& ip6Status, const Mox::Ptr<Mox::Dir const>& routingVrfInfoDir,
    const Mox::Ptr<Mox::Dir const>& routing6VrfInfoDir,
    const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& aclHelper, bool allowL2Intf, bool allowMgmtIntf,
    const Mox::Ptr<Zel::NexthopConfig>& nexthopConfig,
    const Mox::Ptr<Zel::NexthopStatus const>& nexthopStatus,
    const Mox::Ptr<Bost::TimerWheel const>& timerWheel,
    const Mox::Ptr<Zel::NexthopGroupConfig>& nexthopGroupConfig,
    const Mox::Ptr<Zel::NexthopGroupStatus const>& nexthopGroupStatus,
    const Mox::Ptr<Mirroring::Config const>& mirroringHwConfig,
    const Mox::Ptr<Sflow::InterfaceCollector>& sflowIntfCollector,
    const Mox::Ptr<Classification::UdfConfig const>& udfConfig,
    const Mox::Ptr<Zel::ZelCommonSmData const>& zcsd,
    const Mox::Ptr<Mox::Dir const>& bgpNeighborConfigDir, bool expandAllRulesByVrf,
    bool permitFragment, bool expandNeighborsWhenNonPresent,
    const Mox::Ptr<TrafficPolicy::HwStatus const>& trafficPolicyHwStatus) {
  const Mox::Ptr<ZelVrfSelectionPolicySm> alive(this);
  constexpr bool compileOnly = false;
  const TrafficPolicy::TrafficPolicyInputs wanted{intfConfig,
                                                  policyConfig,
                                                  classTypeConfig,
                                                  statusRequestDir,
                                                  status,
                                                  aclConfig,
                                                  fieldSetConfig,
                                                  lagConfig,
                                                  ipConfig,
                                                  ip6Config,
                                                  ipStatus,
                                                  ip6Status,
                                                  routingVrfInfoDir,
                                                  routing6VrfInfoDir,
                                                  aclHelper,
                                                  allowMgmtIntf,
                                                  compileOnly,
                                                  nexthopConfig,
                                                  nexthopStatus,
                                                  timerWheel,
                                                  nexthopGroupConfig,
                                                  nexthopGroupStatus,
                                                  mirroringHwConfig,
                                                  sflowIntfCollector,
                                                  udfConfig,
                                                  zcsd,
                                                  bgpNeighborConfigDir,
                                                  expandAllRulesByVrf,
                                                  permitFragment,
                                                  expandNeighborsWhenNonPresent,
                                                  trafficPolicyHwStatus};
  if (Mox::Ptr<ZelTrafficPolicySm> present = policySm_) {
    present->allowL2IntfIs(allowL2Intf);
    if (policySm_ == present && present->inputs() == wanted) return present;
  }
  policySmSubscriptionIs(false);
  PauseScope pause(policySm_);
  Mox::Ptr<ZelTrafficPolicySm> created =
      ZelTrafficPolicySm::ZelTrafficPolicySmIs(wanted, allowL2Intf);
  Mox::Ptr<ZelTrafficPolicySm> replaced =
      policySmDel();  // the old one, unless one was installed meanwhile
  pause.end();
  policySm_ = created;
  replaced = nullptr;
  policySmSubscriptionIs(true);
  handlePolicySmReady();
  if (policySm_ == created) created->hasNotificationActiveIs(true);
  return created;
}

Mox::Ptr<ZelTrafficPolicySm> ZelVrfSelectionPolicySm::policySmDel() {
  if (!policySm_) return nullptr;
  policySmSubscriptionIs(false);
  Mox::Ptr<ZelTrafficPolicySm> removed;
  removed.swap(policySm_);
  removed->hasNotificationActiveIs(false);
  return removed;
}

Mox::Ptr<VrfSm> ZelVrfSelectionPolicySm::vrfSmIs(
    const Mox::Ptr<VrfHwConfig>& vrfHwConfig, const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
    const Mox::Ptr<VrfHelper>& vrfHelper, const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
    const VrfSm::RouteStatusPtr& routingHwRouteStatus,
    const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus) {
  const bool isPresent = vrfSm_ && vrfSm_->vrfHwConfig() == vrfHwConfig &&
                         vrfSm_->vrfHwStatus() == vrfHwStatus && vrfSm_->vrfHelper() == vrfHelper &&
                         vrfSm_->vrfFallbackConfig() == vrfFallbackConfig &&
                         vrfSm_->routingHwRouteStatus() == routingHwRouteStatus &&
                         vrfSm_->routing6HwRouteStatus() == routing6HwRouteStatus;
  if (isPresent) return vrfSm_;
  const Mox::Ptr<ZelVrfSelectionPolicySm> alive(this);
  Mox::Ptr<VrfSm> created = VrfSm::VrfSmIs(vrfHwConfig, vrfHwStatus, vrfHelper, vrfFallbackConfig,
                                           routingHwRouteStatus, routing6HwRouteStatus);
  Mox::Ptr<VrfSm> replaced = vrfSmDel();  // the old one, unless one was installed meanwhile
  vrfSm_ = created;
  replaced = nullptr;
  if (vrfSm_ == created) created->hasNotificationActiveIs(true);
  return created;
}

Mox::Ptr<VrfSm> ZelVrfSelectionPolicySm::vrfSmDel() {
  Mox::Ptr<VrfSm> removed;
  removed.swap(vrfSm_);
  if (removed) removed->hasNotificationActiveIs(false);
  return removed;
}

Mox::Ptr<ZelVrfSelectionPolicySm> zelVrfSelectionPolicySmFactory(
    const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
    const Mox::Ptr<PolicySmMounts>& policySmMounts, const Mox::Ptr<VrfHelper>& vrfHelper,
    const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
    const VrfSm::RouteStatusPtr& routingHwRouteStatus,
    const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus) {
  return ZelVrfSelectionPolicySm::ZelVrfSelectionPolicySmIs(policyHelper, policySmMounts, vrfHelper,
                                                            vrfFallbackConfig, routingHwRouteStatus,
                                                            routing6HwRouteStatus);
}

}  // namespace ZelVrfSelectionPolicy
