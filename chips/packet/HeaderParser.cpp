#include "chips/packet/HeaderParser.h"

#include <algorithm>
#include <utility>

#include "chips/packet/Checksum.h"
#include "chips/packet/NetworkOrder.h"

namespace Chips {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t fixedV4 = 20;
constexpr std::size_t fixedV6 = 40;

constexpr std::size_t portBytes = 4;
constexpr std::size_t tcpFlagsAt = 13;

constexpr std::uint8_t hopByHop = 0;
constexpr std::uint8_t routing = 43;
constexpr std::uint8_t fragmentHeader = 44;
constexpr std::uint8_t destinationOptions = 60;

ParsedHeader faulty(HeaderFault fault) noexcept {
  return {std::nullopt, fault};
}

Ip::Address addressAt(Bytes packet, std::size_t at, Ip::Family family) noexcept {
  Ip::Address address;
  address.family = family;
  const Bytes bytes = packet.subspan(at, Ip::addressBits(family) / 8);
  std::copy(bytes.begin(), bytes.end(), address.bytes.begin());
  return address;
}

void trafficClassIs(PacketHeader& header, std::uint8_t trafficClass) noexcept {
  header.dscp = static_cast<std::uint8_t>(trafficClass >> 2);
  header.ecn = trafficClass & 3;
}

// Reads the ports and flags of the upper layer, as far as the packet has them.
void readUpperLayer(Bytes packet, PacketHeader& header) noexcept {
  const bool isTcp = header.protocol == protocolTcp;
  if ((!isTcp && header.protocol != protocolUdp) || header.fragment.offset != 0) return;
  const Bytes upper = packet.first(header.totalLength).subspan(header.headerLength);
  if (upper.size() < portBytes) return;
  header.ports = {wordAt(upper, 0), wordAt(upper, 2)};
  if (isTcp && upper.size() > tcpFlagsAt) header.tcpFlags = upper[tcpFlagsAt];
}

ParsedHeader parseV4(Bytes packet) noexcept {
  if (packet.size() < fixedV4) return faulty(HeaderFault::tooShort);
  PacketHeader header;
  header.family = Ip::Family::v4;
  header.headerLength = std::size_t{packet[0] & 0xfU} * 4;
  if (header.headerLength < fixedV4 || header.headerLength > packet.size())
    return faulty(HeaderFault::badHeaderLength);
  header.totalLength = wordAt(packet, 2);
  if (header.totalLength < header.headerLength) return faulty(HeaderFault::badTotalLength);
  if (header.totalLength > packet.size()) return faulty(HeaderFault::totalLengthBeyond);
  if (checksumOf(packet.first(header.headerLength)) != 0) return faulty(HeaderFault::badChecksum);
  trafficClassIs(header, packet[1]);
  header.fragment = {static_cast<std::uint16_t>(wordAt(packet, 6) & 0x1fff),
                     (packet[6] & 0x20) != 0};
  header.ttl = packet[8];
  header.protocol = packet[9];
  header.source = addressAt(packet, 12, header.family);
  header.destination = addressAt(packet, 16, header.family);
  readUpperLayer(packet, header);
  return {header, HeaderFault::none};
}

bool isExtension(std::uint8_t protocol) noexcept {
  return protocol == hopByHop || protocol == routing || protocol == destinationOptions ||
         protocol == fragmentHeader;
}

// Adds the next extension header to `header`. Returns false if it is incomplete.
bool takeExtension(Bytes packet, PacketHeader& header) noexcept {
  const Bytes rest = packet.subspan(header.headerLength);
  if (rest.size() < 8) return false;
  if (header.protocol == fragmentHeader) {
    const std::uint16_t word = wordAt(rest, 2);
    header.fragment = {static_cast<std::uint16_t>(word >> 3), (word & 1) != 0};
    header.headerLength += 8;
  } else {
    const std::size_t length = (rest[1] + std::size_t{1}) * 8;
    if (length > rest.size()) return false;
    header.headerLength += length;
  }
  header.protocol = rest[0];
  return true;
}

ParsedHeader parseV6(Bytes packet) noexcept {
  if (packet.size() < fixedV6) return faulty(HeaderFault::tooShort);
  PacketHeader header;
  header.family = Ip::Family::v6;
  header.headerLength = fixedV6;
  header.totalLength = fixedV6 + wordAt(packet, 4);
  if (header.totalLength > packet.size()) return faulty(HeaderFault::totalLengthBeyond);
  trafficClassIs(header, static_cast<std::uint8_t>(wordAt(packet, 0) >> 4));
  header.protocol = packet[6];
  header.ttl = packet[7];
  header.source = addressAt(packet, 8, header.family);
  header.destination = addressAt(packet, 24, header.family);
  bool hasFragmentHeader = false;
  while (isExtension(header.protocol) && header.fragment.offset == 0) {
    const bool isFragmentHeader = header.protocol == fragmentHeader;
    if (isFragmentHeader && std::exchange(hasFragmentHeader, true)) break;
    if (!takeExtension(packet.first(header.totalLength), header))
      return faulty(HeaderFault::extensionHeaderBeyond);
  }
  readUpperLayer(packet, header);
  return {header, HeaderFault::none};
}

}  // namespace

std::string_view textOf(HeaderFault fault) noexcept {
  switch (fault) {
    case HeaderFault::none:
      break;
    case HeaderFault::tooShort:
      return "the packet is shorter than an IP header";
    case HeaderFault::badVersion:
      return "the IP version is neither 4 nor 6";
    case HeaderFault::badHeaderLength:
      return "the header length is below 20 bytes or beyond the end of the packet";
    case HeaderFault::badTotalLength:
      return "the total length is less than the header length";
    case HeaderFault::totalLengthBeyond:
      return "the total length is beyond the end of the packet";
    case HeaderFault::extensionHeaderBeyond:
      return "an extension header is beyond the end of the packet";
    case HeaderFault::badChecksum:
      return "the header checksum is wrong";
  }
  return {};
}

ParsedHeader parse(std::span<const std::uint8_t> packet) noexcept {
  if (packet.empty()) return faulty(HeaderFault::tooShort);
  switch (packet[0] >> 4) {
    case 4:
      return parseV4(packet);
    case 6:
      return parseV6(packet);
    default:
      return faulty(HeaderFault::badVersion);
  }
}

}  // namespace Chips
