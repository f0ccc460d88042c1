#pragma once

#include "ZelVrfSelectionPolicy/vrf/VrfResources.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// The handled fallback VRF of each VRF, and the updates of the actions of dependent VRFs.
///
/// Invariant: if the handled fallback VRF of a VRF is X, and X is not the default VRF, the VRF is a
/// dependent of X. The configuration has only the new value, so the last handled value is kept, to
/// remove the old link.
class FallbackLinks {
 public:
  FallbackLinks(const VrfSm::FallbackConfigPtr& config, VrfResources& resources) noexcept
      : config_(config), resources_(resources) {}
  FallbackLinks(const FallbackLinks&) = delete;
  FallbackLinks& operator=(const FallbackLinks&) = delete;

  /// Handles an added, changed or removed fallback entry of `vrf`: updates the actions that name
  /// `vrf`, and then moves its link.
  void handleChange(const L3::VrfName& vrf);
  /// Updates the actions that name `vrf`, and those that name its dependents. Unless the change is
  /// one of the fallback configuration, it also updates the actions that name the dependents of
  /// these.
  void propagate(const L3::VrfName& vrf, bool fallbackConfigChange);

  /// The functions of `VrfSm` with the same names.
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
