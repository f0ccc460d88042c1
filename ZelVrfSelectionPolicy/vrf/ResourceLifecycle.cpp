// How a change of an action's count becomes at most one call of the chip that creates or deletes
// the action's hardware VRF resource.

#include "Mox/SassertHelper.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
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

void VrfSm::handleVrfRefCountChange(const VrfAction& vrfAction) {
  if (Transition* underWay = vrfHwStatus_->transition(vrfAction)) {
    underWay->noteCountChange();
    return;
  }
  const Mox::Ptr<VrfSm> alive(this);
  // A copy, since what follows may delete the entry whose key the caller gave.
  const VrfAction action = vrfAction;
  const unsigned count = vrfHwConfig_->vrfRefCount(action);
  if (count == 0) {
    deleteResource(action);
  } else if (vrfHwStatus_->hwStatusHas(action)) {
    vrfSmMessages.alreadyInUse(action.vrfName().bytes(), count);
  } else if (count == 1) {
    createResource(action);
  } else {
    vrfSmMessages.invalidCount(action.vrfName().bytes());
    failUncreatedIncrement();
  }
}

void VrfSm::makeRoomForFirstUser(Velo::Follower* follower, short /*attributeId*/, const void* key,
                                 const void* /*value*/) {
  const VrfSm& vrfSm = Velo::MemberFollower<VrfSm>::ownerOf(follower);
  if (!vrfSm.isDeaf()) vrfSm.vrfHwStatus_->makeRoomFor(*static_cast<const VrfAction*>(key));
}

bool VrfSm::anotherEndedResource(const VrfAction& action) const noexcept {
  return vrfHwConfig_->resourceEnded() && vrfHwConfig_->vrfRefCount(action) == 0 &&
         !vrfHwStatus_->hwStatusHas(action);
}

void VrfSm::createResource(const VrfAction& action) {
  vrfHwStatus_->makeRoomFor(action);
  if (countChangesDuringCreation(action)) handleVrfRefCountChange(action);
}

bool VrfSm::countChangesDuringCreation(const VrfAction& action) {
  const Transition creation(*vrfHwStatus_, action, Transition::Kind::creation);
  const HwStatus outcome = vrfHelper_->createVrf(action);
  if (outcome.status() == ProgrammingResult::programmingFailure) {
    const FailureCode reason = outcome.failureReason();
    vrfSmMessages.createFailed(action.vrfName().bytes(),
                               enumTypeOf(reason).name(static_cast<unsigned char>(reason)));
  }
  vrfHwStatus_->hwStatusIs(action, outcome);
  return creation.countChanged();
}

void VrfSm::deleteResource(const VrfAction& action) {
  const bool countChanged = countChangesDuringDeletion(action);
  if (countChanged && vrfHwConfig_->vrfRefCount(action) != 0) createResource(action);
}

bool VrfSm::countChangesDuringDeletion(const VrfAction& action) {
  const Transition deletion(*vrfHwStatus_, action, Transition::Kind::deletion);
  vrfHelper_->deleteVrf(action);
  if (!vrfHwStatus_->hwStatusHas(action)) {
    vrfSmMessages.deletingUncreated(action.vrfName().bytes());
    failUncreatedDeletion(action);
  }
  vrfSmMessages.deleting(action.vrfName().bytes());
  // Unless users came meanwhile, who are not to be forgotten; if they came and left again before
  // the end, they leave no entry behind either.
  vrfHwConfig_->vrfRefCountDelUnused(action);
  vrfHwStatus_->hwStatusDel(action);
  vrfHwConfig_->vrfRefCountDelUnused(action);
  vrfHwConfig_->resourceEndedIs(action);
  return deletion.countChanged();
}

}  // namespace ZelVrfSelectionPolicy
