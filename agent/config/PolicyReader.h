// Why: policies are the heart of a configuration, and most of what can be wrong in one.
// Always: rules come in the order in which they are tried; an action is of one kind and complete.
#pragma once

#include <string>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

// A member that names a network instance, to be checked when all instances are known.
struct InstanceReference {
  JsonNode node;
  std::string vrf;
};

// The policies of a policy-forwarding container, adding every instance that their rules name.
[[nodiscard]] std::vector<Policy> readPolicies(const JsonObject& policyForwarding,
                                               std::vector<InstanceReference>& references);

}  // namespace ZelAgent
