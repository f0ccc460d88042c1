#include "tests/agent/TestPackets.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

namespace ZelAgent {
namespace {

constexpr std::size_t ipv4Bytes = 20;
constexpr std::uint8_t udp = 17;

PacketBytes big16(std::size_t number) {
  return {static_cast<std::uint8_t>(number / 256), static_cast<std::uint8_t>(number % 256)};
}

PacketBytes addressBytes(int family, const std::string& text) {
  PacketBytes bytes(family == AF_INET ? 4 : 16);
  EXPECT_EQ(inet_pton(family, text.c_str(), bytes.data()), 1) << text;
  return bytes;
}

// The sum of the 16-bit words with the carries put in again, and its complement.
void makeChecksum(PacketBytes& packet) {
  packet[10] = packet[11] = 0;
  std::uint32_t sum = 0;
  for (std::size_t at = 0; at < ipv4Bytes; at += 2)
    sum += packet[at] * 256U + packet[at + 1];
  sum = sum / 65536 + sum % 65536;
  sum = sum / 65536 + sum % 65536;
  const PacketBytes checksum = big16(65535 - sum);
  packet[10] = checksum[0];
  packet[11] = checksum[1];
}

bool isIpv4(const PacketBytes& packet) {
  return packet.at(0) / 16 == 4;
}

PacketBytes udpOf(std::uint16_t number) {
  PacketBytes bytes{0x30, 0x39, 0xd4, 0x31, 0, 10, 0, 0};
  append(bytes, big16(number));
  return bytes;
}

}  // namespace

PacketBytes ipv4PacketOf(const HeaderText& header, std::uint8_t protocol,
                         const PacketBytes& payload) {
  PacketBytes packet{0x45, static_cast<std::uint8_t>(header.dscp * 4 + header.ecn)};
  append(packet, big16(ipv4Bytes + payload.size()));
  append(packet, {0x12, 0x34, 0, 0, header.ttl, protocol, 0, 0});
  append(packet, addressBytes(AF_INET, header.source));
  append(packet, addressBytes(AF_INET, header.destination));
  makeChecksum(packet);
  append(packet, payload);
  return packet;
}

PacketBytes ipv4Packet(const HeaderText& header, std::uint16_t number) {
  return ipv4PacketOf(header, udp, udpOf(number));
}

PacketBytes ipv6Packet(const HeaderText& header, std::uint16_t number) {
  const unsigned traffic = header.dscp * 4U + header.ecn;
  PacketBytes packet{static_cast<std::uint8_t>(0x60 + traffic / 16),
                     static_cast<std::uint8_t>(traffic % 16 * 16 + 0x0a), 0xbc, 0xde};
  const PacketBytes payload = udpOf(number);
  append(packet, big16(payload.size()));
  append(packet, {udp, header.ttl});
  append(packet, addressBytes(AF_INET6, header.source));
  append(packet, addressBytes(AF_INET6, header.destination));
  append(packet, payload);
  return packet;
}

PacketBytes inIpv4(const HeaderText& outer, const PacketBytes& inner) {
  return ipv4PacketOf(outer, isIpv4(inner) ? 4 : 41, inner);
}

PacketBytes withTtl(PacketBytes packet, std::uint8_t ttl) {
  if (!isIpv4(packet)) {
    packet[7] = ttl;
    return packet;
  }
  packet[8] = ttl;
  makeChecksum(packet);
  return packet;
}

PacketBytes withEcn(PacketBytes packet, std::uint8_t ecn) {
  if (!isIpv4(packet)) {
    packet[1] = static_cast<std::uint8_t>(packet[1] / 64 * 64 + ecn * 16 + packet[1] % 16);
    return packet;
  }
  packet[1] = static_cast<std::uint8_t>(packet[1] / 4 * 4 + ecn);
  makeChecksum(packet);
  return packet;
}

PacketBytes asForwarded(const PacketBytes& packet) {
  const std::uint8_t ttl = isIpv4(packet) ? packet[8] : packet[7];
  return withTtl(packet, static_cast<std::uint8_t>(ttl - 1));
}

PacketBytes asDecapsulated(const PacketBytes& packet) {
  const PacketBytes inner(packet.begin() + ipv4Bytes, packet.end());
  return withTtl(inner, static_cast<std::uint8_t>(packet[8] - 1));
}

PacketBytes inEthernet(const PacketBytes& packet) {
  PacketBytes frame{0x02, 0, 0, 0, 0, 1, 0x02, 0, 0, 0, 0, 2};
  append(frame, isIpv4(packet) ? PacketBytes{0x08, 0x00} : PacketBytes{0x86, 0xdd});
  append(frame, packet);
  return frame;
}

}  // namespace ZelAgent
