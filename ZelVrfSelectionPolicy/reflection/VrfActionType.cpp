#include "Mox/AttributeTable.h"
#include "Mox/ValueTable.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {
namespace {

constexpr Mox::Attribute attributes[] = {
    {2, "vrfName", Mox::field<&VrfAction::vrfName>()},
    {3, "fallbackVrfName",
     Mox::field<&VrfAction::fallbackVrfName, &VrfAction::fallbackVrfNameIs>()},
    {4, "postDecapVrfName",
     Mox::field<&VrfAction::postDecapVrfName, &VrfAction::postDecapVrfNameIs>()},
    {5, "action", Mox::field<&VrfAction::action>()},
};

constexpr Mox::ValueOperations operations =
    Mox::recordOperations<VrfAction, L3::VrfName, PolicyMap::ActionType>();
constexpr Mox::Reflection reflection{.attributes = attributes, .value = &operations};

}  // namespace

constinit const Mox::Type VrfAction::moxType{"ZelVrfSelectionPolicy::VrfAction", &reflection};

}  // namespace ZelVrfSelectionPolicy
