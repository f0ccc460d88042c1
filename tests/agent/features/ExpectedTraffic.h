// Packets that are sent, and all that must become of them: where each leaves, and every counter.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/agent/features/ForwardRun.h"

namespace ZelAgent {

// Of packets that come in by Ethernet1.
class ExpectedTraffic final {
 public:
  // The rule that takes the packet; noRule where none does.
  static constexpr unsigned noRule = 0;

  // Leaves by the interface, as these bytes, by a route of the VRF.
  void leaves(const PacketBytes& packet, unsigned rule, const std::string& interface,
              const std::string& vrf, const PacketBytes& asItLeaves);
  void isDropped(const PacketBytes& packet, unsigned rule, const std::string& reason);

  [[nodiscard]] const std::vector<Sent>& sent() const { return sent_; }

  // Sends all by the real binary, and compares all.
  void expectFrom(const OpenConfigBuilder& configuration, const std::string& events) const;

 private:
  struct Count {
    unsigned packets = 0;
    unsigned bytes = 0;

    void add(const PacketBytes& packet) {
      ++packets;
      bytes += static_cast<unsigned>(packet.size());
    }
  };

  void take(const PacketBytes& packet, unsigned rule);

  std::vector<Sent> sent_;
  Egress egress_;
  std::map<unsigned, Count> byRule_;
  std::map<std::string, Count> byVrf_;
  std::map<std::string, Count> byDrop_;
};

}  // namespace ZelAgent
