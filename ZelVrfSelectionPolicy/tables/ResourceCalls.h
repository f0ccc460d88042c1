#pragma once

#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy {

// What the state machines on the same two tables know of one another's work. It belongs to the
// tables, so that one change leads to one creation or deletion, whichever machine makes the call.

/// A change of a count that subscribers are being notified of.
struct VrfHwConfig::Change {
  const VrfAction& action;
  /// A subscriber has deleted the action's resource since. The others find that done.
  bool resourceEnded = false;
};

/// A call of a hook for one action that is under way.
struct VrfHwStatus::ResourceCall {
  enum class Kind { creation, update, deletion };

  const VrfAction& action;
  Kind kind;
  /// During a creation: the count changed. Whoever makes the call handles that afterwards.
  bool countChanged = false;
  /// During an update: the action lost its entry, even if it has one again.
  bool entryRemoved = false;
};

}  // namespace ZelVrfSelectionPolicy
