#pragma once

#include <string>

#include "Model.h"
#include "System.h"

namespace VrfModel {

/// How the system differs from the model after an event, messages apart; empty when it does not.
[[nodiscard]] std::string differenceOf(System& system, const Model& model,
                                       const Expected& expected);

}  // namespace VrfModel
