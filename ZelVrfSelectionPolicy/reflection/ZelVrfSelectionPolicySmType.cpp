#include "Mox/AttributeTable.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Sm = ZelVrfSelectionPolicySm;

constexpr Mox::Attribute attributes[] = {
    {130, "policyHelper", Mox::reference<&Sm::policyHelper>()},
    {131, "policySmMounts", Mox::reference<&Sm::policySmMounts>()},
    {132, "vrfHelper", Mox::reference<&Sm::vrfHelper>()},
    {133, "vrfFallbackConfig", Mox::reference<&Sm::vrfFallbackConfig>()},
    {134, "routingHwRouteStatus", Mox::reference<&Sm::routingHwRouteStatus>()},
    {135, "routing6HwRouteStatus", Mox::reference<&Sm::routing6HwRouteStatus>()},
    {136, "handlePolicySmReady", Mox::handler<&Sm::handlePolicySmReady>()},
    {137, "policySm", Mox::reference<&Sm::policySm>()},
    {138, "vrfSm", Mox::reference<&Sm::vrfSm>()},
};

constexpr Mox::Reflection reflection{
    .attributes = attributes,
    .create = &Mox::createdBy<&Sm::ZelVrfSelectionPolicySmIs>,
};

}  // namespace

constinit const Mox::Type ZelVrfSelectionPolicySm::moxType{ZelVrfSelectionPolicySm::typeName,
                                                           &reflection};

const Mox::Type* ZelVrfSelectionPolicySm::fwkType() const {
  return &moxType;
}

}  // namespace ZelVrfSelectionPolicy
