#include "Mox/AttributeTable.h"
#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Helper = VrfHelper;

constexpr Mox::Attribute attributes[] = {
    {Helper::vrfFallbackConfigAttribute, "vrfFallbackConfig",
     Mox::reference<&Helper::vrfFallbackConfig>()},
    {Helper::routingHwRouteStatusAttribute, "routingHwRouteStatus",
     Mox::reference<&Helper::routingHwRouteStatus>()},
    {Helper::routing6HwRouteStatusAttribute, "routing6HwRouteStatus",
     Mox::reference<&Helper::routing6HwRouteStatus>()},
    {Helper::createVrfAttribute, "createVrf", Mox::hook<&Helper::createVrf>()},
    {Helper::updateVrfAttribute, "updateVrf", Mox::hook<&Helper::updateVrf>()},
    {Helper::deleteVrfAttribute, "deleteVrf", Mox::hook<&Helper::deleteVrf>()},
};

constexpr Mox::Reflection reflection{.attributes = attributes};

}  // namespace

constinit const Mox::Type VrfHelper::moxType{"ZelVrfSelectionPolicy::VrfHelper", &reflection};

const Mox::Type* VrfHelper::fwkType() const {
  return &moxType;
}

}  // namespace ZelVrfSelectionPolicy
