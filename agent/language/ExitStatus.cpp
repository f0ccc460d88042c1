#include "agent/language/ExitStatus.h"

#include <ostream>

namespace ZelAgent {

ExitStatus reportError(std::ostream& err, std::string_view what, ExitStatus status) {
  for (const std::string& line : errorLines(what))
    err << line << '\n';
  return status;
}

std::vector<std::string> errorLines(std::string_view what) {
  std::vector<std::string> lines;
  while (true) {
    const std::size_t end = what.find('\n');
    lines.push_back("error: " + std::string(what.substr(0, end)));
    if (end == std::string_view::npos) return lines;
    what.remove_prefix(end + 1);
  }
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
