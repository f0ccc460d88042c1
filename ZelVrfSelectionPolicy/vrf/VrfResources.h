#pragma once

#include "Mox/Ptr.h"
#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {

/// The hardware VRF resources of the actions: their life, by the counts of users, and their
/// refresh. The last stop before the chip: every call of a hook is made here, and its outcome
/// stored.
///
/// Always holds: an action has a status entry exactly while its resource exists. Creations and
/// deletions of one action never nest: a count that changes meanwhile is handled when that is
/// complete. From the call of `deleteVrf` on the action is not updated. Several state machines on
/// the same tables keep this among them.
///
/// A hook may release the state machine. Whoever calls these functions holds it meanwhile.
class VrfResources {
 public:
  /// The references are those that the state machine holds, and may be null until they are needed.
  VrfResources(const Mox::Ptr<VrfHwConfig>& users, const Mox::Ptr<VrfHwStatus>& statuses,
               const Mox::Ptr<VrfHelper>& helper) noexcept
      : users_(users), statuses_(statuses), helper_(helper) {}
  VrfResources(const VrfResources&) = delete;
  VrfResources& operator=(const VrfResources&) = delete;

  /// Brings the resource of `action`, which must live throughout the call, in line with its count.
  /// Stops the process for a count above 1 without a resource, and for the end of an action that
  /// has none.
  void handleRefCountChange(const VrfAction& action);

  /// Has the chip program the resource of `vrfAction` again and stores the outcome, also when the
  /// action had no status before.
  void update(const VrfAction& vrfAction);
  /// Does so for every created action that names `vrfName` in any field.
  void updateNaming(const L3::VrfName& vrfName);
  /// Does so for every created action, after a call of `announce` with it.
  void updateAll(void (*announce)(const VrfAction& action));

 private:
  using ResourceCall = VrfHwStatus::ResourceCall;
  using Calls = VrfHwStatus::ResourceCalls;

  void create(const VrfAction& action);
  void remove(const VrfAction& action);
  void program(const VrfAction& action);
  [[nodiscard]] ResourceCall* creationOrDeletion(const VrfAction& action) const;
  [[nodiscard]] bool isBeingDeleted(const VrfAction& action) const;
  [[nodiscard]] bool anotherEnded(const VrfAction& action) const noexcept;

  const Mox::Ptr<VrfHwConfig>& users_;
  const Mox::Ptr<VrfHwStatus>& statuses_;
  const Mox::Ptr<VrfHelper>& helper_;
};

}  // namespace ZelVrfSelectionPolicy
