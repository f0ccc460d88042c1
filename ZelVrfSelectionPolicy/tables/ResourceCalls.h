#pragma once

#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {

/// State that all state machines on the same two tables share. It is in the tables, so that one
/// change causes one creation or deletion, by one of the machines.

/// A change of a count whose notification is in progress.
struct VrfHwConfig::Change {
  const VrfAction& action;
  /// Whether a subscriber has deleted the resource of the action during the notification.
  bool resourceDeleted = false;
};

/// An active hook call for one action.
struct VrfHwStatus::ResourceCall {
  enum class Kind { creation, update, deletion };

  const VrfAction& action;
  Kind kind;
  /// During a creation: whether the count changed. The caller handles that afterwards.
  bool countChanged = false;
  /// During an update: whether the entry of the action was removed, also if it was added again.
  bool entryRemoved = false;
};

}  // namespace ZelVrfSelectionPolicy
