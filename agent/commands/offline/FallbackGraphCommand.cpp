#include "agent/commands/offline/OfflineCommands.h"

#include <ostream>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/reports/FallbackGraphReport.h"

namespace ZelAgent {
namespace {

void warnOfCycles(std::ostream& err, const std::string& file, const FallbackGraph& graph) {
  for (const FallbackCycle& cycle : graph.cycles) {
    err << "warning: " << printable(file, Limits::shownTextBytes)
        << ": fallback VRFs form a cycle; a lookup uses no VRF twice: " << toText(cycle) << '\n';
  }
}

}  // namespace

ExitStatus showFallbackGraph(const FallbackGraphOptions& options, std::ostream& out,
                             std::ostream& err) {
  ReadConfiguration read;
  try {
    read = readOpenConfigFile(options.configuration, options.leniency);
  } catch (const ConfigError& error) {
    return reportError(err, error.what());
  }
  reportWarnings(err, read.warnings);
  const FallbackGraph graph = fallbackGraphOf(read.configuration);
  warnOfCycles(err, options.configuration, graph);
  if (options.dot) {
    writeDotReport(out, graph);
  } else {
    writeTextReport(out, graph);
  }
  return finishOutput(out, err);
}

}  // namespace ZelAgent
