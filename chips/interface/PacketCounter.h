#pragma once

#include <cstddef>
#include <cstdint>

namespace Chips {

/// A number of packets and the number of their bytes. Both wrap.
struct PacketCounter {
  std::uint64_t packets = 0;
  std::uint64_t bytes = 0;

  void add(std::size_t packetBytes) noexcept {
    ++packets;
    bytes += packetBytes;
  }
  friend bool operator==(const PacketCounter&, const PacketCounter&) = default;
};

}  // namespace Chips
