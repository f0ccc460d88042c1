#include "agent/model/forwarding/Reprogrammer.h"

#include <algorithm>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "agent/language/Limits.h"

namespace ZelAgent {

using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;

Reprogrammer::Reprogrammer(Mox::Ptr<Chips::ChipVrfHelper> chip, Chips::ProgramInputs inputs,
                           Mox::Ptr<ZelVrfSelectionPolicy::VrfSm> vrfSm)
    : chip_(std::move(chip)), vrfSm_(std::move(vrfSm)), changedVrfs_(std::move(inputs)) {
  statusSubscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                                  const void* key, const void*) {
    Velo::MemberSubscriber<Reprogrammer>::ownerOf(subscriber)
        .follow(*static_cast<const VrfAction*>(key));
  };
  vrfSm_->vrfHwStatus()->publisher().subscriberIs(statusSubscriber_);
}

Reprogrammer::~Reprogrammer() {
  vrfSm_->vrfHwStatus()->publisher().subscriberDel(statusSubscriber_);
}

void Reprogrammer::step() {
  makeStep(Limits::retriesOfAStep);
}

void Reprogrammer::stepOfConfiguration() {
  makeStep(std::numeric_limits<std::size_t>::max());
}

void Reprogrammer::makeStep(std::size_t mostForRoom) {
  updateOutOfDate();
  const std::size_t chosen = askForRoom(mostForRoom);
  const std::size_t left = Limits::retriesOfAStep - std::min(chosen, Limits::retriesOfAStep);
  askForRoom(left - askThoseDue(left));  // one that was due may have freed its resource
  ++step_;
}

void Reprogrammer::retry() {
  for (const VrfAction& action : refused_.all())
    ask(action);
}

bool Reprogrammer::isPending() const {
  return refused_.anyWaitsForTime() || (refused_.anyWaitsForRoom() && hasRoom());
}

void Reprogrammer::updateOutOfDate() {
  std::set<VrfAction> candidates;
  for (const L3::VrfName& vrf : changedVrfs_.take()) {
    const std::set<VrfAction>& actions = chip_->askedPrograms().actionsWith(vrf);
    candidates.insert(actions.begin(), actions.end());
  }
  for (const VrfAction& action : candidates) {
    if (chip_->isOutOfDate(action)) ask(action);
  }
}

std::size_t Reprogrammer::askForRoom(std::size_t most) {
  if (!hasRoom()) return 0;
  std::size_t calls = 0;
  for (const VrfAction& action : refused_.waitingForRoom(most)) {
    if (!hasRoom()) break;
    ask(action);
    ++calls;
  }
  return calls;
}

std::size_t Reprogrammer::askThoseDue(std::size_t most) {
  const std::vector<VrfAction> due = refused_.due(step_, most);
  for (const VrfAction& action : due)
    ask(action);
  return due.size();
}

bool Reprogrammer::hasRoom() const {
  return chip_->resources().size() < chip_->capacity();
}

// A subscriber of the statuses may have removed the users of the action meanwhile.
void Reprogrammer::ask(const VrfAction& action) {
  if (!vrfSm_->vrfHwStatus()->hwStatusHas(action)) return;
  const bool waitedForTime = refused_.waitsForTime(action);
  vrfSm_->updateVrfAction(action);
  follow(action);
  if (waitedForTime) refused_.postpone(action, step_);
}

void Reprogrammer::follow(const VrfAction& action) {
  const ZelVrfSelectionPolicy::VrfHwStatus& statuses = *vrfSm_->vrfHwStatus();
  const HwStatus status = statuses.hwStatus(action);
  if (status.status() == ProgrammingResult::programmingFailure) {
    refused_.actionIs(action, reasonOf(action, status), step_);
  } else {
    refused_.actionDel(action);
  }
}

// A fault may hide that a VRF has no id. The repeated request shows it.
WaitsFor Reprogrammer::reasonOf(const VrfAction& action, const HwStatus& refusal) const {
  if (refusal.failureReason() == FailureCode::failureVrfResourceExhausted) return WaitsFor::room;
  const L3::VrfName vrf = vrfWithoutId(chip_->currentProgram(action));
  const bool lacksId = !vrf.empty() && refusal == Chips::ChipVrfHelper::outcomeWithoutId(vrf);
  return lacksId ? WaitsFor::facts : WaitsFor::time;
}

}  // namespace ZelAgent
