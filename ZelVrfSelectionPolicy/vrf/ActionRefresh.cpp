// How created resources are programmed anew, one by one or by the VRF that they name.

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"

namespace ZelVrfSelectionPolicy {

// An entry stands for a resource: if the action loses it while the chip is at work, the outcome
// is that of a resource which is gone, and is not stored.
void VrfSm::programAnew(const VrfAction& vrfAction) {
  const Mox::Ptr<VrfHwStatus> statuses = vrfHwStatus_;
  const VrfHwStatus::EntryWatch entry(*statuses, vrfAction);
  const HwStatus outcome = vrfHelper_->updateVrf(vrfAction);
  if (!entry.wasRemoved()) statuses->hwStatusIs(vrfAction, outcome);
}

void VrfSm::updateVrfAction(const VrfAction& vrfAction) {
  const Mox::Ptr<VrfSm> alive(this);
  const VrfAction action = vrfAction;
  vrfSmMessages.updating(action.vrfName().bytes());
  programAnew(action);
}

void VrfSm::updateAllVrfActions(L3::VrfName vrfName) {
  const Mox::Ptr<VrfSm> alive(this);
  vrfSmMessages.updatingAll(vrfName.bytes());
  VrfHwStatus::ActionsNaming actions(vrfHwStatus_, vrfName);
  while (const auto action = actions.next()) {
    if (resourceIsGoing(*action)) continue;
    vrfSmMessages.updatingOneOfAll(vrfName.bytes());
    programAnew(*action);
  }
}

}  // namespace ZelVrfSelectionPolicy
