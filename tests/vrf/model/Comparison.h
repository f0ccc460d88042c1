#pragma once

#include <string>

#include "Model.h"
#include "System.h"

namespace VrfModel {

/// The difference between the system and the model after an event, without messages. Empty if there
/// is none.
[[nodiscard]] std::string differenceOf(System& system, const Model& model,
                                       const Expected& expected);

}  // namespace VrfModel
