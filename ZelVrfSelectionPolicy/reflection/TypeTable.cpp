#include "ZelVrfSelectionPolicy/reflection/TypeTable.h"

#include <array>

#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"
#include "ZelVrfSelectionPolicy/reflection/EnumerationTypes.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

namespace ZelVrfSelectionPolicy {
namespace {

constexpr std::array types{
    &ZelVrfSelectionPolicySm::moxType,
    &DependentVrfInfo::moxType,
    &failureCodeType,
    &HwStatus::moxType,
    &PolicySmMounts::moxType,
    &programmingResultType,
    &VrfAction::moxType,
    &VrfHelper::moxType,
    &VrfHwConfig::moxType,
    &VrfHwStatus::moxType,
    &VrfSm::moxType,
    &VrfSm::VrfInstanceSm::moxType,
};

constexpr std::array valueTypes{
    &L3::VrfName::moxType,
    &PolicyMap::actionTypeType,
    &Mox::stringType,
    &Mox::unsignedType,
};

}  // namespace

std::span<const Mox::Type* const> typeTable() noexcept {
  return types;
}

std::span<const Mox::Type* const> platformValueTypes() noexcept {
  return valueTypes;
}

}  // namespace ZelVrfSelectionPolicy
