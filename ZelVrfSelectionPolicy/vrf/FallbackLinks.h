#pragma once

#include "ZelVrfSelectionPolicy/vrf/VrfResources.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// Which VRFs fall back to which, as far as that was handled, and how a change of one VRF reaches
/// the actions of the others.
///
/// Always holds once the entry of a VRF was handled: if it falls back to X, and X is not the
/// default VRF, it is among the dependents of X. The configuration holds only the new value, so the
/// one that was handled last is kept, to remove the old link by.
class FallbackLinks {
 public:
  FallbackLinks(const VrfSm::FallbackConfigPtr& config, VrfResources& resources) noexcept
      : config_(config), resources_(resources) {}
  FallbackLinks(const FallbackLinks&) = delete;
  FallbackLinks& operator=(const FallbackLinks&) = delete;

  /// The fallback entry of `vrf` was added, changed or removed: updates what names `vrf`, and then
  /// moves its link.
  void handleChange(const L3::VrfName& vrf);
  /// Updates what names `vrf`, and what names the VRFs that fall back to it; unless its fallback
  /// configuration is what changed, also what names the VRFs that fall back to these.
  void propagate(const L3::VrfName& vrf, bool fallbackConfigChange);

  // As `VrfSm` has them.
  void fallbackVrfInfoIs(const L3::VrfName& vrf, const L3::VrfName& fallback);
  L3::VrfName fallbackVrfInfoDel(const L3::VrfName& vrf);
  void fallbackVrfInfoDelAll() { fallbackVrfInfo_.clear(); }
  [[nodiscard]] L3::VrfName fallbackVrfInfo(const L3::VrfName& vrf) const noexcept;
  [[nodiscard]] const VrfSm::FallbackVrfInfo& fallbackVrfInfo() const noexcept {
    return fallbackVrfInfo_;
  }
  Mox::Ptr<DependentVrfInfo> dependentVrfInfoIs(const L3::VrfName& vrfName);
  Mox::Ptr<DependentVrfInfo> dependentVrfInfoDel(const L3::VrfName& vrfName);
  void dependentVrfInfoDelAll() { dependentVrfInfo_.clear(); }
  [[nodiscard]] Mox::Ptr<DependentVrfInfo> dependentVrfInfo(
      const L3::VrfName& vrfName) const noexcept;
  [[nodiscard]] const VrfSm::DependentVrfInfos& dependentVrfInfo() const noexcept {
    return dependentVrfInfo_;
  }

 private:
  void moveLink(const L3::VrfName& vrf);
  void link(const L3::VrfName& vrf, const L3::VrfName& fallback);
  void unlink(const L3::VrfName& vrf, const L3::VrfName& fallback);

  const VrfSm::FallbackConfigPtr& config_;
  VrfResources& resources_;
  VrfSm::FallbackVrfInfo fallbackVrfInfo_;
  VrfSm::DependentVrfInfos dependentVrfInfo_;
};

}  // namespace ZelVrfSelectionPolicy
