#include "agent/config/InstanceNames.h"

#include "agent/config/Configuration.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {

std::string InstanceNames::vrfOf(const std::string& name) const {
  return vrfNamed(name, defaultName_);
}

std::string InstanceNames::unusualDefaultName() const {
  const bool isUsual = defaultName_ == defaultInstanceName || defaultName_ == defaultVrfName;
  return isUsual ? "" : defaultName_;
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
