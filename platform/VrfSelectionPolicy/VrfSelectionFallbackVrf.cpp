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
  fallbackVrf_.is(vrf, fallback);
}

L3::VrfName VrfSelectionFallbackVrf::fallbackVrfDel(const L3::VrfName& vrf) {
  L3::VrfName before = fallbackVrf(vrf);
  fallbackVrf_.del(vrf);
  return before;
}

void VrfSelectionFallbackVrf::fallbackVrfDelAll() {
  const Mox::Ptr<VrfSelectionFallbackVrf> alive(this);
  for (auto entry = fallbackVrf().iterator(); entry; ++entry)
    fallbackVrfDel(entry.key());
}

L3::VrfName VrfSelectionFallbackVrf::fallbackVrf(const L3::VrfName& vrf) const noexcept {
  const L3::VrfName* found = fallbackVrf().find(vrf);
  return found == nullptr ? L3::VrfName() : *found;
}

bool VrfSelectionFallbackVrf::fallbackVrfHas(const L3::VrfName& vrf) const noexcept {
  return fallbackVrf().has(vrf);
}

}  // namespace VrfSelectionPolicy
