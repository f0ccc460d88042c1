// Packets as operators write them, and what is wrong with those that are written badly.
#include "agent/model/packets/PacketText.h"

#include <gtest/gtest.h>

#include <ostream>

#include "agent/language/Errors.h"
#include "tests/agent/TestPackets.h"

namespace ZelAgent {
namespace {

PacketBytes packetOf(const std::string& text) {
  EventLine line(text);
  PacketBytes packet = readPacket(line);
  line.needEnd();
  return packet;
}

// The checksum, lengths and addresses of what is written are those of an independent maker; eight
// bytes of zeros follow.
const PacketBytes zeros(8);

PacketBytes ipv4With(const HeaderText& header, std::uint8_t protocol, const PacketBytes& payload) {
  PacketBytes packet = ipv4PacketOf(header, protocol, payload);
  packet[4] = packet[5] = 0;  // identification
  return withTtl(packet, header.ttl);
}

PacketBytes ipv6With(const std::string& source, const std::string& destination,
                     std::uint8_t protocol, std::uint8_t traffic, std::uint8_t ttl,
                     const PacketBytes& payload) {
  PacketBytes packet = ipv6Packet({source, destination});
  packet.resize(40);
  packet[0] = static_cast<std::uint8_t>(0x60 + traffic / 16);
  packet[1] = static_cast<std::uint8_t>(traffic % 16 * 16);
  packet[2] = packet[3] = 0;  // flow label
  packet[4] = 0;
  packet[5] = static_cast<std::uint8_t>(payload.size());
  packet[6] = protocol;
  packet[7] = ttl;
  packet.insert(packet.end(), payload.begin(), payload.end());
  return packet;
}

TEST(PacketText, AnIpv4Packet) {
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9"),
            ipv4With({"192.0.2.1", "203.0.113.9"}, 17, zeros));
}

TEST(PacketText, AnIpv6Packet) {
  EXPECT_EQ(packetOf("ipv6 2001:db8::1 to 2001:db8:ffff::2"),
            ipv6With("2001:db8::1", "2001:db8:ffff::2", 17, 0, 64, zeros));
}

TEST(PacketText, EachWordSetsItsField) {
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 protocol 255 dscp 63 ecn 3 ttl 255"),
            ipv4With({"192.0.2.1", "203.0.113.9", 63, 3, 255}, 255, zeros));
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 protocol 0 dscp 0 ecn 0 ttl 0"),
            ipv4With({"192.0.2.1", "203.0.113.9", 0, 0, 0}, 0, zeros));
  EXPECT_EQ(packetOf("ipv6 2001:db8::1 to 2001:db8::2 protocol 6 dscp 46 ecn 1 ttl 2"),
            ipv6With("2001:db8::1", "2001:db8::2", 6, 46 * 4 + 1, 2, zeros));
}

TEST(PacketText, WordsMayStandInAnyOrder) {
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 ttl 9 ecn 2 protocol 6 dscp 10"),
            packetOf("ipv4 192.0.2.1 to 203.0.113.9 dscp 10 protocol 6 ecn 2 ttl 9"));
}

TEST(PacketText, APacketMayCarryAnother) {
  const PacketBytes v4 = ipv4With({"10.0.0.1", "10.0.0.2", 12, 0, 7}, 17, zeros);
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 dscp 10 carrying ipv4 10.0.0.1 to 10.0.0.2 "
                     "dscp 12 ttl 7"),
            ipv4With({"192.0.2.1", "203.0.113.9", 10}, 4, v4));
  const PacketBytes v6 = ipv6With("2001:db8::1", "2001:db8::2", 58, 0, 64, zeros);
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 carrying ipv6 2001:db8::1 to 2001:db8::2 "
                     "protocol 58"),
            ipv4With({"192.0.2.1", "203.0.113.9"}, 41, v6));
  EXPECT_EQ(packetOf("ipv6 2001:db8::1 to 2001:db8::2 carrying ipv4 10.0.0.1 to 10.0.0.2 dscp 12 "
                     "ttl 7"),
            ipv6With("2001:db8::1", "2001:db8::2", 4, 0, 64, v4));
}

TEST(PacketText, CarriedPacketsMayCarryPackets) {
  const PacketBytes innermost = ipv4With({"10.0.0.1", "10.0.0.2"}, 17, zeros);
  const PacketBytes inner = ipv4With({"172.16.0.1", "172.16.0.2"}, 4, innermost);
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 carrying ipv4 172.16.0.1 to 172.16.0.2 "
                     "carrying ipv4 10.0.0.1 to 10.0.0.2"),
            ipv4With({"192.0.2.1", "203.0.113.9"}, 4, inner));
}

TEST(PacketText, AProtocolThatIsGivenIsKeptByWhatCarries) {
  const PacketBytes inner = ipv4With({"10.0.0.1", "10.0.0.2"}, 17, zeros);
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 protocol 41 carrying ipv4 10.0.0.1 to "
                     "10.0.0.2"),
            ipv4With({"192.0.2.1", "203.0.113.9"}, 41, inner));
}

TEST(PacketText, PortsAreThoseOfAUdpHeader) {
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 source-port 80 destination-port 65535"),
            ipv4With({"192.0.2.1", "203.0.113.9"}, 17, {0, 80, 0xff, 0xff, 0, 8, 0, 0}));
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 destination-port 443 length 30"),
            ipv4With({"192.0.2.1", "203.0.113.9"}, 17, {0, 0, 1, 0xbb, 0, 10, 0, 0, 0, 0}));
}

TEST(PacketText, FlagsAreThoseOfATcpHeader) {
  const PacketBytes tcp{0, 80, 1, 0xbb, 0, 0, 0, 0, 0, 0, 0, 0, 0x50, 0x12, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(packetOf("ipv6 2001:db8::1 to 2001:db8::2 source-port 80 destination-port 443 "
                     "tcp-flags ack,syn"),
            ipv6With("2001:db8::1", "2001:db8::2", 6, 0, 64, tcp));
  PacketBytes noFlags(20);
  noFlags[12] = 0x50;
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 tcp-flags none"),
            ipv4With({"192.0.2.1", "203.0.113.9"}, 6, noFlags));
}

TEST(PacketText, AnIpv4FragmentIsTheFirstOrTheLast) {
  PacketBytes first = ipv4With({"192.0.2.1", "203.0.113.9"}, 17, zeros);
  first[6] = 0x20;
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 fragment-offset 0"), withTtl(first, 64));
  PacketBytes last = ipv4With({"192.0.2.1", "203.0.113.9"}, 17, zeros);
  last[7] = 185;
  EXPECT_EQ(packetOf("ipv4 192.0.2.1 to 203.0.113.9 fragment-offset 185"), withTtl(last, 64));
}

TEST(PacketText, AnIpv6FragmentHasAHeader) {
  PacketBytes first{17, 0, 0, 1, 0, 0, 0, 0};
  append(first, zeros);
  EXPECT_EQ(packetOf("ipv6 2001:db8::1 to 2001:db8::2 fragment-offset 0"),
            ipv6With("2001:db8::1", "2001:db8::2", 44, 0, 64, first));
  PacketBytes last{58, 0, 0xff, 0xf8, 0, 0, 0, 0};
  append(last, zeros);
  append(last, {0});
  EXPECT_EQ(packetOf("ipv6 2001:db8::1 to 2001:db8::2 protocol 58 fragment-offset 8191 length 57"),
            ipv6With("2001:db8::1", "2001:db8::2", 44, 0, 64, last));
}

TEST(PacketText, BytesAreTakenAsTheyAre) {
  EXPECT_EQ(packetOf("hex 450000ff"), (PacketBytes{0x45, 0, 0, 0xff}));
  EXPECT_EQ(packetOf("hex 45 00 00fF"), (PacketBytes{0x45, 0, 0, 0xff}));
  EXPECT_EQ(packetOf("hex"), PacketBytes{});
}

struct BadPacket {
  const char* name;
  const char* text;
  const char* message;

  friend std::ostream& operator<<(std::ostream& stream, const BadPacket& packet) {
    return stream << packet.name;
  }
};

class BadPacketTest : public ::testing::TestWithParam<BadPacket> {};

TEST_P(BadPacketTest, IsRefusedWithWhatWouldBeRight) {
  try {
    (void)packetOf(GetParam().text);
    FAIL() << "it was read";
  } catch (const EventError& error) {
    EXPECT_STREQ(error.what(), GetParam().message);
  }
}

#define FORM "ipv4|ipv6 SOURCE to DESTINATION [FIELD VALUE]... [carrying PACKET]: "

INSTANTIATE_TEST_SUITE_P(
    Each, BadPacketTest,
    ::testing::Values(
        BadPacket{"Nothing", "",
                  FORM "a packet must begin with ipv4, ipv6 or hex, found the end of the line"},
        BadPacket{"UnknownFamily", "ip 192.0.2.1 to 192.0.2.2",
                  FORM "a packet must begin with ipv4, ipv6 or hex, found 'ip'"},
        BadPacket{"NoSource", "ipv4",
                  FORM "SOURCE must be an ipv4 address, found the end of the line"},
        BadPacket{"SourceIsNoAddress", "ipv4 192.0.2 to 192.0.2.2",
                  FORM "SOURCE must be an ipv4 address, found '192.0.2'"},
        BadPacket{"SourceIsAPrefix", "ipv4 192.0.2.0/24 to 192.0.2.2",
                  FORM "SOURCE must be an ipv4 address, found '192.0.2.0/24'"},
        BadPacket{"SourceOfTheOtherFamily", "ipv4 2001:db8::1 to 192.0.2.2",
                  FORM "SOURCE must be an ipv4 address, found '2001:db8::1'"},
        BadPacket{"NoTo", "ipv4 192.0.2.1",
                  FORM "SOURCE must be followed by to, found the end of the line"},
        BadPacket{"AnArrow", "ipv4 192.0.2.1 -> 192.0.2.2",
                  FORM "SOURCE must be followed by to, found '->'"},
        BadPacket{"NoDestination", "ipv6 2001:db8::1 to",
                  FORM "DESTINATION must be an ipv6 address, found the end of the line"},
        BadPacket{"DestinationOfTheOtherFamily", "ipv6 2001:db8::1 to 192.0.2.2",
                  FORM "DESTINATION must be an ipv6 address, found '192.0.2.2'"},
        BadPacket{"UnknownWord", "ipv4 192.0.2.1 to 192.0.2.2 color red",
                  FORM "DESTINATION may be followed by protocol, dscp, ecn, ttl, length, "
                       "fragment-offset, source-port, destination-port, tcp-flags or carrying, "
                       "found 'color'"},
        BadPacket{"PortTooLarge", "ipv4 192.0.2.1 to 192.0.2.2 source-port 65536",
                  FORM "source-port must be a number from 0 to 65535, found '65536'"},
        BadPacket{"PortsOfAnotherProtocol",
                  "ipv4 192.0.2.1 to 192.0.2.2 destination-port 80 protocol 1",
                  FORM "the protocol of a packet with ports must be 6 or 17, found '1'"},
        BadPacket{"PortsOfATunnel",
                  "ipv4 192.0.2.1 to 192.0.2.2 source-port 80 carrying ipv4 10.0.0.1 to 10.0.0.2",
                  FORM "a packet that carries another one must have no ports and no tcp-flags, "
                       "found 'carrying'"},
        BadPacket{"FlagsOfUdp", "ipv4 192.0.2.1 to 192.0.2.2 protocol 17 tcp-flags syn",
                  FORM "the protocol of a packet with tcp-flags must be 6, found '17'"},
        BadPacket{"AnUnknownFlag", "ipv4 192.0.2.1 to 192.0.2.2 tcp-flags syn,nak",
                  FORM "tcp-flags must be none, or some of fin,syn,rst,psh,ack,urg,ece,cwr, found "
                       "'syn,nak'"},
        BadPacket{"PortsOfALaterFragment",
                  "ipv4 192.0.2.1 to 192.0.2.2 source-port 80 fragment-offset 185",
                  FORM "the fragment-offset of a packet with ports or tcp-flags must be 0, found "
                       "'185'"},
        BadPacket{"FragmentOffsetTooLarge", "ipv4 192.0.2.1 to 192.0.2.2 fragment-offset 8192",
                  FORM "fragment-offset must be a number from 0 to 8191, found '8192'"},
        BadPacket{"LengthWithoutRoom", "ipv4 192.0.2.1 to 192.0.2.2 tcp-flags syn length 39",
                  FORM "the length of this packet must be at least 40, found '39'"},
        BadPacket{"ProtocolWithoutANumber", "ipv4 192.0.2.1 to 192.0.2.2 protocol",
                  FORM "protocol must be a number from 0 to 255, found the end of the line"},
        BadPacket{"ProtocolByName", "ipv4 192.0.2.1 to 192.0.2.2 protocol IP_IN_IP",
                  FORM "protocol must be a number from 0 to 255, found 'IP_IN_IP'"},
        BadPacket{"ProtocolTooLarge", "ipv4 192.0.2.1 to 192.0.2.2 protocol 256",
                  FORM "protocol must be a number from 0 to 255, found '256'"},
        BadPacket{"DscpTooLarge", "ipv4 192.0.2.1 to 192.0.2.2 dscp 64",
                  FORM "dscp must be a number from 0 to 63, found '64'"},
        BadPacket{"EcnTooLarge", "ipv4 192.0.2.1 to 192.0.2.2 ecn 4",
                  FORM "ecn must be a number from 0 to 3, found '4'"},
        BadPacket{"TtlTooLarge", "ipv4 192.0.2.1 to 192.0.2.2 ttl 256",
                  FORM "ttl must be a number from 0 to 255, found '256'"},
        BadPacket{"TtlIsNegative", "ipv4 192.0.2.1 to 192.0.2.2 ttl -1",
                  FORM "ttl must be a number from 0 to 255, found '-1'"},
        BadPacket{"CarryingNothing", "ipv4 192.0.2.1 to 192.0.2.2 carrying",
                  FORM "a carried PACKET must begin with ipv4 or ipv6, found the end of the line"},
        BadPacket{"CarryingBytes", "ipv4 192.0.2.1 to 192.0.2.2 carrying hex 45",
                  FORM "a carried PACKET must begin with ipv4 or ipv6, found 'hex'"},
        BadPacket{"CarryingABadPacket",
                  "ipv4 192.0.2.1 to 192.0.2.2 carrying ipv6 2001:db8::1 to 10.0.0.1",
                  FORM "DESTINATION must be an ipv6 address, found '10.0.0.1'"},
        BadPacket{"AQuoteThatIsNotClosed", "ipv4 '192.0.2.1 to 192.0.2.2",
                  FORM "expected a closing quote at byte 28, found the end of the text"},
        BadPacket{"OddHex", "hex 450",
                  "hex BYTES: BYTES must be pairs of hexadecimal digits, found '450'"},
        BadPacket{"NoHex", "hex 45 0x00",
                  "hex BYTES: BYTES must be pairs of hexadecimal digits, found '0x00'"}),
    [](const auto& packet) { return std::string(packet.param.name); });

// Each layer adds 40 bytes to the one within, the innermost of which has 48.
std::string tunnelsInTunnels(int layers) {
  std::string text;
  for (int layer = 1; layer < layers; ++layer)
    text += "ipv6 :: to :: carrying ";
  return text + "ipv6 :: to ::";
}

TEST(PacketText, APacketIsNeverLongerThanItsHeaderCanTell) {
  const PacketBytes longest =
      packetOf("ipv4 192.0.2.1 to 192.0.2.2 carrying " + tunnelsInTunnels(1637));
  EXPECT_EQ(longest.size(), 20U + 8U + 1637U * 40U);
  EXPECT_EQ(longest[2] * 256U + longest[3], longest.size());
  const std::string tooLong = "ipv4 192.0.2.1 to 192.0.2.2 carrying " + tunnelsInTunnels(1638);
  try {
    static_cast<void>(packetOf(tooLong));
    FAIL() << "it was taken";
  } catch (const EventError& error) {
    EXPECT_STREQ(error.what(),
                 FORM "a carried PACKET must have at most 65515 bytes, found '65528'");
  }
}

#undef FORM

}  // namespace
}  // namespace ZelAgent
