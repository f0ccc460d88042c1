#include "Mox/AttributeTable.h"
#include "ZelVrfSelectionPolicy/tables/DependentVrfInfo.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Info = DependentVrfInfo;

constexpr Mox::Attribute attributes[] = {
    {Info::fallbackVrfAttribute, "fallbackVrf", Mox::field<&Info::fallbackVrf>()},
    {Info::dependentVrfsAttribute, "dependentVrfs",
     Mox::set<Info, Info::DependentVrfs, &Info::dependentVrfs, &Info::dependentVrfsIs,
              &Info::dependentVrfsDel>()},
};

constexpr Mox::Reflection reflection{
    .attributes = attributes,
    .nameOf = &Mox::namedBy<&Info::fallbackVrf>,
};

}  // namespace

constinit const Mox::Type DependentVrfInfo::moxType{DependentVrfInfo::typeName, &reflection};

const Mox::Type* DependentVrfInfo::fwkType() const {
  return &moxType;
}

}  // namespace ZelVrfSelectionPolicy
