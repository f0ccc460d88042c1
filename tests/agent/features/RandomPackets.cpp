#include "tests/agent/features/RandomPackets.h"

#include <algorithm>

#include "tests/agent/features/ReferencePacket.h"

namespace ZelAgent {
namespace {

constexpr unsigned mostTunnels = 3;

void putBig16(PacketBytes& bytes, std::size_t at, std::size_t number) {
  bytes[at] = static_cast<std::uint8_t>(number / 256);
  bytes[at + 1] = static_cast<std::uint8_t>(number % 256);
}

class PacketMaker final {
 public:
  explicit PacketMaker(RandomChoices& choices) : choices_(choices) {}

  PacketBytes make(unsigned tunnels) {
    const bool isIpv4 = choices_.percent(tunnels == 0 ? 80 : 55);
    PacketBytes packet = isIpv4 ? ipv4(tunnels) : ipv6(tunnels);
    if (choices_.percent(8)) damage(packet);
    return packet;
  }

 private:
  PacketBytes bytesOf(std::size_t size) {
    PacketBytes bytes(size);
    for (std::uint8_t& byte : bytes)
      byte = static_cast<std::uint8_t>(choices_.below(256));
    return bytes;
  }

  std::uint8_t ttl() {
    static const std::vector<std::uint8_t> special{0, 1, 2, 255};
    if (choices_.percent(20)) return choices_.oneOf(special);
    return static_cast<std::uint8_t>(choices_.below(256));
  }

  std::uint8_t trafficClass() {
    return static_cast<std::uint8_t>(randomDscp(choices_) * 4U + choices_.below(4));
  }

  // A tunnel carries what its protocol says, most of the time.
  PacketBytes payload(std::uint8_t& protocol, unsigned tunnels) {
    if (tunnels < mostTunnels && choices_.percent(60)) {
      const PacketBytes inner = make(tunnels + 1);
      const bool isIpv4 = !inner.empty() && inner[0] / 16 == 4;
      protocol = isIpv4 ? 4 : 41;
      if (choices_.percent(5)) protocol = randomProtocol(choices_);
      return inner;
    }
    protocol = randomProtocol(choices_);
    return bytesOf(choices_.below(40));
  }

  PacketBytes ipv4(unsigned tunnels) {
    std::uint8_t protocol = 0;
    const PacketBytes inside = payload(protocol, tunnels);
    const std::size_t options = choices_.percent(15) ? 1 + choices_.below(10) : 0;
    const std::size_t headerBytes = 20 + 4 * options;
    PacketBytes packet{static_cast<std::uint8_t>(0x45 + options), trafficClass()};
    append(packet, bytesOf(10));
    putBig16(packet, 2, headerBytes + inside.size());
    putBig16(packet, 6, fragmentWord());
    packet[8] = ttl();
    packet[9] = protocol;
    for (int address = 0; address < 2; ++address) {
      const IpAddress bits = randomAddress(choices_, IpFamily::v4);
      packet.insert(packet.end(), bits.bytes.begin(), bits.bytes.begin() + 4);
    }
    append(packet, bytesOf(4 * options));
    putRightChecksum(packet, headerBytes);
    append(packet, inside);
    return packet;
  }

  // The reserved bit, "do not fragment", "more fragments" and the offset.
  std::size_t fragmentWord() {
    std::size_t word = choices_.percent(30) ? 0x4000 : 0;
    if (choices_.percent(4)) word += 0x8000;
    if (choices_.percent(5)) word += 0x2000;
    if (choices_.percent(5)) word += 1 + choices_.below(0x1fff);
    return word;
  }

  PacketBytes ipv6(unsigned tunnels) {
    std::uint8_t next = 0;
    PacketBytes inside = payload(next, tunnels);
    while (choices_.percent(20))
      inside = behindExtension(next, inside);
    const std::uint8_t traffic = trafficClass();
    PacketBytes packet = bytesOf(8);
    packet[0] = static_cast<std::uint8_t>(0x60 + traffic / 16);
    packet[1] = static_cast<std::uint8_t>(traffic % 16 * 16 + packet[1] % 16);
    putBig16(packet, 4, inside.size());
    packet[6] = next;
    packet[7] = ttl();
    for (int address = 0; address < 2; ++address) {
      const IpAddress bits = randomAddress(choices_, IpFamily::v6);
      packet.insert(packet.end(), bits.bytes.begin(), bits.bytes.end());
    }
    append(packet, inside);
    return packet;
  }

  PacketBytes behindExtension(std::uint8_t& next, const PacketBytes& inside) {
    static const std::vector<std::uint8_t> kinds{0, 43, 44, 60};
    const std::uint8_t kind = choices_.oneOf(kinds);
    const std::size_t more = kind == 44 ? 0 : choices_.below(3);
    PacketBytes header = bytesOf(8 + 8 * more);
    header[0] = next;
    header[1] = static_cast<std::uint8_t>(more);
    if (kind == 44) putBig16(header, 2, choices_.percent(50) ? choices_.below(8) : 8 * 17 + 1);
    next = kind;
    append(header, inside);
    return header;
  }

  void damage(PacketBytes& packet) {
    const bool isIpv4 = packet[0] / 16 == 4;
    switch (choices_.below(7)) {
      case 0:
        packet.resize(choices_.below(static_cast<unsigned>(packet.size())));
        break;
      case 1:
        append(packet, bytesOf(1 + choices_.below(30)));
        break;
      case 2:
        packet[0] = static_cast<std::uint8_t>(packet[0] % 16 + 16 * choices_.below(16));
        break;
      case 3:
        packet[0] = static_cast<std::uint8_t>(packet[0] / 16 * 16U + choices_.below(16));
        break;
      case 4:
        putBig16(packet, isIpv4 ? 2 : 4, choices_.below(static_cast<unsigned>(packet.size() + 9)));
        break;
      case 5:
        packet[choices_.below(static_cast<unsigned>(std::min<std::size_t>(packet.size(), 44)))] ^=
            static_cast<std::uint8_t>(1 + choices_.below(255));
        return;
      default:
        if (isIpv4) packet[10] ^= static_cast<std::uint8_t>(1 + choices_.below(255));
        return;
    }
    // What is wrong shall be found without the help of the checksum, too.
    const std::size_t headerBytes = packet.empty() ? 0 : packet[0] % 16 * 4U;
    if (isIpv4 && choices_.percent(60) && headerBytes >= 20 && headerBytes <= packet.size()) {
      putRightChecksum(packet, headerBytes);
    }
  }

  RandomChoices& choices_;
};

}  // namespace

PacketBytes randomPacket(RandomChoices& choices) {
  return PacketMaker(choices).make(0);
}

}  // namespace ZelAgent
