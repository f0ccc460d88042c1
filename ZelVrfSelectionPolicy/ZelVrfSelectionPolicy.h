#pragma once

/// Includes the whole library: value records, tables, the interface to the chip, and the state
/// machines. An agent calls `zelVrfSelectionPolicySmFactory`. A chip derives from `VrfHelper`.

#include "Velo/Export.h"
#include "Velo/String.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"
#include "ZelVrfSelectionPolicy/reflection/EnumerationTypes.h"
#include "ZelVrfSelectionPolicy/tables/DependentVrfInfo.h"
#include "ZelVrfSelectionPolicy/tables/PolicySmMounts.h"
#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"
#include "ZelVrfSelectionPolicy/values/FailureCode.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/ProgrammingResult.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// The prefix of the names of network namespaces.
ZEL_EXPORT extern const Velo::String namespacePrefix;

}  // namespace ZelVrfSelectionPolicy
