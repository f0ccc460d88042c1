#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "Event.h"
#include "Expected.h"
#include "MessageTape.h"
#include "Model.h"

namespace VrfModel {

/// Told of each event that happened and of what was expected of it.
using Witness = std::function<void(const Event&, const Expected&)>;

/// Lets `history` befall the model and the real system and compares them after every event. Events
/// that the model does not allow at their turn are passed over, so every history can be run, and
/// every part of one. Gives the first difference.
[[nodiscard]] std::optional<Difference> firstDifference(const Cast& cast,
                                                        const std::vector<Event>& history,
                                                        const Witness& witness = nullptr);

/// Lets `history` befall the real system up to the first event that is to stop the process as
/// `stop` says, that event included. Whether there was one, which then did not stop it.
[[nodiscard]] bool survives(const Cast& cast, const std::vector<Event>& history, Stop stop);

}  // namespace VrfModel
