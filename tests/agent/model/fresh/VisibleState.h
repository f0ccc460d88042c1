// What an operator can see of an agent, as text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "agent/commands/served/ServedAgent.h"

namespace ZelAgent {

struct ProbePacket {
  std::string interface;
  std::vector<std::uint8_t> bytes;
};

// What is looked up and sent to see the routes.
struct Probes {
  std::vector<IpAddress> addresses;
  std::vector<std::uint32_t> vrfIds;  // of the tables in which the addresses are looked up
  std::vector<ProbePacket> packets;
};

// Each scope contains the ones before it.
enum class Scope : std::uint8_t {
  // Class maps, policy maps, policies of interfaces, and the tables of routes.
  facts,
  // VRFs with those that actions name, rules on the chip, their statuses, users and counts.
  rules,
  // Actions, statuses, resources with their programs, packets, and counters.
  everything,
};

// The state in sections. A section has a title "== ..." and lines.
//
// It has the output of all `show` commands but `show config`, which describes the history of the
// files, and `show trace` and `show types`, which describe the process. Two things are left out
// since they depend on the past by design: the numbers of the chip's resources, and the numbers of
// hook calls. The counters of packets are set to 0, and count the probes.
[[nodiscard]] std::string visibleState(ServedAgent& served, const Probes& probes, Scope scope);

// The first lines that differ, with the title of their section. Empty if the states are equal.
[[nodiscard]] std::string firstDifference(const std::string& present, const std::string& wanted);

}  // namespace ZelAgent
