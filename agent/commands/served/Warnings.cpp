#include "agent/commands/served/Warnings.h"

namespace ZelAgent {

CommandOutput withWarnings(const CommandCall& call, const std::vector<std::string>& warnings,
                           CommandOutput output) {
  if (call.asJson) {
    output["warnings"] = warnings;
    return output;
  }
  std::string text;
  for (const std::string& warning : warnings)
    text += "warning: " + warning + '\n';
  return text + output.get<std::string>();
}

}  // namespace ZelAgent
