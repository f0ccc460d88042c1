// Where in a frame the packet is.
#include "agent/model/packets/Captures.h"

#include <gtest/gtest.h>

#include <vector>

namespace ZelAgent {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes frameOf(std::initializer_list<std::uint8_t> typeAndTags, const Bytes& packet = {1, 2, 3}) {
  Bytes frame(12, 0xaa);
  frame.insert(frame.end(), typeAndTags);
  frame.insert(frame.end(), packet.begin(), packet.end());
  return frame;
}

// As bytes of their own, so that a read beyond them is found.
std::optional<Bytes> packetIn(const Bytes& frame) {
  const Bytes exact(frame);
  const auto packet = ipPacketIn(exact);
  if (!packet) return std::nullopt;
  return Bytes(packet->begin(), packet->end());
}

TEST(EthernetFrame, CarriesIpv4) {
  EXPECT_EQ(packetIn(frameOf({0x08, 0x00})), (Bytes{1, 2, 3}));
}

TEST(EthernetFrame, CarriesIpv6) {
  EXPECT_EQ(packetIn(frameOf({0x86, 0xdd})), (Bytes{1, 2, 3}));
}

TEST(EthernetFrame, CarriesIpBelowTagsOfVlans) {
  EXPECT_EQ(packetIn(frameOf({0x81, 0x00, 0x00, 0x0a, 0x08, 0x00})), (Bytes{1, 2, 3}));
  EXPECT_EQ(packetIn(frameOf({0x88, 0xa8, 0x00, 0x64, 0x81, 0x00, 0x00, 0x0a, 0x86, 0xdd})),
            (Bytes{1, 2, 3}));
  EXPECT_EQ(packetIn(frameOf({0x81, 0x00, 0, 1, 0x81, 0x00, 0, 2, 0x81, 0x00, 0, 3, 0x08, 0x00})),
            (Bytes{1, 2, 3}));
}

TEST(EthernetFrame, MayCarryAnEmptyPacket) {
  EXPECT_EQ(packetIn(frameOf({0x08, 0x00}, {})), Bytes{});
}

TEST(EthernetFrame, CarriesSomethingElse) {
  EXPECT_EQ(packetIn(frameOf({0x08, 0x06})), std::nullopt);                          // ARP
  EXPECT_EQ(packetIn(frameOf({0x00, 0x26})), std::nullopt);                          // a length
  EXPECT_EQ(packetIn(frameOf({0x81, 0x00, 0x00, 0x0a, 0x08, 0x06})), std::nullopt);  // tagged ARP
  EXPECT_EQ(packetIn(frameOf({0x00, 0x08})), std::nullopt);
}

TEST(EthernetFrame, EndsBeforeItsPacket) {
  const Bytes tagged = frameOf({0x81, 0x00, 0x00, 0x0a, 0x08, 0x00}, {});
  for (std::size_t length = 0; length < tagged.size(); ++length) {
    const Bytes cut(tagged.begin(), tagged.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(packetIn(cut), std::nullopt) << length;
  }
  EXPECT_EQ(packetIn(tagged), Bytes{});
}

}  // namespace
}  // namespace ZelAgent
