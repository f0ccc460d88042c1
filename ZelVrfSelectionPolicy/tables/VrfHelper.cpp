#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace ZelVrfSelectionPolicy {

VrfHelper::VrfHelper(
    const Velo::String& name,
    const Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const>& vrfFallbackConfig,
    const Mox::Ptr<Routing::Hardware::RouteStatus const>& routingHwRouteStatus,
    const Mox::Ptr<Routing6::Hardware::RouteStatus const>& routing6HwRouteStatus) noexcept
    : ZelBaseHelper(name),
      vrfFallbackConfig_(vrfFallbackConfig),
      routingHwRouteStatus_(routingHwRouteStatus),
      routing6HwRouteStatus_(routing6HwRouteStatus) {}

VrfHelper::~VrfHelper() = default;

}  // namespace ZelVrfSelectionPolicy
