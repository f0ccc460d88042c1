#include "agent/config/Configuration.h"

namespace ZelAgent {

std::string vrfNamed(const std::string& name, const std::string& defaultName) {
  const bool isDefault =
      name == defaultInstanceName || (!defaultName.empty() && name == defaultName);
  return isDefault ? defaultVrfName : name;
}

}  // namespace ZelAgent
