#include "Mox/AttributeTable.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Sm = VrfSm::VrfInstanceSm;

// The machine has a plain pointer to its owner.
Mox::Ptr<VrfSm> owner(const Sm& instance) {
  return Mox::Ptr<VrfSm>(instance.vrfSm());
}

constexpr Mox::Attribute attributes[] = {
    {130, "vrfSm", Mox::reference<&owner>()},
    {131, "vrfInstance", Mox::reference<&Sm::vrfInstance>()},
    {132, "vrfName", Mox::field<&Sm::vrfName>()},
    {133, "vrfInstanceName", Mox::field<&Sm::vrfInstanceName>()},
    {134, "handleVrfRemove", Mox::handler<&Sm::handleVrfRemove>()},
    {135, "handleVrfId", Mox::handler<&Sm::handleVrfId>()},
    {136, "handleInitialized", Mox::handler<&Sm::handleInitialized>()},
};

constexpr Mox::Reflection reflection{
    .attributes = attributes,
    .nameOf = &Mox::namedBy<&Sm::vrfInstanceName>,
};

}  // namespace

constinit const Mox::Type VrfSm::VrfInstanceSm::moxType{VrfSm::VrfInstanceSm::typeName,
                                                        &reflection};

const Mox::Type* VrfSm::VrfInstanceSm::fwkType() const {
  return &moxType;
}

}  // namespace ZelVrfSelectionPolicy
