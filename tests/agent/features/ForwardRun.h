// Runs `zel-agent forward` as an operator would: captures in, captures and counters out.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/agent/CaptureFile.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/TestPackets.h"

namespace ZelAgent {

struct Sent {
  std::string interface;
  PacketBytes packet;
};

// What must leave by each interface, in this order; interfaces by which nothing leaves are absent.
using Egress = std::map<std::string, std::vector<PacketBytes>>;

struct ForwardOutcome {
  Egress egress;            // by the name of the file
  nlohmann::json counters;  // as --json shows them

  // {packets, bytes} of the rule; {0, 0} of a rule that is not there is a failure of the test.
  [[nodiscard]] nlohmann::json rule(const std::string& interface, unsigned sequenceId) const;
  [[nodiscard]] std::map<unsigned, unsigned> packetsByRule(const std::string& interface) const;
  [[nodiscard]] std::map<std::string, unsigned> packetsByVrf() const;
  [[nodiscard]] std::map<std::string, unsigned> packetsByDrop() const;
  // Of the same.
  [[nodiscard]] std::map<std::string, unsigned> bytesByVrf() const;
  [[nodiscard]] std::map<std::string, unsigned> bytesByDrop() const;

  [[nodiscard]] std::size_t packetsOut() const;
};

// Sends the packets in, one capture of Ethernet for each interface, in the order in which they
// stand. The agent must succeed and have nothing to say on standard error.
[[nodiscard]] ForwardOutcome forwardThrough(const std::string& configurationFile,
                                            const std::string& events,
                                            const std::vector<Sent>& sent);
[[nodiscard]] ForwardOutcome forwardThrough(const OpenConfigBuilder& configuration,
                                            const std::string& events,
                                            const std::vector<Sent>& sent);

}  // namespace ZelAgent
