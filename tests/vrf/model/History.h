#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "Event.h"
#include "Expected.h"
#include "MessageTape.h"
#include "Model.h"

namespace VrfModel {

/// Called with each event that happened and its expected effects.
using Witness = std::function<void(const Event&, const Expected&)>;

/// Applies `history` to the model and to the real system, and compares them after every event.
/// Returns the first difference. Skips events that the model does not allow at that point, so every
/// history and every part of a history can be run.
[[nodiscard]] std::optional<Difference> firstDifference(const Cast& cast,
                                                        const std::vector<Event>& history,
                                                        const Witness& witness = nullptr);

/// Applies `history` to the real system, up to and including the first event that must stop the
/// process in the way of `stop`. Returns true if that event did not stop it, and false if there is
/// no such event.
[[nodiscard]] bool survives(const Cast& cast, const std::vector<Event>& history, Stop stop);

}  // namespace VrfModel
