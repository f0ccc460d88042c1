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

/// The library's top object. The agent creates it.
///
/// It holds the inputs that both parts of the feature share, and owns two state machines: the
/// platform's traffic-policy state machine, which programs policies into classification hardware,
/// and `VrfSm`, which manages the hardware VRF resources that the policies use. The agent installs
/// and removes each of them, in any order. The destructor ends the traffic-policy state machine
/// first, so that no policy change reaches a partly destroyed `VrfSm`.
class ZEL_EXPORT ZelVrfSelectionPolicySm : public Mox::PtrInterface,
                                           public Quarry::SlabAllocated<ZelVrfSelectionPolicySm> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm";
  static const Mox::Type moxType;

  /// Use `ZelVrfSelectionPolicySmIs`, or derive. The constructor does not read the inputs.
  ZelVrfSelectionPolicySm(const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
                          const Mox::Ptr<PolicySmMounts>& policySmMounts,
                          const Mox::Ptr<VrfHelper>& vrfHelper,
                          const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
                          const VrfSm::RouteStatusPtr& routingHwRouteStatus,
                          const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus) noexcept;

  /// Switches the subscription to the readiness of `policySm`, and the notifications of `vrfSm`.
  /// Does not switch the notifications of `policySm`.
  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~ZelVrfSelectionPolicySm() override;
  virtual void moxDoZombieReactors(bool zombie);
  /// Called when the traffic-policy state machine was installed, or its readiness changed. It only
  /// traces; override it to act.
  virtual void handlePolicySmReady();

  /// A new object without state machines, with its notifications on.
  [[nodiscard]] static Mox::Ptr<ZelVrfSelectionPolicySm> ZelVrfSelectionPolicySmIs(
      const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
      const Mox::Ptr<PolicySmMounts>& policySmMounts, const Mox::Ptr<VrfHelper>& vrfHelper,
      const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
      const VrfSm::RouteStatusPtr& routingHwRouteStatus,
      const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus);

  /// The constructor arguments.
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

  /// The traffic-policy state machine; null if none is installed.
  [[nodiscard]] const Mox::Ptr<TrafficPolicy::ZelTrafficPolicySm>& policySm() const noexcept {
    return policySm_;
  }
  /// Returns the traffic-policy state machine for these objects and flags. That is the present one
  /// if it was created with them; `allowL2Intf` is then set on it. Otherwise it is a new one: it is
  /// complete before the notifications of the old one are switched off and the old one is released.
  /// An exception of the construction is passed to the caller. The old machine then continues, but
  /// its readiness is no longer followed.
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
  /// Removes the traffic-policy state machine, switches off its notifications and returns it; null
  /// if there was none. It is destroyed when its last reference is released.
  Mox::Ptr<TrafficPolicy::ZelTrafficPolicySm> policySmDel();

  /// The VRF state machine; null if none is installed.
  [[nodiscard]] const Mox::Ptr<VrfSm>& vrfSm() const noexcept { return vrfSm_; }
  /// Returns the VRF state machine for these objects. That is the present one if it was created
  /// with them. Otherwise it is a new one: it is complete before the notifications of the old one
  /// are switched off and the old one is released. Hardware resources and statuses stay. An
  /// exception of the construction is passed to the caller; the old machine is then unchanged.
  Mox::Ptr<VrfSm> vrfSmIs(const Mox::Ptr<VrfHwConfig>& vrfHwConfig,
                          const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
                          const Mox::Ptr<VrfHelper>& vrfHelper,
                          const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
                          const VrfSm::RouteStatusPtr& routingHwRouteStatus,
                          const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus);
  /// Removes the VRF state machine, switches off its notifications and returns it; null if there
  /// was none.
  Mox::Ptr<VrfSm> vrfSmDel();

 private:
  ZEL_HIDDEN static void policySmDispatch(Velo::Publisher* publisher, Velo::Subscriber* subscriber,
                                          short attributeId, const void* key, const void* value);
  ZEL_HIDDEN void policySmSubscriptionIs(bool subscribed);

  // Destroyed in reverse order of declaration.
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

/// Calls `ZelVrfSelectionPolicySm::ZelVrfSelectionPolicySmIs`.
[[nodiscard]] ZEL_EXPORT Mox::Ptr<ZelVrfSelectionPolicySm> zelVrfSelectionPolicySmFactory(
    const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& policyHelper,
    const Mox::Ptr<PolicySmMounts>& policySmMounts, const Mox::Ptr<VrfHelper>& vrfHelper,
    const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
    const VrfSm::RouteStatusPtr& routingHwRouteStatus,
    const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus);

}  // namespace ZelVrfSelectionPolicy
