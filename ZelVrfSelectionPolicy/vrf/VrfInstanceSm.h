#pragma once

#include "Mox/NotifieeConst.h"
#include "Velo/Export.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// Follows one hardware VRF status, and has everything that names the VRF programmed again when the
/// VRF gets its hardware id, loses it, or goes away.
///
/// The default VRF's id, and an id that is not assigned yet, are not propagated; the end of a VRF
/// always is. A status that carries an id already when its machine is made is picked up when the
/// id changes later.
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
  /// Every change of state, into it and out of it, has the VRF's dependants programmed again.
  void moxDoZombieReactors(bool zombie) override;

  /// The machine that owns this one, null once it was removed.
  [[nodiscard]] VrfSm* vrfSm() const noexcept { return vrfSm_; }
  void vrfSmIs(VrfSm* vrfSm) noexcept { vrfSm_ = vrfSm; }
  /// The status that it watches.
  [[nodiscard]] VrfStatusPtr vrfInstance() const noexcept;
  /// The name of the watched VRF, empty when there is none.
  [[nodiscard]] L3::VrfName vrfName() const noexcept;
  [[nodiscard]] L3::VrfName vrfInstanceName() const noexcept { return vrfName(); }
  /// The key in the collection of its owner.
  [[nodiscard]] L3::VrfName fwkKey() const noexcept { return vrfName(); }

  /// Watches `notifier`, if it is a VRF status, from now on, and looks at its id at once.
  void notifierIs(const Mox::Ptr<Mox::PtrInterface const>& notifier);

  void handleInitialized();
  void handleVrfId();
  void handleVrfRemove();

 private:
  [[nodiscard]] ZEL_HIDDEN unsigned vrfId() const noexcept;
  ZEL_HIDDEN void updateWhatNamesIt();

  VrfSm* vrfSm_;
};

}  // namespace ZelVrfSelectionPolicy
