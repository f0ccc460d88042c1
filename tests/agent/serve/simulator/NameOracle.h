// Whether an event of an operator names only what is known.
#pragma once

#include "agent/model/events/Event.h"
#include "tests/agent/model/fresh/KeptFacts.h"

namespace ZelAgent {

[[nodiscard]] bool namesOnlyKnown(const Event& event, const KeptFacts& facts);

}  // namespace ZelAgent
