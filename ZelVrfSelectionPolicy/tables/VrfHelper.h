#pragma once

#include "Mox/Ptr.h"
#include "Routing/Hardware/RouteStatus.h"
#include "Routing6/Hardware/RouteStatus.h"
#include "Velo/Export.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "Zel/ZelBaseHelper.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// The interface to a chip. Derive from it to implement VRF selection policy on a chip.
///
/// The VRF state machine calls the three hooks, on the agent's event-loop thread and synchronously;
/// the outcome is used at once, so a hook must not return before it knows it. For one action the
/// order is: one `createVrf`; any number of `updateVrf`; one `deleteVrf`; and again. An action
/// whose creation failed is still created in this sense: it is updated, and deleted, like any
/// other, and an update may well succeed where the creation did not. Creation is not retried.
///
/// A failure is data in the returned record, never an exception. Success is the default record:
/// "programmedInHw", "failureNone". A failure is "programmingFailure", with a `failureReason`
/// ("failureVrfResourceExhausted" when no resource is free, "failureVrfResourceAlloc" when the
/// allocation failed for another reason) and a `failureDescription` that an operator understands:
/// one line of printable UTF-8 of at most 1000 bytes. Names of VRFs are any bytes, so a description
/// that holds one must escape it, for example by `Mox::quoted`. The record is published as it is
/// returned.
///
/// What a hook programs depends on the action's fields and on facts about the VRFs that they name,
/// which the hook reads: their hardware VRF ids, prefix lengths in exact match, fallback VRFs and
/// the decapsulation flags. The three references below give access to them. When a fact changes,
/// `updateVrf` is called for every action that depends on it, possibly more than once and also when
/// nothing that matters to this chip changed, so an update must be idempotent: equal updates return
/// equal records, and allocate no further resource. After the call of `deleteVrf` the action is not
/// updated.
///
/// Deleting an action frees all that it holds, also if its creation or an update failed, and
/// touches no other. A resource that is free can be had by the next action that is created.
///
/// A hook may change the tables and the configuration that the library reacts to. What it changes
/// about another action is handled before the hook returns; what it changes about the count of the
/// action that is being created or deleted is handled when that is complete.
///
/// Hardware resources outlive the state machine that requested them: neither its destructor nor its
/// replacement calls a hook.
///
/// `testing/VrfHelperConformance.h` tests a chip against this contract.
///
///     class MyChip final : public VrfHelper { ... };
///     Mox::Ptr<VrfHelper> chip = Mox::makePtr<MyChip>(fallback, routes, routes6);
class ZEL_EXPORT VrfHelper : public Zel::ZelBaseHelper {
 public:
  static const Mox::Type moxType;
  static constexpr Mox::AttributeId vrfFallbackConfigAttribute = 386;
  static constexpr Mox::AttributeId routingHwRouteStatusAttribute = 387;
  static constexpr Mox::AttributeId routing6HwRouteStatusAttribute = 388;
  static constexpr Mox::AttributeId createVrfAttribute = 389;
  static constexpr Mox::AttributeId updateVrfAttribute = 390;
  static constexpr Mox::AttributeId deleteVrfAttribute = 391;

  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfHelper() override;

  /// Allocates and programs the hardware VRF resource for all fields of `action`, which has none.
  [[nodiscard]] virtual HwStatus createVrf(const VrfAction& action) = 0;
  /// Programs the existing resource of `action` again, with the present facts.
  [[nodiscard]] virtual HwStatus updateVrf(const VrfAction& action) = 0;
  /// Frees what `action` holds, if it holds anything. Also called for an action that was never
  /// created, before the process aborts.
  virtual void deleteVrf(const VrfAction& action) = 0;

  /// The configured fallback VRFs.
  [[nodiscard]] const Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const>&
  vrfFallbackConfig() const noexcept {
    return vrfFallbackConfig_;
  }
  /// The status of IPv4 routes and of VRFs in the hardware.
  [[nodiscard]] const Mox::Ptr<Routing::Hardware::RouteStatus const>& routingHwRouteStatus()
      const noexcept {
    return routingHwRouteStatus_;
  }
  /// The status of IPv6 routes in the hardware.
  [[nodiscard]] const Mox::Ptr<Routing6::Hardware::RouteStatus const>& routing6HwRouteStatus()
      const noexcept {
    return routing6HwRouteStatus_;
  }

 protected:
  VrfHelper(const Velo::String& name,
            const Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const>& vrfFallbackConfig,
            const Mox::Ptr<Routing::Hardware::RouteStatus const>& routingHwRouteStatus,
            const Mox::Ptr<Routing6::Hardware::RouteStatus const>& routing6HwRouteStatus) noexcept;

 private:
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const> vrfFallbackConfig_;
  Mox::Ptr<Routing::Hardware::RouteStatus const> routingHwRouteStatus_;
  Mox::Ptr<Routing6::Hardware::RouteStatus const> routing6HwRouteStatus_;
};

}  // namespace ZelVrfSelectionPolicy
