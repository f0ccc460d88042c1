#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <vector>

#include "L3/VrfName.h"
#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/StateReport.h"
#include "chips/soft/DropReason.h"
#include "chips/soft/PacketCounter.h"

namespace ZelAgent {

class ForwardingAgent;

struct DropCount {
  SoftChip::DropReason reason{};
  SoftChip::PacketCounter counter;
};

/// How many packets matched each rule, left by a route of each VRF, and were dropped for each
/// reason.
///
/// Rules are by interface in the order in which they are tried, VRFs by name, and drop reasons in
/// the order of their values. VRFs and reasons without packets are left out. As JSON:
///
///   rules   array of {interface, networkInstance, policy, rule, match, action, programmed,
///           packets, bytes}
///   vrfs    array of {vrfName, packets, bytes}: the packets that left by a route of the VRF
///   drops   array of {reason, packets, bytes}
///   notIp   number of frames without an IP packet
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
