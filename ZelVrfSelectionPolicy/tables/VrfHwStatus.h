#pragma once

#include <memory>

#include "Mox/HashMap2018.h"
#include "Mox/Ptr.h"
#include "Quarry/Slab.h"
#include "Velo/Export.h"
#include "Velo/Publisher.h"
#include "Velo/ScopeStack.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// The last outcome of each VRF action that has a hardware VRF resource.
///
/// Only the VRF state machine writes it. An action has an entry exactly while its resource exists,
/// programmed or not. After each real change subscribers are notified of the key of the changed
/// entry. During the call they may change the table, and may release it.
///
///     if (statuses->hwStatusHas(action)) show(statuses->hwStatus(action));
class ZEL_EXPORT VrfHwStatus final : public Mox::PtrInterface,
                                     public Quarry::SlabAllocated<VrfHwStatus> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfHwStatus";
  static const Mox::Type moxType;
  /// Number of the attribute `hwStatus`, published with each change.
  static constexpr Mox::AttributeId hwStatusAttribute = 130;

  using HwStatuses = Mox::HashMap2018<VrfAction, HwStatus, 0x7b6bc380>;

  /// The change publisher's descriptor, of kind `publisher`.
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfHwStatus() override;

  /// A new empty table.
  [[nodiscard]] static Mox::Ptr<VrfHwStatus> VrfHwStatusIs();

  /// Stores `status` for `action`, and inserts it if absent.
  void hwStatusIs(const VrfAction& action, const HwStatus& status);
  /// Removes the entry and returns its status; a default one if absent.
  HwStatus hwStatusDel(const VrfAction& action);
  /// Removes every entry, and notifies subscribers of each.
  void hwStatusDelAll();

  /// The status of `action`; a default one if absent.
  [[nodiscard]] HwStatus hwStatus(const VrfAction& action) const noexcept;
  [[nodiscard]] bool hwStatusHas(const VrfAction& action) const noexcept;
  /// The collection, for reading and iteration.
  [[nodiscard]] const HwStatuses& hwStatus() const noexcept { return hwStatus_; }

  /// Subscribing does not change the table, so it needs no write access.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  friend class VrfResources;  // several may use one table, and share the state below
  class ActionsNaming;
  struct ResourceCall;
  using ResourceCalls = Velo::ScopeStack<ResourceCall>;

  ZEL_HIDDEN VrfHwStatus();
  void presentIs(HwStatuses::Position at, const HwStatus& status) {
    if (!(hwStatus_.value(at) == status)) changeTo(at, status);
  }
  ZEL_HIDDEN void changeTo(HwStatuses::Position at, const HwStatus& status);
  ZEL_HIDDEN void notify(HwStatuses::Position at, const HwStatus& status);

  HwStatuses hwStatus_;
  std::unique_ptr<class ActionsByVrf> actionsByVrf_;  // never null
  ResourceCalls calls_;                               // active hook calls
  mutable Velo::Publisher publisher_;
};

/// A new empty table of statuses.
[[nodiscard]] ZEL_EXPORT Mox::Ptr<VrfHwStatus> vrfHwStatusFactory();

}  // namespace ZelVrfSelectionPolicy
