#include "Mox/AttributeTable.h"
#include "Mox/ValueTable.h"
#include "ZelVrfSelectionPolicy/reflection/EnumerationTypes.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"

namespace ZelVrfSelectionPolicy {
namespace {

constexpr Mox::Attribute attributes[] = {
    {2, "status", Mox::field<&HwStatus::status, &HwStatus::statusIs>()},
    {3, "failureReason", Mox::field<&HwStatus::failureReason, &HwStatus::failureReasonIs>()},
    {4, "failureDescription",
     Mox::field<&HwStatus::failureDescription, &HwStatus::failureDescriptionIs>()},
};

constexpr Mox::ValueOperations operations = Mox::recordOperations<HwStatus>();
constexpr Mox::Reflection reflection{.attributes = attributes, .value = &operations};

}  // namespace

constinit const Mox::Type HwStatus::moxType{"ZelVrfSelectionPolicy::HwStatus", &reflection};

}  // namespace ZelVrfSelectionPolicy
