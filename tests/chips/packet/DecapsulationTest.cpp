#include "chips/packet/Decapsulation.h"

#include <gtest/gtest.h>

#include "tests/chips/packet/TestPacket.h"

namespace Chips {
namespace {

Decapsulation decapsulated(const Bytes& bytes) {
  const ExactBytes exact(bytes);
  const ParsedHeader outer = parse(exact.span());
  EXPECT_EQ(outer.fault, HeaderFault::none);
  return decapsulate(exact.span(), outer.header.value_or(PacketHeader()));
}

TestPacket innerV4() {
  TestPacket packet;
  packet.source = "10.0.0.1";
  packet.destination = "10.0.0.2";
  packet.ttl = 9;
  packet.dscp = 11;
  packet.protocol = 6;
  return packet;
}

TestPacket innerV6() {
  TestPacket packet = innerV4();
  packet.source = "2001:db8::1";
  packet.destination = "2001:db8::2";
  return packet;
}

TEST(Decapsulation, GivesTheInnerPacketWithTheOuterTimeToLive) {
  for (const TestPacket& inner : {innerV4(), innerV6()}) {
    TestPacket outer;
    outer.ttl = 33;
    outer.dscp = 46;
    const Decapsulation done = decapsulated(outer.around(inner).bytes());
    ASSERT_EQ(done.fault, DecapFault::none);
    TestPacket wanted = inner;
    wanted.ttl = 33;
    EXPECT_EQ(done.packet, wanted.bytes());
    EXPECT_EQ(done.arrived.ttl, 9);
    EXPECT_EQ(done.header.ttl, 33);
    EXPECT_EQ(done.header, parse(done.packet).header);
  }
}

TEST(Decapsulation, KeepsInnerOptionsAndTakesOuterOnesOff) {
  TestPacket inner = innerV4();
  inner.options = {7, 7, 4, 0, 0, 0, 0, 0};
  TestPacket outer;
  outer.options = Bytes(16, 1);
  inner.ttl = outer.ttl;
  const Decapsulation done = decapsulated(outer.around(inner).bytes());
  EXPECT_EQ(done.fault, DecapFault::none);
  EXPECT_EQ(done.packet, inner.bytes());
}

TEST(Decapsulation, CombinesTheCongestionMarks) {
  for (TestPacket inner : {innerV4(), innerV6()}) {
    inner.ecn = 2;
    TestPacket outer;
    outer.ecn = 3;
    inner.ttl = outer.ttl;
    const Decapsulation done = decapsulated(outer.around(inner).bytes());
    ASSERT_EQ(done.fault, DecapFault::none);
    inner.ecn = 3;
    EXPECT_EQ(done.packet, inner.bytes());
    EXPECT_EQ(done.arrived.ecn, 2);
    EXPECT_EQ(done.header.ecn, 3);
  }
}

TEST(Decapsulation, RefusesCongestionThatTheInnerPacketCannotCarry) {
  TestPacket outer;
  outer.ecn = 3;
  const Decapsulation done = decapsulated(outer.around(innerV4()).bytes());
  EXPECT_EQ(done.fault, DecapFault::congestion);
  EXPECT_TRUE(done.packet.empty());
}

TEST(Decapsulation, LeavesOutWhatFollowsTheInnerPacket) {
  TestPacket outer = TestPacket().around(innerV4());
  outer.payload.resize(outer.payload.size() + 7);
  TestPacket wanted = innerV4();
  wanted.ttl = outer.ttl;
  EXPECT_EQ(decapsulated(outer.bytes()).packet, wanted.bytes());
}

TEST(Decapsulation, TakesTunnelsInIpv4Only) {
  EXPECT_EQ(decapsulated(TestPacket().bytes()).fault, DecapFault::notATunnel);
  EXPECT_EQ(decapsulated(innerV6().around(innerV4()).bytes()).fault, DecapFault::notATunnel);
}

TEST(Decapsulation, TakesNoFragments) {
  TestPacket outer = TestPacket().around(innerV4());
  outer.fragmentWord = 0x2000;
  EXPECT_EQ(decapsulated(outer.bytes()).fault, DecapFault::fragmented);
  outer.fragmentWord = 0x0001;
  EXPECT_EQ(decapsulated(outer.bytes()).fault, DecapFault::fragmented);
  outer.fragmentWord = 0x4000;
  EXPECT_EQ(decapsulated(outer.bytes()).fault, DecapFault::none);
}

TEST(Decapsulation, SaysWhatIsWrongWithTheInnerHeader) {
  TestPacket outer = TestPacket().around(innerV4());
  outer.payload[10] ^= 1;
  Decapsulation done = decapsulated(outer.bytes());
  EXPECT_EQ(done.fault, DecapFault::innerMalformed);
  EXPECT_EQ(done.innerFault, HeaderFault::badChecksum);
  outer.payload.clear();
  done = decapsulated(outer.bytes());
  EXPECT_EQ(done.fault, DecapFault::innerMalformed);
  EXPECT_EQ(done.innerFault, HeaderFault::tooShort);
}

TEST(Decapsulation, WantsTheVersionThatTheOuterProtocolSays) {
  for (const TestPacket& inner : {innerV4(), innerV6()}) {
    TestPacket outer = TestPacket().around(inner);
    outer.protocol = outer.protocol == 4 ? 41 : 4;
    const Decapsulation done = decapsulated(outer.bytes());
    EXPECT_EQ(done.fault, DecapFault::innerMalformed);
    EXPECT_EQ(done.innerFault, HeaderFault::none);
  }
}

TEST(Decapsulation, IsOfWholeInnerPacketsOnlyWhereverTheyAreCut) {
  for (const TestPacket& inner : {innerV4(), innerV6()}) {
    const TestPacket whole = TestPacket().around(inner);
    for (std::size_t size = 0; size <= whole.payload.size(); ++size) {
      TestPacket cut = whole;
      cut.payload.resize(size);
      EXPECT_EQ(decapsulated(cut.bytes()).fault,
                size == whole.payload.size() ? DecapFault::none : DecapFault::innerMalformed);
    }
  }
}

}  // namespace
}  // namespace Chips
