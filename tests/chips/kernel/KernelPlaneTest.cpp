#include "chips/kernel/KernelPlane.h"

#include <gtest/gtest.h>
#include <linux/bpf.h>

#include "tests/chips/kernel/KernelTest.h"

namespace KernelChip {
namespace {

using Chips::Bytes;
using Chips::TestPacket;

constexpr std::uint32_t egressHop = 3;  // behind those of TwoChips for "drop" and "decap"

class KernelPlaneTest : public KernelTest {
 protected:
  void SetUp() override {
    KernelTest::SetUp();
    if (IsSkipped()) return;
    chips().soft.vrfIs("red");
    chips().intfIs("in", 0, "red", false);
    chips().routeIs("red", "0.0.0.0/0", "out");
    chips().routeIs("red", "0::/0", "out");
    chips().programsIs();
  }

  [[nodiscard]] static Bytes frameOf(const Bytes& packet, std::uint16_t type = 0x0800) {
    Bytes frame(12, 0);
    frame.push_back(static_cast<std::uint8_t>(type >> 8));
    frame.push_back(static_cast<std::uint8_t>(type));
    frame.insert(frame.end(), packet.begin(), packet.end());
    return frame;
  }
  // Whether the frame goes up to the kernel as it came in, counted for the reason.
  [[nodiscard]] bool isPassed(const Bytes& frame, ZelReason reason) {
    const std::uint64_t before = chips().kernel.reasonCounters.sum(reason).packets;
    const FrameResult result = chips().kernel.run(frame);
    return result.verdict == XDP_PASS && result.frame == frame &&
           chips().kernel.reasonCounters.sum(reason).packets == before + 1;
  }
};

TEST_F(KernelPlaneTest, ThePacketThatLeavesIsThatOfTheSoftwareChip) {
  const Bytes packet = TestPacket().bytes();
  const Outcome outcome = chips().softOutcome("in", packet);
  EXPECT_EQ(outcome.verdict, "by out");
  EXPECT_EQ(chips().kernelOutcome("in", packet), outcome);
}

TEST_F(KernelPlaneTest, PortsCountTheirPackets) {
  const Bytes packet = TestPacket().bytes();
  static_cast<void>(chips().kernel.run(frameOf(packet)));
  EXPECT_EQ(chips().kernel.portCounters.sum(1).packets, 1U);
  EXPECT_EQ(chips().kernel.portCounters.sum(1).bytes, packet.size());
}

TEST_F(KernelPlaneTest, TheKernelAnswersAnExpiredTimeToLive) {
  TestPacket packet;
  packet.ttl = 1;
  EXPECT_TRUE(isPassed(frameOf(packet.bytes()), zelTtlExpired));
}

TEST_F(KernelPlaneTest, TheKernelAnswersAPacketThatIsTooLong) {
  TestPacket packet;
  packet.payload = Bytes(100, 0);
  chips().kernel.nextHops[egressHop].mtu = 119;
  EXPECT_TRUE(isPassed(frameOf(packet.bytes()), zelTooLong));
  chips().kernel.nextHops[egressHop].mtu = 120;
  EXPECT_FALSE(isPassed(frameOf(packet.bytes()), zelTooLong)) << "it fits";
}

TEST_F(KernelPlaneTest, TheKernelResolvesANextHop) {
  chips().kernel.nextHops[egressHop].isResolved = 0;
  EXPECT_TRUE(isPassed(frameOf(TestPacket().bytes()), zelUnresolved));
}

TEST_F(KernelPlaneTest, WhatIsForTheLinkOrAGroupIsTheKernels) {
  for (const char* const destination : {"169.254.1.1", "224.0.0.5", "255.255.255.255"}) {
    TestPacket packet;
    packet.destination = destination;
    EXPECT_TRUE(isPassed(frameOf(packet.bytes()), zelLocal)) << destination;
  }
  for (const char* const destination : {"fe80::1", "febf::1", "ff02::1"}) {
    TestPacket packet;
    packet.source = "2001:db8::1";
    packet.destination = destination;
    EXPECT_TRUE(isPassed(frameOf(packet.bytes(), 0x86dd), zelLocal)) << destination;
  }
}

TEST_F(KernelPlaneTest, AnAddressOfThisMachineIsTheKernels) {
  chips().kernel.nextHops[egressHop].kind = zelHopLocal;
  EXPECT_TRUE(isPassed(frameOf(TestPacket().bytes()), zelLocal));
}

TEST_F(KernelPlaneTest, OtherProtocolsAreTheKernels) {
  EXPECT_TRUE(isPassed(frameOf(Bytes(28, 1), 0x0806), zelNotIp));
}

TEST_F(KernelPlaneTest, FramesOfOtherInterfacesAreTheKernelsAndNotCounted) {
  Bytes tagged(12, 0);
  for (const int byte : {0x81, 0x00, 0x00, 0x63})
    tagged.push_back(static_cast<std::uint8_t>(byte));
  const Bytes plain = frameOf(TestPacket().bytes());
  tagged.insert(tagged.end(), plain.begin() + 12, plain.end());
  const FrameResult result = chips().kernel.run(tagged);
  EXPECT_EQ(result.verdict, XDP_PASS);
  EXPECT_EQ(result.frame, tagged);
  for (std::uint32_t reason = 0; reason < zelReasons; ++reason)
    EXPECT_EQ(chips().kernel.reasonCounters.sum(reason).packets, 0U);
}

}  // namespace
}  // namespace KernelChip
