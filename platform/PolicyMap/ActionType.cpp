#include "PolicyMap/ActionType.h"

#include "Mox/ValueTable.h"

namespace PolicyMap {

constinit const Mox::Type actionTypeType{actionTypes.typeName(),
                                         &Mox::enumerationReflection<ActionType, actionTypes>};

}  // namespace PolicyMap
