// Packets byte by byte, and what must leave of them, made without any code of the agent or the
// chip: every checksum is computed from nothing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ZelAgent {

using PacketBytes = std::vector<std::uint8_t>;

inline void append(PacketBytes& bytes, const PacketBytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

// Congestion marks as they stand in a header.
enum TestEcn : std::uint8_t { notEct = 0, ect1 = 1, ect0 = 2, ce = 3 };

struct HeaderText {
  std::string source;
  std::string destination;
  std::uint8_t dscp = 0;
  std::uint8_t ecn = notEct;
  std::uint8_t ttl = 64;
};

// Packets of UDP whose content is `number`, so that packets of one flow can be told apart.
[[nodiscard]] PacketBytes ipv4Packet(const HeaderText& header, std::uint16_t number = 0);
[[nodiscard]] PacketBytes ipv6Packet(const HeaderText& header, std::uint16_t number = 0);

// The packet behind an IPv4 header of protocol 4 or 41, by its version.
[[nodiscard]] PacketBytes inIpv4(const HeaderText& outer, const PacketBytes& inner);

// An IPv4 packet of any protocol and payload.
[[nodiscard]] PacketBytes ipv4PacketOf(const HeaderText& header, std::uint8_t protocol,
                                       const PacketBytes& payload);

// The packet with another time to live, or other congestion marks, and a checksum made anew.
[[nodiscard]] PacketBytes withTtl(PacketBytes packet, std::uint8_t ttl);
[[nodiscard]] PacketBytes withEcn(PacketBytes packet, std::uint8_t ecn);

// The packet as it must leave: its time to live down by one.
[[nodiscard]] PacketBytes asForwarded(const PacketBytes& packet);

// What is inside of a packet of IPv4 in which it came, as it must leave: with the outer time to
// live, down by one. The marks of congestion stay.
[[nodiscard]] PacketBytes asDecapsulated(const PacketBytes& packet);

// An Ethernet frame of the packet, by its version.
[[nodiscard]] PacketBytes inEthernet(const PacketBytes& packet);

}  // namespace ZelAgent
