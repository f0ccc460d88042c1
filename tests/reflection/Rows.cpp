#include "Rows.h"

#include <algorithm>

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using L3::VrfName;
using Mox::AnyValue;
using Mox::Ptr;
using PolicyMap::ActionType;
using Kinds = std::vector<int>;

const Kinds read{0};
const Kinds readWrite{0, 1};
const Kinds look{0, 3, 4, 5};
const Kinds lookWriteDelete{0, 1, 2, 3, 4, 5};
const Kinds call{10};

const std::string library = "ZelVrfSelectionPolicy::";
const std::string fallbackPtr = "Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const>";
const std::string routesPtr = "Mox::Ptr<Routing::Hardware::RouteStatus const>";
const std::string routes6Ptr = "Mox::Ptr<Routing6::Hardware::RouteStatus const>";
const std::string names = "collection L3::VrfName -> ";
const std::string strings = "collection Velo::String -> ";

// What stands for one value, whatever the world.
template <class T>
Row::Values just(T value) {
  return [value](const World&) { return std::vector<AnyValue>{value}; };
}
const Row::Values anAction = [](const World& world) { return std::vector<AnyValue>{world.inRed}; };
const Row::Values aName = just(VrfName("red"));
const Row::Values aString = just(Velo::String("red"));

template <class Entity>
Row::Values just(Ptr<Entity> (*creator)(const Velo::String&)) {
  return [creator](const World&) { return std::vector<AnyValue>{creator("held")}; };
}

const Row::Values aNameAndAFlag = [](const World&) {
  return std::vector<AnyValue>{VrfName("red"), true};
};

std::string pointer(const std::string& entity) {
  return "Mox::Ptr<" + entity + ">";
}

std::vector<Row> rows() {
  std::vector<Row> all = {
      {"VrfAction", 2, "vrfName", "L3::VrfName", read},
      {"VrfAction", 3, "fallbackVrfName", "L3::VrfName", readWrite, Row::nothing, aName},
      {"VrfAction", 4, "postDecapVrfName", "L3::VrfName", readWrite, Row::nothing, aName},
      {"VrfAction", 5, "action", "PolicyMap::ActionType", read},

      {"HwStatus", 2, "status", library + "ProgrammingResult", readWrite, Row::nothing,
       just(ProgrammingResult::programmingFailure)},
      {"HwStatus", 3, "failureReason", library + "FailureCode", readWrite, Row::nothing,
       just(FailureCode::failureVrfResourceAlloc)},
      {"HwStatus", 4, "failureDescription", "Velo::String", readWrite, Row::nothing, aString},

      {"VrfHwConfig", 130, "vrfRefCount", "collection " + library + "VrfAction -> unsigned",
       lookWriteDelete, anAction, just(2U)},
      {"VrfHwStatus", 130, "hwStatus",
       "collection " + library + "VrfAction -> " + library + "HwStatus", lookWriteDelete, anAction,
       just(HwStatus())},

      {"DependentVrfInfo", 130, "fallbackVrf", "L3::VrfName", read},
      {"DependentVrfInfo", 131, "dependentVrfs", "set of L3::VrfName", lookWriteDelete, aName,
       just(true)},

      {"PolicySmMounts", 130, "intfConfig", pointer("PolicyMap::IntfConfig const"), readWrite,
       Row::nothing, just(&PolicyMap::IntfConfig::IntfConfigIs)},
      {"PolicySmMounts", 131, "policyConfig", pointer("TrafficPolicy::TrafficPolicyConfig const"),
       readWrite, Row::nothing, just(&TrafficPolicy::TrafficPolicyConfig::TrafficPolicyConfigIs)},
      {"PolicySmMounts", 132, "statusRequestDir", pointer("PolicyMap::PolicyMapStatusRequestDir"),
       readWrite, Row::nothing,
       just(&PolicyMap::PolicyMapStatusRequestDir::PolicyMapStatusRequestDirIs)},
      {"PolicySmMounts", 133, "policyStatus", pointer("TrafficPolicy::Status"), readWrite,
       Row::nothing, just(&TrafficPolicy::Status::StatusIs)},
      {"PolicySmMounts", 134, "aclConfig", pointer("Acl::Config const"), readWrite, Row::nothing,
       just(&Acl::Config::ConfigIs)},
      {"PolicySmMounts", 135, "lagInputConfig", pointer("Lag::Input::Config const"), readWrite,
       Row::nothing, just(&Lag::Input::Config::ConfigIs)},
      {"PolicySmMounts", 136, "ipStatus", pointer("Ip::Status const"), readWrite, Row::nothing,
       just(&Ip::Status::StatusIs)},
      {"PolicySmMounts", 137, "ip6Status", pointer("Ip6::Status const"), readWrite, Row::nothing,
       just(&Ip6::Status::StatusIs)},
      {"PolicySmMounts", 138, "routingVrfInfoDir", pointer("Mox::Dir const"), readWrite,
       Row::nothing, just(&Mox::Dir::DirIs)},
      {"PolicySmMounts", 139, "routing6VrfInfoDir", pointer("Mox::Dir const"), readWrite,
       Row::nothing, just(&Mox::Dir::DirIs)},
      {"PolicySmMounts", 140, "bgpNeighborConfigDir", pointer("Mox::Dir const"), readWrite,
       Row::nothing, just(&Mox::Dir::DirIs)},
      {"PolicySmMounts", 141, "fieldSetConfig", pointer("Classification::FieldSetConfig const"),
       readWrite, Row::nothing, just(&Classification::FieldSetConfig::FieldSetConfigIs)},

      {"VrfHelper", 386, "vrfFallbackConfig", fallbackPtr, read},
      {"VrfHelper", 387, "routingHwRouteStatus", routesPtr, read},
      {"VrfHelper", 388, "routing6HwRouteStatus", routes6Ptr, read},
      {"VrfHelper", 389, "createVrf", "hook(" + library + "VrfAction) -> " + library + "HwStatus",
       call, Row::nothing, anAction},
      {"VrfHelper", 390, "updateVrf", "hook(" + library + "VrfAction) -> " + library + "HwStatus",
       call, Row::nothing, anAction},
      {"VrfHelper", 391, "deleteVrf", "hook(" + library + "VrfAction) -> nothing", call,
       Row::nothing, anAction},

      {"ZelVrfSelectionPolicySm", 130, "policyHelper", pointer("PolicyMap::PolicyMapAclHelper"),
       read},
      {"ZelVrfSelectionPolicySm", 131, "policySmMounts", pointer(library + "PolicySmMounts"), read},
      {"ZelVrfSelectionPolicySm", 132, "vrfHelper", pointer(library + "VrfHelper"), read},
      {"ZelVrfSelectionPolicySm", 133, "vrfFallbackConfig", fallbackPtr, read},
      {"ZelVrfSelectionPolicySm", 134, "routingHwRouteStatus", routesPtr, read},
      {"ZelVrfSelectionPolicySm", 135, "routing6HwRouteStatus", routes6Ptr, read},
      {"ZelVrfSelectionPolicySm", 136, "handlePolicySmReady", "handler() -> nothing", call},
      {"ZelVrfSelectionPolicySm", 137, "policySm", pointer("TrafficPolicy::ZelTrafficPolicySm"),
       read},
      {"ZelVrfSelectionPolicySm", 138, "vrfSm", pointer(library + "VrfSm"), read},

      {"VrfSm", 130, "vrfHwConfig", pointer(library + "VrfHwConfig"), read},
      {"VrfSm", 131, "vrfHwStatus", pointer(library + "VrfHwStatus"), read},
      {"VrfSm", 132, "vrfHelper", pointer(library + "VrfHelper"), read},
      {"VrfSm", 133, "vrfFallbackConfig", fallbackPtr, read},
      {"VrfSm", 134, "routingHwRouteStatus", routesPtr, read},
      {"VrfSm", 135, "routing6HwRouteStatus", routes6Ptr, read},
      {"VrfSm", 136, "fallbackVrfInfo", names + "L3::VrfName", lookWriteDelete, aName,
       just(VrfName("green"))},
      {"VrfSm", 137, "dependentVrfInfo", names + pointer(library + "DependentVrfInfo"), look,
       aName},
      {"VrfSm", 138, "handleVrfRefCountChange", "handler(" + library + "VrfAction) -> nothing",
       call, Row::nothing, anAction},
      {"VrfSm", 139, "updateAllVrfActions", "handler(L3::VrfName) -> nothing", call, Row::nothing,
       aName},
      {"VrfSm", 140, "updateVrfAction", "handler(" + library + "VrfAction) -> nothing", call,
       Row::nothing, anAction},
      {"VrfSm", 141, "handleVrfUpdates", "handler(L3::VrfName, bool) -> nothing", call,
       Row::nothing, aNameAndAFlag},
      {"VrfSm", 142, "handleVrfFallbackConfig", "handler(L3::VrfName) -> nothing", call,
       Row::nothing, aName},
      {"VrfSm", 143, "vrfInstance", names + pointer(library + "VrfSm::VrfInstanceSm"), look, aName},
      {"VrfSm", 144, "vrfPrefixLensInExactMatch",
       strings + pointer(library + "VrfSm::NestedSm_VrfPrefixLensInExactMatch"), look, aString},
      {"VrfSm", 145, "vrfPrefixLensInExactMatchV6",
       strings + pointer(library + "VrfSm::NestedSm_VrfPrefixLensInExactMatchV6"), look, aString},
      {"VrfSm", 146, "handleDecapNhFallback", "handler() -> nothing", call},
      {"VrfSm", 147, "handleDecapNh", "handler() -> nothing", call},
      {"VrfSm", 148, "handleInitialized", "handler() -> nothing", call},
      {"VrfSm", 149, "moxVrfInstance", names + pointer(library + "VrfSm::VrfInstanceSm"), look,
       aName},

      {"VrfSm::VrfInstanceSm", 130, "vrfSm", pointer(library + "VrfSm"), read},
      {"VrfSm::VrfInstanceSm", 131, "vrfInstance", pointer("Routing::Hardware::VrfStatus const"),
       read},
      {"VrfSm::VrfInstanceSm", 132, "vrfName", "L3::VrfName", read},
      {"VrfSm::VrfInstanceSm", 133, "vrfInstanceName", "L3::VrfName", read},
      {"VrfSm::VrfInstanceSm", 134, "handleVrfRemove", "handler() -> nothing", call},
      {"VrfSm::VrfInstanceSm", 135, "handleVrfId", "handler() -> nothing", call},
      {"VrfSm::VrfInstanceSm", 136, "handleInitialized", "handler() -> nothing", call},
  };
  return all;
}

}  // namespace

bool Row::accepts(int operation) const {
  return std::find(operations.begin(), operations.end(), operation) != operations.end();
}

std::vector<Mox::AnyValue> Row::arguments(int operation, const World& world) const {
  std::vector<Mox::AnyValue> all;
  const bool takesKey = operation == 0 || operation == 1 || operation == 2 || operation == 5;
  const bool takesValue = operation == 1 || operation == 10;
  if (takesKey) all = key(world);
  if (takesValue) {
    for (const Mox::AnyValue& each : value(world))
      all.push_back(each);
  }
  return all;
}

const std::vector<Row>& everyRow() {
  static const std::vector<Row> all = rows();
  return all;
}

}  // namespace ZelVrfSelectionPolicy::Testing
