#pragma once

#include "Mox/AnyValue.h"
#include "Velo/Export.h"
#include "ZelVrfSelectionPolicy/values/FailureCode.h"
#include "ZelVrfSelectionPolicy/values/ProgrammingResult.h"

/// The entries of the library's enumerations. Include it where their values are attributes.

namespace ZelVrfSelectionPolicy {

ZEL_EXPORT extern const Mox::Type failureCodeType;
ZEL_EXPORT extern const Mox::Type programmingResultType;

}  // namespace ZelVrfSelectionPolicy

template <>
struct Mox::TypeOf<ZelVrfSelectionPolicy::FailureCode> {
  static constexpr const Type& entry = ZelVrfSelectionPolicy::failureCodeType;
};
template <>
struct Mox::TypeOf<ZelVrfSelectionPolicy::ProgrammingResult> {
  static constexpr const Type& entry = ZelVrfSelectionPolicy::programmingResultType;
};
