#include "chips/interface/RuleField.h"

#include <gtest/gtest.h>

#include "tests/chips/packet/TestPacket.h"

namespace Chips {
namespace {

using PolicyMap::AclMatch;

PacketHeader v4Header() {
  PacketHeader header;
  header.source = address("10.1.2.3");
  header.destination = address("20.1.2.3");
  header.protocol = 6;
  header.dscp = 46;
  return header;
}

PacketHeader v6Header() {
  PacketHeader header = v4Header();
  header.family = Ip::Family::v6;
  header.source = address("2001:db8:1::1");
  header.destination = address("2001:db8:2::2");
  return header;
}

AclMatch matchOf(Ip::Family family) {
  AclMatch match;
  match.family = family;
  return match;
}

std::uint64_t dscps(std::initializer_list<unsigned> values) {
  std::uint64_t set = 0;
  for (const unsigned value : values)
    set |= std::uint64_t{1} << value;
  return set;
}

TEST(RuleField, NoFieldIsNoDifference) {
  EXPECT_EQ(firstDifference(AclMatch(), v4Header()), std::nullopt);
  EXPECT_EQ(firstDifference(AclMatch(), v6Header()), std::nullopt);
}

TEST(RuleField, Family) {
  EXPECT_EQ(firstDifference(matchOf(Ip::Family::v4), v4Header()), std::nullopt);
  EXPECT_EQ(firstDifference(matchOf(Ip::Family::v6), v6Header()), std::nullopt);
  EXPECT_EQ(firstDifference(matchOf(Ip::Family::v6), v4Header()), RuleField::family);
  EXPECT_EQ(firstDifference(matchOf(Ip::Family::v4), v6Header()), RuleField::family);
}

TEST(RuleField, Protocol) {
  AclMatch match = matchOf(Ip::Family::v4);
  match.protocol = 6;
  EXPECT_EQ(firstDifference(match, v4Header()), std::nullopt);
  match.protocol = 0;
  EXPECT_EQ(firstDifference(match, v4Header()), RuleField::protocol);
}

TEST(RuleField, Dscp) {
  AclMatch match = matchOf(Ip::Family::v6);
  match.dscps = dscps({46});
  EXPECT_EQ(firstDifference(match, v6Header()), std::nullopt);
  match.dscps = dscps({0, 46, 63});
  EXPECT_EQ(firstDifference(match, v6Header()), std::nullopt);
  match.dscps = dscps({0, 45, 47, 63});
  EXPECT_EQ(firstDifference(match, v6Header()), RuleField::dscp);
  PacketHeader header = v6Header();
  for (const unsigned edge : {0U, 63U}) {
    header.dscp = static_cast<std::uint8_t>(edge);
    EXPECT_EQ(firstDifference(match, header), std::nullopt) << edge;
    match.dscps = dscps({});
    EXPECT_EQ(firstDifference(match, header), RuleField::dscp) << edge;
    match.dscps = dscps({0, 63});
  }
}

TEST(RuleField, Source) {
  AclMatch match = matchOf(Ip::Family::v4);
  match.source = prefix("10.1.2.0/23");
  EXPECT_EQ(firstDifference(match, v4Header()), std::nullopt);
  match.source = prefix("0.0.0.0/0");
  EXPECT_EQ(firstDifference(match, v4Header()), std::nullopt);
  match.source = prefix("20.1.2.3/32");
  EXPECT_EQ(firstDifference(match, v4Header()), RuleField::source);
  match = matchOf(Ip::Family::v6);
  match.source = prefix("2001:db8:1::/48");
  EXPECT_EQ(firstDifference(match, v6Header()), std::nullopt);
  match.source = prefix("2001:db8:1::2/128");
  EXPECT_EQ(firstDifference(match, v6Header()), RuleField::source);
}

TEST(RuleField, Destination) {
  AclMatch match = matchOf(Ip::Family::v4);
  match.destination = prefix("20.1.2.3/32");
  EXPECT_EQ(firstDifference(match, v4Header()), std::nullopt);
  match.destination = prefix("20.1.2.2/32");
  EXPECT_EQ(firstDifference(match, v4Header()), RuleField::destination);
  match = matchOf(Ip::Family::v6);
  match.destination = prefix("2001:db8:2::/63");
  EXPECT_EQ(firstDifference(match, v6Header()), std::nullopt);
  match.destination = prefix("2001:db8:1::/48");
  EXPECT_EQ(firstDifference(match, v6Header()), RuleField::destination);
}

TEST(RuleField, TheFirstOfSeveralIsTold) {
  AclMatch match = matchOf(Ip::Family::v6);
  match.protocol = 1;
  match.dscps = dscps({1});
  match.source = prefix("1::/16");
  match.destination = prefix("1::/16");
  EXPECT_EQ(firstDifference(match, v4Header()), RuleField::family);
  EXPECT_EQ(firstDifference(match, v6Header()), RuleField::protocol);
  match.protocol.reset();
  EXPECT_EQ(firstDifference(match, v6Header()), RuleField::dscp);
  match.dscps.reset();
  EXPECT_EQ(firstDifference(match, v6Header()), RuleField::source);
  match.source.reset();
  EXPECT_EQ(firstDifference(match, v6Header()), RuleField::destination);
  match.destination.reset();
  EXPECT_EQ(firstDifference(match, v6Header()), std::nullopt);
}

TEST(RuleField, PrefixSetsWithExclusions) {
  AclMatch match = matchOf(Ip::Family::v4);
  match.sourceSet = Classification::PrefixSet{{prefix("10.0.0.0/8")}, {prefix("10.1.2.0/24")}};
  EXPECT_EQ(firstDifference(match, v4Header()), RuleField::sourceSet) << "it is excluded";
  PacketHeader header = v4Header();
  header.source = address("10.1.3.3");
  EXPECT_EQ(firstDifference(match, header), std::nullopt);
  header.source = address("11.1.3.3");
  EXPECT_EQ(firstDifference(match, header), RuleField::sourceSet) << "it is in no prefix";
  match.destinationSet = Classification::PrefixSet{};
  EXPECT_EQ(firstDifference(match, header), RuleField::sourceSet);
  match.sourceSet.reset();
  EXPECT_EQ(firstDifference(match, header), RuleField::destinationSet) << "an empty set has none";
}

TEST(RuleField, HopLimitAndLength) {
  AclMatch match = matchOf(Ip::Family::v4);
  PacketHeader header = v4Header();
  header.ttl = 1;
  header.totalLength = 100;
  match.hopLimit = 1;
  match.length = 100;
  EXPECT_EQ(firstDifference(match, header), std::nullopt);
  match.length = 101;
  EXPECT_EQ(firstDifference(match, header), RuleField::length);
  match.hopLimit = 2;
  EXPECT_EQ(firstDifference(match, header), RuleField::hopLimit);
  match = matchOf(Ip::Family::v4);
  match.length = 0;
  header.totalLength = 65536;
  EXPECT_EQ(firstDifference(match, header), RuleField::length) << "only 16 bits are compared";
}

TEST(RuleField, FragmentsAndTheirOffsets) {
  AclMatch match = matchOf(Ip::Family::v4);
  match.isFragment = true;
  PacketHeader header = v4Header();
  EXPECT_EQ(firstDifference(match, header), RuleField::fragment);
  header.fragment = {0, true};
  EXPECT_EQ(firstDifference(match, header), std::nullopt) << "the first one";
  match.fragmentOffsets = {{1, 4}, {9, 9}};
  EXPECT_EQ(firstDifference(match, header), RuleField::fragmentOffset);
  header.fragment = {9, false};
  EXPECT_EQ(firstDifference(match, header), std::nullopt);
  header.fragment = {5, false};
  EXPECT_EQ(firstDifference(match, header), RuleField::fragmentOffset);
}

TEST(RuleField, PortsAndFlags) {
  AclMatch match = matchOf(Ip::Family::v4);
  match.sourcePorts = {{80, 80}, {1000, 2000}};
  PacketHeader header = v4Header();
  EXPECT_EQ(firstDifference(match, header), RuleField::sourcePort) << "it has no ports";
  header.ports = {1500, 443};
  EXPECT_EQ(firstDifference(match, header), std::nullopt);
  match.destinationPorts = {{442, 442}};
  EXPECT_EQ(firstDifference(match, header), RuleField::destinationPort);
  match.destinationPorts = {{443, 443}};
  match.tcpFlags = {{0x12, 0x02}, {0x04, 0x04}};
  EXPECT_EQ(firstDifference(match, header), RuleField::tcpFlags) << "it has no flags";
  header.tcpFlags = 0x12;
  EXPECT_EQ(firstDifference(match, header), RuleField::tcpFlags);
  header.tcpFlags = 0x02;
  EXPECT_EQ(firstDifference(match, header), std::nullopt) << "the first alternative";
  header.tcpFlags = 0x14;
  EXPECT_EQ(firstDifference(match, header), std::nullopt) << "the second one";
}

TEST(RuleField, OnlyAPermittedFragmentMatchesWithoutPorts) {
  AclMatch match = matchOf(Ip::Family::v4);
  match.sourcePorts = {{80, 80}};
  match.tcpFlags = {{1, 1}};
  PacketHeader later = v4Header();
  later.fragment = {185, false};
  PacketHeader truncated = v4Header();
  EXPECT_EQ(firstDifference(match, later), RuleField::sourcePort);
  match.matchesLaterFragments = true;
  EXPECT_EQ(firstDifference(match, later), std::nullopt);
  EXPECT_EQ(firstDifference(match, truncated), RuleField::sourcePort) << "it is no fragment";
}

TEST(RuleField, HasAName) {
  EXPECT_EQ(nameOf(RuleField::family), "family");
  EXPECT_EQ(nameOf(RuleField::protocol), "protocol");
  EXPECT_EQ(nameOf(RuleField::dscp), "dscp");
  EXPECT_EQ(nameOf(RuleField::source), "source-address");
  EXPECT_EQ(nameOf(RuleField::destination), "destination-address");
  EXPECT_EQ(nameOf(RuleField::sourceSet), "source-set");
  EXPECT_EQ(nameOf(RuleField::destinationSet), "destination-set");
  EXPECT_EQ(nameOf(RuleField::hopLimit), "hop-limit");
  EXPECT_EQ(nameOf(RuleField::length), "length");
  EXPECT_EQ(nameOf(RuleField::fragment), "fragment");
  EXPECT_EQ(nameOf(RuleField::fragmentOffset), "fragment-offset");
  EXPECT_EQ(nameOf(RuleField::sourcePort), "source-port");
  EXPECT_EQ(nameOf(RuleField::destinationPort), "destination-port");
  EXPECT_EQ(nameOf(RuleField::tcpFlags), "tcp-flags");
}

}  // namespace
}  // namespace Chips
