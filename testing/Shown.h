#pragma once

#include <string>

#include "PolicyMap/AclRule.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A record as journals show it: short enough to compare at a glance, and different for different
/// records. An action of type "look up in a VRF" without further names is just its VRF name;
/// otherwise the names and the type follow, as in `red>blue>green:actionDecapVrf`.
[[nodiscard]] std::string shown(const VrfAction& action);

/// "ok" for a default record; otherwise result, reason and quoted description.
[[nodiscard]] std::string shown(const HwStatus& status);

/// What a rule matches and what it does, as in `v4,protocol=4,source=10.0.0.0/8->red`, with the
/// names as in an action; `any` for a rule that matches every packet. Bits of `dscps` are in hex.
[[nodiscard]] std::string shown(const PolicyMap::AclRule& rule);

}  // namespace ZelVrfSelectionPolicy::Testing
