#include "agent/model/packets/PacketBuilder.h"

#include "chips/soft/packet/Checksum.h"

namespace ZelAgent {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t ipv4HeaderBytes = 20;

void put16(Bytes& bytes, std::size_t number) {
  bytes.push_back(static_cast<std::uint8_t>(number >> 8));
  bytes.push_back(static_cast<std::uint8_t>(number));
}

void putAddress(Bytes& bytes, const Ip::Address& address) {
  bytes.insert(bytes.end(), address.bytes.begin(),
               address.bytes.begin() + Ip::addressBits(address.family) / 8);
}

std::uint8_t trafficClass(const PacketFields& fields) {
  return static_cast<std::uint8_t>(fields.dscp << 2 | fields.ecn);
}

Bytes ipv4Header(const PacketFields& fields) {
  Bytes header{0x45, trafficClass(fields)};
  put16(header, ipv4HeaderBytes + fields.payload.size());
  put16(header, 0);  // identification
  put16(header, 0);  // not a fragment
  header.push_back(fields.ttl);
  header.push_back(fields.protocol);
  put16(header, 0);
  putAddress(header, fields.source);
  putAddress(header, fields.destination);
  const std::uint16_t checksum = SoftChip::checksumOf(header);
  header[10] = static_cast<std::uint8_t>(checksum >> 8);
  header[11] = static_cast<std::uint8_t>(checksum);
  return header;
}

Bytes ipv6Header(const PacketFields& fields) {
  const std::uint8_t traffic = trafficClass(fields);
  Bytes header{static_cast<std::uint8_t>(0x60 | traffic >> 4),
               static_cast<std::uint8_t>(traffic << 4), 0, 0};
  put16(header, fields.payload.size());
  header.push_back(fields.protocol);
  header.push_back(fields.ttl);
  putAddress(header, fields.source);
  putAddress(header, fields.destination);
  return header;
}

}  // namespace

std::vector<std::uint8_t> buildPacket(const PacketFields& fields) {
  Bytes packet = fields.source.family == Ip::Family::v4 ? ipv4Header(fields) : ipv6Header(fields);
  packet.insert(packet.end(), fields.payload.begin(), fields.payload.end());
  return packet;
}

}  // namespace ZelAgent
