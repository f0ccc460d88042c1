#include "fuzz/AgentChecks.h"

#include <array>

#include "agent/language/PrintableText.h"
#include "fuzz/Must.h"

namespace Fuzz {
namespace {

using ZelVrfSelectionPolicy::ProgrammingResult;

ZelAgent::Probes probesOf(const ZelAgent::Configuration& configuration) {
  ZelAgent::Probes probes;
  std::uint32_t vrfId = 0;
  for (const ZelAgent::NetworkInstance& instance : configuration.networkInstances) {
    probes.vrfIds.push_back(++vrfId);
    for (const ZelAgent::StaticRoute& route : instance.staticRoutes)
      probes.addresses.push_back(route.prefix.address);
  }
  return probes;
}

void mustBeEqual(const std::string& present, const std::string& wanted) {
  if (present == wanted) return;
  fail("the agent is as a fresh one: " + ZelAgent::firstDifference(present, wanted));
}

}  // namespace

void checkAgent(const ZelAgent::ForwardingAgent& agent, const Chips::ChipVrfHelper& chip) {
  const ZelAgent::AgentState state = agent.state();
  const auto statuses = agent.statuses();
  must(state.actions.size() == statuses.size(), "an action has users or no status");
  for (const ZelAgent::ActionState& action : state.actions) {
    must(action.users > 0, "an action without users has no entry");
    must(action.users == action.usedBy.size(), "users are the rules that the chip holds");
    must(statuses.contains(action.action), "an action with users has a status");
    if (action.status.status() == ProgrammingResult::programmedInHw) {
      must(action.resource && !action.resourceIsStale(), "a programmed action is up to date");
    }
  }
  for (const auto& [action, resource] : chip.resources()) {
    must(statuses.contains(action), "a resource on the chip is that of an action with a status");
    must(resource.index != 0, "a resource has an index");
  }
}

void checkAsFresh(ZelAgent::ServedAgent& agent, const ZelAgent::KeptFacts& facts,
                  ZelAgent::Scope scope) {
  mustBeEqual(ZelAgent::KeptFacts::textOf(agent.agent()), facts.text());
  const auto fresh = facts.freshAgent();
  const ZelAgent::Probes probes = probesOf(facts.configuration());
  mustBeEqual(visibleState(agent, probes, scope), visibleState(*fresh, probes, scope));
}

void checkError(std::string_view what, std::string_view place) {
  must(ZelAgent::printable(what, std::string_view::npos) == what, "an error is one printable line");
  must(what.starts_with(place), "an error begins with its place");
  must(what.size() > place.size(), "an error says what is wrong");
}

std::string configurationFor(const std::string& named) {
  static constexpr std::array<const char*, 4> files{"decap.json", "late-vrf.json",
                                                    "late-vrf-more.json", "not-there.json"};
  return std::string(ZEL_EXAMPLES_DIR "/") + files[named.size() % files.size()];
}

}  // namespace Fuzz
