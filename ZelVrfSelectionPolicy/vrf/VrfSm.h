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

/// Updates the hardware VRF resources and their statuses when an input changes.
///
/// It follows the users of actions (`VrfHwConfig`), and calls the chip (`VrfHelper`) to create a
/// resource for an action's first user and to delete it after the last. It follows hardware VRF
/// ids, prefix lengths, fallback VRFs and decapsulation flags. When one changes, it calls the chip
/// to update the actions that name the VRF, or a VRF that has it as fallback VRF. It stores every
/// outcome in `VrfHwStatus`.
///
/// Invariants: an action has a status entry exactly while its resource exists, that is from its
/// creation, successful or not, to its deletion. Creations and deletions of one action never nest:
/// a change of its count during one is handled afterwards.
///
/// The destructor calls no hook and writes no status: resources and entries stay, and a new machine
/// on the same tables uses them. Everything runs synchronously on the agent's event-loop thread. A
/// hook may change the tables and the configuration, and may release the machine: it is destroyed
/// after the handler that called the hook returns.
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

  /// Use `VrfSmIs`. Subscribes to the inputs, and handles their present contents. An exception of a
  /// handler is passed to the caller, and all subscriptions are removed.
  VrfSm(const Mox::Ptr<VrfHwConfig>& vrfHwConfig, const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
        const Mox::Ptr<VrfHelper>& vrfHelper, const FallbackConfigPtr& vrfFallbackConfig,
        const RouteStatusPtr& routingHwRouteStatus, const RouteStatus6Ptr& routing6HwRouteStatus);

  /// Subscribes or unsubscribes, and switches the nested machines. Missed changes are not handled
  /// later.
  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfSm() override;
  /// Enters or leaves the state of pending deletion, the nested machines first. The change of a
  /// nested machine updates the actions that name its VRF.
  virtual void moxDoZombieReactors(bool zombie);

  /// Creates a machine with its notifications on. `vrfFallbackConfig`, `vrfHwStatus` and
  /// `vrfHelper` must not be null. Without `vrfHwConfig` it follows no counts. Without a route
  /// status it does not follow the VRFs or prefix lengths of that family.
  [[nodiscard]] static Mox::Ptr<VrfSm> VrfSmIs(const Mox::Ptr<VrfHwConfig>& vrfHwConfig,
                                               const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
                                               const Mox::Ptr<VrfHelper>& vrfHelper,
                                               const FallbackConfigPtr& vrfFallbackConfig,
                                               const RouteStatusPtr& routingHwRouteStatus,
                                               const RouteStatus6Ptr& routing6HwRouteStatus);

  /// The constructor arguments.
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

  // Creation, update and deletion of resources. See `VrfHelper` for the hook calls.

  /// Creates or deletes the resource of `vrfAction` according to its count. Aborts the process if
  /// the count is above 1 without a resource, or if an action without a resource is deleted.
  void handleVrfRefCountChange(const VrfAction& vrfAction);
  /// Calls the chip to update the resource of `vrfAction`, and stores the outcome, also if the
  /// action had no status. Does nothing while the resource is being deleted.
  void updateVrfAction(const VrfAction& vrfAction);
  /// Updates every created action that names `vrfName` in any field. The empty name is a valid
  /// name.
  void updateAllVrfActions(L3::VrfName vrfName);
  /// Handle a change of a decapsulation flag of the IPv4 route status: update every created action.
  /// Without an IPv4 route status they abort the process.
  void handleDecapNh();
  void handleDecapNhFallback();

  // Fallback VRFs, and updates of dependent VRFs.

  /// Handles a change of a fact about `vrfName`: updates its actions and those of its dependents.
  /// Unless the change is one of the fallback configuration, it also updates the actions of the
  /// dependents of these. Does nothing while the machine is being destroyed.
  void handleVrfUpdates(L3::VrfName vrfName, bool fallbackConfigChange);
  /// Handles an added, changed or removed fallback entry of `vrf`.
  void handleVrfFallbackConfig(L3::VrfName vrf);
  /// Records `fallback` as the last handled fallback VRF of `vrf`.
  void fallbackVrfInfoIs(const L3::VrfName& vrf, const L3::VrfName& fallback);
  /// Removes the entry and returns its fallback VRF; the empty name if there was none.
  L3::VrfName fallbackVrfInfoDel(const L3::VrfName& vrf);
  void fallbackVrfInfoDelAll();
  /// The last handled fallback VRF of `vrf`; the empty name if there is none.
  [[nodiscard]] L3::VrfName fallbackVrfInfo(const L3::VrfName& vrf) const noexcept;
  [[nodiscard]] const FallbackVrfInfo& fallbackVrfInfo() const noexcept;
  /// Returns the record of the dependents of `vrfName`, and creates it if there is none.
  Mox::Ptr<DependentVrfInfo> dependentVrfInfoIs(const L3::VrfName& vrfName);
  /// Removes the record and returns it; null if there was none.
  Mox::Ptr<DependentVrfInfo> dependentVrfInfoDel(const L3::VrfName& vrfName);
  void dependentVrfInfoDelAll();
  /// The record of the dependents of `vrfName`, or null.
  [[nodiscard]] Mox::Ptr<DependentVrfInfo> dependentVrfInfo(
      const L3::VrfName& vrfName) const noexcept;
  [[nodiscard]] const DependentVrfInfos& dependentVrfInfo() const noexcept;

  // The nested machines that follow VRFs.

  /// Returns the machine that follows `vrfStatus`. Creates it, or changes its notifier, if needed.
  /// Throws `Mox::NullArgumentException` for null.
  Mox::Ptr<VrfInstanceSm> vrfInstanceIs(const VrfStatusPtr& vrfStatus);
  /// Removes the machine of that VRF, which updates the actions that name the VRF, and returns it;
  /// null if there was none.
  Mox::Ptr<VrfInstanceSm> vrfInstanceDel(const L3::VrfName& vrfName);
  void vrfInstanceDelAll();
  [[nodiscard]] bool moxVrfInstanceHas(const L3::VrfName& vrfName) const noexcept;
  [[nodiscard]] const VrfInstances& moxVrfInstance() const noexcept;

  /// Follows `prefixLens`, the lengths of one VRF. Throws `Mox::NullArgumentException` for null.
  void vrfPrefixLensInExactMatchIs(const PrefixLensPtr& prefixLens);
  /// Removes the machine of the VRF of that name, which updates the actions that name the VRF. Does
  /// nothing if there is none.
  void vrfPrefixLensInExactMatchDel(const Velo::String& name);
  void vrfPrefixLensInExactMatchDelAll();
  [[nodiscard]] const PrefixLensSms<NestedSm_VrfPrefixLensInExactMatch>& vrfPrefixLensInExactMatch()
      const noexcept;
  /// The same for IPv6.
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
  ZEL_HIDDEN void handlePresentState();
  ZEL_HIDDEN void tearDown() noexcept;
  [[nodiscard]] ZEL_HIDDEN bool decapNhFlag() const;

  // Destroyed in reverse order.
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

/// Calls `VrfSm::VrfSmIs`.
[[nodiscard]] ZEL_EXPORT Mox::Ptr<VrfSm> vrfSmFactory(
    const Mox::Ptr<VrfHwConfig>& vrfHwConfig, const Mox::Ptr<VrfHwStatus>& vrfHwStatus,
    const Mox::Ptr<VrfHelper>& vrfHelper, const VrfSm::FallbackConfigPtr& vrfFallbackConfig,
    const VrfSm::RouteStatusPtr& routingHwRouteStatus,
    const VrfSm::RouteStatus6Ptr& routing6HwRouteStatus);

}  // namespace ZelVrfSelectionPolicy
