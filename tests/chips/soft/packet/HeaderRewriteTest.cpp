#include "chips/soft/packet/HeaderRewrite.h"

#include <gtest/gtest.h>

#include <random>

#include "chips/soft/packet/Checksum.h"
#include "testing/RandomSeed.h"
#include "tests/chips/soft/packet/TestPacket.h"

namespace SoftChip {
namespace {

using ZelVrfSelectionPolicy::Testing::RandomSeed;

TestPacket documentationPacket() {
  TestPacket packet;
  packet.source = "2001:db8::1";
  packet.destination = "2001:db8::2";
  return packet;
}

TEST(Checksum, IsThatOfAKnownHeader) {
  const Bytes header = {0x45, 0, 0,   0x73, 0, 0, 0x40, 0,   0x40, 0x11,
                        0,    0, 192, 168,  0, 1, 192,  168, 0,    199};
  EXPECT_EQ(checksumOf(header), 0xb861);
}

TEST(Checksum, TakesAnOddByteForTheHighHalf) {
  EXPECT_EQ(checksumOf(Bytes{0x12}), 0xffff - 0x1200);
  EXPECT_EQ(checksumOf(Bytes{}), 0xffff);
}

TEST(Checksum, FollowsAnyChangeOfAWord) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  for (int round = 0; round < 20000; ++round) {
    TestPacket packet;
    packet.ttl = static_cast<std::uint8_t>(random());
    packet.dscp = static_cast<std::uint8_t>(random() % 64);
    Bytes bytes = packet.bytes();
    const auto checksum = static_cast<std::uint16_t>(bytes[10] * 256 + bytes[11]);
    const auto before = static_cast<std::uint16_t>(bytes[4] * 256 + bytes[5]);
    bytes[4] = static_cast<std::uint8_t>(random());
    bytes[5] = static_cast<std::uint8_t>(random());
    const auto after = static_cast<std::uint16_t>(bytes[4] * 256 + bytes[5]);
    const std::uint16_t followed = checksumAfter(checksum, before, after);
    bytes[10] = static_cast<std::uint8_t>(followed / 256);
    bytes[11] = static_cast<std::uint8_t>(followed % 256);
    ASSERT_TRUE(hasRightChecksum(bytes)) << before << " -> " << after;
    ASSERT_EQ(checksumOf(std::span(bytes).first(20)), 0);
  }
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
}  // namespace SoftChip
