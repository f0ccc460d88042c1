#include "ZelVrfSelectionPolicy/reflection/EnumerationTypes.h"

#include "Mox/ValueTable.h"

namespace ZelVrfSelectionPolicy {
namespace {

const Mox::EnumType<unsigned char>& failureCodes() {
  return enumTypeOf(FailureCode{});
}
const Mox::EnumType<unsigned char>& programmingResults() {
  return enumTypeOf(ProgrammingResult{});
}

constexpr Mox::ValueOperations failureCodeOperations =
    Mox::enumerationOperations<FailureCode, &failureCodes>();
constexpr Mox::Reflection failureCodeReflection{
    .value = &failureCodeOperations,
    .names = &Mox::Values::allNames<&failureCodes>,
};

constexpr Mox::ValueOperations programmingResultOperations =
    Mox::enumerationOperations<ProgrammingResult, &programmingResults>();
constexpr Mox::Reflection programmingResultReflection{
    .value = &programmingResultOperations,
    .names = &Mox::Values::allNames<&programmingResults>,
};

}  // namespace

constinit const Mox::Type failureCodeType{"ZelVrfSelectionPolicy::FailureCode",
                                          &failureCodeReflection};
constinit const Mox::Type programmingResultType{"ZelVrfSelectionPolicy::ProgrammingResult",
                                                &programmingResultReflection};

}  // namespace ZelVrfSelectionPolicy
