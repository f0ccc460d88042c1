#pragma once

#include <string>
#include <string_view>

#include "Mox/ReflectiveAccess.h"
#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "testing/Journal.h"
#include "testing/RecordingVrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing {

/// One object of every registered type, wired as in an agent: a VRF "red" with the hardware id 7,
/// prefix lengths in both families and the fallback "blue"; one action that looks up in it, with
/// one user and a resource; and the machines that follow all that. The chip writes into `journal`.
class World {
 public:
  World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World();

  /// The object of the type of that name. Precondition: the type is one of entities or records.
  [[nodiscard]] Mox::Object object(std::string_view typeName);

  /// "look up in red".
  const VrfAction inRed{"red", PolicyMap::ActionType::vrf};

  Journal journal;
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback;
  Mox::Ptr<Routing::Hardware::RouteStatus> routes;
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6;
  Mox::Ptr<VrfHwConfig> users = vrfHwConfigFactory();
  Mox::Ptr<VrfHwStatus> statuses = vrfHwStatusFactory();
  Mox::Ptr<PolicySmMounts> mounts = policySmMountsFactory();
  Mox::Ptr<PolicyMap::PolicyMapAclHelper> policyHelper;
  Mox::Ptr<RecordingVrfHelper> chip;
  Mox::Ptr<ZelVrfSelectionPolicySm> top;
  Mox::Ptr<VrfSm> vrfSm;
  Mox::Ptr<VrfSm::VrfInstanceSm> instance;
  /// The VRFs that fall back to blue: red.
  Mox::Ptr<DependentVrfInfo> dependents;

  Mox::AnyValue action = inRed;
  Mox::AnyValue status = HwStatus();
};

/// The registered type of that name within the library's namespace.
[[nodiscard]] const Mox::Type& typeNamed(std::string_view name);

/// What the exception of that kind that `call` throws says; what came instead if it was another.
template <class Exception, class Call>
std::string refusal(Call call) {
  try {
    call();
  } catch (const Exception& error) {
    return error.what();
  } catch (const std::exception& other) {
    return std::string("another exception: ") + other.what();
  }
  return "no exception";
}

}  // namespace ZelVrfSelectionPolicy::Testing
