#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <vector>

#include "L3/VrfName.h"
#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/ReportPages.h"
#include "agent/reports/StateReport.h"
#include "chips/interface/DropReason.h"
#include "chips/interface/PacketCounter.h"

namespace ZelAgent {

class ForwardingAgent;

struct DropCount {
  Chips::DropReason reason{};
  Chips::PacketCounter counter;
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
  std::map<L3::VrfName, Chips::PacketCounter> vrfs;
  std::vector<DropCount> drops;
  std::uint64_t notIp = 0;
};

/// A counter of the packets that left by a route of the VRF.
struct VrfCount {
  L3::VrfName vrf;
  Chips::PacketCounter counter;
};

/// The counters of the rules that are read, then `others`, which has no rules.
[[nodiscard]] ReportPagesPtr counterPages(ReadRows<RuleState> rules, const ForwardCounters& others,
                                          bool asJson);
/// The counters of some rules, and of some VRFs. As JSON it has only the members `rules` and
/// `vrfs`.
[[nodiscard]] ReportPagesPtr counterPages(ReadRows<RuleState> rules, std::vector<VrfCount> vrfs,
                                          bool asJson);

/// The counters of VRFs and drop reasons only.
[[nodiscard]] ForwardCounters countersWithoutRules(ForwardingAgent& agent, std::uint64_t notIp = 0);
[[nodiscard]] ForwardCounters countersOf(ForwardingAgent& agent, std::uint64_t notIp = 0);

void writeTextReport(std::ostream& out, const ForwardCounters& counters);
void writeJsonReport(std::ostream& out, const ForwardCounters& counters);

}  // namespace ZelAgent
