#pragma once

#include <string>
#include <vector>

#include "Event.h"

namespace VrfModel {

/// Shrinks `history`, which is known to fail as `failure` says, and describes what is left of it,
/// event by event, with its first difference.
[[nodiscard]] std::string reportOf(const Cast& cast, const std::vector<Event>& history,
                                   const std::string& failure);

}  // namespace VrfModel
