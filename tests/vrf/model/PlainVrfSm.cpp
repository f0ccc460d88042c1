// The reference machine itself: its start and end, its switches, and the notifications that it
// handles.

#include "PlainVrfSm.h"

#include "Messages.h"

namespace VrfModel {

PlainVrfSm::PlainVrfSm(const Surroundings& surroundings, const Inputs& inputs,
                       const std::vector<Name>& fallbackWalk)
    : platform_(surroundings.platform),
      tables_(surroundings.tables),
      chipCalls_(surroundings.chipCalls),
      expected_(surroundings.expected),
      inputs_(inputs) {
  expected_.message(Messages::initialize());
  handlePresentInputs(fallbackWalk);
}

void PlainVrfSm::handlePresentInputs(const std::vector<Name>& fallbackWalk) {
  for (const Name& vrf : fallbackWalk)
    handleFallback(vrf);
  if (routes(v4) != nullptr) {
    const Expected::AnyOrder anyOrder(expected_);
    for (const auto& [name, status] : routes(v4)->statuses.present)
      instanceIs(status);
  }
  for (const unsigned family : {v4, v6}) {
    if (routes(family) == nullptr) continue;
    const Expected::AnyOrder anyOrder(expected_);
    for (const auto& [name, lens] : routes(family)->lens.present)
      lensSmIs(family, lens);
  }
}

void PlainVrfSm::activeIs(bool active) {
  if (isActive_ == active) return;
  isActive_ = active;
  forEachReactor([&](Reactor& reactor) { reactor.isActive = active; });
}

template <class Visit>
void PlainVrfSm::forEachReactor(Visit visit) {
  for (Reactor& reactor : routeReactors_)
    visit(reactor);
  for (auto& [name, instance] : instances_)
    visit(instance);
  for (LensSms& machines : lensSms_) {
    for (auto& [name, machine] : machines)
      visit(machine);
  }
}

void PlainVrfSm::zombieIs(bool zombie) {
  if (isZombie_ == zombie) return;
  for (Reactor& reactor : routeReactors_) {
    if (reactor.isZombie != zombie) reactor = {!zombie, zombie};
  }
  {
    const Expected::AnyOrder anyOrder(expected_);
    for (auto& [name, instance] : instances_)
      instanceZombieIs(instance, zombie);
  }
  for (const unsigned family : {v4, v6}) {
    const Expected::AnyOrder anyOrder(expected_);
    for (auto& [name, machine] : lensSms_.at(family))
      lensSmZombieIs(family, machine, zombie);
  }
  isZombie_ = zombie;
}

void PlainVrfSm::end() {
  isEnding_ = true;
  zombieIs(true);
}

RouteStatus* PlainVrfSm::routes(unsigned family) const {
  const std::uint8_t set = followedRoutes(family);
  return set == noSet ? nullptr : &platform_.routes.at(family).at(set);
}

bool PlainVrfSm::isNotified(unsigned family, unsigned set) const {
  return followedRoutes(family) == set && routeReactors_.at(family).isActive;
}

void PlainVrfSm::countChanged(const Action& action) {
  if (followsCounts()) handleCount(action);
}

void PlainVrfSm::fallbackChanged(unsigned set, const Name& vrf) {
  if (inputs_.fallback == set && isActive_ && !isZombie_) handleFallback(vrf);
}

// The IPv6 route status contributes prefix lengths only.
void PlainVrfSm::statusChanged(unsigned family, unsigned set, const Name& name) {
  if (family != v4 || !isNotified(family, set)) return;
  if (const auto status = routes(v4)->statuses.find(name)) {
    instanceIs(status);
  } else {
    instanceDel(name);
  }
}

void PlainVrfSm::lensChanged(unsigned family, unsigned set, const Name& name) {
  if (!isNotified(family, set)) return;
  if (const auto lens = routes(family)->lens.find(name)) {
    lensSmIs(family, lens);
  } else {
    lensSmDel(family, name);
  }
}

void PlainVrfSm::decapNhChanged(unsigned family, unsigned set) {
  if (family == v4 && isNotified(v4, set) && !routeReactors_[v4].isZombie) handleDecapNh();
}

void PlainVrfSm::decapNhFallbackChanged(unsigned family, unsigned set) {
  if (family == v4 && isNotified(v4, set) && !routeReactors_[v4].isZombie) handleDecapNhFallback();
}

}  // namespace VrfModel
