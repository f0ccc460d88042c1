#include "ZelVrfSelectionPolicy/vrf/VrfResources.h"

#include "Mox/SassertHelper.h"
#include "ZelVrfSelectionPolicy/tables/ActionsNaming.h"
#include "ZelVrfSelectionPolicy/tables/ResourceCalls.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSmMessages.h"

namespace ZelVrfSelectionPolicy {
namespace {

constexpr const char* handler =
    "void ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange("
    "const ZelVrfSelectionPolicy::VrfAction&)";

[[noreturn]] void failUncreatedIncrement() {
  Mox::SassertHelper("vrfHwStatus()->hwStatusHas( vrfAction )", sourcePath, 56, handler).stream()
      << "Invalid ref count increment";
  __builtin_unreachable();
}

[[noreturn]] void failUncreatedDeletion(const VrfAction& vrfAction) {
  Mox::SassertHelper("false", sourcePath, 45, handler).stream()
      << "Trying to delete a vrf HW resource that has not been created yet. VRF:" << vrfAction;
  __builtin_unreachable();
}

}  // namespace

void VrfResources::handleRefCountChange(const VrfAction& action) {
  if (ResourceCall* activeCall = creationOrDeletion(action)) {
    activeCall->countChanged = true;
    return;
  }
  const unsigned count = users_->vrfRefCount(action);
  const bool isCreated = statuses_->hwStatusHas(action);
  if (count == 0) {
    if (isCreated || !wasDeletedByAnother(action)) remove(action);
  } else if (isCreated) {
    vrfSmMessages.alreadyInUse(action.vrfName().bytes(), count);
  } else if (count == 1) {
    create(action);
  } else {
    vrfSmMessages.invalidCount(action.vrfName().bytes());
    failUncreatedIncrement();
  }
}

void VrfResources::create(const VrfAction& action) {
  bool countChanged = false;
  {
    const Calls::Scope creation(statuses_->calls_, action, ResourceCall::Kind::creation);
    const HwStatus outcome = helper_->createVrf(action);
    if (outcome.status() == ProgrammingResult::programmingFailure) {
      vrfSmMessages.createFailed(action.vrfName().bytes(),
                                 failureCodes.name(outcome.failureReason()));
    }
    statuses_->hwStatusIs(action, outcome);
    countChanged = creation->countChanged;
  }
  if (countChanged) handleRefCountChange(action);
}

void VrfResources::remove(const VrfAction& action) {
  bool hasEntryAgain = false;
  {
    const Calls::Scope deletion(statuses_->calls_, action, ResourceCall::Kind::deletion);
    helper_->deleteVrf(action);
    if (!statuses_->hwStatusHas(action)) {
      vrfSmMessages.deletingUncreated(action.vrfName().bytes());
      failUncreatedDeletion(action);
    }
    vrfSmMessages.deleting(action.vrfName().bytes());
    // Users that were added during the deletion stay counted. If they are removed before its end,
    // their entry is removed, too.
    users_->vrfRefCountDelUnused(action);
    statuses_->hwStatusDel(action);
    hasEntryAgain = users_->vrfRefCountDelUnused(action);
    users_->changes_.forEach([&](VrfHwConfig::Change& change) {
      if (change.action == action) change.resourceDeleted = true;
    });
  }
  if (hasEntryAgain && users_->vrfRefCount(action) != 0) create(action);
}

VrfResources::ResourceCall* VrfResources::creationOrDeletion(const VrfAction& action) const {
  return statuses_->calls_.find([&](const ResourceCall& call) {
    return call.kind != ResourceCall::Kind::update && call.action == action;
  });
}

bool VrfResources::isBeingDeleted(const VrfAction& action) const {
  const ResourceCall* activeCall = creationOrDeletion(action);
  return activeCall != nullptr && activeCall->kind == ResourceCall::Kind::deletion;
}

// Whether another subscriber has deleted the resource during the notification of the change that is
// being handled.
bool VrfResources::wasDeletedByAnother(const VrfAction& action) const noexcept {
  const VrfHwConfig::Change* change = users_->changes_.innermost();
  return change != nullptr && change->resourceDeleted && change->action == action;
}

void VrfResources::update(const VrfAction& vrfAction) {
  if (isBeingDeleted(vrfAction)) return;
  const VrfAction action = vrfAction;  // a hook may destroy the caller's object
  program(action);
}

// If the entry of the action is removed during the call, the resource no longer exists, and the
// outcome is not stored.
void VrfResources::program(const VrfAction& action) {
  const Calls::Scope update(statuses_->calls_, action, ResourceCall::Kind::update);
  vrfSmMessages.updating(action.vrfName().bytes());
  const HwStatus outcome = helper_->updateVrf(action);
  if (!update->entryRemoved) statuses_->hwStatusIs(action, outcome);
}

void VrfResources::updateNaming(const L3::VrfName& vrfName) {
  vrfSmMessages.updatingAll(vrfName.bytes());
  VrfHelper* const helper = helper_.get();
  VrfHwStatus::ActionsNaming actions(*statuses_, vrfName);
  while (actions.advance()) {
    const VrfAction& action = actions.action();
    if (isBeingDeleted(action)) continue;
    vrfSmMessages.updatingNamed(vrfName.bytes());
    actions.hwStatusIs(helper->updateVrf(action));
  }
}

void VrfResources::updateAll(void (*announce)(const VrfAction& action)) {
  const VrfHwStatus::HwStatuses::Pin pin(statuses_->hwStatus_);
  for (auto entry = statuses_->hwStatus().iterator(); entry; ++entry) {
    const VrfAction& action = entry.key();
    if (isBeingDeleted(action)) continue;
    announce(action);
    program(action);
  }
}

}  // namespace ZelVrfSelectionPolicy
