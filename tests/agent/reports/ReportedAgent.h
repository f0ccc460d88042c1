// An agent with rules of each kind on two interfaces, for reports.
#pragma once

#include <sstream>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/OpenConfigBuilder.h"

namespace ZelAgent {

[[nodiscard]] inline OpenConfigBuilder reportedConfiguration() {
  OpenConfigBuilder configuration;
  configuration.vrf("red", "blue").vrf("blue").vrf("decap").intf("red", "Ethernet3");
  configuration.policy("edge",
                       {ruleOf(1, "ipv4", {{"protocol", 4}}, toDecap("decap", "red", "DEFAULT")),
                        ruleOf(2, "ipv4", {{"dscp-set", {10, 12}}}, toVrf("red")),
                        ruleOf(10, "ipv6", {{"destination-address", "2001:db8::/32"}}, toDiscard()),
                        ruleOf(20, "", {}, nlohmann::json::object())},
                       {"Ethernet1", "Ethernet2"});
  configuration.policy("edge", {ruleOf(5, "", {}, toVrf("red"))}, {"Ethernet3"}, "red");
  configuration.route("red", "203.0.113.0/24", "Ethernet9");
  configuration.route("blue", "0.0.0.0/0", "Ethernet8");
  configuration.dropRoute("DEFAULT", "203.0.113.66/32");
  return configuration;
}

template <class Report>
[[nodiscard]] std::string textOf(const Report& report) {
  std::ostringstream text;
  writeTextReport(text, report);
  return text.str();
}

}  // namespace ZelAgent
