// Whether a rule on the chip is a configured one.
#pragma once

#include "PolicyMap/AclRule.h"
#include "agent/model/forwarding/AgentState.h"

namespace ZelAgent {

// The chip has the prefixes of sets instead of their names.
[[nodiscard]] inline bool isRule(const PolicyMap::AclRule& held, const ConfiguredRule& configured) {
  const PolicyMap::HeaderMatch& fields = *held.match;
  return fields == *configured.match && held.action == configured.action &&
         held.match->sourceSet.has_value() == !configured.match->sourceSet.empty() &&
         held.match->destinationSet.has_value() == !configured.match->destinationSet.empty();
}

}  // namespace ZelAgent
