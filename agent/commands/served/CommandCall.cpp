#include "agent/commands/served/CommandCall.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

#include "agent/language/TextTable.h"

namespace ZelAgent {

CommandResult Command::operator()(const CommandCall& call) const {
  if (start_ != nullptr) return start_(call);
  if (await_ != nullptr) return await_(call);
  return run_(call);
}

CommandOutput outputOf(const OutputForm& form, const std::function<void(std::ostream&)>& writeText,
                       const std::function<CommandOutput()>& makeJson) {
  if (form.asJson) return makeJson();
  std::ostringstream text;
  tableColumnsAre(text, form.columns);
  writeText(text);
  return std::move(text).str();
}

CommandOutput withWarnings(const OutputForm& form, const std::vector<std::string>& warnings,
                           CommandOutput output) {
  if (form.asJson) {
    output["warnings"] = warnings;
    return output;
  }
  std::string text;
  for (const std::string& warning : warnings)
    text += "warning: " + warning + '\n';
  return text + output.get<std::string>();
}

}  // namespace ZelAgent
