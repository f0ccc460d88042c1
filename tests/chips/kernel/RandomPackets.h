// Packets of few values, tunnels and damaged ones among them.
#pragma once

#include "tests/chips/packet/TestPacket.h"
#include "tests/chips/tables/RandomRules.h"

namespace KernelChip {

class RandomPackets {
 public:
  explicit RandomPackets(ChipTables::RandomRules& random) : random_(random) {}

  [[nodiscard]] Chips::Bytes bytes();

 private:
  [[nodiscard]] Chips::TestPacket packet();
  [[nodiscard]] Chips::TestPacket v4(const Chips::PacketHeader& header);
  [[nodiscard]] Chips::TestPacket v6(const Chips::PacketHeader& header);
  [[nodiscard]] Chips::Bytes upperLayer(const Chips::PacketHeader& header);
  void damage(Chips::Bytes& bytes);

  ChipTables::RandomRules& random_;
};

// As text that `Chips::address` reads.
[[nodiscard]] std::string textOf(const Ip::Address& address);

}  // namespace KernelChip
