#pragma once

#include <memory>

#include "L3/VrfName.h"
#include "Mox/HashMap2018.h"
#include "Mox/NotifieeConst.h"
#include "Mox/Ptr.h"
#include "Quarry/Slab.h"
#include "Routing/Hardware/RouteStatus.h"
#include "Routing6/Hardware/RouteStatus.h"
#include "Velo/Export.h"
#include "Velo/String.h"
#include "Velo/Subscriber.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "ZelVrfSelectionPolicy/tables/DependentVrfInfo.h"
#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {

class FallbackLinks;
class VrfResources;
class VrfWatches;

/// Keeps the hardware VRF resources and their statuses in step with what they depend on.
///
/// It follows the users of actions (`VrfHwConfig`) and calls the chip (`VrfHelper`) to create a
/// resource for an action's first user and to delete it after the last. It follows hardware VRF
/// ids, prefix lengths, fallback VRFs and decapsulation flags, and has the chip program again what
/// names the VRF concerned, or a VRF that falls back to it. Every outcome goes to `VrfHwStatus`.
///
/// Always holds: an action has a status entry exactly while its resource exists, that is from its
/// creation, successful or not, to its deletion. Creating or deleting the resource of one action
/// never nests: a change of its count that arrives meanwhile is handled when that is complete.
///
/// Destroying it calls no hook and writes no status: resources and entries stay, and a
/// replacement built on the same tables finds them. Everything runs synchronously on the agent's
/// event-loop thread. A hook may change the tables and the configuration, and may release the
/// machine itself: it lives on until the handler that called the hook returns.
class ZEL_EXPORT VrfSm final : public Mox::PtrInterface, public Quarry::SlabAllocated<VrfSm> {
 public:
  class VrfInstanceSm;
  class PrefixLensSm;
  class NestedSm_VrfPrefixLensInExactMatch;
  class NestedSm_VrfPrefixLensInExactMatchV6;

  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfSm";
  static const Mox::Type moxType;

  using FallbackConfigPtr = Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const>;
  using RouteStatusPtr = Mox::Ptr<Routing::Hardware::RouteStatus const>;
  using RouteStatus6Ptr = Mox::Ptr<Routing6::Hardware::RouteStatus const>;
  using VrfStatusPtr = Mox::Ptr<Routing::Hardware::VrfStatus const>;
  using PrefixLensPtr = Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch const>;

  using FallbackVrfInfo = Mox::HashMap2018<L3::VrfName, L3::VrfName, 0x2b7a5c93>;
  using DependentVrfInfos = Mox::HashMap2018<L3::VrfName, Mox::Ptr<DependentVrfInfo>, 0x64d1f80e>;
  using VrfInstances = Mox::HashMap2018<L3::VrfName, Mox::Ptr<VrfInstanceSm>, 0x5f0e93a1>;
  template <class Machine>
  using PrefixLensSms = Mox::HashMap2018<Velo::String, Mox::Ptr<Machine>, 0x38c6d4b7>;

  /// Use `VrfSmIs`. Takes the inputs, connects itself to them, and handles what they hold already.
  /// A handler's exception passes through, and nothing is left connected.
  VrfSm(const Mox::Ptr<VrfHwConfig>& vrfHwConfig, const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
        const Mox::Ptr<VrfHelper>& vrfHelper, const FallbackConfigPtr& vrfFallbackConfig,
        const RouteStatusPtr& routingHwRouteStatus, const RouteStatus6Ptr& routing6HwRouteStatus);

  /// Subscribes or unsubscribes, and switches everything nested. What was missed is not replayed.
  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfSm() override;
  /// Enters or leaves the state of pending deletion, nested machines first. Their own transition
  /// has the chip program again what names their VRF.
  virtual void moxDoZombieReactors(bool zombie);

  /// A new machine with its notifications on. `vrfFallbackConfig`, `vrfHwStatus` and `vrfHelper`
  /// must not be null; without `vrfHwConfig` it follows no counts, without a route status not the
  /// VRFs or prefix lengths of that family.
  [[nodiscard]] static Mox::Ptr<VrfSm> VrfSmIs(const Mox::Ptr<VrfHwConfig>& vrfHwConfig,
                                               const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
                                               const Mox::Ptr<VrfHelper>& vrfHelper,
                                               const FallbackConfigPtr& vrfFallbackConfig,
                                               const RouteStatusPtr& routingHwRouteStatus,
                                               const RouteStatus6Ptr& routing6HwRouteStatus);

  // What it was built with; a route status is null when it was given none.
  [[nodiscard]] const Mox::Ptr<VrfHwConfig>& vrfHwConfig() const noexcept { return vrfHwConfig_; }
  [[nodiscard]] const Mox::Ptr<VrfHwStatus>& vrfHwStatus() const noexcept { return vrfHwStatus_; }
  [[nodiscard]] const Mox::Ptr<VrfHelper>& vrfHelper() const noexcept { return vrfHelper_; }
  [[nodiscard]] const FallbackConfigPtr& vrfFallbackConfig() const noexcept {
    return vrfFallbackConfig_;
  }
  [[nodiscard]] RouteStatusPtr routingHwRouteStatus() const noexcept;
  [[nodiscard]] RouteStatus6Ptr routing6HwRouteStatus() const noexcept;

  /// Handles every configured fallback entry. Precondition: there is a fallback configuration.
  void handleInitialized();

  // The life and the refresh of resources; see `VrfHelper` for what the chip is called for.

  /// Brings the resource of `vrfAction` in line with its count. A count above 1 for an action
  /// without a resource, and the end of one that has none, stop the process.
  void handleVrfRefCountChange(const VrfAction& vrfAction);
  /// Has the chip program the resource of `vrfAction` again and stores the outcome, also when it
  /// had no status before. Does nothing while the resource is being deleted.
  void updateVrfAction(const VrfAction& vrfAction);
  /// The same for every created action that names `vrfName` in any field. The empty name is a name
  /// like any other.
  void updateAllVrfActions(L3::VrfName vrfName);
  /// One of the decapsulation flags of the IPv4 route status changed: updates every created action.
  /// Without an IPv4 route status they stop the process.
  void handleDecapNh();
  void handleDecapNhFallback();

  // Fallback VRFs, and whom a change of a VRF reaches through them.

  /// Something about `vrfName` has changed: updates its actions and those of the VRFs that fall
  /// back to it; and, unless it was its fallback configuration, those of the VRFs that fall back
  /// to these. Does nothing while the machine is being destroyed.
  void handleVrfUpdates(L3::VrfName vrfName, bool fallbackConfigChange);
  /// The fallback entry of `vrf` was added, changed or removed, or is to be looked at again.
  void handleVrfFallbackConfig(L3::VrfName vrf);
  /// Records `fallback` as the one last handled for `vrf`.
  void fallbackVrfInfoIs(const L3::VrfName& vrf, const L3::VrfName& fallback);
  /// Removes the entry and returns what it held; the empty name when there was none.
  L3::VrfName fallbackVrfInfoDel(const L3::VrfName& vrf);
  void fallbackVrfInfoDelAll();
  /// The fallback VRF last handled for `vrf`, the empty name when there is none.
  [[nodiscard]] L3::VrfName fallbackVrfInfo(const L3::VrfName& vrf) const noexcept;
  [[nodiscard]] const FallbackVrfInfo& fallbackVrfInfo() const noexcept;
  /// The record of the VRFs that fall back to `vrfName`, made if there is none.
  Mox::Ptr<DependentVrfInfo> dependentVrfInfoIs(const L3::VrfName& vrfName);
  /// Takes the record out and returns it; null when there was none.
  Mox::Ptr<DependentVrfInfo> dependentVrfInfoDel(const L3::VrfName& vrfName);
  void dependentVrfInfoDelAll();
  /// The record of the VRFs that fall back to `vrfName`, or null.
  [[nodiscard]] Mox::Ptr<DependentVrfInfo> dependentVrfInfo(
      const L3::VrfName& vrfName) const noexcept;
  [[nodiscard]] const DependentVrfInfos& dependentVrfInfo() const noexcept;

  // The nested machines that watch VRFs.

  /// The machine that follows `vrfStatus`, made or re-pointed if needed. Throws
  /// `Mox::NullArgumentException`.
  Mox::Ptr<VrfInstanceSm> vrfInstanceIs(const VrfStatusPtr& vrfStatus);
  /// Ends the machine of that VRF, which updates what names it, and returns the machine; null when
  /// there was none.
  Mox::Ptr<VrfInstanceSm> vrfInstanceDel(const L3::VrfName& vrfName);
  void vrfInstanceDelAll();
  [[nodiscard]] bool moxVrfInstanceHas(const L3::VrfName& vrfName) const noexcept;
  [[nodiscard]] const VrfInstances& moxVrfInstance() const noexcept;

  /// Follows `prefixLens`, the lengths of one VRF. Throws `Mox::NullArgumentException`.
  void vrfPrefixLensInExactMatchIs(const PrefixLensPtr& prefixLens);
  /// Ends the machine of the VRF of that name, which updates what names it; nothing if there is
  /// none.
  void vrfPrefixLensInExactMatchDel(const Velo::String& name);
  void vrfPrefixLensInExactMatchDelAll();
  [[nodiscard]] const PrefixLensSms<NestedSm_VrfPrefixLensInExactMatch>& vrfPrefixLensInExactMatch()
      const noexcept;
  // The same for IPv6.
  void vrfPrefixLensInExactMatchV6Is(const PrefixLensPtr& prefixLens);
  void vrfPrefixLensInExactMatchV6Del(const Velo::String& name);
  void vrfPrefixLensInExactMatchV6DelAll();
  [[nodiscard]] const PrefixLensSms<NestedSm_VrfPrefixLensInExactMatchV6>&
  vrfPrefixLensInExactMatchV6() const noexcept;

 private:
  class MoxRoutingHwRouteStatus;
  class MoxRouting6HwRouteStatus;

  ZEL_HIDDEN static void vrfHwConfigDispatch(Velo::Publisher* publisher,
                                             Velo::Subscriber* subscriber, short attributeId,
                                             const void* key, const void* value);
  ZEL_HIDDEN static void vrfFallbackConfigDispatch(Velo::Publisher* publisher,
                                                   Velo::Subscriber* subscriber, short attributeId,
                                                   const void* key, const void* value);
  ZEL_HIDDEN void mox_handleVrfFallbackConfig_fallbackVrf(L3::VrfName vrf);

  [[nodiscard]] bool ignoresChanges() const noexcept { return isZombie() || tearingDown_; }
  ZEL_HIDDEN void subscriptionsAre(bool subscribed);
  ZEL_HIDDEN void handleWhatIsThere();
  ZEL_HIDDEN void tearDown() noexcept;
  [[nodiscard]] ZEL_HIDDEN bool decapNhFlag() const;

  // In the order that destruction reverses.
  Mox::Ptr<VrfHwConfig> vrfHwConfig_;
  Mox::Ptr<VrfHwStatus> vrfHwStatus_;
  Mox::Ptr<VrfHelper> vrfHelper_;
  FallbackConfigPtr vrfFallbackConfig_;
  Mox::Ptr<MoxRoutingHwRouteStatus> routingReactor_;
  Mox::Ptr<MoxRouting6HwRouteStatus> routing6Reactor_;
  const std::unique_ptr<VrfResources> resources_;
  const std::unique_ptr<FallbackLinks> fallbackLinks_;
  const std::unique_ptr<VrfWatches> watches_;

  Velo::MemberSubscriber<VrfSm> vrfHwConfigSubscriber_;
  Velo::MemberSubscriber<VrfSm> vrfFallbackConfigSubscriber_;
  bool tearingDown_ = false;
};

/// A new VRF state machine, as `VrfSm::VrfSmIs` makes it.
[[nodiscard]] ZEL_EXPORT Mox::Ptr<VrfSm> vrfSmFactory(
    const Mox::Ptr<VrfHwConfig>& vrfHwConfig, const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
    const Mox::Ptr<VrfHelper>& vrfHelper, const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
    const VrfSm::RouteStatusPtr& routingHwRouteStatus,
    const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus);

}  // namespace ZelVrfSelectionPolicy
