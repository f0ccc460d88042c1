#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/commands/offline/OfflineCommands.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/reports/DifferenceReport.h"

namespace ZelAgent {
namespace {

Configuration readWithWarnings(const std::string& file, Leniency leniency, std::ostream& err) {
  ReadConfiguration read = readOpenConfigFile(file, leniency);
  reportWarnings(err, read.warnings);
  return std::move(read.configuration);
}

}  // namespace

ExitStatus showDifference(const DiffOptions& options, std::ostream& out, std::ostream& err) {
  try {
    const Configuration before = readWithWarnings(options.before, options.leniency, err);
    const ConfigurationDifference difference =
        differenceOf(before, readWithWarnings(options.after, options.leniency, err));
    if (options.json) {
      out << oneLine(toJson(difference)) << '\n';
    } else {
      writeTextReport(out, difference);
    }
    const ExitStatus written = finishOutput(out, err);
    return difference.isEmpty() ? written : ExitStatus::failure;
  } catch (const ConfigError& error) {
    return reportError(err, error.what());
  }
}

}  // namespace ZelAgent
