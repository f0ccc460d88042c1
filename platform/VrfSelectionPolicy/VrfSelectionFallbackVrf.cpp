#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"

namespace VrfSelectionPolicy {

Mox::Ptr<VrfSelectionFallbackVrf> VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs() {
  return Mox::makeActivePtr<VrfSelectionFallbackVrf>();
}

VrfSelectionFallbackVrf::~VrfSelectionFallbackVrf() = default;

Velo::NotifieeListDescriptor VrfSelectionFallbackVrf::notifieeList() const {
  return publisher_.notifieeList(this);
}

const Mox::Type* VrfSelectionFallbackVrf::fwkType() const {
  return &moxType;
}

void VrfSelectionFallbackVrf::fallbackVrfIs(const L3::VrfName& vrf, const L3::VrfName& fallback) {
  const L3::VrfName key = vrf;
  const L3::VrfName value = fallback;
  const auto [at, inserted] = fallbackVrf_.insert(key, value);
  if (!inserted) {
    if (fallbackVrf_.value(at) == value) return;
    fallbackVrf_.value(at) = value;
  }
  publisher_.publish(fallbackVrfAttribute, &key, &value);
}

L3::VrfName VrfSelectionFallbackVrf::fallbackVrfDel(const L3::VrfName& vrf) {
  const auto erased = fallbackVrf_.erase(vrf);
  if (!erased) return {};
  publisher_.publish(fallbackVrfAttribute, &erased->first, nullptr);
  return erased->second;
}

void VrfSelectionFallbackVrf::fallbackVrfDelAll() {
  const Mox::Ptr<VrfSelectionFallbackVrf> alive(this);
  for (auto entry = fallbackVrf_.iterator(); entry; ++entry)
    fallbackVrfDel(entry.key());
}

L3::VrfName VrfSelectionFallbackVrf::fallbackVrf(const L3::VrfName& vrf) const noexcept {
  const L3::VrfName* found = fallbackVrf_.find(vrf);
  return found == nullptr ? L3::VrfName() : *found;
}

bool VrfSelectionFallbackVrf::fallbackVrfHas(const L3::VrfName& vrf) const noexcept {
  return fallbackVrf_.has(vrf);
}

}  // namespace VrfSelectionPolicy
