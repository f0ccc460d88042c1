#pragma once

#include "L3/VrfName.h"
#include "Mox/HashMap2018.h"
#include "Mox/Ptr.h"
#include "Quarry/Slab.h"
#include "Velo/Export.h"

namespace ZelVrfSelectionPolicy {

/// The VRFs that fall back to one VRF.
///
/// The VRF state machine keeps one for each VRF that others fall back to, so that a change of that
/// VRF reaches them. Nobody is told of a change.
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

  /// The VRF that the others depend on.
  [[nodiscard]] const L3::VrfName& fallbackVrf() const noexcept { return fallbackVrf_; }

  /// Adds a dependent; nothing if it is there.
  void dependentVrfsIs(const L3::VrfName& vrfName);
  /// Removes a dependent; true when it was there.
  bool dependentVrfsDel(const L3::VrfName& vrfName);
  void dependentVrfsDelAll() noexcept;
  /// Whether `vrfName` is a dependent.
  [[nodiscard]] bool dependentVrfs(const L3::VrfName& vrfName) const noexcept;
  /// The whole set, to look at and walk over.
  [[nodiscard]] const DependentVrfs& dependentVrfs() const noexcept { return dependentVrfs_; }

 private:
  L3::VrfName fallbackVrf_;
  DependentVrfs dependentVrfs_;
};

}  // namespace ZelVrfSelectionPolicy
