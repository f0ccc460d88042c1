#include "tests/agent/features/ReferencePacket.h"

#include <algorithm>

namespace ZelAgent {
namespace {

constexpr std::size_t ipv4Bytes = 20;
constexpr std::size_t ipv6Bytes = 40;

std::size_t big16(const PacketBytes& bytes, std::size_t at) {
  return bytes[at] * 256U + bytes[at + 1];
}

std::uint32_t sumOfWords(const PacketBytes& bytes, std::size_t length) {
  std::uint32_t sum = 0;
  for (std::size_t at = 0; at < length; at += 2)
    sum += static_cast<std::uint32_t>(big16(bytes, at));
  while (sum > 0xffff)
    sum = sum / 65536 + sum % 65536;
  return sum;
}

IpAddress addressAt(const PacketBytes& bytes, std::size_t at, IpFamily family) {
  IpAddress address{family, {}};
  std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), addressBits(family) / 8,
              address.bytes.begin());
  return address;
}

ReferenceParsed malformed() {
  return {{}, "malformed"};
}

// The ports and flags of what begins at that byte of the packet.
void readTransport(const PacketBytes& packet, std::size_t at, ReferenceHeader& header) {
  if (header.fragmentOffset != 0) return;
  const std::size_t bytes = header.totalLength - at;
  if ((header.protocol == 6 || header.protocol == 17) && bytes >= 4) {
    header.sourcePort = big16(packet, at);
    header.destinationPort = big16(packet, at + 2);
  }
  if (header.protocol == 6 && bytes >= 14) header.tcpFlags = packet[at + 13];
}

ReferenceParsed readIpv4(const PacketBytes& packet) {
  if (packet.size() < ipv4Bytes) return malformed();
  ReferenceHeader header;
  header.fixedLength = packet[0] % 16 * 4U;
  header.totalLength = big16(packet, 2);
  if (header.fixedLength < ipv4Bytes || header.fixedLength > packet.size()) return malformed();
  if (header.totalLength < header.fixedLength || header.totalLength > packet.size()) {
    return malformed();
  }
  if (sumOfWords(packet, header.fixedLength) != 0xffff) return {{}, "badChecksum"};
  header.dscp = packet[1] / 4;
  header.ecn = packet[1] % 4;
  const bool moreFragments = (packet[6] & 0x20) != 0;
  header.fragmentOffset = big16(packet, 6) % 0x2000;
  header.isFragment = moreFragments || header.fragmentOffset != 0;
  header.ttl = packet[8];
  header.protocol = packet[9];
  header.source = addressAt(packet, 12, IpFamily::v4);
  header.destination = addressAt(packet, 16, IpFamily::v4);
  readTransport(packet, header.fixedLength, header);
  return {header, ""};
}

bool isFollowed(std::uint8_t nextHeader) {
  return nextHeader == 0 || nextHeader == 43 || nextHeader == 44 || nextHeader == 60;
}

// Reads the extension headers and what is behind them. False where they do not end within the
// packet.
bool readBehindFixedHeader(const PacketBytes& packet, ReferenceHeader& header) {
  std::uint8_t next = packet[6];
  std::size_t at = ipv6Bytes;
  int fragmentHeaders = 0;
  while (isFollowed(next)) {
    if (next == 44 && ++fragmentHeaders > 1) break;
    if (at + 8 > header.totalLength) return false;
    const bool isFragmentHeader = next == 44;
    const std::size_t length = isFragmentHeader ? 8 : 8 + packet[at + 1] * 8U;
    if (at + length > header.totalLength) return false;
    next = packet[at];
    if (isFragmentHeader) {
      header.fragmentOffset = big16(packet, at + 2) / 8;
      header.isFragment = header.fragmentOffset != 0 || packet[at + 3] % 2 != 0;
    }
    at += length;
    if (header.fragmentOffset != 0) break;
  }
  header.protocol = next;
  readTransport(packet, at, header);
  return true;
}

ReferenceParsed readIpv6(const PacketBytes& packet) {
  if (packet.size() < ipv6Bytes) return malformed();
  ReferenceHeader header;
  header.family = IpFamily::v6;
  header.fixedLength = ipv6Bytes;
  header.totalLength = ipv6Bytes + big16(packet, 4);
  if (header.totalLength > packet.size()) return malformed();
  if (!readBehindFixedHeader(packet, header)) return malformed();
  const unsigned traffic = packet[0] % 16U * 16 + packet[1] / 16U;
  header.dscp = static_cast<std::uint8_t>(traffic / 4);
  header.ecn = traffic % 4;
  header.ttl = packet[7];
  header.source = addressAt(packet, 8, IpFamily::v6);
  header.destination = addressAt(packet, 24, IpFamily::v6);
  return {header, ""};
}

// As the table of RFC 6040 has it; nothing where the packet is to be dropped.
std::optional<std::uint8_t> markBehindTunnel(std::uint8_t inner, std::uint8_t outer) {
  constexpr std::uint8_t dropped = 9;
  constexpr std::uint8_t byInnerAndOuter[4][4] = {
      // outer: notEct, ect1, ect0, ce
      {notEct, notEct, notEct, dropped},  // inner: notEct
      {ect1, ect1, ect1, ce},             // ect1
      {ect0, ect1, ect0, ce},             // ect0
      {ce, ce, ce, ce},                   // ce
  };
  const std::uint8_t mark = byInnerAndOuter[inner][outer];
  if (mark == dropped) return {};
  return mark;
}

PacketBytes withTtlAndMark(PacketBytes packet, const ReferenceHeader& header, std::uint8_t ttl,
                           std::uint8_t mark) {
  packet.resize(header.totalLength);
  if (header.family == IpFamily::v6) {
    packet[7] = ttl;
    packet[1] = static_cast<std::uint8_t>((packet[1] & 0xcf) | mark << 4);
    return packet;
  }
  packet[8] = ttl;
  packet[1] = static_cast<std::uint8_t>((packet[1] & 0xfc) | mark);
  putRightChecksum(packet, header.fixedLength);
  return packet;
}

}  // namespace

ReferenceParsed readHeader(const PacketBytes& packet) {
  if (packet.empty()) return malformed();
  if (packet[0] / 16 == 4) return readIpv4(packet);
  if (packet[0] / 16 == 6) return readIpv6(packet);
  return malformed();
}

ReferenceInner takeOutOfTunnel(const PacketBytes& packet, const ReferenceHeader& header) {
  const bool isTunnel =
      header.family == IpFamily::v4 && (header.protocol == 4 || header.protocol == 41);
  if (!isTunnel) return {"notATunnel", {}};
  if (header.isFragment) return {"fragmentedTunnel", {}};
  const PacketBytes inside(packet.begin() + static_cast<std::ptrdiff_t>(header.fixedLength),
                           packet.begin() + static_cast<std::ptrdiff_t>(header.totalLength));
  const auto inner = readHeader(inside).header;
  const IpFamily family = header.protocol == 4 ? IpFamily::v4 : IpFamily::v6;
  if (!inner || inner->family != family) return {"innerMalformed", {}};
  const auto mark = markBehindTunnel(inner->ecn, header.ecn);
  if (!mark) return {"congestion", {}};
  return {"", withTtlAndMark(inside, *inner, header.ttl, *mark)};
}

std::optional<PacketBytes> leaving(const PacketBytes& packet, const ReferenceHeader& header) {
  if (header.ttl <= 1) return {};
  return withTtlAndMark(packet, header, static_cast<std::uint8_t>(header.ttl - 1), header.ecn);
}

void putRightChecksum(PacketBytes& packet, std::size_t headerBytes) {
  packet[10] = packet[11] = 0;
  const std::uint32_t checksum = 0xffff - sumOfWords(packet, headerBytes);
  packet[10] = static_cast<std::uint8_t>(checksum / 256);
  packet[11] = static_cast<std::uint8_t>(checksum % 256);
}

}  // namespace ZelAgent
