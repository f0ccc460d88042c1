#include <algorithm>
#include <ostream>

#include "agent/commands/offline/OfflineCommands.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

ExitStatus checkFile(const std::string& file, const CheckOptions& options, std::ostream& out,
                     std::ostream& err) {
  try {
    const ReadConfiguration read = readOpenConfigFile(file, options.leniency);
    out.flush();
    reportWarnings(err, read.warnings);
    out << printable(file, Limits::shownTextBytes) << ": right\n";
    return ExitStatus::success;
  } catch (const ConfigError& error) {
    out.flush();
    reportWarnings(err, error.warnings());
    return reportError(err, error.what());
  }
}

}  // namespace

ExitStatus checkConfigurations(const CheckOptions& options, std::ostream& out, std::ostream& err) {
  ExitStatus status = ExitStatus::success;
  for (const std::string& file : options.configurations)
    status = std::max(status, checkFile(file, options, out, err));
  return std::max(status, finishOutput(out, err));
}

}  // namespace ZelAgent
