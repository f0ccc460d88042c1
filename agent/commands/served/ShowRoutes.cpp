#include <utility>

#include "agent/commands/served/ServedCommands.h"
#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/model/routes/RouteWalk.h"
#include "agent/reports/RouteReport.h"

namespace ZelAgent {
namespace {

// A word is a VRF if there is one of that name, and otherwise a prefix.
RouteFilter filterOf(const CommandCall& call) {
  RouteFilter filter;
  ForwardingAgent& agent = call.served.agent();
  auto word = call.arguments.next();
  const std::string vrf = word ? vrfNamed(word->text, agent.configuration().defaultName) : "";
  if (word && knownVrfs(agent).contains(L3::VrfName(vrf))) {
    filter.vrf = vrf;
    word = call.arguments.next();
  }
  if (!word) return filter;
  filter.prefix = parseIpPrefix(word->text);
  if (!filter.prefix) {
    call.arguments.fail(filter.vrf
                            ? "PREFIX must be an IPv4 or IPv6 prefix"
                            : "VRF must be the name of one that exists, or PREFIX an IPv4 or "
                              "IPv6 prefix",
                        word);
  }
  call.arguments.needEnd();
  return filter;
}

}  // namespace

ReportPagesPtr showRoutes(const CommandCall& call) {
  constexpr std::size_t prefixesOfARead = 100;
  RouteWalk walk(call.served.agent().routes(), filterOf(call));
  const auto read = [walk = std::move(walk)](RouteStates& routes) mutable {
    return walk.read(routes, prefixesOfARead);
  };
  return routePages(read, call.asJson);
}

}  // namespace ZelAgent
