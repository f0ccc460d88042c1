#include "agent/commands/offline/FallbackGraphCommand.h"

#include <ostream>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/ConfigError.h"
#include "agent/language/PrintableText.h"
#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/reports/FallbackGraphReport.h"

namespace ZelAgent {
namespace {

void warnOfCycles(std::ostream& err, const std::string& file, const FallbackGraph& graph) {
  for (const FallbackCycle& cycle : graph.cycles) {
    err << "warning: " << printable(file, 1000)
        << ": VRFs fall back in a cycle, and a lookup that misses in all of them ends: "
        << toText(cycle) << '\n';
  }
}

}  // namespace

ExitStatus showFallbackGraph(const FallbackGraphOptions& options, std::ostream& out,
                             std::ostream& err) {
  ReadConfiguration read;
  try {
    read = readOpenConfigFile(options.configuration);
  } catch (const ConfigError& error) {
    err << "error: " << error.what() << '\n';
    return ExitStatus::badInput;
  }
  for (const std::string& warning : read.warnings)
    err << "warning: " << warning << '\n';
  const FallbackGraph graph = fallbackGraphOf(read.configuration);
  warnOfCycles(err, options.configuration, graph);
  if (options.dot) {
    writeDotReport(out, graph);
  } else {
    writeTextReport(out, graph);
  }
  if (out.flush()) return ExitStatus::success;
  err << "error: standard output cannot be written\n";
  return ExitStatus::failure;
}

}  // namespace ZelAgent
