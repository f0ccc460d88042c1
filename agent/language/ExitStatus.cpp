#include "agent/language/ExitStatus.h"

#include <ostream>

namespace ZelAgent {

ExitStatus reportError(std::ostream& err, std::string_view what, ExitStatus status) {
  err << "error: " << what << '\n';
  return status;
}

void reportWarnings(std::ostream& err, const std::vector<std::string>& warnings) {
  for (const std::string& warning : warnings)
    err << "warning: " << warning << '\n';
}

ExitStatus finishOutput(std::ostream& out, std::ostream& err) {
  if (out.flush()) return ExitStatus::success;
  return reportError(err, "standard output cannot be written", ExitStatus::failure);
}

}  // namespace ZelAgent
