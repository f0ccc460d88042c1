#pragma once

#include <string>

#include "PolicyMap/AclRule.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy::Testing {

/// The short form of a record for journals. Different records have different forms. An action of
/// type `vrf` without further names is only its VRF name. Otherwise the names and the type follow,
/// as in `red>blue>green:actionDecapVrf`.
[[nodiscard]] std::string shown(const VrfAction& action);

/// "ok" for a default record. Otherwise result, reason and quoted description.
[[nodiscard]] std::string shown(const HwStatus& status);

/// The match and the action of a rule, as in `v4,protocol=4,source=10.0.0.0/8->red`. `any` is a
/// rule that matches every packet. `dscps` is in hexadecimal.
[[nodiscard]] std::string shown(const PolicyMap::AclRule& rule);

}  // namespace ZelVrfSelectionPolicy::Testing
