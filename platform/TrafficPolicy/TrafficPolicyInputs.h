#pragma once

#include "Acl/Config.h"
#include "Bost/TimerWheel.h"
#include "Classification/FieldSetConfig.h"
#include "Classification/UdfConfig.h"
#include "Ip/Config.h"
#include "Ip/Status.h"
#include "Ip6/Config.h"
#include "Ip6/Status.h"
#include "Lag/Input/Config.h"
#include "Mirroring/Config.h"
#include "Mox/Dir.h"
#include "Mox/Ptr.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapStatusRequestDir.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "Sflow/InterfaceCollector.h"
#include "TrafficPolicy/HwStatus.h"
#include "Zel/NexthopConfig.h"
#include "Zel/NexthopGroupConfig.h"
#include "Zel/NexthopGroupStatus.h"
#include "Zel/NexthopStatus.h"
#include "Zel/ZelCommonSmData.h"

namespace TrafficPolicy {

/// The constructor arguments of a traffic-policy state machine, which never change. Two of them are
/// equal if they have the same objects and the same flags.
///
/// These inputs, and `allowL2Intf` of the state machine, have an effect:
///
/// | Input             | Effect                                                                |
/// |-------------------|-----------------------------------------------------------------------|
/// | `intfConfig`      | the policy map of each interface                                      |
/// | `policyConfig`    | the rules of each policy map                                          |
/// | `classTypeConfig` | what each rule matches                                                |
/// | `fieldSetConfig`  | the prefixes of the sets that class maps name                         |
/// | `status`          | gets the status of each policy map and of each rule                   |
/// | `aclHelper`       | gets the rules                                                        |
/// | `allowL2Intf`     | serves interfaces that forward by MAC address                         |
/// | `allowMgmtIntf`   | serves management interfaces                                          |
/// | `compileOnly`     | programs nothing                                                      |
/// | `permitFragment`  | see below                                                             |
///
/// The machine holds and compares the other inputs, and reads nothing from them.
struct TrafficPolicyInputs {
  Mox::Ptr<PolicyMap::IntfConfig const> intfConfig;
  Mox::Ptr<PolicyMap::PolicyMapTypeConfig const> policyConfig;
  Mox::Ptr<PolicyMap::ClassMapTypeConfig const> classTypeConfig;
  Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir const> statusRequestDir;
  Mox::Ptr<PolicyMap::PolicyMapTypeStatus> status;
  Mox::Ptr<Acl::Config const> aclConfig;
  Mox::Ptr<Classification::FieldSetConfig const> fieldSetConfig;
  Mox::Ptr<Lag::Input::Config const> lagConfig;
  Mox::Ptr<Ip::Config const> ipConfig;
  Mox::Ptr<Ip6::Config const> ip6Config;
  Mox::Ptr<Ip::Status const> ipStatus;
  Mox::Ptr<Ip6::Status const> ip6Status;
  Mox::Ptr<Mox::Dir const> routingVrfInfoDir;
  Mox::Ptr<Mox::Dir const> routing6VrfInfoDir;
  Mox::Ptr<PolicyMap::PolicyMapAclHelper> aclHelper;
  /// Whether management interfaces are served.
  bool allowMgmtIntf = false;
  /// Whether policies are only compiled and checked, and not programmed.
  bool compileOnly = false;
  Mox::Ptr<Zel::NexthopConfig> nexthopConfig;
  Mox::Ptr<Zel::NexthopStatus const> nexthopStatus;
  Mox::Ptr<Bost::TimerWheel const> timerWheel;
  Mox::Ptr<Zel::NexthopGroupConfig> nexthopGroupConfig;
  Mox::Ptr<Zel::NexthopGroupStatus const> nexthopGroupStatus;
  Mox::Ptr<Mirroring::Config const> mirroringHwConfig;
  Mox::Ptr<Sflow::InterfaceCollector> sflowIntfCollector;
  Mox::Ptr<Classification::UdfConfig const> udfConfig;
  Mox::Ptr<Zel::ZelCommonSmData const> zcsd;
  Mox::Ptr<Mox::Dir const> bgpNeighborConfigDir;
  bool expandAllRulesByVrf = false;
  /// What a rule with ports or TCP flags does with fragments that are not the first, since these
  /// have neither. Without the flag such a rule matches none of them, so a rule never matches more
  /// than is written. With the flag such a rule matches those whose other fields match, unless its
  /// action is `discard`: the fragments of a permitted packet are permitted, and a discarded packet
  /// needs no discarded fragments, since it cannot be put together without the first one. Rules
  /// without ports and TCP flags match fragments in either case.
  bool permitFragment = false;
  bool expandNeighborsWhenNonPresent = false;
  Mox::Ptr<TrafficPolicy::HwStatus const> trafficPolicyHwStatus;

  bool operator==(const TrafficPolicyInputs&) const = default;
};

}  // namespace TrafficPolicy
