#include "agent/commands/served/ShowFallback.h"

#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/model/forwarding/KnownVrfs.h"
#include "agent/reports/FallbackGraphReport.h"

namespace ZelAgent {
namespace {

FallbackFacts factsOf(ForwardingAgent& agent) {
  FallbackFacts facts;
  facts.configured = configuredVrfs(agent);
  const auto& fallbacks = agent.fallbackConfig().fallbackVrf();
  for (auto entry = fallbacks.iterator(); entry; ++entry)
    facts.fallbacks.emplace(entry.key(), entry.value());
  for (const ActionState& action : agent.state().actions)
    facts.actions.push_back(action.action);
  return facts;
}

}  // namespace

CommandOutput showFallback(const CommandCall& call) {
  const FallbackGraph graph = fallbackGraphOf(factsOf(call.served.agent()));
  return outputOf(
      call, [&](std::ostream& out) { writeTextReport(out, graph); }, [&] { return toJson(graph); });
}

}  // namespace ZelAgent
