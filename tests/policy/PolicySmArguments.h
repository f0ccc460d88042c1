#pragma once

#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"

namespace ZelVrfSelectionPolicy::Testing {

/// An entity of its own, by the name of the argument that it is for.
template <class Held>
[[nodiscard]] Mox::Ptr<Held> anEntity(const char* name) {
  return Mox::makeActivePtr<Held>(name);
}

/// What `policySmIs` takes: a different object for each pointer, and no flag set. The helper is
/// null until a test gives one.
struct PolicySmArguments {
  Mox::Ptr<PolicyMap::IntfConfig> intfConfig = anEntity<PolicyMap::IntfConfig>("intfConfig");
  Mox::Ptr<PolicyMap::PolicyMapTypeConfig> policyConfig =
      anEntity<PolicyMap::PolicyMapTypeConfig>("policyConfig");
  Mox::Ptr<PolicyMap::ClassMapTypeConfig> classTypeConfig =
      anEntity<PolicyMap::ClassMapTypeConfig>("classTypeConfig");
  Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir> statusRequestDir =
      anEntity<PolicyMap::PolicyMapStatusRequestDir>("statusRequestDir");
  Mox::Ptr<PolicyMap::PolicyMapTypeStatus> status =
      anEntity<PolicyMap::PolicyMapTypeStatus>("status");
  Mox::Ptr<Acl::Config> aclConfig = anEntity<Acl::Config>("aclConfig");
  Mox::Ptr<Classification::FieldSetConfig> fieldSetConfig =
      anEntity<Classification::FieldSetConfig>("fieldSetConfig");
  Mox::Ptr<Lag::Input::Config> lagConfig = anEntity<Lag::Input::Config>("lagConfig");
  Mox::Ptr<Ip::Config> ipConfig = anEntity<Ip::Config>("ipConfig");
  Mox::Ptr<Ip6::Config> ip6Config = anEntity<Ip6::Config>("ip6Config");
  Mox::Ptr<Ip::Status> ipStatus = anEntity<Ip::Status>("ipStatus");
  Mox::Ptr<Ip6::Status> ip6Status = anEntity<Ip6::Status>("ip6Status");
  Mox::Ptr<Mox::Dir> routingVrfInfoDir = anEntity<Mox::Dir>("routingVrfInfoDir");
  Mox::Ptr<Mox::Dir> routing6VrfInfoDir = anEntity<Mox::Dir>("routing6VrfInfoDir");
  Mox::Ptr<PolicyMap::PolicyMapAclHelper> aclHelper;
  bool allowL2Intf = false;
  bool allowMgmtIntf = false;
  Mox::Ptr<Zel::NexthopConfig> nexthopConfig = anEntity<Zel::NexthopConfig>("nexthopConfig");
  Mox::Ptr<Zel::NexthopStatus> nexthopStatus = anEntity<Zel::NexthopStatus>("nexthopStatus");
  Mox::Ptr<Bost::TimerWheel> timerWheel = anEntity<Bost::TimerWheel>("timerWheel");
  Mox::Ptr<Zel::NexthopGroupConfig> nexthopGroupConfig =
      anEntity<Zel::NexthopGroupConfig>("nexthopGroupConfig");
  Mox::Ptr<Zel::NexthopGroupStatus> nexthopGroupStatus =
      anEntity<Zel::NexthopGroupStatus>("nexthopGroupStatus");
  Mox::Ptr<Mirroring::Config> mirroringHwConfig = anEntity<Mirroring::Config>("mirroringHwConfig");
  Mox::Ptr<Sflow::InterfaceCollector> sflowIntfCollector =
      anEntity<Sflow::InterfaceCollector>("sflowIntfCollector");
  Mox::Ptr<Classification::UdfConfig> udfConfig = anEntity<Classification::UdfConfig>("udfConfig");
  Mox::Ptr<Zel::ZelCommonSmData> zcsd = anEntity<Zel::ZelCommonSmData>("zcsd");
  Mox::Ptr<Mox::Dir> bgpNeighborConfigDir = anEntity<Mox::Dir>("bgpNeighborConfigDir");
  bool expandAllRulesByVrf = false;
  bool permitFragment = false;
  bool expandNeighborsWhenNonPresent = false;
  Mox::Ptr<TrafficPolicy::HwStatus> trafficPolicyHwStatus =
      anEntity<TrafficPolicy::HwStatus>("trafficPolicyHwStatus");

  /// Binds a traffic-policy machine on these arguments.
  Mox::Ptr<TrafficPolicy::ZelTrafficPolicySm> bindTo(ZelVrfSelectionPolicySm& top) const {
    return top.policySmIs(
        intfConfig, policyConfig, classTypeConfig, statusRequestDir, status, aclConfig,
        fieldSetConfig, lagConfig, ipConfig, ip6Config, ipStatus, ip6Status, routingVrfInfoDir,
        routing6VrfInfoDir, aclHelper, allowL2Intf, allowMgmtIntf, nexthopConfig, nexthopStatus,
        timerWheel, nexthopGroupConfig, nexthopGroupStatus, mirroringHwConfig, sflowIntfCollector,
        udfConfig, zcsd, bgpNeighborConfigDir, expandAllRulesByVrf, permitFragment,
        expandNeighborsWhenNonPresent, trafficPolicyHwStatus);
  }

  /// A traffic-policy machine of its own on these arguments.
  [[nodiscard]] Mox::Ptr<TrafficPolicy::ZelTrafficPolicySm> machine() const {
    constexpr bool compileOnly = false;
    return TrafficPolicy::ZelTrafficPolicySm::ZelTrafficPolicySmIs(
        intfConfig, policyConfig, classTypeConfig, statusRequestDir, status, aclConfig,
        fieldSetConfig, lagConfig, ipConfig, ip6Config, ipStatus, ip6Status, routingVrfInfoDir,
        routing6VrfInfoDir, aclHelper, allowL2Intf, allowMgmtIntf, compileOnly, nexthopConfig,
        nexthopStatus, timerWheel, nexthopGroupConfig, nexthopGroupStatus, mirroringHwConfig,
        sflowIntfCollector, udfConfig, zcsd, bgpNeighborConfigDir, expandAllRulesByVrf,
        permitFragment, expandNeighborsWhenNonPresent, trafficPolicyHwStatus);
  }

  /// What such a machine reports to have been built with.
  [[nodiscard]] TrafficPolicy::TrafficPolicyInputs inputs() const {
    TrafficPolicy::TrafficPolicyInputs inputs;
    inputs.intfConfig = intfConfig;
    inputs.policyConfig = policyConfig;
    inputs.classTypeConfig = classTypeConfig;
    inputs.statusRequestDir = statusRequestDir;
    inputs.status = status;
    inputs.aclConfig = aclConfig;
    inputs.fieldSetConfig = fieldSetConfig;
    inputs.lagConfig = lagConfig;
    inputs.ipConfig = ipConfig;
    inputs.ip6Config = ip6Config;
    inputs.ipStatus = ipStatus;
    inputs.ip6Status = ip6Status;
    inputs.routingVrfInfoDir = routingVrfInfoDir;
    inputs.routing6VrfInfoDir = routing6VrfInfoDir;
    inputs.aclHelper = aclHelper;
    inputs.allowMgmtIntf = allowMgmtIntf;
    inputs.nexthopConfig = nexthopConfig;
    inputs.nexthopStatus = nexthopStatus;
    inputs.timerWheel = timerWheel;
    inputs.nexthopGroupConfig = nexthopGroupConfig;
    inputs.nexthopGroupStatus = nexthopGroupStatus;
    inputs.mirroringHwConfig = mirroringHwConfig;
    inputs.sflowIntfCollector = sflowIntfCollector;
    inputs.udfConfig = udfConfig;
    inputs.zcsd = zcsd;
    inputs.bgpNeighborConfigDir = bgpNeighborConfigDir;
    inputs.expandAllRulesByVrf = expandAllRulesByVrf;
    inputs.permitFragment = permitFragment;
    inputs.expandNeighborsWhenNonPresent = expandNeighborsWhenNonPresent;
    inputs.trafficPolicyHwStatus = trafficPolicyHwStatus;
    inputs.compileOnly = false;
    return inputs;
  }
};

}  // namespace ZelVrfSelectionPolicy::Testing
