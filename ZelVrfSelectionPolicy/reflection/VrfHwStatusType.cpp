#include "Mox/AttributeTable.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Table = VrfHwStatus;

constexpr Mox::Attribute attributes[] = {
    {Table::hwStatusAttribute, "hwStatus",
     Mox::collection<Table, Table::HwStatuses, &Table::hwStatus, &Table::hwStatusIs,
                     &Table::hwStatusDel>()},
};

constexpr Mox::Reflection reflection{
    .attributes = attributes,
    .create = &Mox::createdBy<&Table::VrfHwStatusIs>,
};

}  // namespace

constinit const Mox::Type VrfHwStatus::moxType{VrfHwStatus::typeName, &reflection};

const Mox::Type* VrfHwStatus::fwkType() const {
  return &moxType;
}

}  // namespace ZelVrfSelectionPolicy
