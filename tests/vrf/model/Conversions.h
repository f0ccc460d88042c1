#pragma once

#include "Cast.h"
#include "Outcome.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace VrfModel {

// Conversions between the model's plain values and the values of the library.

[[nodiscard]] ZelVrfSelectionPolicy::VrfAction real(const Action& action);
[[nodiscard]] ZelVrfSelectionPolicy::HwStatus real(const Status& status);
[[nodiscard]] Action plain(const ZelVrfSelectionPolicy::VrfAction& action);
[[nodiscard]] Status plain(const ZelVrfSelectionPolicy::HwStatus& status);

}  // namespace VrfModel
