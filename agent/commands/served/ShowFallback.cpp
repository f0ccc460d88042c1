#include "agent/commands/served/ShowFallback.h"

#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/reports/FallbackGraphReport.h"

namespace ZelAgent {
CommandOutput showFallback(const CommandCall& call) {
  const FallbackGraph graph = fallbackGraphOf(call.served.agent());
  return outputOf(
      call, [&](std::ostream& out) { writeTextReport(out, graph); }, [&] { return toJson(graph); });
}

}  // namespace ZelAgent
