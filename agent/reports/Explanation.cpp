#include "agent/reports/Explanation.h"

#include <utility>

namespace ZelAgent {

WayReport explain(ForwardingAgent& agent, const std::string& interface,
                  std::span<const std::uint8_t> packet) {
  RuleStates rules = agent.rules();
  std::erase_if(rules, [&](const RuleState& rule) { return rule.user.interface != interface; });
  WayReport way(std::move(rules));
  static_cast<void>(agent.forwarder().forward(interface, packet, &way));
  return way;
}

}  // namespace ZelAgent
