#pragma once

#include "tests/vrf/model/Event.h"
#include "tests/vrf/model/System.h"

namespace VrfModel {

/// Whether `event` can befall `system` as it is. It cannot when it is about a machine that is not
/// there, or when it breaks a contract, for which the library stops the process.
[[nodiscard]] bool isPossible(const System& system, const Cast& cast, const Event& event);

}  // namespace VrfModel
