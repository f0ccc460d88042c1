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

/// The part of `history` up to the first event that would stop the process as `stop` says; nothing
/// when there is none.
[[nodiscard]] std::optional<std::vector<Event>> partThatStops(const Cast& cast,
                                                              const std::vector<Event>& history,
                                                              Stop stop);

/// Lets `history` befall the real system alone: the events that the model allows, and the last one
/// in any case.
void letHappen(const Cast& cast, const std::vector<Event>& history);

}  // namespace VrfModel
