#include "agent/model/policies/PolicyObjects.h"

#include <gtest/gtest.h>

#include <set>

#include "agent/config/IpPrefix.h"

namespace ZelAgent {
namespace {

using PolicyMap::ClassMatch;

ClassMatch ipv4() {
  ClassMatch match;
  match.family = IpFamily::v4;
  return match;
}

TEST(MatchText, WithoutAFamilyAnything) {
  EXPECT_EQ(toText(ClassMatch{}), "any");
}

TEST(MatchText, AFamilyAlone) {
  EXPECT_EQ(toText(ipv4()), "ipv4");
  ClassMatch match;
  match.family = IpFamily::v6;
  EXPECT_EQ(toText(match), "ipv6");
}

TEST(MatchText, ShowsSixtyFourValuesOfAListAndTheNumberOfTheOthers) {
  ClassMatch ports = ipv4();
  PolicyMap::AclMatch prefixes;
  prefixes.family = IpFamily::v4;
  Classification::PrefixSet set;
  std::string shownPorts;
  std::string shownPrefixes;
  for (std::uint16_t i = 0; i < 64; ++i) {
    const auto port = static_cast<std::uint16_t>(2 * i);
    ports.sourcePorts.push_back({port, port});
    shownPorts += (i == 0 ? "" : ",") + std::to_string(port);
    const std::string prefix = "10.0." + std::to_string(i) + ".0/24";
    set.prefixes.push_back(*parseIpPrefix(prefix));
    shownPrefixes += (i == 0 ? "" : ",") + prefix;
  }
  EXPECT_EQ(shownText(ports), "ipv4 source-port " + shownPorts);
  ports.sourcePorts.push_back({200, 300});
  EXPECT_EQ(shownText(ports), "ipv4 source-port " + shownPorts + ",... and 1 more");
  EXPECT_EQ(toText(ports), "ipv4 source-port " + shownPorts + ",200..300");

  set.excluded = {*parseIpPrefix("10.0.0.0/25"), *parseIpPrefix("10.0.1.0/25")};
  prefixes.destinationSet = set;
  EXPECT_EQ(shownText(prefixes), "ipv4 destination-set " + shownPrefixes + ",... and 2 more");
}

TEST(MatchText, EveryFieldInItsOrder) {
  ClassMatch match = ipv4();
  match.protocol = 4;
  match.dscps = std::uint64_t{1} << 10 | std::uint64_t{1} << 12;
  match.source = parseIpPrefix("198.18.0.1/32");
  match.destination = parseIpPrefix("203.0.113.0/24");
  EXPECT_EQ(toText(match),
            "ipv4 protocol 4 dscp 10,12 source 198.18.0.1/32 destination 203.0.113.0/24");
}

TEST(MatchText, ADscpSetThatNothingIsIn) {
  ClassMatch match = ipv4();
  match.dscps = 0;
  EXPECT_EQ(toText(match), "ipv4 dscp none");
}

TEST(MatchText, TheFirstAndTheLastDscp) {
  ClassMatch match = ipv4();
  match.dscps = std::uint64_t{1} << 63 | 1;
  EXPECT_EQ(toText(match), "ipv4 dscp 0,63");
}

TEST(MatchText, MatchesThatDifferHaveDifferentTexts) {
  std::set<std::string> texts;
  unsigned matches = 0;
  for (const auto& protocol : {std::optional<std::uint8_t>(), std::optional<std::uint8_t>(0),
                               std::optional<std::uint8_t>(4)}) {
    for (const auto& dscps :
         {std::optional<std::uint64_t>(), std::optional<std::uint64_t>(0),
          std::optional<std::uint64_t>(1), std::optional<std::uint64_t>(~std::uint64_t{0})}) {
      for (const char* const source : {"", "10.0.0.0/8", "10.0.0.0/9"}) {
        for (const char* const destination : {"", "10.0.0.0/8", "10.0.0.0/9"}) {
          ClassMatch match = ipv4();
          match.protocol = protocol;
          match.dscps = dscps;
          match.source = parseIpPrefix(source);
          match.destination = parseIpPrefix(destination);
          texts.insert(toText(match));
          ++matches;
        }
      }
    }
  }
  EXPECT_EQ(texts.size(), matches);
}

TEST(MatchText, FieldsOfTransportAndFragments) {
  ClassMatch match = ipv4();
  match.sourceSet = "pods";
  match.destinationSet = "it's new";
  match.hopLimit = 1;
  match.length = 100;
  match.isFragment = true;
  match.fragmentOffsets = {{0, 0}, {185, 8191}};
  match.sourcePorts = {{80, 80}, {443, 443}, {1000, 2000}};
  match.destinationPorts = {{0, 65535}};
  match.tcpFlags = {{0, 0}, {0x12, 0x02}, {0x84, 0x84}};
  EXPECT_EQ(toText(match),
            "ipv4 source-set pods destination-set 'it\\'s new' hop-limit 1 length 100 fragment "
            "fragment-offset 0,185..8191 source-port 80,443,1000..2000 destination-port 0..65535 "
            "tcp-flags any,syn+!ack,rst+cwr");
}

TEST(MatchText, EachFieldOfTransportHasItsOwnText) {
  std::set<std::string> texts{toText(ipv4())};
  const auto add = [&](auto change) {
    ClassMatch match = ipv4();
    change(match);
    EXPECT_TRUE(texts.insert(toText(match)).second) << toText(match);
  };
  add([](ClassMatch& match) { match.source = parseIpPrefix("10.0.0.0/8"); });
  add([](ClassMatch& match) { match.sourceSet = "10.0.0.0/8"; });
  add([](ClassMatch& match) { match.destinationSet = "10.0.0.0/8"; });
  add([](ClassMatch& match) { match.sourceSet = "a destination-set b"; });
  add([](ClassMatch& match) {
    match.sourceSet = "a";
    match.destinationSet = "b";
  });
  add([](ClassMatch& match) { match.sourceSet = "a fragment"; });
  add([](ClassMatch& match) { match.isFragment = true; });
  add([](ClassMatch& match) { match.fragmentOffsets = {{1, 1}}; });
  add([](ClassMatch& match) { match.hopLimit = 1; });
  add([](ClassMatch& match) { match.length = 1; });
  add([](ClassMatch& match) { match.protocol = 1; });
  add([](ClassMatch& match) { match.sourcePorts = {{1, 1}}; });
  add([](ClassMatch& match) { match.destinationPorts = {{1, 1}}; });
  add([](ClassMatch& match) { match.destinationPorts = {{1, 2}}; });
  add([](ClassMatch& match) { match.tcpFlags = {{2, 2}}; });
  add([](ClassMatch& match) { match.tcpFlags = {{2, 0}}; });
  add([](ClassMatch& match) { match.tcpFlags = {{6, 2}}; });
  add([](ClassMatch& match) { match.tcpFlags = {{2, 2}, {4, 0}}; });
}

}  // namespace
}  // namespace ZelAgent
