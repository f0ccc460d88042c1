// Why: operators ask how many packets, and how many bytes of them, went one way.
// Always: both numbers count the same packets; they wrap.
#pragma once

#include <cstddef>
#include <cstdint>

namespace SoftChip {

struct PacketCounter {
  std::uint64_t packets = 0;
  std::uint64_t bytes = 0;

  void add(std::size_t packetBytes) noexcept {
    ++packets;
    bytes += packetBytes;
  }
  friend bool operator==(const PacketCounter&, const PacketCounter&) = default;
};

}  // namespace SoftChip
