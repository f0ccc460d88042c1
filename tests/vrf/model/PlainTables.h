#pragma once

#include <map>

#include "Expected.h"
#include "Outcome.h"

namespace VrfModel {

/// The tables of counts and statuses. A mutator returns whether it changed anything. Only a change
/// notifies subscribers.
class PlainTables {
 public:
  explicit PlainTables(Expected& expected) : expected_(expected) {}

  bool countIs(const Action& action, unsigned count);
  bool countDel(const Action& action);
  [[nodiscard]] const unsigned* count(const Action& action) const;

  bool statusIs(const Action& action, const Status& status);
  bool statusDel(const Action& action);
  [[nodiscard]] bool isCreated(const Action& action) const { return statuses_.contains(action); }

  [[nodiscard]] const std::map<Action, unsigned>& counts() const noexcept { return counts_; }
  [[nodiscard]] const std::map<Action, Status>& statuses() const noexcept { return statuses_; }

 private:
  Expected& expected_;
  std::map<Action, unsigned> counts_;
  std::map<Action, Status> statuses_;
};

}  // namespace VrfModel
