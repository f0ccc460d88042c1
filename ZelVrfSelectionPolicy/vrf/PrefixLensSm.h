#pragma once

#include "Mox/NotifieeConst.h"
#include "Velo/Export.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

struct PrefixLensMessages;

/// Follows the prefix lengths in exact match of one VRF in one address family. When they are added,
/// changed or removed, it updates the actions that name the VRF. It does not read the lengths.
///
/// The machines of the two families differ only in their names, collections and messages.
class ZEL_EXPORT VrfSm::PrefixLensSm : public Mox::PtrInterface::NotifieeConst {
 public:
  /// Enters the state of pending deletion. Throws no exception.
  ~PrefixLensSm() override;
  void onAttribute(Mox::AttributeId attributeId, const void* key) override;
  /// Each change of the state updates the actions of the VRF and of its dependents.
  void moxDoZombieReactors(bool zombie) override;

  /// The machine that owns this one; null after its removal.
  [[nodiscard]] VrfSm* vrfSm() const noexcept { return vrfSm_; }
  void vrfSmIs(VrfSm* vrfSm) noexcept { vrfSm_ = vrfSm; }
  /// The followed prefix lengths.
  [[nodiscard]] PrefixLensPtr prefixLens() const noexcept {
    return PrefixLensPtr(notifierAs<Routing::Hardware::PrefixLensInExactMatch>());
  }

  /// Follows `notifier` if it is an entity of prefix lengths. Calls no handler.
  void notifierIs(const Mox::Ptr<Mox::PtrInterface const>& notifier);

  void handleInitialized();
  void handlePrefixLen();

 protected:
  /// Calls `handleInitialized`.
  ZEL_HIDDEN PrefixLensSm(const PrefixLensPtr& prefixLens, VrfSm* vrfSm,
                          const PrefixLensMessages& messages);

 private:
  [[nodiscard]] ZEL_HIDDEN Velo::String name() const noexcept;
  ZEL_HIDDEN void updateActions();

  VrfSm* vrfSm_;
  const PrefixLensMessages& messages_;
};

/// The machine of one VRF's IPv4 prefix lengths.
class ZEL_EXPORT VrfSm::NestedSm_VrfPrefixLensInExactMatch final
    : public PrefixLensSm,
      public Quarry::SlabAllocated<VrfSm::NestedSm_VrfPrefixLensInExactMatch> {
 public:
  static constexpr const char* typeName =
      "ZelVrfSelectionPolicy::VrfSm::NestedSm_VrfPrefixLensInExactMatch";
  NestedSm_VrfPrefixLensInExactMatch(const PrefixLensPtr& prefixLens, VrfSm* vrfSm);
};

/// The machine of one VRF's IPv6 prefix lengths.
class ZEL_EXPORT VrfSm::NestedSm_VrfPrefixLensInExactMatchV6 final
    : public PrefixLensSm,
      public Quarry::SlabAllocated<VrfSm::NestedSm_VrfPrefixLensInExactMatchV6> {
 public:
  static constexpr const char* typeName =
      "ZelVrfSelectionPolicy::VrfSm::NestedSm_VrfPrefixLensInExactMatchV6";
  NestedSm_VrfPrefixLensInExactMatchV6(const PrefixLensPtr& prefixLens, VrfSm* vrfSm);
};

}  // namespace ZelVrfSelectionPolicy
