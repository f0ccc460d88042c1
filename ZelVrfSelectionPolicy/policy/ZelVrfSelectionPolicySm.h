#pragma once

#include "Mox/Ptr.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "Quarry/Slab.h"
#include "TrafficPolicy/ZelTrafficPolicySm.h"
#include "Velo/Export.h"
#include "Velo/Subscriber.h"
#include "ZelVrfSelectionPolicy/tables/PolicySmMounts.h"
#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// The library's top object, the one that the agent creates.
///
/// It holds the inputs that both halves of the feature share, and owns the two state machines that
/// do the work: the platform's traffic-policy state machine, which compiles policies into
/// classification hardware, and `VrfSm`, which manages the hardware VRF resources that they use.
/// It makes neither by itself: the agent installs each, in either order, and removes it again.
/// Destruction ends the traffic-policy machine first, so that no policy change reaches a
/// half-destroyed `VrfSm`.
class ZEL_EXPORT ZelVrfSelectionPolicySm : public Mox::PtrInterface,
                                           public Quarry::SlabAllocated<ZelVrfSelectionPolicySm> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm";
  static const Mox::Type moxType;

  /// Use `ZelVrfSelectionPolicySmIs`, or derive. Reads nothing from the inputs.
  ZelVrfSelectionPolicySm(const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
                          const Mox::Ptr<PolicySmMounts>& policySmMounts,
                          const Mox::Ptr<VrfHelper>& vrfHelper,
                          const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
                          const VrfSm::RouteStatusPtr& routingHwRouteStatus,
                          const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus) noexcept;

  /// Observes the readiness of `policySm` or not, and passes the word on to `vrfSm`. The
  /// notifications of `policySm` itself are not switched.
  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~ZelVrfSelectionPolicySm() override;
  virtual void moxDoZombieReactors(bool zombie);
  /// The traffic-policy state machine was installed, or its readiness changed. Does nothing but
  /// trace; override it to act.
  virtual void handlePolicySmReady();

  /// A new object without state machines, with its notifications on.
  [[nodiscard]] static Mox::Ptr<ZelVrfSelectionPolicySm> ZelVrfSelectionPolicySmIs(
      const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
      const Mox::Ptr<PolicySmMounts>& policySmMounts, const Mox::Ptr<VrfHelper>& vrfHelper,
      const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
      const VrfSm::RouteStatusPtr& routingHwRouteStatus,
      const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus);

  // What it was built with.
  [[nodiscard]] const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper() const noexcept {
    return policyHelper_;
  }
  [[nodiscard]] const Mox::Ptr<PolicySmMounts>& policySmMounts() const noexcept {
    return policySmMounts_;
  }
  [[nodiscard]] const Mox::Ptr<VrfHelper>& vrfHelper() const noexcept { return vrfHelper_; }
  [[nodiscard]] const VrfSm::FallbackConfigPtr& vrfFallbackConfig() const noexcept {
    return vrfFallbackConfig_;
  }
  [[nodiscard]] const VrfSm::RouteStatusPtr& routingHwRouteStatus() const noexcept {
    return routingHwRouteStatus_;
  }
  [[nodiscard]] const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus() const noexcept {
    return routing6HwRouteStatus_;
  }

  /// The traffic-policy state machine, null when none is installed.
  [[nodiscard]] const Mox::Ptr<TrafficPolicy::ZelTrafficPolicySm>& policySm() const noexcept {
    return policySm_;
  }
  /// The traffic-policy state machine on these very objects and flags: the present one if it was
  /// built with them, otherwise a new one, complete before the old one, which is silenced, is
  /// released. `allowL2Intf` is applied to the present machine in place. What the construction
  /// throws passes through; the old machine then goes on, and its readiness is no longer observed.
  Mox::Ptr<TrafficPolicy::ZelTrafficPolicySm> policySmIs(
      const Mox::Ptr<PolicyMap::IntfConfig const>& intfConfig,
      const Mox::Ptr<PolicyMap::PolicyMapTypeConfig const>& policyConfig,
      const Mox::Ptr<PolicyMap::ClassMapTypeConfig const>& classTypeConfig,
      const Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir const>& statusRequestDir,
      const Mox::Ptr<PolicyMap::PolicyMapTypeStatus>& status,
      const Mox::Ptr<Acl::Config const>& aclConfig,
      const Mox::Ptr<Classification::FieldSetConfig const>& fieldSetConfig,
      const Mox::Ptr<Lag::Input::Config const>& lagConfig,
      const Mox::Ptr<Ip::Config const>& ipConfig, const Mox::Ptr<Ip6::Config const>& ip6Config,
      const Mox::Ptr<Ip::Status const>& ipStatus, const Mox::Ptr<Ip6::Status const>& ip6Status,
      const Mox::Ptr<Mox::Dir const>& routingVrfInfoDir,
      const Mox::Ptr<Mox::Dir const>& routing6VrfInfoDir,
      const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& aclHelper, bool allowL2Intf,
      bool allowMgmtIntf, const Mox::Ptr<Zel::NexthopConfig>& nexthopConfig,
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
      const Mox::Ptr<TrafficPolicy::HwStatus const>& trafficPolicyHwStatus);
  /// Takes the traffic-policy state machine out, silenced; null when there was none. It is
  /// destroyed when the last reference goes.
  Mox::Ptr<TrafficPolicy::ZelTrafficPolicySm> policySmDel();

  /// The VRF state machine, null when none is installed.
  [[nodiscard]] const Mox::Ptr<VrfSm>& vrfSm() const noexcept { return vrfSm_; }
  /// The VRF state machine on these very objects: the present one if it was built with them,
  /// otherwise a new one, complete before the old one, which is silenced, is released. Hardware
  /// resources and statuses stay. What its construction throws passes through; the old one is then
  /// kept as it was.
  Mox::Ptr<VrfSm> vrfSmIs(const Mox::Ptr<VrfHwConfig>& vrfHwConfig,
                          const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
                          const Mox::Ptr<VrfHelper>& vrfHelper,
                          const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
                          const VrfSm::RouteStatusPtr& routingHwRouteStatus,
                          const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus);
  /// Takes the VRF state machine out, silenced; null when there was none.
  Mox::Ptr<VrfSm> vrfSmDel();

 private:
  ZEL_HIDDEN static void policySmDispatch(Velo::Publisher* publisher, Velo::Subscriber* subscriber,
                                          short attributeId, const void* key, const void* value);
  ZEL_HIDDEN void policySmSubscriptionIs(bool subscribed);

  // In the order of declaration that destruction reverses.
  Mox::Ptr<PolicyMap::PolicyMapAclHelper> policyHelper_;
  Mox::Ptr<PolicySmMounts> policySmMounts_;
  Mox::Ptr<VrfHelper> vrfHelper_;
  VrfSm::FallbackConfigPtr vrfFallbackConfig_;
  VrfSm::RouteStatusPtr routingHwRouteStatus_;
  VrfSm::RouteStatus6Ptr routing6HwRouteStatus_;
  Mox::Ptr<TrafficPolicy::ZelTrafficPolicySm> policySm_;
  Mox::Ptr<VrfSm> vrfSm_;
  Velo::MemberSubscriber<ZelVrfSelectionPolicySm> policySmSubscriber_;
};

/// A new top object, as `ZelVrfSelectionPolicySm::ZelVrfSelectionPolicySmIs` makes it.
[[nodiscard]] ZEL_EXPORT Mox::Ptr<ZelVrfSelectionPolicySm> zelVrfSelectionPolicySmFactory(
    const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
    const Mox::Ptr<PolicySmMounts>& policySmMounts, const Mox::Ptr<VrfHelper>& vrfHelper,
    const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
    const VrfSm::RouteStatusPtr& routingHwRouteStatus,
    const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus);

}  // namespace ZelVrfSelectionPolicy
