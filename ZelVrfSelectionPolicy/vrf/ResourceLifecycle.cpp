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

/// The creation or deletion of one action's resource while it is under way. The chip and the
/// subscribers of both tables are called in its course; if the count of the same action changes
/// meanwhile, be it by the removal of the entry that is part of a deletion, the change is noted
/// here and left to whoever began.
class VrfSm::Transition {
 public:
  enum class Kind { creation, deletion };

  Transition(VrfSm& vrfSm, const VrfAction& action, Kind kind) noexcept
      : vrfSm_(vrfSm), action_(action), kind_(kind), outer_(vrfSm.innermostTransition_) {
    vrfSm.innermostTransition_ = this;
  }
  Transition(const Transition&) = delete;
  Transition& operator=(const Transition&) = delete;
  ~Transition() { vrfSm_.innermostTransition_ = outer_; }

  [[nodiscard]] const VrfAction& action() const noexcept { return action_; }
  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  [[nodiscard]] Transition* outer() const noexcept { return outer_; }
  [[nodiscard]] bool countChanged() const noexcept { return countChanged_; }
  void countChangedIs() noexcept { countChanged_ = true; }

 private:
  VrfSm& vrfSm_;
  const VrfAction action_;
  Kind kind_;
  bool countChanged_ = false;
  Transition* outer_;
};

VrfSm::Transition* VrfSm::transitionOf(const VrfAction& vrfAction) const noexcept {
  Transition* transition = innermostTransition_;
  while (transition != nullptr && transition->action() != vrfAction) {
    transition = transition->outer();
  }
  return transition;
}

bool VrfSm::resourceIsGoing(const VrfAction& vrfAction) const noexcept {
  const Transition* transition = transitionOf(vrfAction);
  return transition != nullptr && transition->kind() == Transition::Kind::deletion;
}

void VrfSm::handleVrfRefCountChange(const VrfAction& vrfAction) {
  if (Transition* underWay = transitionOf(vrfAction)) {
    underWay->countChangedIs();
    return;
  }
  const Mox::Ptr<VrfSm> alive(this);
  const unsigned count = vrfHwConfig_->vrfRefCount(vrfAction);
  const bool created = vrfHwStatus_->hwStatusHas(vrfAction);
  if (count == 0) {
    deleteResource(vrfAction);
  } else if (created) {
    vrfSmMessages.alreadyInUse(vrfAction.vrfName().bytes(), count);
  } else if (count == 1) {
    createResource(vrfAction);
  } else {
    vrfSmMessages.invalidCount(vrfAction.vrfName().bytes());
    if (!vrfHwStatus_->hwStatusHas(vrfAction)) failUncreatedIncrement();
  }
}

void VrfSm::createResource(const VrfAction& vrfAction) {
  bool countChanged = false;
  {
    const Transition creation(*this, vrfAction, Transition::Kind::creation);
    const HwStatus outcome = vrfHelper_->createVrf(creation.action());
    if (outcome.status() == ProgrammingResult::programmingFailure) {
      vrfSmMessages.createFailed(creation.action().vrfName().bytes(),
                                 enumTypeOf(outcome.failureReason())
                                     .name(static_cast<unsigned char>(outcome.failureReason())));
    }
    vrfHwStatus_->hwStatusIs(creation.action(), outcome);
    countChanged = creation.countChanged();
  }
  if (countChanged) handleVrfRefCountChange(vrfAction);
}

void VrfSm::deleteResource(const VrfAction& vrfAction) {
  const bool created = vrfHwStatus_->hwStatusHas(vrfAction);
  const VrfAction action = vrfAction;
  {
    const Transition deletion(*this, action, Transition::Kind::deletion);
    vrfHelper_->deleteVrf(action);
    if (!created) {
      vrfSmMessages.deletingUncreated(action.vrfName().bytes());
      failUncreatedDeletion(action);
    }
    vrfSmMessages.deleting(action.vrfName().bytes());
    if (vrfHwConfig_->vrfRefCount(action) == 0) vrfHwConfig_->vrfRefCountDel(action);
    vrfHwStatus_->hwStatusDel(action);
    // Users that came meanwhile and left again leave no entry behind.
    if (vrfHwConfig_->vrfRefCount(action) == 0) vrfHwConfig_->vrfRefCountDel(action);
  }
  const bool follows = vrfHwConfigSubscriber_.dispatch != nullptr && !isZombie();
  if (follows && vrfHwConfig_->vrfRefCount(action) != 0) createResource(action);
}

}  // namespace ZelVrfSelectionPolicy
