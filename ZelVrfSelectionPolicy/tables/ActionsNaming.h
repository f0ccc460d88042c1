#pragma once

#include "ZelVrfSelectionPolicy/tables/ActionsByVrf.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {

/// A walk over the actions of a status table that name a VRF in any field. It reads no other
/// entries. The table may change during the walk, and must outlive it. See `ActionsByVrf` for the
/// visited entries.
///
///     VrfHwStatus::ActionsNaming actions(statuses, "red");
///     while (actions.advance()) actions.hwStatusIs(outcomeOf(actions.action()));
class VrfHwStatus::ActionsNaming {
 public:
  ActionsNaming(VrfHwStatus& statuses, const L3::VrfName& vrfName) noexcept
      : statuses_(statuses), pin_(statuses.hwStatus_), walk_(*statuses.actionsByVrf_, vrfName) {}

  /// Advances to the next action. Returns false at the end.
  [[nodiscard]] bool advance() noexcept {
    at_ = walk_.next();
    if (at_ == HwStatuses::none) return false;
    action_ = &statuses_.hwStatus_.key(at_);
    return true;
  }
  /// The present action. The reference is valid during the walk, also if the entry is removed.
  [[nodiscard]] const VrfAction& action() const noexcept { return *action_; }
  /// Stores `status` for the present action, unless its entry was removed. As
  /// `VrfHwStatus::hwStatusIs`, without a search.
  void hwStatusIs(const HwStatus& status) {
    if (walk_.isThere()) statuses_.presentIs(at_, status);
  }

 private:
  VrfHwStatus& statuses_;
  HwStatuses::Pin pin_;
  ActionsByVrf::Walk walk_;
  HwStatuses::Position at_ = HwStatuses::none;
  const VrfAction* action_ = nullptr;  // at that position
};

}  // namespace ZelVrfSelectionPolicy
