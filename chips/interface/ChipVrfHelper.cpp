#include "chips/interface/ChipVrfHelper.h"

#include <ostream>
#include <string>
#include <utility>

#include "Mox/QuotedString.h"

namespace Chips {
namespace {

using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;

HwStatus failure(FailureCode reason, const std::string& description) {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  status.failureReasonIs(reason);
  status.failureDescriptionIs(description);
  return status;
}

bool isProgrammed(const HwStatus& status) {
  return status.status() != ProgrammingResult::programmingFailure;
}

// In double quotes and on one line, for any bytes of the name.
std::string inQuotes(const L3::VrfName& vrf) {
  const std::string quoted = Mox::quoted(vrf.bytes());
  return '"' + quoted.substr(1, quoted.size() - 2) + '"';
}

HwStatus exhaustedFailure() {
  return failure(FailureCode::failureVrfResourceExhausted,
                 "the chip had no free VRF resource; the action is programmed when it gets one");
}

HwStatus faultFailure() {
  return failure(FailureCode::failureVrfResourceAlloc,
                 "the chip refused the request (a planned fault); it is repeated after a pause");
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const VrfResource& resource) {
  return stream << "resource " << resource.index << ": " << resource.program;
}

ChipVrfHelper::ChipVrfHelper(const Velo::String& name, const ProgramInputs& inputs,
                             std::uint32_t capacity)
    : VrfHelper(name, inputs.fallbackConfig, inputs.routeStatus, inputs.routeStatusV6),
      capacity_(capacity) {}

ChipVrfHelper::~ChipVrfHelper() = default;

HwStatus ChipVrfHelper::createVrf(const VrfAction& action) {
  ++hookCounts_.creates;
  return program(Hook::createVrf, action);
}

HwStatus ChipVrfHelper::updateVrf(const VrfAction& action) {
  ++hookCounts_.updates;
  return program(Hook::updateVrf, action);
}

HwStatus ChipVrfHelper::outcomeWithoutId(const L3::VrfName& vrf) {
  return failure(FailureCode::failureVrfResourceAlloc,
                 "VRF " + inQuotes(vrf) +
                     " has no hardware VRF id; the action is programmed when it gets one");
}

void ChipVrfHelper::deleteVrf(const VrfAction& action) {
  ++hookCounts_.deletes;
  release(action);
  asked_.programDel(action);
  notifyObserver({Hook::deleteVrf, action, false});
}

const VrfResource* ChipVrfHelper::resource(const VrfAction& action) const {
  const auto found = resources_.find(action);
  return found == resources_.end() ? nullptr : &found->second;
}

VrfProgram ChipVrfHelper::currentProgram(const VrfAction& action) const {
  return programOf(action, {vrfFallbackConfig(), routingHwRouteStatus(), routing6HwRouteStatus()});
}

bool ChipVrfHelper::isOutOfDate(const VrfAction& action) const {
  const VrfProgram* const asked = asked_.program(action);
  return asked != nullptr && *asked != currentProgram(action);
}

HwStatus ChipVrfHelper::program(Hook hook, const VrfAction& action) {
  HwStatus status = programNow(action);
  const bool failed = !isProgrammed(status);
  if (failed) ++hookCounts_.failures;
  notifyObserver({hook, action, failed});
  return status;
}

HwStatus ChipVrfHelper::programNow(const VrfAction& action) {
  VrfProgram wanted = currentProgram(action);
  asked_.programIs(action, wanted);
  if (faultPlan_.takeFault(action.vrfName())) return faultFailure();
  if (const L3::VrfName vrf = vrfWithoutId(wanted); !vrf.empty()) {
    release(action);
    return outcomeWithoutId(vrf);
  }
  const auto present = resources_.find(action);
  if (present == resources_.end()) return make(action, std::move(wanted));
  VrfResource changed{present->second.index, std::move(wanted)};
  HwStatus status = write(changed);
  if (isProgrammed(status)) present->second = std::move(changed);
  return status;
}

HwStatus ChipVrfHelper::make(const VrfAction& action, VrfProgram program) {
  if (resources_.size() >= capacity_) return exhaustedFailure();
  VrfResource resource{indexes_.take(), std::move(program)};
  HwStatus status = write(resource);
  if (isProgrammed(status)) {
    resources_.emplace(action, std::move(resource));
  } else {
    indexes_.giveBack(resource.index);
  }
  return status;
}

void ChipVrfHelper::release(const VrfAction& action) {
  const auto found = resources_.find(action);
  if (found == resources_.end()) return;
  erase(found->second);
  indexes_.giveBack(found->second.index);
  resources_.erase(found);
}

void ChipVrfHelper::notifyObserver(const HookCall& call) const {
  if (hookObserver_) hookObserver_(call);
}

}  // namespace Chips
