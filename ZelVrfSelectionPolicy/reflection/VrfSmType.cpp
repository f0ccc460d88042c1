#include "Mox/AttributeTable.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Sm = VrfSm;
using PrefixLensSms = Sm::PrefixLensSms<Sm::NestedSm_VrfPrefixLensInExactMatch>;
using PrefixLensSmsV6 = Sm::PrefixLensSms<Sm::NestedSm_VrfPrefixLensInExactMatchV6>;

// The nested machines are read-only. `vrfInstance` and `moxVrfInstance` are two views of the same
// collection. The handled fallback VRFs are data, which may be changed.
constexpr Mox::Attribute attributes[] = {
    {130, "vrfHwConfig", Mox::reference<&Sm::vrfHwConfig>()},
    {131, "vrfHwStatus", Mox::reference<&Sm::vrfHwStatus>()},
    {132, "vrfHelper", Mox::reference<&Sm::vrfHelper>()},
    {133, "vrfFallbackConfig", Mox::reference<&Sm::vrfFallbackConfig>()},
    {134, "routingHwRouteStatus", Mox::reference<&Sm::routingHwRouteStatus>()},
    {135, "routing6HwRouteStatus", Mox::reference<&Sm::routing6HwRouteStatus>()},
    {136, "fallbackVrfInfo",
     Mox::collection<Sm, Sm::FallbackVrfInfo, &Sm::fallbackVrfInfo, &Sm::fallbackVrfInfoIs,
                     &Sm::fallbackVrfInfoDel>()},
    {137, "dependentVrfInfo", Mox::collection<Sm, Sm::DependentVrfInfos, &Sm::dependentVrfInfo>()},
    {138, "handleVrfRefCountChange", Mox::handler<&Sm::handleVrfRefCountChange>()},
    {139, "updateAllVrfActions", Mox::handler<&Sm::updateAllVrfActions>()},
    {140, "updateVrfAction", Mox::handler<&Sm::updateVrfAction>()},
    {141, "handleVrfUpdates", Mox::handler<&Sm::handleVrfUpdates>()},
    {142, "handleVrfFallbackConfig", Mox::handler<&Sm::handleVrfFallbackConfig>()},
    {143, "vrfInstance", Mox::collection<Sm, Sm::VrfInstances, &Sm::moxVrfInstance>()},
    {144, "vrfPrefixLensInExactMatch",
     Mox::collection<Sm, PrefixLensSms, &Sm::vrfPrefixLensInExactMatch>()},
    {145, "vrfPrefixLensInExactMatchV6",
     Mox::collection<Sm, PrefixLensSmsV6, &Sm::vrfPrefixLensInExactMatchV6>()},
    {146, "handleDecapNhFallback", Mox::handler<&Sm::handleDecapNhFallback>()},
    {147, "handleDecapNh", Mox::handler<&Sm::handleDecapNh>()},
    {148, "handleInitialized", Mox::handler<&Sm::handleInitialized>()},
    {149, "moxVrfInstance", Mox::collection<Sm, Sm::VrfInstances, &Sm::moxVrfInstance>()},
};

constexpr Mox::Reflection reflection{
    .attributes = attributes,
    .create = &Mox::createdBy<&Sm::VrfSmIs>,
};

}  // namespace

constinit const Mox::Type VrfSm::moxType{VrfSm::typeName, &reflection};

const Mox::Type* VrfSm::fwkType() const {
  return &moxType;
}

}  // namespace ZelVrfSelectionPolicy
