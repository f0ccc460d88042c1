#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/DefinedSets.h"
#include "agent/config/InstanceNames.h"
#include "agent/config/JsonNode.h"
#include "agent/language/Progress.h"

namespace ZelAgent {

/// The policies of a network instance that the agent reads, and the types of all of its policies.
struct ReadPolicies {
  std::vector<Policy> policies;
  /// By policy id. None after an error in the type.
  std::map<std::string, std::optional<std::string>> types;
  bool hasUnreadable = false;  // Whether the id of a policy could not be read.
};

/// Reads the policies of a policy-forwarding container.
///
/// Rules are returned in the order in which they are tried. A policy of another type than
/// VRF_SELECTION_POLICY and PBR_POLICY is skipped with a warning. If the reader is lenient, a rule
/// with something that is not supported is left out. Each rule is a step of the progress.
[[nodiscard]] ReadPolicies readPolicies(const JsonObject& policyForwarding,
                                        const InstanceNames& names, const DefinedSets& sets,
                                        Progress& progress);

/// The policies that the entries of `interfaces` in a policy-forwarding container apply.
///
/// A policy is one of `policies`, and of the type that its leaf applies.
class BindingReader final {
 public:
  explicit BindingReader(const ReadPolicies& policies) : policies_(policies) {}

  /// Reads the entry, whose key is added to `ids`. Nothing if the key is wrong.
  [[nodiscard]] std::optional<PolicyBinding> read(const JsonNode& node,
                                                  UniqueKeys<std::string>& ids) const;

 private:
  [[nodiscard]] std::string readApplied(const JsonObject& config, const char* leaf,
                                        const std::string& type) const;

  const ReadPolicies& policies_;
};

}  // namespace ZelAgent
