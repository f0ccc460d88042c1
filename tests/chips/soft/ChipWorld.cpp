#include "tests/chips/soft/ChipWorld.h"

#include <ostream>
#include <sstream>

namespace Chips {
namespace {

using Routing::Hardware::PrefixLensInExactMatch;
using Routing::Hardware::RouteStatusBase;
using Routing::Hardware::VrfStatus;
using VrfSelectionPolicy::VrfSelectionFallbackVrf;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;
using ZelVrfSelectionPolicy::VrfSm;

constexpr const char* kindNames[] = {
    "addUser",         "removeUser",    "addStatus",    "removeStatus",
    "setId",           "replaceStatus", "setFallback",  "removeFallback",
    "removeFallbacks", "addLength",     "removeLength", "addLengths",
    "replaceLengths",  "removeLengths", "setDecapNh",   "setDecapNhFallback",
    "setCapacity",     "planFaults"};

Mox::Ptr<VrfStatus> newStatus(const Step& step) {
  auto status = VrfStatus::VrfStatusIs(step.vrf);
  status->vrfIdIs(step.number);
  return status;
}

Mox::Ptr<PrefixLensInExactMatch> newLengths(const Step& step) {
  auto lengths = PrefixLensInExactMatch::PrefixLensInExactMatchIs(step.vrf.bytes());
  lengths->prefixLenIs(static_cast<unsigned char>(step.number));
  return lengths;
}

template <class Value>
std::string shown(const Value* value) {
  if (value == nullptr) return "nothing";
  std::ostringstream text;
  text << *value;
  return text.str();
}

const VrfProgram* programIn(const VrfResource* resource) {
  return resource == nullptr ? nullptr : &resource->program;
}

std::string differs(const std::string& what, const std::string& is, const std::string& wanted) {
  return what + " is\n  " + is + "\nand from scratch it would be\n  " + wanted;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Step& step) {
  stream << kindNames[static_cast<std::size_t>(step.kind)];
  if (step.action) stream << ' ' << step.action;
  if (!step.vrf.empty()) stream << " vrf " << step.vrf;
  if (!step.other.empty()) stream << " other " << step.other;
  return stream << " number " << step.number << " flag " << step.flag;
}

ChipWorld::ChipWorld(const std::vector<Step>& before)
    : fallbacks_(VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs()),
      routes_(Routing::Hardware::RouteStatus::RouteStatusIs()),
      routesV6_(Routing6::Hardware::RouteStatus::RouteStatusIs()),
      users_(ZelVrfSelectionPolicy::vrfHwConfigFactory()),
      statuses_(ZelVrfSelectionPolicy::vrfHwStatusFactory()),
      chip_(Mox::makeActivePtr<SoftVrfHelper>(
          Velo::String("chip"), ProgramInputs{fallbacks_, routes_, routesV6_}, enoughCapacity)) {
  for (const Step& step : before)
    take(step);
  vrfSm_ = VrfSm::VrfSmIs(users_, statuses_, chip_, fallbacks_, routes_, routesV6_);
}

void ChipWorld::take(const Step& step) {
  switch (step.kind) {
    case StepKind::addUser:
      users_->vrfRefCountInc(step.action, 1);
      break;
    case StepKind::removeUser:
      if (users_->vrfRefCount(step.action) > 0) users_->vrfRefCountDec(step.action, 1);
      break;
    case StepKind::setCapacity:
      chip_->capacityIs(step.number);
      break;
    case StepKind::planFaults:
      chip_->faultPlan().anyFaultsIs(step.number);
      break;
    default:
      takeFact(step);
  }
}

void ChipWorld::takeFact(const Step& step) {
  const auto status = routes_->vrfStatus(step.vrf);
  switch (step.kind) {
    case StepKind::addStatus:
      if (!status) routes_->vrfStatusIs(newStatus(step));
      break;
    case StepKind::removeStatus:
      routes_->vrfStatusDel(step.vrf);
      break;
    case StepKind::setId:
      if (status) status->vrfIdIs(step.number);
      break;
    case StepKind::replaceStatus:
      if (status) routes_->vrfStatusIs(newStatus(step));
      break;
    case StepKind::setFallback:
      fallbacks_->fallbackVrfIs(step.vrf, step.other);
      break;
    case StepKind::removeFallback:
      fallbacks_->fallbackVrfDel(step.vrf);
      break;
    case StepKind::removeFallbacks:
      fallbacks_->fallbackVrfDelAll();
      break;
    case StepKind::setDecapNh:
      routes_->decapNhEnabledIs(step.flag);
      break;
    case StepKind::setDecapNhFallback:
      routes_->decapNhFallbackEnabledIs(step.flag);
      break;
    default:
      takeLengths(step);
  }
}

void ChipWorld::takeLengths(const Step& step) {
  RouteStatusBase& routes = routesOf(step);
  const Velo::String key(step.vrf.bytes());
  const auto length = static_cast<unsigned char>(step.number);
  const auto present = routes.vrfPrefixLensInExactMatch(key);
  if (step.kind == StepKind::addLengths) {
    if (!present) routes.vrfPrefixLensInExactMatchIs(newLengths(step));
    return;
  }
  if (!present) return;
  if (step.kind == StepKind::addLength) present->prefixLenIs(length);
  if (step.kind == StepKind::removeLength) present->prefixLenDel(length);
  if (step.kind == StepKind::replaceLengths) routes.vrfPrefixLensInExactMatchIs(newLengths(step));
  if (step.kind == StepKind::removeLengths) routes.vrfPrefixLensInExactMatchDel(key);
}

RouteStatusBase& ChipWorld::routesOf(const Step& step) const {
  if (step.flag) return *routesV6_;
  return *routes_;
}

std::optional<std::string> ChipWorld::difference() const {
  const auto scratch = Mox::makeActivePtr<SoftVrfHelper>(
      Velo::String("scratch"), ProgramInputs{fallbacks_, routes_, routesV6_}, enoughCapacity);
  const auto& users = users_->vrfRefCount();
  for (auto entry = users.iterator(); entry; ++entry) {
    const VrfAction& action = entry.key();
    const HwStatus wanted = scratch->createVrf(action);
    const HwStatus status = statuses_->hwStatus(action);
    if (status != wanted) {
      return differs("the status of " + shown(&action), shown(&status), shown(&wanted));
    }
    const VrfProgram* const program = programIn(chip_->resource(action));
    const VrfProgram* const wantedProgram = programIn(scratch->resource(action));
    const bool equal = program == nullptr || wantedProgram == nullptr ? program == wantedProgram
                                                                      : *program == *wantedProgram;
    if (!equal) {
      return differs("the program of " + shown(&action), shown(program), shown(wantedProgram));
    }
  }
  const auto count = [](std::size_t number) { return std::to_string(number); };
  if (chip_->resources().size() != scratch->resources().size()) {
    return differs("the number of resources", count(chip_->resources().size()),
                   count(scratch->resources().size()));
  }
  if (statuses_->hwStatus().count() != users.count()) {
    return differs("the number of statuses", count(statuses_->hwStatus().count()),
                   count(users.count()));
  }
  return std::nullopt;
}

}  // namespace Chips
