#include "Mox/AttributeTable.h"
#include "ZelVrfSelectionPolicy/tables/PolicySmMounts.h"

namespace ZelVrfSelectionPolicy {
namespace {

using Mounts = PolicySmMounts;

constexpr Mox::Attribute attributes[] = {
    {130, "intfConfig", Mox::reference<&Mounts::intfConfig, &Mounts::intfConfigIs>()},
    {131, "policyConfig", Mox::reference<&Mounts::policyConfig, &Mounts::policyConfigIs>()},
    {132, "statusRequestDir",
     Mox::reference<&Mounts::statusRequestDir, &Mounts::statusRequestDirIs>()},
    {133, "policyStatus", Mox::reference<&Mounts::policyStatus, &Mounts::policyStatusIs>()},
    {134, "aclConfig", Mox::reference<&Mounts::aclConfig, &Mounts::aclConfigIs>()},
    {135, "lagInputConfig", Mox::reference<&Mounts::lagInputConfig, &Mounts::lagInputConfigIs>()},
    {136, "ipStatus", Mox::reference<&Mounts::ipStatus, &Mounts::ipStatusIs>()},
    {137, "ip6Status", Mox::reference<&Mounts::ip6Status, &Mounts::ip6StatusIs>()},
    {138, "routingVrfInfoDir",
     Mox::reference<&Mounts::routingVrfInfoDir, &Mounts::routingVrfInfoDirIs>()},
    {139, "routing6VrfInfoDir",
     Mox::reference<&Mounts::routing6VrfInfoDir, &Mounts::routing6VrfInfoDirIs>()},
    {140, "bgpNeighborConfigDir",
     Mox::reference<&Mounts::bgpNeighborConfigDir, &Mounts::bgpNeighborConfigDirIs>()},
    {141, "fieldSetConfig", Mox::reference<&Mounts::fieldSetConfig, &Mounts::fieldSetConfigIs>()},
};

constexpr Mox::Reflection reflection{
    .attributes = attributes,
    .create = &Mox::createdBy<&Mounts::PolicySmMountsIs>,
};

}  // namespace

constinit const Mox::Type PolicySmMounts::moxType{PolicySmMounts::typeName, &reflection};

const Mox::Type* PolicySmMounts::fwkType() const {
  return &moxType;
}

}  // namespace ZelVrfSelectionPolicy
