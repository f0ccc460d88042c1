#pragma once

#include <string>
#include <vector>

#include "Event.h"

namespace VrfModel {

/// Shrinks `history`, which fails with `failure`. Returns a report of the remaining events, with
/// the first difference.
[[nodiscard]] std::string reportOf(const Cast& cast, const std::vector<Event>& history,
                                   const std::string& failure);

}  // namespace VrfModel
