#include "ZelVrfSelectionPolicy/vrf/VrfWatches.h"

namespace ZelVrfSelectionPolicy {

Mox::Ptr<VrfSm::VrfInstanceSm> VrfWatches::instanceIs(const VrfSm::VrfStatusPtr& vrfStatus) {
  if (!vrfStatus) throw Mox::NullArgumentException("vrfInstance");
  const L3::VrfName name = vrfStatus->name();
  Mox::Ptr<VrfSm::VrfInstanceSm> instance;
  if (const auto* present = instances_.find(name)) {
    instance = *present;
    instance->notifierIs(vrfStatus);
  } else {
    instance = Mox::makePtr<VrfSm::VrfInstanceSm>(vrfStatus, &owner_);
    const bool isFirst = instances_.insert(name, instance).second;
    if (!isFirst) return instanceIs(vrfStatus);  // a trace sink has added the VRF
  }
  // Not if the change of the notifier has removed it.
  if (instance->vrfSm() != nullptr) instance->moxDoZombieReactors(owner_.isZombie());
  return instance;
}

Mox::Ptr<VrfSm::VrfInstanceSm> VrfWatches::instanceDel(const L3::VrfName& vrfName) {
  const auto erased = instances_.erase(vrfName);
  if (!erased) return nullptr;
  endRemoved(*erased->second);
  return erased->second;
}

void VrfWatches::instanceDelAll() {
  for (auto entry = instances_.iterator(); entry; ++entry) {
    const L3::VrfName name = entry.key();
    instanceDel(name);
  }
}

}  // namespace ZelVrfSelectionPolicy
