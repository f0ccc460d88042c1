#pragma once

#include "Mox/NotifieeConst.h"
#include "Velo/Export.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

struct PrefixLensMessages;

/// Follows the prefix lengths in exact match of one VRF in one address family, and has everything
/// that names the VRF programmed again when they come, change or go. It reads none of them: that
/// something happened is all it needs.
///
/// The machines of the two families differ in their names, collections and messages only.
class ZEL_EXPORT VrfSm::PrefixLensSm : public Mox::PtrInterface::NotifieeConst {
 public:
  /// Enters the state of pending deletion, unless it is there. Lets no exception out.
  ~PrefixLensSm() override;
  void onAttribute(Mox::AttributeId attributeId, const void* key) override;
  /// Every change of state, into it and out of it, has the VRF's dependants programmed again.
  void moxDoZombieReactors(bool zombie) override;

  /// The machine that owns this one, null once it was removed.
  [[nodiscard]] VrfSm* vrfSm() const noexcept { return vrfSm_; }
  void vrfSmIs(VrfSm* vrfSm) noexcept { vrfSm_ = vrfSm; }
  /// The prefix lengths that it watches.
  [[nodiscard]] PrefixLensPtr prefixLens() const noexcept {
    return PrefixLensPtr(notifierAs<Routing::Hardware::PrefixLensInExactMatch>());
  }

  /// Watches `notifier`, if it is an entity of prefix lengths, from now on. Runs no handler.
  void notifierIs(const Mox::Ptr<Mox::PtrInterface const>& notifier);

  void handleInitialized();
  void handlePrefixLen();

 protected:
  /// Runs `handleInitialized`.
  ZEL_HIDDEN PrefixLensSm(const PrefixLensPtr& prefixLens, VrfSm* vrfSm,
                          const PrefixLensMessages& messages);

 private:
  [[nodiscard]] ZEL_HIDDEN Velo::String name() const noexcept;
  ZEL_HIDDEN void updateWhatNamesIt();

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
