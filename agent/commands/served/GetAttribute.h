// Why: an operator looks into the library without knowing more than the names of its types.
// Always: nothing is changed.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

// get TYPE ATTRIBUTE [KEY...]: the attribute, by its name or number, of every object of the type,
// which is named in full, or by its end if it has attributes. KEY, a name or a string form, picks
// one of several objects; of a single object it picks one entry of a collection. As JSON an array
// of {object, value}.
[[nodiscard]] CommandOutput getAttribute(const CommandCall& call);

}  // namespace ZelAgent
