#include <array>

#include "Acl/Config.h"
#include "Bost/TimerWheel.h"
#include "Classification/FieldSetConfig.h"
#include "Classification/UdfConfig.h"
#include "Ip/Config.h"
#include "Ip/Status.h"
#include "Ip6/Config.h"
#include "Ip6/Status.h"
#include "L3/VrfName.h"
#include "Lag/Input/Config.h"
#include "Mirroring/Config.h"
#include "Mox/AnyValue.h"
#include "Mox/Dir.h"
#include "PolicyMap/ActionType.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapStatusRequestDir.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "Routing/Hardware/RouteStatus.h"
#include "Routing6/Hardware/RouteStatus.h"
#include "Sflow/InterfaceCollector.h"
#include "TrafficPolicy/HwStatus.h"
#include "TrafficPolicy/Status.h"
#include "TrafficPolicy/TrafficPolicyConfig.h"
#include "TrafficPolicy/ZelTrafficPolicySm.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "Zel/NexthopConfig.h"
#include "Zel/NexthopGroupConfig.h"
#include "Zel/NexthopGroupStatus.h"
#include "Zel/NexthopStatus.h"
#include "Zel/ZelCommonSmData.h"

// The module of the platform: its value types, and all its entity types.

namespace {

constexpr const char* moduleName = "ZelPlatform";

class PlatformStart {
 public:
  PlatformStart() { Mox::moxModuleIs({moduleName, types_}); }
  PlatformStart(const PlatformStart&) = delete;
  PlatformStart& operator=(const PlatformStart&) = delete;
  ~PlatformStart() { Mox::moxModuleDel(moduleName); }

 private:
  // In alphabetical order, values first.
  static constexpr std::array types_{
      &Mox::boolType,
      &L3::VrfName::moxType,
      &Mox::entityPtrType,
      &Mox::constEntityPtrType,
      &PolicyMap::actionTypeType,
      &Mox::unsignedType,
      &Mox::stringType,
      &Acl::Config::moxType,
      &Bost::TimerWheel::moxType,
      &Classification::FieldSetConfig::moxType,
      &Classification::UdfConfig::moxType,
      &Ip6::Config::moxType,
      &Ip6::Status::moxType,
      &Ip::Config::moxType,
      &Ip::Status::moxType,
      &Lag::Input::Config::moxType,
      &Mirroring::Config::moxType,
      &Mox::Dir::moxType,
      &Mox::Entity::moxType,
      &PolicyMap::ClassMapTypeConfig::moxType,
      &PolicyMap::IntfConfig::moxType,
      &PolicyMap::PolicyMapAclHelper::moxType,
      &PolicyMap::PolicyMapStatusRequestDir::moxType,
      &PolicyMap::PolicyMapTypeConfig::moxType,
      &PolicyMap::PolicyMapTypeStatus::moxType,
      &Routing6::Hardware::RouteStatus::moxType,
      &Routing::Hardware::PrefixLensInExactMatch::moxType,
      &Routing::Hardware::RouteStatus::moxType,
      &Routing::Hardware::VrfStatus::moxType,
      &Sflow::InterfaceCollector::moxType,
      &TrafficPolicy::HwStatus::moxType,
      &TrafficPolicy::Status::moxType,
      &TrafficPolicy::TrafficPolicyConfig::moxType,
      &TrafficPolicy::ZelTrafficPolicySm::moxType,
      &VrfSelectionPolicy::VrfSelectionFallbackVrf::moxType,
      &Zel::NexthopConfig::moxType,
      &Zel::NexthopGroupConfig::moxType,
      &Zel::NexthopGroupStatus::moxType,
      &Zel::NexthopStatus::moxType,
      &Zel::ZelCommonSmData::moxType,
  };
};

const PlatformStart platformStart;

}  // namespace
