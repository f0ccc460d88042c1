// How the fallback configuration is followed. What was handled last for each VRF is kept, since
// the configuration holds only the new value and the old one has to be unlinked.

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"

namespace ZelVrfSelectionPolicy {

void VrfSm::makeRoomForFallback(Velo::Follower* follower, short /*attributeId*/, const void* key,
                                const void* value) {
  VrfSm& vrfSm = Velo::MemberFollower<VrfSm>::ownerOf(follower);
  if (vrfSm.isDeaf()) return;
  vrfSm.makeRoomForFallback(*static_cast<const L3::VrfName*>(key),
                            *static_cast<const L3::VrfName*>(value));
}

void VrfSm::makeRoomForFallback(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  if (!fallbackVrfInfo_.has(vrf)) fallbackVrfInfo_.makeRoom();
  if (const Mox::Ptr<DependentVrfInfo> present = dependentVrfInfo(fallback)) {
    present->makeRoom();
    return;
  }
  if (recordToCome_ && recordToCome_->fallbackVrf() == fallback) return;
  dependentVrfInfo_.makeRoom();
  Mox::Ptr<DependentVrfInfo> record = Mox::makeActivePtr<DependentVrfInfo>(fallback);
  record->makeRoom();
  recordToCome_ = std::move(record);
}

void VrfSm::handleVrfFallbackConfig(L3::VrfName vrf) {
  const Mox::Ptr<VrfSm> alive(this);
  if (vrfFallbackConfig_->fallbackVrfHas(vrf)) {
    makeRoomForFallback(vrf, vrfFallbackConfig_->fallbackVrf(vrf));
  }
  vrfSmMessages.fallbackChange(vrf.bytes());
  handleVrfUpdates(vrf, true);
  linkToFallback(vrf);
  recordToCome_ = nullptr;
}

void VrfSm::linkToFallback(const L3::VrfName& vrf) {
  const bool handled = fallbackVrfInfo_.has(vrf);
  const bool configured = vrfFallbackConfig_->fallbackVrfHas(vrf);
  const L3::VrfName before = fallbackVrfInfo(vrf);
  const L3::VrfName now = vrfFallbackConfig_->fallbackVrf(vrf);
  if (handled && configured && before == now) {
    vrfSmMessages.fallbackAlreadyHandled();
    return;
  }
  // The new link comes before the old one goes, so that the VRF is never missing from both.
  if (configured) dependencyIs(vrf, now);
  if (handled || !configured) dependencyDel(vrf, before);
  if (configured) {
    fallbackVrfInfoIs(vrf, now);
  } else {
    fallbackVrfInfoDel(vrf);
  }
}

void VrfSm::dependencyIs(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  if (fallback.isDefaultVrf()) return;
  dependentVrfInfoIs(fallback)->dependentVrfsIs(vrf);
}

void VrfSm::dependencyDel(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  const Mox::Ptr<DependentVrfInfo> record = dependentVrfInfo(fallback);
  if (!record) return;
  record->dependentVrfsDel(vrf);
  if (record->dependentVrfs().count() == 0) dependentVrfInfoDel(fallback);
}

void VrfSm::fallbackVrfInfoIs(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  const auto at = fallbackVrfInfo_.insert(vrf).first;
  fallbackVrfInfo_.value(at) = fallback;
}

L3::VrfName VrfSm::fallbackVrfInfoDel(const L3::VrfName& vrf) {
  const auto erased = fallbackVrfInfo_.erase(vrf);
  return erased ? erased->second : L3::VrfName();
}

void VrfSm::fallbackVrfInfoDelAll() noexcept {
  fallbackVrfInfo_.clear();
}

L3::VrfName VrfSm::fallbackVrfInfo(const L3::VrfName& vrf) const noexcept {
  const L3::VrfName* found = fallbackVrfInfo_.find(vrf);
  return found == nullptr ? L3::VrfName() : *found;
}

}  // namespace ZelVrfSelectionPolicy
