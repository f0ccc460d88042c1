#include "ZelVrfSelectionPolicy/reflection/EnumerationTypes.h"

#include "Mox/ValueTable.h"

namespace ZelVrfSelectionPolicy {

constinit const Mox::Type failureCodeType{failureCodes.typeName(),
                                          &Mox::enumerationReflection<FailureCode, failureCodes>};
constinit const Mox::Type programmingResultType{
    programmingResults.typeName(),
    &Mox::enumerationReflection<ProgrammingResult, programmingResults>};

}  // namespace ZelVrfSelectionPolicy
