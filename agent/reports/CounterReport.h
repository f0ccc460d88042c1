// Why: how many packets went which way is asked after captures were forwarded, and of a daemon.
// Always: rules by interface in the order in which they are tried, VRFs by name, drop reasons in
// the order in which they are met; VRFs and reasons without a packet are left out. As JSON:
//
//   rules   array of {interface, networkInstance, policy, rule, match, action, programmed, packets,
//           bytes}
//   vrfs    array of {vrfName, packets, bytes}: what left by a route of the VRF
//   drops   array of {reason, packets, bytes}
//   notIp   number of frames that carried no IP
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <vector>

#include "agent/model/forwarding/AgentState.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/StateJson.h"

namespace ZelAgent {

struct DropCount {
  SoftChip::DropReason reason{};
  SoftChip::PacketCounter counter;
};

struct ForwardCounters {
  RuleStates rules;
  std::map<L3::VrfName, SoftChip::PacketCounter> vrfs;
  std::vector<DropCount> drops;
  std::uint64_t notIp = 0;
};

[[nodiscard]] ForwardCounters countersOf(ForwardingAgent& agent, std::uint64_t notIp = 0);

void writeTextReport(std::ostream& out, const ForwardCounters& counters);
void writeJsonReport(std::ostream& out, const ForwardCounters& counters);
[[nodiscard]] OrderedJson toJson(const ForwardCounters& counters);

}  // namespace ZelAgent
