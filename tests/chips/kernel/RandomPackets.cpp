#include "tests/chips/kernel/RandomPackets.h"

#include <cstdio>

namespace KernelChip {

using Chips::Bytes;
using Chips::PacketHeader;
using Chips::TestPacket;

std::string textOf(const Ip::Address& address) {
  std::string text;
  if (address.family == Ip::Family::v4) {
    for (unsigned at = 0; at < 4; ++at)
      text += (at == 0 ? "" : ".") + std::to_string(address.bytes.at(at));
    return text;
  }
  for (unsigned at = 0; at < 16; at += 2) {
    char group[6];
    std::snprintf(group, sizeof group, "%02x%02x", address.bytes.at(at), address.bytes.at(at + 1));
    text += (at == 0 ? "" : ":") + std::string(group);
  }
  return text;
}

Bytes RandomPackets::bytes() {
  TestPacket sent = packet();
  if (random_.oneIn(3)) {
    TestPacket outer = v4(random_.packet());
    if (!random_.oneIn(6)) outer.fragmentWord = 0;
    sent = outer.around(sent);
  }
  Bytes bytes = sent.bytes();
  if (random_.oneIn(6)) damage(bytes);
  return bytes;
}

TestPacket RandomPackets::packet() {
  const PacketHeader header = random_.packet();
  return header.family == Ip::Family::v4 ? v4(header) : v6(header);
}

TestPacket RandomPackets::v4(const PacketHeader& header) {
  PacketHeader inV4 = header;
  inV4.source.family = inV4.destination.family = Ip::Family::v4;
  TestPacket packet;
  packet.source = textOf(inV4.source);
  packet.destination = textOf(inV4.destination);
  packet.protocol = header.protocol;
  packet.dscp = header.dscp;
  packet.ecn = static_cast<std::uint8_t>(random_.below(4));
  packet.ttl = random_.oneIn(8) ? static_cast<std::uint8_t>(random_.below(3)) : header.ttl;
  if (random_.oneIn(4))
    packet.fragmentWord = static_cast<std::uint16_t>(random_.below(3) | random_.below(2) << 13);
  if (random_.oneIn(6)) packet.options = Bytes(4 * (1 + random_.below(10)), 1);
  packet.payload = upperLayer(header);
  return packet;
}

TestPacket RandomPackets::v6(const PacketHeader& header) {
  TestPacket packet = v4(header);
  packet.source = textOf(header.source);
  packet.destination = textOf(header.destination);
  packet.fragmentWord = 0;
  packet.options.clear();
  for (std::uint32_t count = random_.oneIn(3) ? 1 + random_.below(3) : 0; count > 0; --count) {
    static constexpr std::uint8_t types[] = {0, 43, 60, 44};
    const std::uint8_t type = types[random_.below(4)];
    Bytes rest(7, 0);
    if (type == 44) {
      rest[2] = static_cast<std::uint8_t>(random_.below(2) * 8 | random_.below(2));
    } else if (random_.oneIn(3)) {
      rest = Bytes(15, 0);
      rest[0] = 1;
    }
    packet.extensions.push_back({type, rest});
  }
  return packet;
}

Bytes RandomPackets::upperLayer(const PacketHeader& header) {
  const Chips::Ports ports = header.ports.value_or(Chips::Ports{80, 80});
  Bytes bytes(random_.oneIn(4) ? random_.below(20) : 20, 0);
  const Bytes head{static_cast<std::uint8_t>(ports.source >> 8),
                   static_cast<std::uint8_t>(ports.source),
                   static_cast<std::uint8_t>(ports.destination >> 8),
                   static_cast<std::uint8_t>(ports.destination)};
  for (std::size_t at = 0; at < head.size() && at < bytes.size(); ++at)
    bytes[at] = head[at];
  if (bytes.size() > 13) bytes[13] = header.tcpFlags.value_or(2);
  return bytes;
}

void RandomPackets::damage(Bytes& bytes) {
  const auto size = static_cast<std::uint32_t>(bytes.size());
  switch (random_.below(4)) {
    case 0:
      bytes.resize(random_.below(size));
      return;
    case 1:
      bytes.resize(size + random_.below(30), 0xee);
      return;
    default:
      bytes[random_.below(size)] ^= static_cast<std::uint8_t>(1U << random_.below(8));
      if (random_.oneIn(2) && size >= 20 && bytes[0] == 0x45) Chips::mendChecksum(bytes);
  }
}

}  // namespace KernelChip
