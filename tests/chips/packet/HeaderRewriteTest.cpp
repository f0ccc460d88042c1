#include "chips/packet/HeaderRewrite.h"

#include <gtest/gtest.h>

#include "tests/chips/packet/TestPacket.h"

namespace Chips {
namespace {

TestPacket documentationPacket() {
  TestPacket packet;
  packet.source = "2001:db8::1";
  packet.destination = "2001:db8::2";
  return packet;
}

TEST(TtlDown, TakesOneAndMendsTheChecksum) {
  for (unsigned ttl = 2; ttl < 256; ++ttl) {
    TestPacket packet;
    packet.ttl = static_cast<std::uint8_t>(ttl);
    Bytes bytes = packet.bytes();
    ASSERT_TRUE(ttlDown(bytes));
    packet.ttl = static_cast<std::uint8_t>(ttl - 1);
    EXPECT_EQ(bytes, packet.bytes()) << ttl;
  }
}

TEST(TtlDown, KeepsOptions) {
  TestPacket packet;
  packet.options = {7, 7, 4, 0, 0, 0, 0, 0};
  Bytes bytes = packet.bytes();
  ASSERT_TRUE(ttlDown(bytes));
  packet.ttl = 63;
  EXPECT_EQ(bytes, packet.bytes());
}

TEST(TtlDown, TakesOneFromTheHopLimit) {
  TestPacket packet = documentationPacket();
  Bytes bytes = packet.bytes();
  ASSERT_TRUE(ttlDown(bytes));
  packet.ttl = 63;
  EXPECT_EQ(bytes, packet.bytes());
}

TEST(TtlDown, LeavesAPacketAloneThatHasNoneLeft) {
  for (const unsigned ttl : {0U, 1U}) {
    for (TestPacket packet : {TestPacket(), documentationPacket()}) {
      packet.ttl = static_cast<std::uint8_t>(ttl);
      Bytes bytes = packet.bytes();
      EXPECT_FALSE(ttlDown(bytes));
      EXPECT_EQ(bytes, packet.bytes());
    }
  }
}

TEST(TtlIs, WritesAnyValue) {
  for (TestPacket packet : {TestPacket(), documentationPacket()}) {
    for (const unsigned value : {0U, 1U, 128U, 255U}) {
      const auto ttl = static_cast<std::uint8_t>(value);
      Bytes bytes = packet.bytes();
      ttlIs(bytes, ttl);
      TestPacket wanted = packet;
      wanted.ttl = ttl;
      EXPECT_EQ(bytes, wanted.bytes());
    }
  }
}

TEST(EcnIs, WritesTwoBitsAndNoOthers) {
  for (TestPacket packet : {TestPacket(), documentationPacket()}) {
    packet.dscp = 0x2a;
    for (std::uint8_t before = 0; before < 4; ++before) {
      for (std::uint8_t after = 0; after < 4; ++after) {
        packet.ecn = before;
        Bytes bytes = packet.bytes();
        ecnIs(bytes, after);
        packet.ecn = after;
        EXPECT_EQ(bytes, packet.bytes());
      }
    }
  }
}

}  // namespace
}  // namespace Chips
