#include "chips/packet/HeaderParser.h"

#include <gtest/gtest.h>

#include <random>

#include "testing/RandomSeed.h"
#include "tests/chips/packet/TestPacket.h"

namespace Chips {
namespace {

using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr const char* v6Source = "2001:db8::1";
constexpr const char* v6Destination = "2001:db8:ffff::2";

const ExtensionHeader hopByHop{0, {0, 1, 4, 0, 0, 0, 0}};
const ExtensionHeader longRouting{43, {1, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}};
const ExtensionHeader destinationOptions{60, {0, 1, 4, 0, 0, 0, 0}};

ExtensionHeader fragmentHeader(std::uint16_t offset, bool more) {
  const unsigned word = offset * 8U + (more ? 1 : 0);
  return {44,
          {0, static_cast<std::uint8_t>(word / 256), static_cast<std::uint8_t>(word % 256), 9, 9, 9,
           9}};
}

TestPacket v6Packet(std::vector<ExtensionHeader> extensions = {}) {
  TestPacket packet;
  packet.source = v6Source;
  packet.destination = v6Destination;
  packet.extensions = std::move(extensions);
  return packet;
}

PacketHeader parsed(const Bytes& bytes) {
  const ExactBytes exact(bytes);
  const ParsedHeader result = parse(exact.span());
  EXPECT_EQ(result.fault, HeaderFault::none);
  EXPECT_TRUE(result.header.has_value());
  return result.header.value_or(PacketHeader());
}

HeaderFault faultOf(const Bytes& bytes) {
  const ExactBytes exact(bytes);
  const ParsedHeader result = parse(exact.span());
  EXPECT_EQ(result.header.has_value(), result.fault == HeaderFault::none);
  return result.fault;
}

TEST(HeaderParser, ReadsEveryFieldOfAnIpv4Header) {
  TestPacket packet;
  packet.source = "10.1.2.3";
  packet.destination = "172.16.5.4";
  packet.protocol = 6;
  packet.dscp = 46;
  packet.ecn = 2;
  packet.ttl = 17;
  const PacketHeader header = parsed(packet.bytes());
  EXPECT_EQ(header.family, Ip::Family::v4);
  EXPECT_EQ(header.source, address("10.1.2.3"));
  EXPECT_EQ(header.destination, address("172.16.5.4"));
  EXPECT_EQ(header.protocol, 6);
  EXPECT_EQ(header.dscp, 46);
  EXPECT_EQ(header.ecn, 2);
  EXPECT_EQ(header.ttl, 17);
  EXPECT_EQ(header.headerLength, 20U);
  EXPECT_EQ(header.totalLength, 28U);
  EXPECT_FALSE(header.fragment.isFragment());
}

TEST(HeaderParser, CountsIpv4OptionsToTheHeader) {
  TestPacket packet;
  packet.options = Bytes(40, 1);
  const PacketHeader header = parsed(packet.bytes());
  EXPECT_EQ(header.headerLength, 60U);
  EXPECT_EQ(header.totalLength, 68U);
}

TEST(HeaderParser, TellsIpv4Fragments) {
  TestPacket packet;
  packet.fragmentWord = 0x4000;  // do not fragment
  EXPECT_FALSE(parsed(packet.bytes()).fragment.isFragment());
  packet.fragmentWord = 0x2000;
  EXPECT_EQ(parsed(packet.bytes()).fragment, (FragmentFacts{0, true}));
  packet.fragmentWord = 0x0003;
  EXPECT_EQ(parsed(packet.bytes()).fragment, (FragmentFacts{3, false}));
  EXPECT_TRUE(parsed(packet.bytes()).fragment.isFragment());
  packet.fragmentWord = 0x3fff;
  EXPECT_EQ(parsed(packet.bytes()).fragment, (FragmentFacts{0x1fff, true}));
}

TEST(HeaderParser, ReadsEveryFieldOfAnIpv6Header) {
  TestPacket packet = v6Packet();
  packet.protocol = 58;
  packet.dscp = 41;
  packet.ecn = 3;
  packet.ttl = 200;
  const PacketHeader header = parsed(packet.bytes());
  EXPECT_EQ(header.family, Ip::Family::v6);
  EXPECT_EQ(header.source, address(v6Source));
  EXPECT_EQ(header.destination, address(v6Destination));
  EXPECT_EQ(header.protocol, 58);
  EXPECT_EQ(header.dscp, 41);
  EXPECT_EQ(header.ecn, 3);
  EXPECT_EQ(header.ttl, 200);
  EXPECT_EQ(header.headerLength, 40U);
  EXPECT_EQ(header.totalLength, 48U);
}

TEST(HeaderParser, PassesExtensionHeadersOverToTheUpperLayer) {
  const PacketHeader header = parsed(
      v6Packet({hopByHop, destinationOptions, longRouting, fragmentHeader(0, true)}).bytes());
  EXPECT_EQ(header.protocol, 17);
  EXPECT_EQ(header.headerLength, 40U + 8 + 8 + 16 + 8);
  EXPECT_EQ(header.fragment, (FragmentFacts{0, true}));
}

TEST(HeaderParser, TakesOtherHeadersForTheUpperLayer) {
  for (const unsigned protocol : {50U, 51U, 59U, 135U}) {
    TestPacket packet = v6Packet({hopByHop});
    packet.protocol = static_cast<std::uint8_t>(protocol);
    EXPECT_EQ(parsed(packet.bytes()).protocol, protocol);
    EXPECT_EQ(parsed(packet.bytes()).headerLength, 48U);
  }
}

TEST(HeaderParser, ReadsNoHeadersFromTheMiddleOfAPacket) {
  TestPacket packet = v6Packet({fragmentHeader(4, false)});
  packet.protocol = 60;                       // what the whole packet begins with
  packet.payload = {17, 255, 1, 1, 1, 1, 1};  // would be an extension header beyond the end
  const PacketHeader header = parsed(packet.bytes());
  EXPECT_EQ(header.protocol, 60);
  EXPECT_EQ(header.fragment, (FragmentFacts{4, false}));
}

TEST(HeaderParser, ReadsExtensionHeadersInAnyOrderAndNumber) {
  const PacketHeader header =
      parsed(v6Packet({destinationOptions, longRouting, fragmentHeader(0, false), longRouting,
                       destinationOptions, hopByHop, destinationOptions})
                 .bytes());
  EXPECT_EQ(header.protocol, 17);
  EXPECT_EQ(header.headerLength, 40U + 8 + 16 + 8 + 16 + 8 + 8 + 8);
  EXPECT_EQ(header.ports, (Ports{0x0102, 0x0304}));
}

TEST(HeaderParser, ReadsNoSecondFragmentHeader) {
  struct Row {
    ExtensionHeader first;
    ExtensionHeader second;
    FragmentFacts fragment;
  };
  const Row rows[] = {
      {fragmentHeader(0, true), fragmentHeader(0, false), {0, true}},
      {fragmentHeader(0, true), fragmentHeader(7, true), {0, true}},
      {fragmentHeader(0, false), fragmentHeader(7, false), {0, false}},
  };
  for (const Row& row : rows) {
    const PacketHeader header =
        parsed(v6Packet({hopByHop, row.first, destinationOptions, row.second}).bytes());
    EXPECT_EQ(header.protocol, 44);
    EXPECT_EQ(header.fragment, row.fragment);
    EXPECT_EQ(header.headerLength, 40U + 8 + 8 + 8);
    EXPECT_EQ(header.ports, std::nullopt);
  }
}

TEST(HeaderParser, ReadsNoFragmentHeaderInsideOfALaterFragment) {
  const PacketHeader header =
      parsed(v6Packet({fragmentHeader(3, true), fragmentHeader(0, false)}).bytes());
  EXPECT_EQ(header.protocol, 44);
  EXPECT_EQ(header.fragment, (FragmentFacts{3, true}));
}

TEST(HeaderParser, ReadsAsManyExtensionHeadersAsThePacketHas) {
  std::vector<ExtensionHeader> many(8000, destinationOptions);
  const PacketHeader header = parsed(v6Packet(many).bytes());
  EXPECT_EQ(header.headerLength, 40U + 8000 * 8);
  EXPECT_EQ(header.protocol, 17);
}

// A TCP header up to its flags: ports 80 and 443, SYN and ACK.
const Bytes tcpUpToFlags{0, 80, 1, 0xbb, 0, 0, 0, 0, 0, 0, 0, 0, 0x50, 0x12};

TEST(HeaderParser, ReadsPortsOfTcpAndUdpOnly) {
  for (const unsigned protocol : {6U, 17U, 1U, 132U}) {
    TestPacket packet;
    packet.protocol = static_cast<std::uint8_t>(protocol);
    packet.payload = tcpUpToFlags;
    const auto header = parse(packet.bytes()).header.value();
    const bool hasPorts = protocol == 6 || protocol == 17;
    EXPECT_EQ(header.ports, hasPorts ? std::optional(Ports{80, 443}) : std::nullopt) << protocol;
    const bool hasFlags = protocol == 6;
    EXPECT_EQ(header.tcpFlags, hasFlags ? std::optional<std::uint8_t>(0x12) : std::nullopt);
  }
}

TEST(HeaderParser, ReadsPortsAndFlagsAsFarAsThePacketHasThem) {
  TestPacket packet;
  packet.protocol = 6;
  for (std::size_t size = 0; size <= tcpUpToFlags.size(); ++size) {
    packet.payload.assign(tcpUpToFlags.begin(),
                          tcpUpToFlags.begin() + static_cast<std::ptrdiff_t>(size));
    const ExactBytes bytes(packet.bytes());
    const auto header = parse(bytes.span()).header.value();
    EXPECT_EQ(header.ports.has_value(), size >= 4) << size;
    EXPECT_EQ(header.tcpFlags.has_value(), size == tcpUpToFlags.size()) << size;
  }
}

TEST(HeaderParser, ReadsNoPortsBehindTheTotalLength) {
  TestPacket packet;
  packet.payload = {0, 80, 1};
  Bytes bytes = packet.bytes();
  bytes.push_back(0xbb);
  EXPECT_EQ(parse(bytes).header.value().ports, std::nullopt);
}

TEST(HeaderParser, ReadsPortsOfTheFirstFragmentOnly) {
  TestPacket packet;
  packet.protocol = 6;
  packet.payload = tcpUpToFlags;
  packet.fragmentWord = 0x2000;
  EXPECT_TRUE(parse(packet.bytes()).header.value().ports.has_value());
  for (const unsigned word : {1U, 0x2001U}) {
    packet.fragmentWord = static_cast<std::uint16_t>(word);
    const auto header = parse(packet.bytes()).header.value();
    EXPECT_EQ(header.ports, std::nullopt) << word;
    EXPECT_EQ(header.tcpFlags, std::nullopt) << word;
  }
}

TEST(HeaderParser, ReadsPortsBehindExtensionHeaders) {
  TestPacket packet;
  packet.source = "2001:db8::1";
  packet.destination = "2001:db8::2";
  packet.protocol = 17;
  packet.payload = tcpUpToFlags;
  packet.extensions = {{60, {0, 0, 0, 0, 0, 0, 0}}, {44, {0, 0, 1, 0, 0, 0, 0}}};
  EXPECT_EQ(parse(packet.bytes()).header.value().ports, (Ports{80, 443}));
  packet.extensions[1].afterNextHeader[2] = 9;  // offset 1
  EXPECT_EQ(parse(packet.bytes()).header.value().ports, std::nullopt);
}

TEST(HeaderParser, LeavesOutWhatFollowsTheTotalLength) {
  for (const TestPacket& packet : {TestPacket(), v6Packet()}) {
    Bytes bytes = packet.bytes();
    const std::size_t length = bytes.size();
    bytes.resize(length + 18);
    EXPECT_EQ(parsed(bytes).totalLength, length);
  }
}

TEST(HeaderParser, FindsShortPackets) {
  for (const TestPacket& packet : {TestPacket(), v6Packet()}) {
    Bytes bytes = packet.bytes();
    bytes.resize(bytes.size() - packet.payload.size() - 1);
    EXPECT_EQ(faultOf(bytes), HeaderFault::tooShort);
    bytes.resize(1);
    EXPECT_EQ(faultOf(bytes), HeaderFault::tooShort);
  }
  EXPECT_EQ(faultOf({}), HeaderFault::tooShort);
}

TEST(HeaderParser, FindsBadVersions) {
  for (const unsigned version : {0U, 1U, 3U, 5U, 7U, 15U}) {
    Bytes bytes = TestPacket().bytes();
    bytes[0] = static_cast<std::uint8_t>(version * 16 + 5);
    EXPECT_EQ(faultOf(bytes), HeaderFault::badVersion) << version;
  }
}

TEST(HeaderParser, FindsBadHeaderLengths) {
  Bytes bytes = TestPacket().bytes();
  bytes[0] = 0x44;
  EXPECT_EQ(faultOf(bytes), HeaderFault::badHeaderLength);
  bytes[0] = 0x48;  // 32 of 28 bytes
  EXPECT_EQ(faultOf(bytes), HeaderFault::badHeaderLength);
}

TEST(HeaderParser, FindsBadTotalLengths) {
  Bytes bytes = TestPacket().bytes();
  bytes[3] = 19;
  mendChecksum(bytes);
  EXPECT_EQ(faultOf(bytes), HeaderFault::badTotalLength);
  bytes[3] = 20;
  mendChecksum(bytes);
  EXPECT_EQ(parsed(bytes).totalLength, 20U);
  bytes[3] = 29;
  mendChecksum(bytes);
  EXPECT_EQ(faultOf(bytes), HeaderFault::totalLengthBeyond);
  Bytes v6 = v6Packet().bytes();
  v6[5] = 9;
  EXPECT_EQ(faultOf(v6), HeaderFault::totalLengthBeyond);
}

TEST(HeaderParser, FindsExtensionHeadersBeyondTheTotalLength) {
  Bytes bytes = v6Packet({longRouting}).bytes();
  bytes[5] = 15;  // one byte less than the extension header
  EXPECT_EQ(faultOf(bytes), HeaderFault::extensionHeaderBeyond);
  bytes[5] = 7;  // not even its beginning
  EXPECT_EQ(faultOf(bytes), HeaderFault::extensionHeaderBeyond);
  bytes[5] = 0;
  EXPECT_EQ(faultOf(bytes), HeaderFault::extensionHeaderBeyond);
  bytes[5] = 16;
  EXPECT_EQ(parsed(bytes).headerLength, 56U);
}

TEST(HeaderParser, FindsAWrongChecksumWhereverABitIsWrong) {
  TestPacket packet;
  packet.options = {1, 1, 1, 0};
  // Version and lengths aside, which have faults of their own.
  for (std::size_t at = 4; at < 24; ++at) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      Bytes bytes = packet.bytes();
      bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ 1U << bit);
      EXPECT_EQ(faultOf(bytes), HeaderFault::badChecksum) << at << " bit " << bit;
    }
  }
}

TEST(HeaderParser, SaysEachFaultInItsOwnWords) {
  std::vector<std::string_view> texts;
  for (unsigned code = 1; code <= static_cast<unsigned>(HeaderFault::badChecksum); ++code) {
    const std::string_view text = textOf(static_cast<HeaderFault>(code));
    EXPECT_FALSE(text.empty()) << code;
    for (const std::string_view other : texts)
      EXPECT_NE(text, other);
    texts.push_back(text);
  }
  EXPECT_EQ(textOf(HeaderFault::none), "");
}

// Under a sanitizer, a step outside of the bytes ends the test.
TEST(HeaderParser, StaysWithinWhateverItIsGiven) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  const auto below = [&random](std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
  };
  TestPacket withOptions;
  withOptions.options = Bytes(12, 1);
  const std::vector<Bytes> seeds = {
      withOptions.bytes(),
      v6Packet({hopByHop, longRouting, destinationOptions, fragmentHeader(0, true)}).bytes()};
  for (int round = 0; round < 20000; ++round) {
    Bytes bytes = seeds[below(seeds.size())];
    for (std::size_t changes = below(4); changes > 0; --changes)
      bytes[below(bytes.size())] = static_cast<std::uint8_t>(below(256));
    bytes.resize(below(bytes.size() + 4));
    if (below(2) == 0 && bytes.size() >= 60 && bytes[0] / 16 == 4) mendChecksum(bytes);
    const ExactBytes exact(bytes);
    const ParsedHeader result = parse(exact.span());
    ASSERT_EQ(result.header.has_value(), result.fault == HeaderFault::none);
    if (!result.header) continue;
    ASSERT_LE(result.header->headerLength, result.header->totalLength);
    ASSERT_LE(result.header->totalLength, bytes.size());
  }
}

}  // namespace
}  // namespace Chips
