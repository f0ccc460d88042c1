#pragma once

#include "Mox/Ptr.h"
#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {

/// Creates, updates and deletes the hardware VRF resources of the actions. It makes every hook
/// call, and stores the outcome.
///
/// Invariants: an action has a status entry exactly while its resource exists. Creations and
/// deletions of one action never nest: a change of its count during one is handled afterwards.
/// After the call of `deleteVrf` the action is not updated. All state machines on the same tables
/// together keep these invariants.
///
/// A hook may release the state machine, so the caller of these functions must hold a reference to
/// it.
class VrfResources {
 public:
  /// The references are members of the state machine. They may be null until they are needed.
  VrfResources(const Mox::Ptr<VrfHwConfig>& users, const Mox::Ptr<VrfHwStatus>& statuses,
               const Mox::Ptr<VrfHelper>& helper) noexcept
      : users_(users), statuses_(statuses), helper_(helper) {}
  VrfResources(const VrfResources&) = delete;
  VrfResources& operator=(const VrfResources&) = delete;

  /// Creates or deletes the resource of `action` according to its count. `action` must outlive the
  /// call. Aborts the process if the count is above 1 without a resource, or if an action without a
  /// resource is deleted.
  void handleRefCountChange(const VrfAction& action);

  /// Calls the chip to update the resource of `vrfAction`, and stores the outcome, also if the
  /// action had no status.
  void update(const VrfAction& vrfAction);
  /// Updates every created action that names `vrfName` in any field.
  void updateNaming(const L3::VrfName& vrfName);
  /// Calls `announce` with every created action and updates it.
  void updateAll(void (*announce)(const VrfAction& action));

 private:
  using ResourceCall = VrfHwStatus::ResourceCall;
  using Calls = VrfHwStatus::ResourceCalls;

  void create(const VrfAction& action);
  void remove(const VrfAction& action);
  void program(const VrfAction& action);
  [[nodiscard]] ResourceCall* creationOrDeletion(const VrfAction& action) const;
  [[nodiscard]] bool isBeingDeleted(const VrfAction& action) const;
  [[nodiscard]] bool wasDeletedByAnother(const VrfAction& action) const noexcept;

  const Mox::Ptr<VrfHwConfig>& users_;
  const Mox::Ptr<VrfHwStatus>& statuses_;
  const Mox::Ptr<VrfHelper>& helper_;
};

}  // namespace ZelVrfSelectionPolicy
