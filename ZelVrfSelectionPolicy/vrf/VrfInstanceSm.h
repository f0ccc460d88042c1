#pragma once

#include "Mox/NotifieeConst.h"
#include "Velo/Export.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// Follows one hardware VRF status. When the VRF gets or loses its hardware id, or is removed, it
/// updates the actions that name the VRF.
///
/// The id of the default VRF, and an id that is not assigned yet, cause no update. The removal of a
/// VRF always does. An id that the status has when the machine is created causes no update; later
/// changes do.
class ZEL_EXPORT VrfSm::VrfInstanceSm final : public Mox::PtrInterface::NotifieeConst,
                                              public Quarry::SlabAllocated<VrfSm::VrfInstanceSm> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfSm::VrfInstanceSm";
  static const Mox::Type moxType;

  /// Use `VrfSm::vrfInstanceIs`.
  VrfInstanceSm(const VrfStatusPtr& vrfStatus, VrfSm* vrfSm);
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfInstanceSm() override;
  void onAttribute(Mox::AttributeId attributeId, const void* key) override;
  /// Each change of the state updates the actions of the VRF and of its dependents.
  void moxDoZombieReactors(bool zombie) override;

  /// The machine that owns this one; null after its removal.
  [[nodiscard]] VrfSm* vrfSm() const noexcept { return vrfSm_; }
  void vrfSmIs(VrfSm* vrfSm) noexcept { vrfSm_ = vrfSm; }
  /// The followed status.
  [[nodiscard]] VrfStatusPtr vrfInstance() const noexcept;
  /// The name of the followed VRF; empty if there is none.
  [[nodiscard]] L3::VrfName vrfName() const noexcept;
  [[nodiscard]] L3::VrfName vrfInstanceName() const noexcept { return vrfName(); }
  /// The key in the collection of its owner.
  [[nodiscard]] L3::VrfName fwkKey() const noexcept { return vrfName(); }

  /// Follows `notifier` if it is a VRF status, and handles its id at once.
  void notifierIs(const Mox::Ptr<Mox::PtrInterface const>& notifier);

  void handleInitialized();
  void handleVrfId();
  void handleVrfRemove();

 private:
  [[nodiscard]] ZEL_HIDDEN unsigned vrfId() const noexcept;
  ZEL_HIDDEN void updateActions();

  VrfSm* vrfSm_;
};

}  // namespace ZelVrfSelectionPolicy
