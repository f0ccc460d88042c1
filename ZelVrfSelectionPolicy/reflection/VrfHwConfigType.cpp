#include "Mox/AttributeTable.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Table = VrfHwConfig;

constexpr Mox::Attribute attributes[] = {
    {Table::vrfRefCountAttribute, "vrfRefCount",
     Mox::collection<Table, Table::VrfRefCounts, &Table::vrfRefCount, &Table::vrfRefCountIs,
                     &Table::vrfRefCountDel>()},
};

constexpr Mox::Reflection reflection{
    .attributes = attributes,
    .create = &Mox::createdBy<&Table::VrfHwConfigIs>,
};

}  // namespace

constinit const Mox::Type VrfHwConfig::moxType{VrfHwConfig::typeName, &reflection};

const Mox::Type* VrfHwConfig::fwkType() const {
  return &moxType;
}

}  // namespace ZelVrfSelectionPolicy
