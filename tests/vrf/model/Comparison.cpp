#include "Comparison.h"

#include "Conversions.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

namespace VrfModel {
namespace {

using RealReactor = Mox::PtrInterface::NotifieeConst;
using RealVrfSm = ZelVrfSelectionPolicy::VrfSm;

/// The number of the entity that a nested machine watches, and the state of the machine.
struct Watch {
  unsigned watched;
  bool isActive;
  bool isZombie;

  friend bool operator==(const Watch&, const Watch&) = default;
};

std::string shownValue(unsigned count) {
  return std::to_string(count);
}
std::string shownValue(const Status& status) {
  return shown(status);
}
std::string shownValue(const Name& name) {
  return shown(name);
}
std::string shownValue(const std::set<Name>& names) {
  std::string text;
  for (const Name& name : names)
    text += (text.empty() ? "" : ", ") + shown(name);
  return "{" + text + "}";
}
std::string shownValue(const Watch& watch) {
  return "watches entity " + std::to_string(watch.watched) +
         (watch.isActive ? ", active" : ", silent") + (watch.isZombie ? ", zombie" : "");
}

template <class Map>
std::string shownEntries(const Map& map) {
  std::string text;
  for (const auto& [key, value] : map)
    text += "\n    " + shown(key) + ": " + shownValue(value);
  return text.empty() ? "\n    nothing" : text;
}

// Empty when the maps are equal.
template <class Map>
std::string differenceOf(const char* what, const Map& expected, const Map& observed) {
  if (expected == observed) return {};
  return std::string(what) + "\n  expected:" + shownEntries(expected) +
         "\n  observed:" + shownEntries(observed);
}

std::string differenceOf(const char* what, bool expected, bool observed) {
  if (expected == observed) return {};
  return std::string(what) + (expected ? ": expected, but not so" : ": so, but not expected");
}

std::map<Action, unsigned> plainCounts(const System& system) {
  std::map<Action, unsigned> counts;
  for (auto entry = system.counts().vrfRefCount().iterator(); entry; ++entry)
    counts.emplace(plain(entry.key()), entry.value());
  return counts;
}

std::map<Action, Status> plainStatuses(const System& system) {
  std::map<Action, Status> statuses;
  for (auto entry = system.statuses().hwStatus().iterator(); entry; ++entry)
    statuses.emplace(plain(entry.key()), plain(entry.value()));
  return statuses;
}

std::map<Name, Name> plainHandled(const RealVrfSm& machine) {
  std::map<Name, Name> handled;
  for (auto entry = machine.fallbackVrfInfo().iterator(); entry; ++entry)
    handled.emplace(entry.key().str(), entry.value().str());
  return handled;
}

std::map<Name, std::set<Name>> plainDependents(const RealVrfSm& machine) {
  std::map<Name, std::set<Name>> dependents;
  for (auto record = machine.dependentVrfInfo().iterator(); record; ++record) {
    std::set<Name>& names = dependents[record.value()->fallbackVrf().str()];
    for (auto name = record.value()->dependentVrfs().iterator(); name; ++name)
      names.insert(name.key().str());
  }
  return dependents;
}

// The nested machines of one collection, of the model and of the library.
template <class Machines>
std::map<Name, Watch> watchesOfPlain(const Machines& machines) {
  std::map<Name, Watch> watches;
  for (const auto& [name, machine] : machines)
    watches.emplace(name, Watch{machine.watched->number, machine.isActive, machine.isZombie});
  return watches;
}
template <class Machines>
std::map<Name, Watch> watchesOfReal(const Machines& machines, const System& system) {
  std::map<Name, Watch> watches;
  for (auto entry = machines.iterator(); entry; ++entry) {
    const RealReactor& machine = *entry.value();
    watches.emplace(Name(entry.key().bytes()),
                    Watch{system.numberOf(machine.notifier().get()),
                          machine.hasNotificationActive(), machine.isZombie()});
  }
  return watches;
}

std::string nestedDifference(const System& system, const PlainVrfSm& expected,
                             const RealVrfSm& observed) {
  std::string text = differenceOf("moxVrfInstance", watchesOfPlain(expected.instances()),
                                  watchesOfReal(observed.moxVrfInstance(), system));
  if (text.empty()) {
    text = differenceOf("vrfPrefixLensInExactMatch", watchesOfPlain(expected.lensSms(v4)),
                        watchesOfReal(observed.vrfPrefixLensInExactMatch(), system));
  }
  if (text.empty()) {
    text = differenceOf("vrfPrefixLensInExactMatchV6", watchesOfPlain(expected.lensSms(v6)),
                        watchesOfReal(observed.vrfPrefixLensInExactMatchV6(), system));
  }
  return text;
}

std::string machineDifference(const System& system, const PlainVrfSm& expected,
                              const RealVrfSm& observed) {
  std::string text = differenceOf("the VRF machine is active", expected.isActive(),
                                  observed.hasNotificationActive());
  if (text.empty()) {
    text = differenceOf("the VRF machine is a zombie", expected.isZombie(), observed.isZombie());
  }
  if (text.empty()) {
    text = differenceOf("fallbackVrfInfo", expected.handledFallbacks(), plainHandled(observed));
  }
  if (text.empty()) {
    text = differenceOf("dependentVrfInfo", expected.dependents(), plainDependents(observed));
  }
  return text.empty() ? nestedDifference(system, expected, observed) : text;
}

std::string machinesDifference(const System& system, const Model& model) {
  if (system.built() != model.built()) return "whether a new VRF machine was built";
  std::string text = differenceOf("the policy machine is active", model.isTopActive(),
                                  system.top().hasNotificationActive());
  if (text.empty()) {
    text = differenceOf("there is a VRF machine", model.machine() != nullptr,
                        system.machine() != nullptr);
  }
  if (!text.empty() || system.machine() == nullptr) return text;
  return machineDifference(system, *model.machine(), *system.machine());
}

std::string labelled(const char* label, const std::string& difference) {
  return difference.empty() ? difference : label + difference;
}

}  // namespace

std::string differenceOf(System& system, const Model& model, const Expected& expected) {
  const Observed observed = system.takeObserved();
  std::string text = labelled("hook calls", expected.hooks.differenceFrom(observed.hooks));
  if (text.empty()) {
    text = differenceOf("vrfRefCount", model.tables().counts(), plainCounts(system));
  }
  if (text.empty()) {
    text = differenceOf("hwStatus", model.tables().statuses(), plainStatuses(system));
  }
  if (text.empty()) {
    text = labelled("notices of the tables", expected.notices.differenceFrom(observed.notices));
  }
  return text.empty() ? machinesDifference(system, model) : text;
}

}  // namespace VrfModel
