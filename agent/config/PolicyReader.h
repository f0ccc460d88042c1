#pragma once

#include <string>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

/// A member that names a network instance. It is checked when all instances are known.
struct InstanceReference {
  JsonNode node;
  std::string vrf;
};

/// The policies of a policy-forwarding container.
///
/// Rules are returned in the order in which they are tried. Each action is of one kind and
/// complete. Every network instance that a rule names is added to `references`.
[[nodiscard]] std::vector<Policy> readPolicies(const JsonObject& policyForwarding,
                                               std::vector<InstanceReference>& references);

}  // namespace ZelAgent
