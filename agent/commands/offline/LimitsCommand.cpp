#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/commands/offline/OfflineCommands.h"
#include "agent/reports/LimitsReport.h"

namespace ZelAgent {

ExitStatus showLimits(const LimitsOptions& options, std::ostream& out, std::ostream& err) {
  const LimitTable limits = limitTable();
  if (options.json) {
    out << oneLine(toJson(limits)) << '\n';
  } else {
    writeTextReport(out, limits);
  }
  return finishOutput(out, err);
}

}  // namespace ZelAgent
