// Which VRFs depend on which, and how a change of one reaches the others.

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"

namespace ZelVrfSelectionPolicy {

Mox::Ptr<DependentVrfInfo> VrfSm::dependentVrfInfoIs(const L3::VrfName& vrfName) {
  if (Mox::Ptr<DependentVrfInfo> present = dependentVrfInfo(vrfName)) return present;
  const bool isMade = recordToCome_ && recordToCome_->fallbackVrf() == vrfName;
  Mox::Ptr<DependentVrfInfo> created =
      isMade ? std::move(recordToCome_) : Mox::makeActivePtr<DependentVrfInfo>(vrfName);
  dependentVrfInfo_.insert(vrfName, created);
  return created;
}

Mox::Ptr<DependentVrfInfo> VrfSm::dependentVrfInfoDel(const L3::VrfName& vrfName) {
  auto erased = dependentVrfInfo_.erase(vrfName);
  return erased ? std::move(erased->second) : nullptr;
}

void VrfSm::dependentVrfInfoDelAll() noexcept {
  dependentVrfInfo_.clear();
}

Mox::Ptr<DependentVrfInfo> VrfSm::dependentVrfInfo(const L3::VrfName& vrfName) const noexcept {
  const Mox::Ptr<DependentVrfInfo>* found = dependentVrfInfo_.find(vrfName);
  return found == nullptr ? nullptr : *found;
}

void VrfSm::handleVrfUpdates(L3::VrfName vrfName, bool fallbackConfigChange) {
  const Mox::Ptr<VrfSm> alive(this);
  updateAllVrfActions(vrfName);
  const Mox::Ptr<DependentVrfInfo> record = dependentVrfInfo(vrfName);
  if (!record) return;
  for (auto dependent = record->dependentVrfs().iterator(); dependent; ++dependent) {
    const L3::VrfName name = dependent.key();
    vrfSmMessages.updatingDependent(name.bytes(), vrfName.bytes());
    updateAllVrfActions(name);
    if (fallbackConfigChange) continue;
    const Mox::Ptr<DependentVrfInfo> ofDependent = dependentVrfInfo(name);
    if (!ofDependent) continue;
    for (auto second = ofDependent->dependentVrfs().iterator(); second; ++second) {
      updateAllVrfActions(second.key());
    }
  }
}

}  // namespace ZelVrfSelectionPolicy
