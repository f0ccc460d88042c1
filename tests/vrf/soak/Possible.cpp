#include "Possible.h"

#include "tests/vrf/model/Conversions.h"

namespace VrfModel {
namespace {

using ZelVrfSelectionPolicy::VrfAction;
using ZelVrfSelectionPolicy::VrfSm;

bool followsCounts(const VrfSm* machine) {
  return machine != nullptr && machine->hasNotificationActive() && !machine->isZombie() &&
         machine->vrfHwConfig();
}

// A resource begins with the first user, and only what has begun can go on or end.
bool isConsistent(const System& system, const VrfAction& action, unsigned count) {
  return count == 1 || system.statuses().hwStatusHas(action);
}

bool allConsistentWhenGone(const System& system) {
  for (auto entry = system.counts().vrfRefCount().iterator(); entry; ++entry) {
    if (!isConsistent(system, entry.key(), 0)) return false;
  }
  return true;
}

bool canCountsChange(const System& system, const VrfAction& action, const Event& event) {
  if (!followsCounts(system.machine())) return true;
  const unsigned present = system.counts().vrfRefCount(action);
  switch (event.kind) {
    case Kind::countRaise:
      return isConsistent(system, action, present + event.number);
    case Kind::countLower:
      return isConsistent(system, action, present - event.number);
    case Kind::countSet:
      return isConsistent(system, action, event.number);
    case Kind::countDelete:
      return isConsistent(system, action, 0);
    default:
      return allConsistentWhenGone(system);
  }
}

bool canCall(const System& system, const VrfAction& action, const Event& event) {
  const VrfSm* machine = system.machine();
  if (machine == nullptr || machine->isZombie()) return false;
  switch (event.kind) {
    case Kind::callCount:
      return machine->vrfHwConfig() &&
             isConsistent(system, action, system.counts().vrfRefCount(action));
    case Kind::callDecapNh:
    case Kind::callDecapNhFallback:
      return machine->routingHwRouteStatus() != nullptr;
    default:
      return true;
  }
}

}  // namespace

bool isPossible(const System& system, const Cast& cast, const Event& event) {
  const VrfAction action = real(cast.actions[event.action]);
  if (event.kind <= Kind::countDeleteAll) return canCountsChange(system, action, event);
  if (event.kind == Kind::machineActive || event.kind == Kind::machineZombie) {
    return system.machine() != nullptr;
  }
  return event.kind < Kind::callUpdates || canCall(system, action, event);
}

}  // namespace VrfModel
