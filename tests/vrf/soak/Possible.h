#pragma once

#include "tests/vrf/model/Event.h"
#include "tests/vrf/model/System.h"

namespace VrfModel {

/// Whether `event` is possible in the present state of `system`. It is not if it needs a machine
/// that does not exist, or if it breaks a contract: the library would stop the process.
[[nodiscard]] bool isPossible(const System& system, const Cast& cast, const Event& event);

}  // namespace VrfModel
