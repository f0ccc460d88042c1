#include "Model.h"

namespace VrfModel {
namespace {

std::vector<Name> namesIn(const auto& byName) {
  std::vector<Name> names;
  for (const auto& [name, value] : byName)
    names.push_back(name);
  return names;
}

}  // namespace

Expected Model::apply(const Event& event, const std::vector<Name>& fallbackWalk) {
  expected_ = {};
  happen(event, fallbackWalk);
  return expected_;
}

void Model::happen(const Event& event, const std::vector<Name>& fallbackWalk) {
  if (event.kind <= Kind::countDeleteAll) return happenToCounts(event);
  if (event.kind <= Kind::fallbackDeleteAll) return happenToFallbacks(event, fallbackWalk);
  if (event.kind <= Kind::statusId) return happenToStatuses(event);
  if (event.kind <= Kind::lenDeleteAll) return happenToLens(event);
  if (event.kind <= Kind::decapNhFallback) return happenToFlags(event);
  if (event.kind <= Kind::machineDrop) return happenToMachine(event, fallbackWalk);
  call(event);
}

unsigned Model::newCount(const Event& event) const {
  const unsigned* count = tables_.count(actionOf(event));
  const unsigned present = count == nullptr ? 0 : *count;
  if (event.kind == Kind::countRaise) return present + event.number;
  if (event.kind == Kind::countLower) return present - event.number;
  return event.number;
}

bool Model::allows(const Event& event) const {
  return canHappen(event) && stopOf(event) == Stop::none;
}

bool Model::canHappen(const Event& event) const {
  if (event.kind == Kind::machineActive || event.kind == Kind::machineZombie) {
    return machine_ != nullptr;
  }
  return event.kind < Kind::callUpdates || canCall(event);
}

bool Model::canCall(const Event& event) const {
  if (!machine_ || machine_->isZombie()) return false;
  if (event.kind == Kind::callCount) return machine_->inputs().withCounts;
  const bool readsRoutes =
      event.kind == Kind::callDecapNh || event.kind == Kind::callDecapNhFallback;
  return !readsRoutes || machine_->inputs().routes != noSet;
}

Stop Model::stopOf(const Event& event) const {
  const Action& action = actionOf(event);
  const unsigned* present = tables_.count(action);
  const unsigned count = newCount(event);
  switch (event.kind) {
    case Kind::countRaise:
    case Kind::countLower:
    case Kind::countSet:
      if (present != nullptr && *present == count) return Stop::none;
      return stopOfNewCount(action, &count);
    case Kind::countDelete:
      return present == nullptr ? Stop::none : stopOfNewCount(action, nullptr);
    case Kind::countDeleteAll:
      return stopOfDeletionOfAll();
    case Kind::callCount:
      return canCall(event) ? machine_->stopOf(action, present) : Stop::none;
    default:
      return Stop::none;
  }
}

Stop Model::stopOfNewCount(const Action& action, const unsigned* count) const {
  const bool isNotified = machine_ && machine_->followsCounts();
  return isNotified ? machine_->stopOf(action, count) : Stop::none;
}

Stop Model::stopOfDeletionOfAll() const {
  for (const auto& [action, count] : tables_.counts()) {
    if (stopOfNewCount(action, nullptr) != Stop::none) return Stop::uncreatedDeletion;
  }
  return Stop::none;
}

void Model::happenToCounts(const Event& event) {
  if (event.kind == Kind::countDelete) return countDel(actionOf(event));
  if (event.kind != Kind::countDeleteAll) return countIs(actionOf(event), newCount(event));
  const std::map<Action, unsigned> counts = tables_.counts();
  const Expected::AnyOrder anyOrder(expected_);
  for (const auto& [action, count] : counts)
    countDel(action);
}

void Model::countIs(const Action& action, unsigned count) {
  if (tables_.countIs(action, count) && machine_) machine_->countChanged(action);
}

void Model::countDel(const Action& action) {
  if (tables_.countDel(action) && machine_) machine_->countChanged(action);
}

void Model::happenToFallbacks(const Event& event, const std::vector<Name>& fallbackWalk) {
  if (event.kind == Kind::fallbackDelete) return fallbackDel(event.set, nameOf(event));
  if (event.kind == Kind::fallbackDeleteAll) {
    for (const Name& vrf : fallbackWalk)
      fallbackDel(event.set, vrf);
    return;
  }
  const Name& fallback = cast_.names[event.other];
  const auto [entry, isNew] = platform_.fallbacks.at(event.set).emplace(nameOf(event), fallback);
  if (!isNew && entry->second == fallback) return;
  entry->second = fallback;
  if (machine_) machine_->fallbackChanged(event.set, nameOf(event));
}

void Model::fallbackDel(unsigned set, const Name& vrf) {
  if (platform_.fallbacks.at(set).erase(vrf) != 0 && machine_) machine_->fallbackChanged(set, vrf);
}

void Model::happenToStatuses(const Event& event) {
  const bool isThere = routesOf(event).statuses.find(nameOf(event)) != nullptr;
  if (event.kind == Kind::statusMake && !isThere) statusIs(event, 0);
  if (event.kind == Kind::statusReplace) statusIs(event, event.number);
  if (event.kind == Kind::statusDelete) statusDel(event, nameOf(event));
  if (event.kind == Kind::statusId) idIs(event);
  if (event.kind != Kind::statusDeleteAll) return;
  const Expected::AnyOrder anyOrder(expected_);
  for (const Name& name : namesIn(routesOf(event).statuses.present))
    statusDel(event, name);
}

void Model::statusIs(const Event& event, unsigned id) {
  routesOf(event).statuses.put(
      std::make_shared<VrfStatus>(VrfStatus{statusesMade_++, nameOf(event), id}));
  if (machine_) machine_->statusChanged(event.family, event.set, nameOf(event));
}

void Model::statusDel(const Event& event, const Name& name) {
  const bool wasThere = routesOf(event).statuses.take(name);
  if (wasThere && machine_) machine_->statusChanged(event.family, event.set, name);
}

void Model::idIs(const Event& event) {
  const auto status = routesOf(event).statuses.find(nameOf(event), event.retired);
  if (!status || status->id == event.number) return;
  status->id = event.number;
  if (machine_) machine_->idChanged(*status);
}

void Model::happenToLens(const Event& event) {
  const bool isThere = routesOf(event).lens.find(nameOf(event)) != nullptr;
  if (event.kind == Kind::lensMake && !isThere) lensIs(event);
  if (event.kind == Kind::lensReplace) lensIs(event);
  if (event.kind == Kind::lensDelete) lensDel(event, nameOf(event));
  if (event.kind >= Kind::lenAdd) lengthsAre(event);
  if (event.kind != Kind::lensDeleteAll) return;
  const Expected::AnyOrder anyOrder(expected_);
  for (const Name& name : namesIn(routesOf(event).lens.present))
    lensDel(event, name);
}

void Model::lensIs(const Event& event) {
  routesOf(event).lens.put(
      std::make_shared<PrefixLens>(PrefixLens{lensMade_++, nameOf(event), {}}));
  if (machine_) machine_->lensChanged(event.family, event.set, nameOf(event));
}

void Model::lensDel(const Event& event, const Name& name) {
  const bool wasThere = routesOf(event).lens.take(name);
  if (wasThere && machine_) machine_->lensChanged(event.family, event.set, name);
}

// The platform notifies once for each length that is added or removed.
void Model::lengthsAre(const Event& event) {
  const auto lens = routesOf(event).lens.find(nameOf(event), event.retired);
  if (!lens) return;
  std::size_t changes = lens->lengths.size();
  if (event.kind == Kind::lenAdd) changes = lens->lengths.insert(event.number).second ? 1 : 0;
  if (event.kind == Kind::lenDelete) changes = lens->lengths.erase(event.number);
  if (event.kind == Kind::lenDeleteAll) lens->lengths.clear();
  for (std::size_t change = 0; change < changes; ++change) {
    if (machine_) machine_->lengthsChanged(*lens);
  }
}

void Model::happenToFlags(const Event& event) {
  RouteStatus& routes = routesOf(event);
  const bool isFallback = event.kind == Kind::decapNhFallback;
  bool& flag = isFallback ? routes.decapNhFallback : routes.decapNh;
  if (flag == event.on) return;
  flag = event.on;
  if (!machine_) return;
  if (isFallback) {
    machine_->decapNhFallbackChanged(event.family, event.set);
  } else {
    machine_->decapNhChanged(event.family, event.set);
  }
}

void Model::happenToMachine(const Event& event, const std::vector<Name>& fallbackWalk) {
  if (event.kind == Kind::machineBuild) return build(event.inputs, fallbackWalk);
  if (event.kind == Kind::machineDrop) return drop();
  if (event.kind == Kind::machineActive) return machine_->activeIs(event.on);
  if (event.kind == Kind::machineZombie) return machine_->zombieIs(event.on);
  if (isTopActive_ == event.on) return;
  isTopActive_ = event.on;
  if (machine_) machine_->activeIs(event.on);
}

// The new machine is complete before the old machine ends.
void Model::build(const Inputs& inputs, const std::vector<Name>& fallbackWalk) {
  if (machine_ && machine_->inputs() == inputs) return;
  auto machine = std::make_unique<PlainVrfSm>(
      PlainVrfSm::Surroundings{platform_, tables_, chipCalls_, expected_}, inputs, fallbackWalk);
  ++built_;
  if (machine_) machine_->end();
  machine_ = std::move(machine);
}

void Model::drop() {
  if (machine_) machine_->end();
  machine_.reset();
}

void Model::call(const Event& event) {
  switch (event.kind) {
    case Kind::callUpdates:
      return machine_->handleUpdates(nameOf(event), event.on);
    case Kind::callUpdateAction:
      return machine_->updateOne(actionOf(event));
    case Kind::callUpdateAll:
      return machine_->updateAll(nameOf(event));
    case Kind::callFallback:
      return machine_->handleFallback(nameOf(event));
    case Kind::callCount:
      return machine_->handleCount(actionOf(event));
    case Kind::callDecapNh:
      return machine_->handleDecapNh();
    default:
      return machine_->handleDecapNhFallback();
  }
}

}  // namespace VrfModel
