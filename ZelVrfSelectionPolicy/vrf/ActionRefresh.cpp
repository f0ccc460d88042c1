// How created resources are programmed anew, one by one or by the VRF that they name.

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"

namespace ZelVrfSelectionPolicy {

// An entry stands for a resource: if the action loses it while the chip is at work, the outcome
// is that of a resource which is gone, and is not stored.
void VrfSm::updateVrfAction(const VrfAction& vrfAction) {
  const Mox::Ptr<VrfSm> alive(this);
  const VrfAction action = vrfAction;
  const Mox::Ptr<VrfHwStatus> statuses = vrfHwStatus_;
  VrfHwStatus::EntryWatch entry(*statuses, action);
  vrfSmMessages.updating(action.vrfName().bytes());
  entry.hwStatusIs(vrfHelper_->updateVrf(action));
}

void VrfSm::updateAllVrfActions(L3::VrfName vrfName) {
  const Mox::Ptr<VrfSm> alive(this);
  vrfSmMessages.updatingAll(vrfName.bytes());
  VrfHwStatus::ActionsNaming actions(vrfHwStatus_, vrfName);
  while (actions.advance()) {
    if (resourceIsGoing(actions.action())) continue;
    vrfSmMessages.updatingOneOfAll(vrfName.bytes());
    actions.hwStatusIs(vrfHelper_->updateVrf(actions.action()));
  }
}

}  // namespace ZelVrfSelectionPolicy
