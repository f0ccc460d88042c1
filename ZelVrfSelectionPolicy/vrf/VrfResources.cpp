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
  if (ResourceCall* underWay = creationOrDeletion(action)) {
    underWay->countChanged = true;
    return;
  }
  // The caller may have passed the key of an entry that is deleted in what follows.
  const VrfHwConfig::VrfRefCounts::Pin users(users_->vrfRefCount_);
  const VrfHwStatus::HwStatuses::Pin statuses(statuses_->hwStatus_);
  const unsigned count = users_->vrfRefCount(action);
  const bool isCreated = statuses_->hwStatusHas(action);
  if (count == 0) {
    if (isCreated || !anotherEndedIt()) remove(action);
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
  if (usersAfterRemoval(action) != 0) create(action);
}

// Deletes the resource with its two entries. Returns the count of the users who came meanwhile.
unsigned VrfResources::usersAfterRemoval(const VrfAction& action) {
  const Calls::Scope deletion(statuses_->calls_, action, ResourceCall::Kind::deletion);
  helper_->deleteVrf(action);
  if (!statuses_->hwStatusHas(action)) {
    vrfSmMessages.deletingUncreated(action.vrfName().bytes());
    failUncreatedDeletion(action);
  }
  vrfSmMessages.deleting(action.vrfName().bytes());
  users_->vrfRefCountDelUnused(action);
  statuses_->hwStatusDel(action);
  const unsigned users = users_->vrfRefCountDelUnused(action);
  users_->changes_.forEach([&](VrfHwConfig::Change& change) {
    if (change.action == action) change.resourceEnded = true;
  });
  return users;
}

VrfResources::ResourceCall* VrfResources::creationOrDeletion(const VrfAction& action) const {
  return statuses_->calls_.find([&](const ResourceCall& call) {
    return call.kind != ResourceCall::Kind::update && call.action == action;
  });
}

bool VrfResources::isBeingDeleted(const VrfAction& action) const {
  const ResourceCall* underWay = creationOrDeletion(action);
  return underWay != nullptr && underWay->kind == ResourceCall::Kind::deletion;
}

// Whether another subscriber has deleted the resource since the change that this one is being
// notified of.
bool VrfResources::anotherEndedIt() const noexcept {
  const VrfHwConfig::Change* change = users_->changes_.innermost();
  return change != nullptr && change->resourceEnded;
}

// An entry stands for a resource: if the action loses it during the call, the outcome is that of a
// resource which is gone, and is not stored.
void VrfResources::update(const VrfAction& vrfAction) {
  if (isBeingDeleted(vrfAction)) return;
  // A copy, since the caller may have passed the key of an entry that is deleted in what follows.
  const VrfAction action = vrfAction;
  const Calls::Scope update(statuses_->calls_, action, ResourceCall::Kind::update);
  vrfSmMessages.updating(action.vrfName().bytes());
  const HwStatus outcome = helper_->updateVrf(action);
  if (!update->entryRemoved) statuses_->hwStatusIs(action, outcome);
}

void VrfResources::updateNaming(const L3::VrfName& vrfName) {
  vrfSmMessages.updatingAll(vrfName.bytes());
  VrfHelper& helper = *helper_;
  VrfHwStatus::ActionsNaming actions(*statuses_, vrfName);
  while (actions.advance()) {
    const VrfAction& action = actions.action();
    if (isBeingDeleted(action)) continue;
    vrfSmMessages.updatingOneOfAll(vrfName.bytes());
    actions.hwStatusIs(helper.updateVrf(action));
  }
}

void VrfResources::updateAll(void (*announce)(const VrfAction& action)) {
  for (auto entry = statuses_->hwStatus().iterator(); entry; ++entry) {
    const VrfAction action = entry.key();
    if (isBeingDeleted(action)) continue;
    announce(action);
    update(action);
  }
}

}  // namespace ZelVrfSelectionPolicy
