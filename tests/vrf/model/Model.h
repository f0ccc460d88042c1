#pragma once

#include <memory>
#include <vector>

#include "Event.h"
#include "Expected.h"
#include "PlainPlatform.h"
#include "PlainTables.h"
#include "PlainVrfSm.h"

namespace VrfModel {

/// The reference model: the platform, the tables, and at most one machine. It applies events and
/// returns the effects that each must have.
class Model {
 public:
  explicit Model(const Cast& cast) : cast_(cast) {}

  /// Whether `event` may happen now. Not allowed are events that stop the process, and calls of a
  /// machine that does not exist or is a zombie.
  [[nodiscard]] bool allows(const Event& event) const;
  /// The way in which `event` would stop the process now.
  [[nodiscard]] Stop stopOf(const Event& event) const;

  /// Applies `event` and returns its effects. `fallbackWalk` is the order in which the platform
  /// iterates over the fallback configuration of the event.
  [[nodiscard]] Expected apply(const Event& event, const std::vector<Name>& fallbackWalk);

  [[nodiscard]] const PlainTables& tables() const noexcept { return tables_; }
  /// Null if there is none.
  [[nodiscard]] const PlainVrfSm* machine() const noexcept { return machine_.get(); }
  /// How many machines have been built.
  [[nodiscard]] unsigned built() const noexcept { return built_; }
  [[nodiscard]] bool isTopActive() const noexcept { return isTopActive_; }

 private:
  void happen(const Event& event, const std::vector<Name>& fallbackWalk);
  void happenToCounts(const Event& event);
  void happenToFallbacks(const Event& event, const std::vector<Name>& fallbackWalk);
  void happenToStatuses(const Event& event);
  void happenToLens(const Event& event);
  void happenToFlags(const Event& event);
  void happenToMachine(const Event& event, const std::vector<Name>& fallbackWalk);
  void call(const Event& event);

  [[nodiscard]] bool canHappen(const Event& event) const;
  [[nodiscard]] bool canCall(const Event& event) const;
  [[nodiscard]] Stop stopOfNewCount(const Action& action, const unsigned* count) const;
  [[nodiscard]] Stop stopOfDeletionOfAll() const;
  [[nodiscard]] unsigned newCount(const Event& event) const;

  void countIs(const Action& action, unsigned count);
  void countDel(const Action& action);
  void fallbackDel(unsigned set, const Name& vrf);
  void statusIs(const Event& event, unsigned id);
  void statusDel(const Event& event, const Name& name);
  void idIs(const Event& event);
  void lensIs(const Event& event);
  void lensDel(const Event& event, const Name& name);
  void lengthsAre(const Event& event);
  void build(const Inputs& inputs, const std::vector<Name>& fallbackWalk);
  void drop();

  [[nodiscard]] const Action& actionOf(const Event& event) const {
    return cast_.actions[event.action];
  }
  [[nodiscard]] const Name& nameOf(const Event& event) const { return cast_.names[event.name]; }
  [[nodiscard]] RouteStatus& routesOf(const Event& event) {
    return platform_.routes.at(event.family).at(event.set);
  }

  const Cast& cast_;
  Expected expected_;
  PlainPlatform platform_;
  PlainTables tables_{expected_};
  std::map<Action, unsigned> chipCalls_;
  std::unique_ptr<PlainVrfSm> machine_;
  unsigned built_ = 0;
  unsigned statusesMade_ = 0;
  unsigned lensMade_ = 0;
  bool isTopActive_ = true;
};

}  // namespace VrfModel
