#pragma once

#include "L3/VrfName.h"
#include "Mox/HashMap2018.h"
#include "Mox/Ptr.h"
#include "Quarry/Slab.h"
#include "Velo/Export.h"

namespace ZelVrfSelectionPolicy {

/// The VRFs that have one VRF as their fallback VRF.
///
/// The VRF state machine keeps one for each VRF that is a fallback VRF, so that it can update the
/// dependents of a changed VRF. A change of the set is not published.
class ZEL_EXPORT DependentVrfInfo final : public Mox::PtrInterface,
                                          public Quarry::SlabAllocated<DependentVrfInfo> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::DependentVrfInfo";
  static const Mox::Type moxType;
  static constexpr Mox::AttributeId fallbackVrfAttribute = 130;
  static constexpr Mox::AttributeId dependentVrfsAttribute = 131;

  using DependentVrfs = Mox::HashSet2018<L3::VrfName, 0x9e9099d6>;

  /// A record without dependents for the VRF `fallbackVrf`.
  explicit DependentVrfInfo(L3::VrfName fallbackVrf) noexcept;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~DependentVrfInfo() override;

  /// The fallback VRF of the dependents.
  [[nodiscard]] const L3::VrfName& fallbackVrf() const noexcept { return fallbackVrf_; }

  /// Adds a dependent unless it is present.
  void dependentVrfsIs(const L3::VrfName& vrfName);
  /// Removes a dependent. Returns whether it was present.
  bool dependentVrfsDel(const L3::VrfName& vrfName);
  void dependentVrfsDelAll() noexcept;
  /// Whether `vrfName` is a dependent.
  [[nodiscard]] bool dependentVrfs(const L3::VrfName& vrfName) const noexcept;
  /// The set, for reading and iteration.
  [[nodiscard]] const DependentVrfs& dependentVrfs() const noexcept { return dependentVrfs_; }

 private:
  L3::VrfName fallbackVrf_;
  DependentVrfs dependentVrfs_;
};

}  // namespace ZelVrfSelectionPolicy
