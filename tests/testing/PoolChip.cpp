#include "tests/testing/PoolChip.h"

#include <ostream>
#include <stdexcept>
#include <utility>

#include "Mox/QuotedString.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

std::string lengths(const Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch>& lens) {
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

PoolChip::PoolChip(const ChipFacts& facts, Fault fault)
    : VrfHelper("pool chip", facts.fallbacks, facts.routes, facts.routes6), fault_(fault) {}

HwStatus PoolChip::createVrf(const VrfAction& action) {
  if (fault_ == Fault::deletionIsForever && deleted_.contains(action)) {
    return failure(FailureCode::failureVrfResourceAlloc, "the action was deleted");
  }
  if (fault_ == Fault::defaultVrfRefused && action.vrfName().isDefaultVrf()) {
    return failure(FailureCode::failureVrfResourceAlloc, "not in the default VRF");
  }
  return programNow(action, fault_ == Fault::creationLeaks);
}

HwStatus PoolChip::updateVrf(const VrfAction& action) {
  if (fault_ == Fault::updateDoesNothing) return {};
  if (fault_ == Fault::updateTakesAnother && programs_.contains(action)) {
    if (inUse_ >= capacity) return refusedWhenFull(action);
    ++inUse_;
  }
  return programNow(action, fault_ == Fault::updateLeaks);
}

void PoolChip::deleteVrf(const VrfAction& action) {
  deleted_.insert(action);
  if (fault_ == Fault::deletionFreesAnother && !programs_.contains(action) && !programs_.empty()) {
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
  return found->second;
}

HwStatus PoolChip::programNow(const VrfAction& action, bool leaks) {
  if (std::exchange(failsNext_, false)) {
    return failure(FailureCode::failureVrfResourceAlloc, "the hardware refused");
  }
  const bool isNew = !programs_.contains(action);
  if (isNew && inUse_ >= capacity) return refusedWhenFull(action);
  if (isNew) ++inUse_;
  programs_[action] = programBy(action);
  for (const L3::VrfName& vrf :
       {action.vrfName(), action.fallbackVrfName(), action.postDecapVrfName()}) {
    if (vrf.empty() || hasId(vrf)) continue;
    if (leaks) {
      programs_.erase(action);
    } else {
      release(action);
    }
    const bool isRaw = fault_ == Fault::descriptionHasRawNames;
    return failure(FailureCode::failureVrfResourceAlloc,
                   (isRaw ? vrf.str() : Mox::quoted(vrf.bytes())) + " has no hardware id");
  }
  return {};
}

HwStatus PoolChip::refusedWhenFull(const VrfAction& action) {
  if (fault_ == Fault::successWhenFull) return {};
  if (fault_ == Fault::throwsWhenFull) throw std::runtime_error("full");
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
  if (fault_ == Fault::failureWithoutDescription) return status;
  const std::string number =
      fault_ == Fault::outcomesDiffer ? std::to_string(++failures_) + ": " : "";
  status.failureDescriptionIs(number + text);
  return status;
}

std::string PoolChip::programBy(const VrfAction& action) const {
  return lookUp(action.vrfName()) + lookUp(action.fallbackVrfName()) +
         lookUp(action.postDecapVrfName()) +
         (routingHwRouteStatus()->decapNhEnabled() ? " decap" : "") +
         (routingHwRouteStatus()->decapNhFallbackEnabled() ? " fallback" : "");
}

std::string PoolChip::lookUp(const L3::VrfName& vrf) const {
  if (vrf.empty()) return "none; ";
  const std::string id =
      hasId(vrf) ? std::to_string(routingHwRouteStatus()->vrfStatus(vrf)->vrfId()) : "no id";
  const Velo::String name = vrf.str();
  return id + lengths(routingHwRouteStatus()->vrfPrefixLensInExactMatch(name)) + " v6" +
         lengths(routing6HwRouteStatus()->vrfPrefixLensInExactMatch(name)) + " > " +
         vrfFallbackConfig()->fallbackVrf(vrf).str() + "; ";
}

bool PoolChip::hasId(const L3::VrfName& vrf) const {
  const auto status = routingHwRouteStatus()->vrfStatus(vrf);
  return status && status->vrfId() != 0;
}

void PoolChip::release(const VrfAction& action) {
  if (programs_.erase(VrfAction(action)) != 0) --inUse_;
}

Mox::Ptr<VrfHelper> ObservablePoolChip::makeHelper(const ChipFacts& facts) {
  chip_ = Mox::makePtr<PoolChip>(facts, fault_);
  return chip_;
}

bool ObservablePoolChip::failNextHook() {
  chip_->failNext();
  return true;
}

}  // namespace ZelVrfSelectionPolicy::Testing
