#include "agent/language/Version.h"

namespace ZelAgent {

std::string versionNumber() {
  return ZEL_AGENT_VERSION;
}

std::string versionText() {
  return "zel-agent " + versionNumber();
}

}  // namespace ZelAgent
