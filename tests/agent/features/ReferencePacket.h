// What the bytes of a packet say and how they must leave, read and written in the plainest way and
// without any code of the chip: every checksum is computed from nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "agent/config/IpPrefix.h"
#include "tests/agent/TestPackets.h"

namespace ZelAgent {

struct ReferenceHeader {
  IpFamily family = IpFamily::v4;
  IpAddress source;
  IpAddress destination;
  std::uint8_t protocol = 0;
  std::uint8_t dscp = 0;
  std::uint8_t ecn = 0;
  std::uint8_t ttl = 0;
  std::size_t fixedLength = 0;  // IPv4: with options; IPv6: 40
  std::size_t totalLength = 0;
  bool isFragment = false;
  std::size_t fragmentOffset = 0;
  // Of TCP and UDP, as far as the packet has them.
  std::optional<std::size_t> sourcePort;
  std::optional<std::size_t> destinationPort;
  std::optional<std::uint8_t> tcpFlags;
};

// Without a header there is the name of the reason why.
struct ReferenceParsed {
  std::optional<ReferenceHeader> header;
  std::string fault;
};

[[nodiscard]] ReferenceParsed readHeader(const PacketBytes& packet);

struct ReferenceInner {
  std::string fault;  // empty where there is a packet
  PacketBytes packet;
};

// What is inside of the tunnel, as it goes on from its end. The header is that of the packet.
[[nodiscard]] ReferenceInner takeOutOfTunnel(const PacketBytes& packet,
                                             const ReferenceHeader& header);

// The packet as it leaves, without padding; nothing where its time to live is over.
[[nodiscard]] std::optional<PacketBytes> leaving(const PacketBytes& packet,
                                                 const ReferenceHeader& header);

// Stores the right checksum into an IPv4 header of that many bytes.
void putRightChecksum(PacketBytes& packet, std::size_t headerBytes);

}  // namespace ZelAgent
