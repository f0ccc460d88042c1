#include "tests/vrf/faults/FactsChip.h"

#include <utility>

#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

std::string lengthsOf(const Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch>& lens) {
  if (!lens) return "none";
  std::string text;
  for (unsigned length = 0; length <= Routing::Hardware::PrefixLensInExactMatch::longest;
       ++length) {
    if (lens->prefixLenHas(static_cast<unsigned char>(length)))
      text += "/" + std::to_string(length);
  }
  return text;
}

}  // namespace

HwStatus FactsChip::createVrf(const VrfAction& action) {
  return program(Hook::create, action);
}

HwStatus FactsChip::updateVrf(const VrfAction& action) {
  return program(Hook::update, action);
}

void FactsChip::deleteVrf(const VrfAction& action) {
  static_cast<void>(isFailing(Hook::remove, action));
  resources_.erase(shown(action));
  calls_.push_back({Hook::remove, action, std::nullopt, false});
}

HwStatus FactsChip::program(Hook hook, const VrfAction& action) {
  HwStatus outcome;
  if (isFailing(hook, action)) {
    outcome = *outcome_;
  } else {
    resources_[shown(action)] = programNow(action);
  }
  calls_.push_back({hook, action, outcome, false});
  return outcome;
}

bool FactsChip::isFailing(Hook hook, const VrfAction& action) {
  if (faultsLeft_ == 0 || (hook == Hook::remove && outcome_)) return false;
  if (untilFault_ != 0) {
    --untilFault_;
    return false;
  }
  --faultsLeft_;
  ++faults_;
  if (outcome_) return true;
  calls_.push_back({hook, action, std::nullopt, true});
  throw ChipGone();
}

void FactsChip::failAfter(unsigned further, unsigned length, const HwStatus& outcome) {
  untilFault_ = further;
  faultsLeft_ = length;
  outcome_ = outcome;
}

void FactsChip::throwAfter(unsigned further) {
  untilFault_ = further;
  faultsLeft_ = 1;
  outcome_.reset();
}

bool FactsChip::faultsWithdrawn() noexcept {
  return std::exchange(faultsLeft_, 0U) != 0;
}

std::vector<FactsChip::Call> FactsChip::takeCalls() {
  return std::exchange(calls_, {});
}

std::string FactsChip::programNow(const VrfAction& action) const {
  const auto& routes = *routingHwRouteStatus();
  return facts(action.vrfName()) + facts(action.fallbackVrfName()) +
         facts(action.postDecapVrfName()) + (routes.decapNhEnabled() ? " decap" : "") +
         (routes.decapNhFallbackEnabled() ? " decap-fallback" : "");
}

// A VRF, and those that it falls back to, as deep as a change of one of them is told.
std::string FactsChip::facts(const L3::VrfName& name) const {
  std::string text = "[";
  L3::VrfName each = name;
  for (unsigned depth = 0; depth < 3; ++depth) {
    const std::string bytes = each.str();
    const auto vrf = routingHwRouteStatus()->vrfStatus(each);
    text += bytes + "=" + (vrf ? std::to_string(vrf->vrfId()) : "none");
    text += " v4" + lengthsOf(routingHwRouteStatus()->vrfPrefixLensInExactMatch(bytes));
    text += " v6" + lengthsOf(routing6HwRouteStatus()->vrfPrefixLensInExactMatch(bytes));
    each = vrfFallbackConfig()->fallbackVrf(each);
    if (each.empty()) break;
    text += " > ";
  }
  return text + "]";
}

}  // namespace ZelVrfSelectionPolicy::Testing
