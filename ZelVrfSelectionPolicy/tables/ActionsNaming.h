#pragma once

#include "ZelVrfSelectionPolicy/tables/ActionsByVrf.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {

/// A walk over the actions of a status table that name a VRF in any field. It looks at no others,
/// and survives any change of the table, which must outlive it. See `ActionsByVrf` for what it
/// visits.
///
///     VrfHwStatus::ActionsNaming actions(statuses, "red");
///     while (actions.advance()) actions.hwStatusIs(outcomeOf(actions.action()));
class VrfHwStatus::ActionsNaming {
 public:
  ActionsNaming(VrfHwStatus& statuses, const L3::VrfName& vrfName) noexcept
      : statuses_(statuses), pin_(statuses.hwStatus_), walk_(*statuses.actionsByVrf_, vrfName) {}

  /// Goes on to the next action; false at the end.
  [[nodiscard]] bool advance() noexcept {
    at_ = walk_.next();
    if (at_ == HwStatuses::none) return false;
    action_ = &statuses_.hwStatus_.key(at_);
    return true;
  }
  /// The action that it stands on, valid as long as the walk, whatever becomes of its entry.
  [[nodiscard]] const VrfAction& action() const noexcept { return *action_; }
  /// Stores `status` for it, unless its entry has been removed meanwhile. As
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
