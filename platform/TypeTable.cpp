#include <array>

#include "Acl/Config.h"
#include "Classification/FieldSetConfig.h"
#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "L3/VrfName.h"
#include "Lag/Input/Config.h"
#include "Mox/AnyValue.h"
#include "Mox/Dir.h"
#include "PolicyMap/ActionType.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapStatusRequestDir.h"
#include "Routing/Hardware/RouteStatus.h"
#include "Routing6/Hardware/RouteStatus.h"
#include "TrafficPolicy/Status.h"
#include "TrafficPolicy/TrafficPolicyConfig.h"
#include "TrafficPolicy/ZelTrafficPolicySm.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"

// The platform's own module: the types that attributes of other modules refer to.

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
      &Classification::FieldSetConfig::moxType,
      &Ip::Status::moxType,
      &Ip6::Status::moxType,
      &Lag::Input::Config::moxType,
      &Mox::Dir::moxType,
      &Mox::Entity::moxType,
      &PolicyMap::IntfConfig::moxType,
      &PolicyMap::PolicyMapAclHelper::moxType,
      &PolicyMap::PolicyMapStatusRequestDir::moxType,
      &Routing::Hardware::PrefixLensInExactMatch::moxType,
      &Routing::Hardware::RouteStatus::moxType,
      &Routing::Hardware::VrfStatus::moxType,
      &Routing6::Hardware::RouteStatus::moxType,
      &TrafficPolicy::Status::moxType,
      &TrafficPolicy::TrafficPolicyConfig::moxType,
      &TrafficPolicy::ZelTrafficPolicySm::moxType,
      &VrfSelectionPolicy::VrfSelectionFallbackVrf::moxType,
  };
};

const PlatformStart platformStart;

}  // namespace
