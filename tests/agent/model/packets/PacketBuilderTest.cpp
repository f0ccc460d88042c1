// Packets that the agent builds are those that anybody would build, byte by byte.
#include "agent/model/packets/PacketText.h"

#include <gtest/gtest.h>

#include "agent/config/IpPrefix.h"
#include "tests/agent/TestPackets.h"

namespace ZelAgent {
namespace {

PacketFields fieldsOf(const char* source, const char* destination) {
  PacketFields fields;
  fields.source = parseIpAddress(source).value();
  fields.destination = parseIpAddress(destination).value();
  return fields;
}

TEST(PacketBuilder, WritesAnIpv4HeaderByteByByte) {
  PacketFields fields = fieldsOf("192.0.2.1", "203.0.113.9");
  fields.protocol = 4;
  fields.dscp = 46;
  fields.ecn = 1;
  fields.ttl = 7;
  fields.payload = {0xca, 0xfe, 0x01};
  EXPECT_EQ(buildPacket(fields),
            (PacketBytes{0x45, 0xb9, 0x00, 0x17, 0x00, 0x00, 0x00, 0x00, 0x07, 0x04, 0xb5, 0x1f,
                         192,  0,    2,    1,    203,  0,    113,  9,    0xca, 0xfe, 0x01}));
}

TEST(PacketBuilder, WritesAnIpv6HeaderByteByByte) {
  PacketFields fields = fieldsOf("2001:db8::1", "2001:db8::2");
  fields.protocol = 58;
  fields.dscp = 46;
  fields.ecn = 3;
  fields.ttl = 255;
  fields.payload = {0xca};
  EXPECT_EQ(
      buildPacket(fields),
      (PacketBytes{0x6b, 0xb0, 0x00, 0x00, 0x00, 0x01, 58, 255, 0x20, 0x01, 0x0d, 0xb8, 0,    0,
                   0,    0,    0,    0,    0,    0,    0,  0,   0,    1,    0x20, 0x01, 0x0d, 0xb8,
                   0,    0,    0,    0,    0,    0,    0,  0,   0,    0,    0,    2,    0xca}));
}

TEST(PacketBuilder, ChecksumsAreRightForEveryTimeToLive) {
  PacketFields fields = fieldsOf("255.255.255.255", "255.255.255.254");
  for (unsigned ttl = 0; ttl < 256; ++ttl) {
    fields.ttl = static_cast<std::uint8_t>(ttl);
    const PacketBytes packet = buildPacket(fields);
    EXPECT_EQ(packet, withTtl(packet, fields.ttl)) << ttl;
  }
}

TEST(PacketBuilder, TheLongestPayload) {
  PacketFields fields = fieldsOf("192.0.2.1", "203.0.113.9");
  fields.payload.assign(65515, 1);
  const PacketBytes packet = buildPacket(fields);
  EXPECT_EQ(packet.size(), 65535U);
  EXPECT_EQ(packet[2], 0xff);
  EXPECT_EQ(packet[3], 0xff);
}

}  // namespace
}  // namespace ZelAgent
