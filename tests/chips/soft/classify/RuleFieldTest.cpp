#include "chips/soft/classify/RuleField.h"

#include <gtest/gtest.h>

#include "tests/chips/soft/packet/TestPacket.h"

namespace SoftChip {
namespace {

using PolicyMap::ClassMatch;

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

ClassMatch matchOf(Ip::Family family) {
  ClassMatch match;
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
  EXPECT_EQ(firstDifference({}, v4Header()), std::nullopt);
  EXPECT_EQ(firstDifference({}, v6Header()), std::nullopt);
}

TEST(RuleField, Family) {
  EXPECT_EQ(firstDifference(matchOf(Ip::Family::v4), v4Header()), std::nullopt);
  EXPECT_EQ(firstDifference(matchOf(Ip::Family::v6), v6Header()), std::nullopt);
  EXPECT_EQ(firstDifference(matchOf(Ip::Family::v6), v4Header()), RuleField::family);
  EXPECT_EQ(firstDifference(matchOf(Ip::Family::v4), v6Header()), RuleField::family);
}

TEST(RuleField, Protocol) {
  ClassMatch match = matchOf(Ip::Family::v4);
  match.protocol = 6;
  EXPECT_EQ(firstDifference(match, v4Header()), std::nullopt);
  match.protocol = 0;
  EXPECT_EQ(firstDifference(match, v4Header()), RuleField::protocol);
}

TEST(RuleField, Dscp) {
  ClassMatch match = matchOf(Ip::Family::v6);
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
  ClassMatch match = matchOf(Ip::Family::v4);
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
  ClassMatch match = matchOf(Ip::Family::v4);
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
  ClassMatch match = matchOf(Ip::Family::v6);
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

TEST(RuleField, HasAName) {
  EXPECT_EQ(nameOf(RuleField::family), "family");
  EXPECT_EQ(nameOf(RuleField::protocol), "protocol");
  EXPECT_EQ(nameOf(RuleField::dscp), "dscp");
  EXPECT_EQ(nameOf(RuleField::source), "source-address");
  EXPECT_EQ(nameOf(RuleField::destination), "destination-address");
}

}  // namespace
}  // namespace SoftChip
