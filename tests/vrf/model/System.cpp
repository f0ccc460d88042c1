#include "System.h"

#include "Conversions.h"

namespace VrfModel {

using Routing::Hardware::PrefixLensInExactMatch;
using Routing::Hardware::VrfStatus;
using ZelVrfSelectionPolicy::VrfAction;
using ZelVrfSelectionPolicy::VrfSm;

System::System(const Cast& cast, Mox::Ptr<ZelVrfSelectionPolicy::VrfHelper> chip)
    : cast_(cast),
      counts_(ZelVrfSelectionPolicy::vrfHwConfigFactory()),
      statuses_(ZelVrfSelectionPolicy::vrfHwStatusFactory()),
      countNotices_(Table::counts, counts_->publisher(), observed_),
      statusNotices_(Table::statuses, statuses_->publisher(), observed_),
      chip_(chip ? std::move(chip) : Mox::makePtr<ChipDouble>(observed_)),
      top_(ZelVrfSelectionPolicy::zelVrfSelectionPolicySmFactory(nullptr, nullptr, chip_, nullptr,
                                                                 nullptr, nullptr)) {
  for (std::uint8_t set = 0; set < sets; ++set) {
    routes_[v4].at(set).status = Routing::Hardware::RouteStatus::RouteStatusIs();
    routes_[v6].at(set).status = Routing6::Hardware::RouteStatus::RouteStatusIs();
    fallbacks_.at(set) = VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  }
}

void System::apply(const Event& event) {
  if (event.kind <= Kind::countDeleteAll) return happenToCounts(event);
  if (event.kind <= Kind::fallbackDeleteAll) return happenToFallbacks(event);
  if (event.kind <= Kind::statusId) return happenToStatuses(event);
  if (event.kind <= Kind::lenDeleteAll) return happenToLens(event);
  if (event.kind <= Kind::decapNhFallback) return happenToFlags(event);
  if (event.kind <= Kind::machineDrop) return happenToMachine(event);
  call(event);
}

std::vector<Name> System::fallbackWalk(const Event& event) const {
  std::vector<Name> walk;
  const bool isBuild = event.kind == Kind::machineBuild;
  if (!isBuild && event.kind != Kind::fallbackDeleteAll) return walk;
  const auto& config = fallbacks_.at(isBuild ? event.inputs.fallback : event.set)->fallbackVrf();
  for (auto entry = config.iterator(); entry; ++entry)
    walk.push_back(entry.key().str());
  return walk;
}

void System::happenToCounts(const Event& event) {
  const VrfAction action = real(cast_.actions[event.action]);
  switch (event.kind) {
    case Kind::countRaise:
      counts_->vrfRefCountInc(action, event.number);
      return;
    case Kind::countLower:
      counts_->vrfRefCountDec(action, event.number);
      return;
    case Kind::countSet:
      return counts_->vrfRefCountIs(action, event.number);
    case Kind::countDelete:
      counts_->vrfRefCountDel(action);
      return;
    default:
      return counts_->vrfRefCountDelAll();
  }
}

void System::happenToFallbacks(const Event& event) {
  auto& config = *fallbacks_.at(event.set);
  if (event.kind == Kind::fallbackSet)
    config.fallbackVrfIs(nameOf(event), cast_.names[event.other]);
  if (event.kind == Kind::fallbackDelete) config.fallbackVrfDel(nameOf(event));
  if (event.kind == Kind::fallbackDeleteAll) config.fallbackVrfDelAll();
}

void System::happenToStatuses(const Event& event) {
  Routes& routes = routesOf(event);
  const Name& name = nameOf(event);
  switch (event.kind) {
    case Kind::statusMake:
      if (!routes.status->vrfStatus(name)) statusPut(routes, name, 0);
      return;
    case Kind::statusReplace:
      return statusPut(routes, name, event.number);
    case Kind::statusDelete:
      statusRetire(routes, name);
      routes.status->vrfStatusDel(name);
      return;
    case Kind::statusDeleteAll:
      for (const Name& each : cast_.names)
        statusRetire(routes, each);
      return routes.status->vrfStatusDelAll();
    default:
      const StatusPtr status =
          event.retired ? routes.retiredStatuses[name] : routes.status->vrfStatus(name);
      if (status) status->vrfIdIs(event.number);
  }
}

void System::statusPut(Routes& routes, const Name& name, unsigned id) {
  statusRetire(routes, name);
  const StatusPtr status = VrfStatus::VrfStatusIs(name);
  numbers_[status.get()] = statusesNumbered_++;
  statusesMade_.push_back(status);
  status->vrfIdIs(id);
  routes.status->vrfStatusIs(status);
}

void System::statusRetire(Routes& routes, const Name& name) {
  if (const StatusPtr present = routes.status->vrfStatus(name)) {
    routes.retiredStatuses[name] = present;
  }
}

void System::happenToLens(const Event& event) {
  Routes& routes = routesOf(event);
  const Name& name = nameOf(event);
  switch (event.kind) {
    case Kind::lensMake:
      if (!routes.status->vrfPrefixLensInExactMatch(name)) lensPut(routes, name);
      return;
    case Kind::lensReplace:
      return lensPut(routes, name);
    case Kind::lensDelete:
      lensRetire(routes, name);
      routes.status->vrfPrefixLensInExactMatchDel(name);
      return;
    case Kind::lensDeleteAll:
      for (const Name& each : cast_.names)
        lensRetire(routes, each);
      return routes.status->vrfPrefixLensInExactMatchDelAll();
    default:
      return lengthsAre(event);
  }
}

void System::lensPut(Routes& routes, const Name& name) {
  lensRetire(routes, name);
  const LensPtr lens = PrefixLensInExactMatch::PrefixLensInExactMatchIs(name);
  numbers_[lens.get()] = lensNumbered_++;
  lensMade_.push_back(lens);
  routes.status->vrfPrefixLensInExactMatchIs(lens);
}

void System::lensRetire(Routes& routes, const Name& name) {
  if (const LensPtr present = routes.status->vrfPrefixLensInExactMatch(name)) {
    routes.retiredLens[name] = present;
  }
}

void System::lengthsAre(const Event& event) {
  Routes& routes = routesOf(event);
  const Name& name = nameOf(event);
  const LensPtr lens =
      event.retired ? routes.retiredLens[name] : routes.status->vrfPrefixLensInExactMatch(name);
  if (!lens) return;
  const auto length = static_cast<unsigned char>(event.number);
  if (event.kind == Kind::lenAdd) lens->prefixLenIs(length);
  if (event.kind == Kind::lenDelete) lens->prefixLenDel(length);
  if (event.kind == Kind::lenDeleteAll) lens->prefixLenDelAll();
}

void System::forgetUnheld() {
  const auto isUnheld = [this](const auto& entity) {
    return entity->references() == 1 && numbers_.erase(entity.get()) != 0;
  };
  std::erase_if(statusesMade_, isUnheld);
  std::erase_if(lensMade_, isUnheld);
}

void System::happenToFlags(const Event& event) {
  auto& status = *routesOf(event).status;
  if (event.kind == Kind::decapNh) {
    status.decapNhEnabledIs(event.on);
  } else {
    status.decapNhFallbackEnabledIs(event.on);
  }
}

void System::happenToMachine(const Event& event) {
  switch (event.kind) {
    case Kind::topActive:
      return top_->hasNotificationActiveIs(event.on);
    case Kind::machineActive:
      return top_->vrfSm()->hasNotificationActiveIs(event.on);
    case Kind::machineZombie:
      return top_->vrfSm()->moxDoZombieReactors(event.on);
    case Kind::machineBuild:
      return build(event.inputs);
    default:
      top_->vrfSmDel();
  }
}

void System::build(const Inputs& inputs) {
  const auto routes = [&](std::uint8_t family, std::uint8_t set) {
    return set == noSet ? nullptr : routes_.at(family).at(set).status;
  };
  const VrfSm* before = machine();
  top_->vrfSmIs(inputs.withCounts ? counts_ : nullptr, statuses_, chip_,
                fallbacks_.at(inputs.fallback),
                Mox::ptrCast<Routing::Hardware::RouteStatus const>(routes(v4, inputs.routes)),
                Mox::ptrCast<Routing6::Hardware::RouteStatus const>(routes(v6, inputs.routes6)));
  if (machine() != before) ++built_;
}

void System::call(const Event& event) {
  const Mox::Ptr<VrfSm> machine = top_->vrfSm();
  switch (event.kind) {
    case Kind::callUpdates:
      return machine->handleVrfUpdates(nameOf(event), event.on);
    case Kind::callUpdateAction:
      return machine->updateVrfAction(real(cast_.actions[event.action]));
    case Kind::callUpdateAll:
      return machine->updateAllVrfActions(nameOf(event));
    case Kind::callFallback:
      return machine->handleVrfFallbackConfig(nameOf(event));
    case Kind::callCount:
      return machine->handleVrfRefCountChange(real(cast_.actions[event.action]));
    case Kind::callDecapNh:
      return machine->handleDecapNh();
    default:
      return machine->handleDecapNhFallback();
  }
}

}  // namespace VrfModel
