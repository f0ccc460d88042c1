#include "chips/packet/Checksum.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <span>

#include "testing/RandomSeed.h"
#include "tests/chips/packet/TestPacket.h"

namespace Chips {
namespace {

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
  const ZelVrfSelectionPolicy::Testing::RandomSeed seed;
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

// A header of 20 bytes with these words, and its right checksum in bytes 10 and 11.
Bytes headerWith(std::uint16_t first, std::uint16_t second) {
  Bytes header(20);
  const auto put = [&](std::size_t at, std::uint16_t word) {
    header[at] = static_cast<std::uint8_t>(word >> 8);
    header[at + 1] = static_cast<std::uint8_t>(word & 0xff);
  };
  put(0, 0x4500);
  put(4, first);
  put(8, second);
  put(10, checksumOf(header));
  return header;
}

std::uint16_t checksumIn(const Bytes& header) {
  return static_cast<std::uint16_t>(header[10] << 8 | header[11]);
}

TEST(Checksum, CarriesOfASumAreAddedUntilNoneIsLeft) {
  EXPECT_EQ(checksumOf(Bytes{0xff, 0xff, 0x00, 0x01}), 0xfffe);
  EXPECT_EQ(checksumOf(Bytes{0xff, 0xff, 0xff, 0xff}), 0x0000);
  EXPECT_EQ(checksumOf(Bytes{0xff, 0xff, 0x00, 0x01, 0xff, 0xff}), 0xfffe);
  EXPECT_EQ(checksumOf(Bytes{0x80, 0x00, 0x80, 0x00, 0xff, 0xff}), 0xfffe);
  EXPECT_EQ(checksumOf(Bytes(65536, 0xff)), 0x0000);
}

// The complements of checksum and old word are 0xffff here. With the new word they make 0x1ffff,
// and the carry makes 0x10000, which has a carry too.
TEST(Checksum, CarryOfACarryIsAddedWhenAWordChanges) {
  EXPECT_EQ(checksumAfter(0x0000, 0x0000, 0x0001), 0xfffe);
  EXPECT_EQ(checksumAfter(0x0001, 0x0000, 0x0002), 0xfffe);
  EXPECT_EQ(checksumAfter(0x0000, 0x1234, 0x1235), 0xfffe);
}

TEST(Checksum, AfterAChangeIsThatOfTheWholeHeader) {
  constexpr std::uint16_t edges[] = {0x0000, 0x0001, 0x00ff, 0x7fff, 0x8000,
                                     0xbaff, 0xfeff, 0xff00, 0xfffe, 0xffff};
  for (const std::uint16_t other : edges) {
    for (const std::uint16_t before : edges) {
      for (const std::uint16_t after : edges) {
        const std::uint16_t followed =
            checksumAfter(checksumIn(headerWith(before, other)), before, after);
        EXPECT_EQ(followed, checksumIn(headerWith(after, other)))
            << other << ": " << before << " -> " << after;
      }
    }
  }
}

}  // namespace
}  // namespace Chips
