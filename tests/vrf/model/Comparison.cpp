#include "Comparison.h"

#include "Conversions.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

namespace VrfModel {
namespace {

// Compares a collection of the library with one of the model entry by entry.
// `isSame(value, plain)` compares two values; the lists are shown when one differs.
template <class Real, class Plain, class IsSame, class Show>
std::string entriesDifference(const char* what, const Real& real, const Plain& plain, IsSame isSame,
                              Show show) {
  bool same = real.count() == plain.size();
  for (auto entry = plain.begin(); same && entry != plain.end(); ++entry)
    same = isSame(real, *entry);
  if (same) return {};
  std::string text = std::string(what) + "\n  expected:";
  for (const auto& entry : plain)
    text += "\n    " + show(entry);
  text += "\n  observed:";
  for (auto entry = real.iterator(); entry; ++entry)
    text += "\n    " + show(entry);
  return text;
}

std::string countsDifference(const System& system, const Model& model) {
  struct Show {
    static std::string line(const Action& action, unsigned count) {
      return shown(action) + " = " + std::to_string(count);
    }
    std::string operator()(const std::pair<const Action, unsigned>& entry) const {
      return line(entry.first, entry.second);
    }
    std::string operator()(
        const ZelVrfSelectionPolicy::VrfHwConfig::VrfRefCounts::Iterator& entry) const {
      return line(plain(entry.key()), entry.value());
    }
  };
  return entriesDifference(
      "vrfRefCount", system.counts().vrfRefCount(), model.tables().counts(),
      [](const auto& real, const auto& entry) {
        const unsigned* count = real.find(VrfModel::real(entry.first));
        return count != nullptr && *count == entry.second;
      },
      Show());
}

std::string statusesDifference(const System& system, const Model& model) {
  struct Show {
    static std::string line(const Action& action, const Status& status) {
      return shown(action) + " = " + shown(status);
    }
    std::string operator()(const std::pair<const Action, Status>& entry) const {
      return line(entry.first, entry.second);
    }
    std::string operator()(
        const ZelVrfSelectionPolicy::VrfHwStatus::HwStatuses::Iterator& entry) const {
      return line(plain(entry.key()), plain(entry.value()));
    }
  };
  return entriesDifference(
      "hwStatus", system.statuses().hwStatus(), model.tables().statuses(),
      [](const auto& real, const auto& entry) {
        const auto* status = real.find(VrfModel::real(entry.first));
        return status != nullptr && plain(*status) == entry.second;
      },
      Show());
}

// Entries that are named are shown by their names alone.
struct ShowName {
  template <class Value>
  std::string operator()(const std::pair<const Name, Value>& entry) const {
    return shown(entry.first);
  }
  template <class Iterator>
  std::string operator()(const Iterator& entry) const {
    return shown(Name(entry.key().bytes()));
  }
};

struct ShowFallback {
  std::string operator()(const std::pair<const Name, Name>& entry) const {
    return shown(entry.first) + " -> " + shown(entry.second);
  }
  template <class Iterator>
  std::string operator()(const Iterator& entry) const {
    return shown(entry.key().str()) + " -> " + shown(entry.value().str());
  }
};

std::string handledDifference(const ZelVrfSelectionPolicy::VrfSm& real, const PlainVrfSm& plain) {
  return entriesDifference(
      "fallbackVrfInfo", real.fallbackVrfInfo(), plain.handledFallbacks(),
      [](const auto& handled, const auto& entry) {
        const L3::VrfName* fallback = handled.find(L3::VrfName(entry.first));
        return fallback != nullptr && fallback->bytes() == entry.second;
      },
      ShowFallback());
}

bool isSameRecord(const ZelVrfSelectionPolicy::DependentVrfInfo& record, const Name& of,
                  const std::set<Name>& dependents) {
  if (record.fallbackVrf().bytes() != of) return false;
  if (record.dependentVrfs().count() != dependents.size()) return false;
  return std::all_of(dependents.begin(), dependents.end(),
                     [&](const Name& name) { return record.dependentVrfs(name); });
}

struct ShowDependents {
  std::string operator()(const std::pair<const Name, std::set<Name>>& entry) const {
    std::string text = shown(entry.first) + ":";
    for (const Name& dependent : entry.second)
      text += " " + shown(dependent);
    return text;
  }
  template <class Iterator>
  std::string operator()(const Iterator& entry) const {
    std::string text = shown(entry.key().str()) + ":";
    for (auto dependent = entry.value()->dependentVrfs().iterator(); dependent; ++dependent)
      text += " " + shown(dependent.key().str());
    return text;
  }
};

std::string dependentsDifference(const ZelVrfSelectionPolicy::VrfSm& real,
                                 const PlainVrfSm& plain) {
  return entriesDifference(
      "dependentVrfInfo", real.dependentVrfInfo(), plain.dependents(),
      [](const auto& records, const auto& entry) {
        const auto* record = records.find(L3::VrfName(entry.first));
        return record != nullptr && isSameRecord(**record, entry.first, entry.second);
      },
      ShowDependents());
}

bool isSameReactor(const Mox::PtrInterface::NotifieeConst& real, const PlainVrfSm::Reactor& plain,
                   const Mox::PtrInterface* watched) {
  return real.hasNotificationActive() == plain.isActive && real.isZombie() == plain.isZombie &&
         real.notifier().get() == watched;
}

// A nested machine that is there but differs is shown by its name alone.
std::string instancesDifference(const System& system, const ZelVrfSelectionPolicy::VrfSm& real,
                                const PlainVrfSm& plain) {
  return entriesDifference(
      "moxVrfInstance, or what one of them watches or its flags", real.moxVrfInstance(),
      plain.instances(),
      [&](const auto& instances, const auto& entry) {
        const auto* instance = instances.find(L3::VrfName(entry.first));
        return instance != nullptr && isSameReactor(**instance, entry.second,
                                                    system.vrfStatus(entry.second.watched->number));
      },
      ShowName());
}

template <class Machines>
std::string lensSmsDifference(const char* what, const System& system, const Machines& real,
                              const PlainVrfSm::LensSms& plain) {
  return entriesDifference(
      what, real, plain,
      [&](const auto& machines, const auto& entry) {
        const auto* machine = machines.find(Velo::String(entry.first));
        return machine != nullptr && isSameReactor(**machine, entry.second,
                                                   system.prefixLens(entry.second.watched->number));
      },
      ShowName());
}

std::string flagsDifference(const ZelVrfSelectionPolicy::VrfSm& real, const PlainVrfSm& plain) {
  if (real.hasNotificationActive() != plain.isActive()) return "the machine's notification flag";
  if (real.isZombie() != plain.isZombie()) return "the machine's zombie flag";
  return {};
}

std::string machineDifference(const System& system, const Model& model) {
  if (system.built() != model.built()) return "whether a new machine was built";
  if (system.top().hasNotificationActive() != model.isTopActive()) {
    return "the policy machine's notification flag";
  }
  const auto* real = system.machine();
  const PlainVrfSm* plain = model.machine();
  if ((real == nullptr) != (plain == nullptr)) return "whether there is a machine";
  if (real == nullptr) return {};
  std::string text = flagsDifference(*real, *plain);
  if (text.empty()) text = handledDifference(*real, *plain);
  if (text.empty()) text = dependentsDifference(*real, *plain);
  if (text.empty()) text = instancesDifference(system, *real, *plain);
  if (text.empty()) {
    text = lensSmsDifference("vrfPrefixLensInExactMatch, or what one watches or its flags", system,
                             real->vrfPrefixLensInExactMatch(), plain->lensSms(v4));
  }
  if (text.empty()) {
    text = lensSmsDifference("vrfPrefixLensInExactMatchV6, or what one watches or its flags",
                             system, real->vrfPrefixLensInExactMatchV6(), plain->lensSms(v6));
  }
  return text;
}

std::string labelled(const char* label, const std::string& difference) {
  return difference.empty() ? difference : label + difference;
}

}  // namespace

std::string differenceOf(System& system, const Model& model, const Expected& expected) {
  Observed observed = system.takeObserved();
  std::string text = labelled("hook calls", expected.hooks.differenceFrom(observed.hooks));
  if (text.empty()) text = countsDifference(system, model);
  if (text.empty()) text = statusesDifference(system, model);
  if (text.empty()) {
    text = labelled("notices of the tables", expected.notices.differenceFrom(observed.notices));
  }
  if (text.empty()) text = machineDifference(system, model);
  return text;
}

}  // namespace VrfModel
