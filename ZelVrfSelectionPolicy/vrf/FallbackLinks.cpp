#include "ZelVrfSelectionPolicy/vrf/FallbackLinks.h"

#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"

namespace ZelVrfSelectionPolicy {

void FallbackLinks::handleChange(const L3::VrfName& vrf) {
  vrfSmMessages.fallbackChange(vrf.bytes());
  propagate(vrf, true);
  moveLink(vrf);
}

void FallbackLinks::propagate(const L3::VrfName& vrf, bool fallbackConfigChange) {
  resources_.updateNaming(vrf);
  const Mox::Ptr<DependentVrfInfo> record = dependentVrfInfo(vrf);
  if (!record) return;
  for (auto dependent = record->dependentVrfs().iterator(); dependent; ++dependent) {
    const L3::VrfName name = dependent.key();
    vrfSmMessages.updatingDependent(name.bytes(), vrf.bytes());
    resources_.updateNaming(name);
    if (fallbackConfigChange) continue;
    const Mox::Ptr<DependentVrfInfo> ofDependent = dependentVrfInfo(name);
    if (!ofDependent) continue;
    for (auto second = ofDependent->dependentVrfs().iterator(); second; ++second) {
      const L3::VrfName nameOfSecond = second.key();
      resources_.updateNaming(nameOfSecond);
    }
  }
}

void FallbackLinks::moveLink(const L3::VrfName& vrf) {
  const L3::VrfName* const handled = fallbackVrfInfo_.find(vrf);
  const L3::VrfName* const configured = config_->fallbackVrf().find(vrf);
  if (handled != nullptr && configured != nullptr && *handled == *configured) {
    vrfSmMessages.fallbackAlreadyHandled();
    return;
  }
  // The new link is added before the old one is removed, so that the VRF always has one.
  if (configured != nullptr) link(vrf, *configured);
  if (handled != nullptr || configured == nullptr) {
    unlink(vrf, handled == nullptr ? L3::VrfName() : *handled);
  }
  if (configured != nullptr) {
    fallbackVrfInfoIs(vrf, *configured);
  } else {
    fallbackVrfInfoDel(vrf);
  }
}

void FallbackLinks::link(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  if (!fallback.isDefaultVrf()) dependentVrfInfoIs(fallback)->dependentVrfsIs(vrf);
}

void FallbackLinks::unlink(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  if (fallback.isDefaultVrf()) return;
  const Mox::Ptr<DependentVrfInfo> record = dependentVrfInfo(fallback);
  if (!record) return;
  record->dependentVrfsDel(vrf);
  if (record->dependentVrfs().count() == 0) dependentVrfInfoDel(fallback);
}

void FallbackLinks::fallbackVrfInfoIs(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  const auto at = fallbackVrfInfo_.insert(vrf).first;
  fallbackVrfInfo_.value(at) = fallback;
}

L3::VrfName FallbackLinks::fallbackVrfInfoDel(const L3::VrfName& vrf) {
  const auto erased = fallbackVrfInfo_.erase(vrf);
  return erased ? erased->second : L3::VrfName();
}

L3::VrfName FallbackLinks::fallbackVrfInfo(const L3::VrfName& vrf) const noexcept {
  const L3::VrfName* found = fallbackVrfInfo_.find(vrf);
  return found == nullptr ? L3::VrfName() : *found;
}

Mox::Ptr<DependentVrfInfo> FallbackLinks::dependentVrfInfoIs(const L3::VrfName& vrfName) {
  const auto [at, inserted] = dependentVrfInfo_.insert(vrfName);
  Mox::Ptr<DependentVrfInfo>& record = dependentVrfInfo_.value(at);
  if (inserted) record = Mox::makeActivePtr<DependentVrfInfo>(vrfName);
  return record;
}

Mox::Ptr<DependentVrfInfo> FallbackLinks::dependentVrfInfoDel(const L3::VrfName& vrfName) {
  auto erased = dependentVrfInfo_.erase(vrfName);
  return erased ? std::move(erased->second) : nullptr;
}

Mox::Ptr<DependentVrfInfo> FallbackLinks::dependentVrfInfo(
    const L3::VrfName& vrfName) const noexcept {
  const Mox::Ptr<DependentVrfInfo>* found = dependentVrfInfo_.find(vrfName);
  return found == nullptr ? nullptr : *found;
}

}  // namespace ZelVrfSelectionPolicy
