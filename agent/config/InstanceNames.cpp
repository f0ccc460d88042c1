#include "agent/config/InstanceNames.h"

#include "agent/config/Configuration.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {

std::string InstanceNames::vrfOf(const std::string& name) const {
  const bool isDefault =
      name == defaultInstanceName || (!defaultName_.empty() && name == defaultName_);
  return isDefault ? defaultVrfName : name;
}

std::optional<std::string> InstanceNames::readReference(const JsonNode& node) const {
  const auto name = readName(node);
  if (!name) return std::nullopt;
  std::string vrf = vrfOf(*name);
  if (!configured_.contains(vrf)) {
    node.warn("names network instance " + inQuotes(vrf) + ", which is not configured");
  }
  return vrf;
}

}  // namespace ZelAgent
