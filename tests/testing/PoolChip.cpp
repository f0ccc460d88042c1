#include "tests/testing/PoolChip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "Mox/QuotedString.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

std::string lengthsIn(const Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch>& lens) {
  std::string text;
  for (unsigned char length = 0; lens && length <= lens->longest; ++length) {
    if (lens->prefixLenHas(length)) text += " " + std::to_string(length);
  }
  return text;
}

}  // namespace

void PrintTo(Fault fault, std::ostream* stream) {
  *stream << static_cast<int>(fault);
}

PoolChip::PoolChip(const ChipFacts& facts, Fault fault, std::size_t capacity)
    : VrfHelper("pool chip", facts.fallbacks, facts.routes, facts.routes6),
      fault_(fault),
      capacity_(capacity) {}

HwStatus PoolChip::createVrf(const VrfAction& action) {
  if (!created_.insert(action).second) ADD_FAILURE() << "createVrf of an action that is created";
  if (fault_ == Fault::deletionIsForever && deleted_.contains(action)) {
    return failure(FailureCode::failureVrfResourceAlloc, "the action was deleted");
  }
  if (fault_ == Fault::defaultVrfRefused && action.vrfName().isDefaultVrf()) {
    return failure(FailureCode::failureVrfResourceAlloc, "not in the default VRF");
  }
  if (fault_ == Fault::firstCreationRefused && !std::exchange(isReady_, true)) {
    return failure(FailureCode::failureVrfResourceAlloc, "the chip is not ready");
  }
  if (!mayDecapsulate(action)) {
    barred_.insert(action);
    return failure(FailureCode::failureVrfResourceAlloc, "next hops may not decapsulate");
  }
  if (fault_ == Fault::creationIgnoresHardware) failsNext_ = false;
  HwStatus status = programNow(action, fault_ == Fault::creationLeaks);
  if (fault_ == Fault::creationWithoutDescription) status.failureDescriptionIs("");
  return status;
}

HwStatus PoolChip::updateVrf(const VrfAction& action) {
  if (!created_.contains(action)) ADD_FAILURE() << "updateVrf of an action that is not created";
  if (fault_ == Fault::updateDoesNothing) return {};
  if (barred_.contains(action)) {
    return failure(FailureCode::failureVrfResourceAlloc, "the creation was refused");
  }
  if (isSpoiled_ || failed_.contains(action)) {
    return failure(FailureCode::failureVrfResourceAlloc, "an earlier call failed");
  }
  const auto present = programs_.find(action);
  if (fault_ == Fault::updateTakesAnother && present != programs_.end()) {
    if (inUse_ >= capacity_) return refusedWhenFull(action);
    ++inUse_;
  }
  if (fault_ == Fault::updateHoardsUntilDeletion && present != programs_.end()) {
    ++inUse_;
    ++hoard_[action];
  }
  if (fault_ == Fault::flagLeaks && routingHwRouteStatus()->decapNhEnabled()) ++inUse_;
  if (fault_ == Fault::equalUpdateRefused && present != programs_.end() &&
      present->second == programBy(action)) {
    return failure(FailureCode::failureVrfResourceAlloc, "nothing to program");
  }
  if (fault_ == Fault::anotherIdRefused && present != programs_.end() &&
      present->second[ids] != programBy(action)[ids]) {
    return failure(FailureCode::failureVrfResourceAlloc, "the hardware id is another");
  }
  const Program before = present == programs_.end() ? programBy(action) : present->second;
  HwStatus status = programNow(action, fault_ == Fault::updateLeaks);
  if (fault_ == Fault::updateWithoutDescription) status.failureDescriptionIs("");
  const bool isFailed = status.status() == ProgrammingResult::programmingFailure;
  if (fault_ == Fault::failureIsForever && isFailed) failed_.insert(action);
  if (isFailed) return status;
  const Part kept = keptPart();
  if (kept != parts) programs_[action][kept] = before[kept];
  if (fault_ == Fault::updateAppends) programs_[action][updates] = before[updates] + " updated";
  return status;
}

void PoolChip::deleteVrf(const VrfAction& action) {
  created_.erase(action);
  barred_.erase(action);
  const bool isPresent = programs_.contains(action);
  if (fault_ == Fault::deletionThrows && !isPresent) throw std::runtime_error("not created");
  deleted_.insert(action);
  failed_.erase(action);
  if (fault_ == Fault::deletionSpoilsOthers && !isPresent) isSpoiled_ = true;
  if (fault_ == Fault::deletionFreesAnother && !isPresent && !programs_.empty()) {
    release(programs_.begin()->first);
  }
  if (fault_ == Fault::deletionFreesNothing) {
    programs_.erase(action);
  } else {
    release(action);
  }
}

std::optional<std::string> PoolChip::program(const VrfAction& action) const {
  const auto found = programs_.find(action);
  if (found == programs_.end()) return std::nullopt;
  std::string text;
  for (const std::string& part : found->second)
    text += part + "; ";
  return text;
}

PoolChip::Part PoolChip::keptPart() const noexcept {
  constexpr std::array<Fault, updates> faults{
      Fault::updateKeepsIds,       Fault::updateKeepsLengths, Fault::updateKeepsLengths6,
      Fault::updateKeepsFallbacks, Fault::updateKeepsDecap,   Fault::updateKeepsDecapFallback};
  const auto found = std::find(faults.begin(), faults.end(), fault_);
  return found == faults.end() ? parts : static_cast<Part>(found - faults.begin());
}

bool PoolChip::isFull() const noexcept {
  if (fault_ == Fault::holdsNothing) return true;
  if (fault_ == Fault::freedIsNotAvailable) return inUse_ + everFreed_ >= capacity_;
  return inUse_ + taken() >= capacity_ - (fault_ == Fault::holdsFewer ? 1 : 0);
}

std::size_t PoolChip::taken() const noexcept {
  if (fault_ != Fault::flagsTakeRoom) return 0;
  return (routingHwRouteStatus()->decapNhEnabled() ? 1U : 0U) +
         (routingHwRouteStatus()->decapNhFallbackEnabled() ? 1U : 0U);
}

HwStatus PoolChip::programNow(const VrfAction& action, bool leaks) {
  if (std::exchange(failsNext_, false)) {
    if (fault_ == Fault::hardwareRefusalLeaks) ++inUse_;
    const bool hasReason = fault_ != Fault::hardwareRefusalWithoutReason;
    return failure(hasReason ? FailureCode::failureVrfResourceAlloc : FailureCode::failureNone,
                   "the hardware refused");
  }
  const bool isNew = !programs_.contains(action);
  if (isNew && isFull()) return refusedWhenFull(action);
  if (isNew) ++inUse_;
  programs_[action] = programBy(action);
  for (const L3::VrfName& vrf :
       {action.vrfName(), action.fallbackVrfName(), action.postDecapVrfName()}) {
    if (vrf.empty() || hasId(vrf)) continue;
    if (fault_ == Fault::updateThrows && !isNew) throw std::runtime_error("no hardware id");
    if (leaks) {
      programs_.erase(action);
    } else {
      release(action);
    }
    const bool isRaw = fault_ == Fault::descriptionHasRawNames;
    return failure(FailureCode::failureVrfResourceAlloc,
                   (isRaw ? vrf.str() : Mox::quoted(vrf.bytes())) + " has no hardware id");
  }
  HwStatus success;
  if (fault_ == Fault::successHasReason) {
    success.failureReasonIs(FailureCode::failureVrfResourceAlloc);
  }
  return success;
}

HwStatus PoolChip::refusedWhenFull(const VrfAction& action) {
  if (fault_ == Fault::successWhenFull) return {};
  if (fault_ == Fault::refusalIsCounted) ++refusals_;
  if (fault_ == Fault::throwsWhenFull) throw std::runtime_error("full");
  if (fault_ == Fault::throwsANumberWhenFull) throw 1;
  if (fault_ == Fault::refusalFreesAnother) programs_.erase(programs_.begin()->first);
  const bool isAnother = fault_ == Fault::anotherReasonWhenFull;
  return failure(
      isAnother ? FailureCode::failureVrfResourceAlloc : FailureCode::failureVrfResourceExhausted,
      "no room for " + Mox::quoted(action.vrfName().bytes()));
}

HwStatus PoolChip::failure(FailureCode reason, const std::string& text) {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  if (fault_ != Fault::failureWithoutReason) status.failureReasonIs(reason);
  const std::string number =
      fault_ == Fault::outcomesDiffer ? std::to_string(++failures_) + ": " : "";
  status.failureDescriptionIs(number + text);
  return status;
}

bool PoolChip::mayDecapsulate(const VrfAction& action) const {
  return fault_ != Fault::decapNeedsItsFlag || action.action() == PolicyMap::ActionType::vrf ||
         routingHwRouteStatus()->decapNhEnabled();
}

PoolChip::Program PoolChip::programBy(const VrfAction& action) const {
  Program program;
  for (const L3::VrfName& vrf :
       {action.vrfName(), action.fallbackVrfName(), action.postDecapVrfName()}) {
    const Velo::String name = vrf.str();
    program[ids] +=
        hasId(vrf) ? std::to_string(routingHwRouteStatus()->vrfStatus(vrf)->vrfId()) : "no id";
    program[lengths] += lengthsIn(routingHwRouteStatus()->vrfPrefixLensInExactMatch(name));
    program[lengths6] += lengthsIn(routing6HwRouteStatus()->vrfPrefixLensInExactMatch(name));
    program[fallbacks] += vrfFallbackConfig()->fallbackVrf(vrf).str();
    for (const Part part : {ids, lengths, lengths6, fallbacks})
      program[part] += ", ";
  }
  program[decap] = routingHwRouteStatus()->decapNhEnabled() ? "decap" : "";
  program[decapFallback] = routingHwRouteStatus()->decapNhFallbackEnabled() ? "fallback" : "";
  return program;
}

bool PoolChip::hasId(const L3::VrfName& vrf) const {
  const auto status = routingHwRouteStatus()->vrfStatus(vrf);
  return status && status->vrfId() != 0;
}

void PoolChip::release(const VrfAction& action) {
  const auto hoarded = hoard_.find(action);
  if (hoarded != hoard_.end()) {
    inUse_ -= hoarded->second;
    hoard_.erase(hoarded);
  }
  if (programs_.erase(VrfAction(action)) == 0) return;
  --inUse_;
  ++everFreed_;
}

Mox::Ptr<VrfHelper> ObservablePoolChip::makeHelper(const ChipFacts& facts) {
  chip_ = Mox::makePtr<PoolChip>(facts, fault_, capacity_);
  return chip_;
}

bool ObservablePoolChip::failNextHook() {
  chip_->failNext();
  return true;
}

}  // namespace ZelVrfSelectionPolicy::Testing
