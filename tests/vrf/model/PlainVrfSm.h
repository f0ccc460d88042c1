#pragma once

#include <array>
#include <map>
#include <set>
#include <vector>

#include "PlainPlatform.h"
#include "PlainTables.h"

namespace VrfModel {

/// How handling a count can stop the process.
enum class Stop {
  none,
  /// The action has several users and no resource.
  invalidIncrement,
  /// The resource to delete does not exist.
  uncreatedDeletion,
};

/// The reference VRF state machine: the behaviour of the real one, in the simplest form. It calls
/// no chip. It records the expected hook calls instead.
class PlainVrfSm {
 public:
  /// A reactor on one entity. It is notified while it is active.
  struct Reactor {
    bool isActive = true;
    bool isZombie = false;
  };
  struct Instance : Reactor {
    std::shared_ptr<VrfStatus> watched;
  };
  struct LensSm : Reactor {
    std::shared_ptr<PrefixLens> watched;
  };
  using LensSms = std::map<Name, LensSm>;

  /// The objects around the machine. All must outlive it.
  struct Surroundings {
    PlainPlatform& platform;
    PlainTables& tables;
    std::map<Action, unsigned>& chipCalls;
    Expected& expected;
  };

  /// `fallbackWalk` is the order in which the platform iterates over the fallback configuration.
  PlainVrfSm(const Surroundings& surroundings, const Inputs& inputs,
             const std::vector<Name>& fallbackWalk);

  void activeIs(bool active);
  void zombieIs(bool zombie);
  /// Records the effects of its destruction.
  void end();

  // Notifications from the platform. A change that the machine does not follow is ignored.
  void countChanged(const Action& action);
  void fallbackChanged(unsigned set, const Name& vrf);
  void statusChanged(unsigned family, unsigned set, const Name& name);
  void idChanged(const VrfStatus& status);
  void lensChanged(unsigned family, unsigned set, const Name& name);
  void lengthsChanged(const PrefixLens& lens);
  void decapNhChanged(unsigned family, unsigned set);
  void decapNhFallbackChanged(unsigned family, unsigned set);

  // The handlers.
  void handleCount(const Action& action);
  void handleFallback(const Name& vrf);
  void handleUpdates(const Name& vrf, bool fallbackConfigChange);
  void updateAll(const Name& vrf);
  void updateOne(const Action& action);
  void handleDecapNh();
  void handleDecapNhFallback();

  /// Whether changes of counts notify it.
  [[nodiscard]] bool followsCounts() const { return inputs_.withCounts && isActive_ && !isZombie_; }
  /// The way in which handling `count` would stop the process. Null stands for no count.
  [[nodiscard]] Stop stopOf(const Action& action, const unsigned* count) const;

  [[nodiscard]] const Inputs& inputs() const { return inputs_; }
  [[nodiscard]] bool isActive() const { return isActive_; }
  [[nodiscard]] bool isZombie() const { return isZombie_; }
  [[nodiscard]] const std::map<Name, Name>& handledFallbacks() const { return handled_; }
  [[nodiscard]] const std::map<Name, std::set<Name>>& dependents() const { return dependents_; }
  [[nodiscard]] const std::map<Name, Instance>& instances() const { return instances_; }
  [[nodiscard]] const LensSms& lensSms(unsigned family) const { return lensSms_.at(family); }

 private:
  [[nodiscard]] RouteStatus* routes(unsigned family) const;
  [[nodiscard]] std::uint8_t followedRoutes(unsigned family) const {
    return family == v4 ? inputs_.routes : inputs_.routes6;
  }
  [[nodiscard]] bool isNotified(unsigned family, unsigned set) const;
  void handlePresentInputs(const std::vector<Name>& fallbackWalk);

  void instanceIs(const std::shared_ptr<VrfStatus>& status);
  void instanceDel(const Name& name);
  void instanceZombieIs(Instance& instance, bool zombie);
  void handleId(const Instance& instance);

  void lensSmIs(unsigned family, const std::shared_ptr<PrefixLens>& lens);
  void lensSmDel(unsigned family, const Name& name);
  void lensSmZombieIs(unsigned family, LensSm& machine, bool zombie);
  void handleLengths(unsigned family, const LensSm& machine);

  void create(const Action& action);
  void remove(const Action& action);
  [[nodiscard]] Status program(Hook hook, const Action& action);
  void dependencyIs(const Name& vrf, const Name& fallback);
  void dependencyDel(const Name& vrf, const Name& fallback);
  template <class Visit>
  void forEachReactor(Visit visit);

  PlainPlatform& platform_;
  PlainTables& tables_;
  std::map<Action, unsigned>& chipCalls_;
  Expected& expected_;
  Inputs inputs_;
  bool isActive_ = true;
  bool isZombie_ = false;
  bool isEnding_ = false;
  std::array<Reactor, 2> routeReactors_;
  std::map<Name, Name> handled_;
  std::map<Name, std::set<Name>> dependents_;
  std::map<Name, Instance> instances_;
  std::array<LensSms, 2> lensSms_;
};

}  // namespace VrfModel
