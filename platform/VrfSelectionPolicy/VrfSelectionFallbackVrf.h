#pragma once

#include "L3/VrfName.h"
#include "Mox/Ptr.h"
#include "Mox/PublishedMap.h"
#include "Velo/Export.h"
#include "Velo/Publisher.h"

namespace VrfSelectionPolicy {

/// The configured fallback VRFs. If a lookup in a VRF finds no route, the lookup is repeated in its
/// fallback VRF. Subscribers are notified of each VRF whose fallback is added, changed or removed.
class ZEL_EXPORT VrfSelectionFallbackVrf final : public Mox::PtrInterface {
 public:
  static constexpr Mox::Type moxType{"VrfSelectionPolicy::VrfSelectionFallbackVrf"};
  static constexpr Mox::AttributeId fallbackVrfAttribute = 258;

  using PublishedFallbackVrfs = Mox::PublishedMap<L3::VrfName, L3::VrfName, 0x7f4a1b35>;
  using FallbackVrfs = PublishedFallbackVrfs::Map;

  [[nodiscard]] static Mox::Ptr<VrfSelectionFallbackVrf> VrfSelectionFallbackVrfIs();
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfSelectionFallbackVrf() override;

  /// Sets the fallback VRF of `vrf`.
  void fallbackVrfIs(const L3::VrfName& vrf, const L3::VrfName& fallback);
  /// Removes the entry of `vrf` and returns its fallback VRF; the empty name if there was none.
  L3::VrfName fallbackVrfDel(const L3::VrfName& vrf);
  void fallbackVrfDelAll();
  /// The fallback VRF of `vrf`; the empty name if it has none.
  [[nodiscard]] L3::VrfName fallbackVrf(const L3::VrfName& vrf) const noexcept;
  [[nodiscard]] bool fallbackVrfHas(const L3::VrfName& vrf) const noexcept;
  [[nodiscard]] const FallbackVrfs& fallbackVrf() const noexcept { return fallbackVrf_.map(); }

  /// Subscribing does not change the configuration, so it needs no write access.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  mutable Velo::Publisher publisher_;
  PublishedFallbackVrfs fallbackVrf_{publisher_, fallbackVrfAttribute};
};

}  // namespace VrfSelectionPolicy
