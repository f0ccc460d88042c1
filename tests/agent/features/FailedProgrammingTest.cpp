// What the chip was not told, or refused, shows in where packets go.
#include <gtest/gtest.h>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/features/ExpectedTraffic.h"

namespace ZelAgent {
namespace {

// "red" falls back to "blue" and knows one prefix, the others know everything; ids are 1 for
// default, 2 for red, 3 for blue and 4 for green.
OpenConfigBuilder vrfs() {
  OpenConfigBuilder configuration;
  configuration.vrf("red", "blue").vrf("blue").vrf("green").intf("DEFAULT", "Ethernet1");
  configuration.route("red", "203.0.113.0/24", "Ethernet20");
  configuration.route("blue", "0.0.0.0/0", "Ethernet30");
  configuration.route("green", "0.0.0.0/0", "Ethernet40");
  configuration.route("DEFAULT", "0.0.0.0/0", "Ethernet2");
  return configuration;
}

OpenConfigBuilder intoRed() {
  auto configuration = vrfs();
  configuration.policy("selection",
                       {ruleOf(1, "ipv4", {{"source-address", "192.0.2.1/32"}}, toVrf("red"))},
                       {"Ethernet1"});
  return configuration;
}

OpenConfigBuilder intoRedAndGreen() {
  auto configuration = vrfs();
  configuration.policy("selection",
                       {ruleOf(1, "ipv4", {{"source-address", "192.0.2.1/32"}}, toVrf("red")),
                        ruleOf(2, "ipv4", {{"source-address", "192.0.2.2/32"}}, toVrf("green"))},
                       {"Ethernet1"});
  return configuration;
}

const PacketBytes known = ipv4Packet({"192.0.2.1", "203.0.113.1"}, 1);     // to red
const PacketBytes missing = ipv4Packet({"192.0.2.1", "198.51.100.1"}, 2);  // beyond red
const PacketBytes other = ipv4Packet({"192.0.2.9", "203.0.113.1"}, 3);     // no rule

ExpectedTraffic asProgrammed() {
  ExpectedTraffic traffic;
  traffic.leaves(known, 1, "Ethernet20", "red", asForwarded(known));
  traffic.leaves(missing, 1, "Ethernet30", "blue", asForwarded(missing));
  traffic.leaves(other, ExpectedTraffic::noRule, "Ethernet2", "default", asForwarded(other));
  return traffic;
}

TEST(FailedProgramming, WithoutAFailurePacketsGoAsConfigured) {
  asProgrammed().expectFrom(intoRed(), "");
}

TEST(FailedProgramming, ANewIdIsFollowed) {
  asProgrammed().expectFrom(intoRed(), "vrf red id 77\n");
  asProgrammed().expectFrom(intoRed(), "vrf red id 77\nvrf blue id 88\nvrf default id 99\n");
}

TEST(FailedProgramming, AResourceThatMissedANewIdLooksInATableThatIsGone) {
  ExpectedTraffic traffic;
  traffic.leaves(known, 1, "Ethernet30", "blue", asForwarded(known));
  traffic.leaves(missing, 1, "Ethernet30", "blue", asForwarded(missing));
  traffic.leaves(other, ExpectedTraffic::noRule, "Ethernet2", "default", asForwarded(other));
  traffic.expectFrom(intoRed(), "chip fail red 1\nvrf red id 77\n");
}

TEST(FailedProgramming, AResourceThatMissedANewIdLooksInTheTableOfWhoeverHasTheOldOne) {
  ExpectedTraffic traffic;
  traffic.leaves(known, 1, "Ethernet40", "red", asForwarded(known));
  traffic.leaves(missing, 1, "Ethernet40", "red", asForwarded(missing));
  traffic.leaves(other, ExpectedTraffic::noRule, "Ethernet2", "default", asForwarded(other));
  traffic.expectFrom(intoRed(), "chip fail red 2\nvrf red id 77\nvrf green id 2\n");
}

TEST(FailedProgramming, TheNextUpdateMendsAStaleResource) {
  asProgrammed().expectFrom(intoRed(),
                            "chip fail red 1\nvrf red id 77\nvrf green id 2\nvrf red id 78\n");
  asProgrammed().expectFrom(intoRed(), "chip fail red 1\nvrf red id 77\ndecap-nh on\n");
}

TEST(FailedProgramming, AStaleResourceMendsItself) {
  asProgrammed().expectFrom(intoRed(), "chip fail red 1\nvrf red id 77\nvrf green id 78\n");
  asProgrammed().expectFrom(intoRed(), "chip fail red 1\nvrf red id 77\nretry\n");
}

TEST(FailedProgramming, AResourceThatMissedANewFallbackGoesOnInTheOldOne) {
  asProgrammed().expectFrom(intoRed(), "chip fail red 1\nfallback red to green\n");
  asProgrammed().expectFrom(intoRed(), "chip fail red 1\nfallback red remove\n");
}

TEST(FailedProgramming, AFallbackThatTheChipTakesIsFollowed) {
  ExpectedTraffic moved;
  moved.leaves(known, 1, "Ethernet20", "red", asForwarded(known));
  moved.leaves(missing, 1, "Ethernet40", "green", asForwarded(missing));
  moved.leaves(other, ExpectedTraffic::noRule, "Ethernet2", "default", asForwarded(other));
  moved.expectFrom(intoRed(), "fallback red to green\n");
  ExpectedTraffic removed;
  removed.leaves(known, 1, "Ethernet20", "red", asForwarded(known));
  removed.isDropped(missing, 1, "noRoute");
  removed.leaves(other, ExpectedTraffic::noRule, "Ethernet2", "default", asForwarded(other));
  removed.expectFrom(intoRed(), "fallback red remove\n");
}

TEST(FailedProgramming, AnActionIntoAVrfThatHasLostItsIdDropsItsPackets) {
  ExpectedTraffic traffic;
  traffic.isDropped(known, 1, "noVrfResource");
  traffic.isDropped(missing, 1, "noVrfResource");
  traffic.leaves(other, ExpectedTraffic::noRule, "Ethernet2", "default", asForwarded(other));
  traffic.expectFrom(intoRed(), "vrf red id 0\n");
}

TEST(FailedProgramming, AnActionIntoAVrfThatIsGoneDropsItsPackets) {
  ExpectedTraffic traffic;
  traffic.isDropped(known, 1, "noVrfResource");
  traffic.isDropped(missing, 1, "noVrfResource");
  traffic.leaves(other, ExpectedTraffic::noRule, "Ethernet2", "default", asForwarded(other));
  traffic.expectFrom(intoRed(), "vrf red remove\n");
  // It comes back, without an id at first.
  traffic.expectFrom(intoRed(), "vrf red remove\nvrf red add\n");
  asProgrammed().expectFrom(intoRed(), "vrf red remove\nvrf red add\nvrf red id 9\n");
}

TEST(FailedProgramming, AnActionThatTheChipRefusesDropsItsPacketsUntilItIsMade) {
  writeFile("both.json", intoRedAndGreen().text());
  const PacketBytes green = ipv4Packet({"192.0.2.2", "203.0.113.1"}, 4);
  ExpectedTraffic refused = asProgrammed();
  refused.isDropped(green, 2, "noVrfResource");
  refused.expectFrom(intoRed(), "chip fail green 1\nconfig both.json\n");
  ExpectedTraffic made = asProgrammed();
  made.leaves(green, 2, "Ethernet40", "green", asForwarded(green));
  made.expectFrom(intoRed(), "config both.json\n");
  made.expectFrom(intoRed(), "chip fail green 1\nconfig both.json\nvrf green id 50\n");
}

TEST(FailedProgramming, AnActionForWhichTheChipHasNoRoomDropsItsPacketsUntilThereIs) {
  writeFile("both.json", intoRedAndGreen().text());
  const PacketBytes green = ipv4Packet({"192.0.2.2", "203.0.113.1"}, 4);
  ExpectedTraffic full = asProgrammed();
  full.isDropped(green, 2, "noVrfResource");
  full.expectFrom(intoRed(), "chip capacity 1\nconfig both.json\n");
  ExpectedTraffic made = asProgrammed();
  made.leaves(green, 2, "Ethernet40", "green", asForwarded(green));
  made.expectFrom(intoRed(), "chip capacity 1\nconfig both.json\nchip capacity 2\n");
}

TEST(FailedProgramming, AStaleDecapFlagShowsUntilTheNextUpdate) {
  OpenConfigBuilder configuration = vrfs();
  configuration.vrf("DECAP");
  configuration.policy("tunnels",
                       {ruleOf(1, "ipv4", {{"protocol", 4}}, toDecap("DECAP", "green", "blue"))},
                       {"Ethernet1"});
  const PacketBytes tunnel =
      inIpv4({"192.0.2.1", "203.0.113.1"}, ipv4Packet({"10.0.0.1", "10.0.0.2"}));
  const std::string on = "route DECAP 203.0.113.0/24 decap\ndecap-nh on\n";
  ExpectedTraffic decapsulated;
  decapsulated.leaves(tunnel, 1, "Ethernet30", "blue", asDecapsulated(tunnel));
  decapsulated.expectFrom(configuration, on + "chip fail DECAP 1\ndecap-nh off\n");
  ExpectedTraffic disabled;
  disabled.isDropped(tunnel, 1, "decapDisabled");
  disabled.expectFrom(configuration, "chip fail any 1\n" + on);
  disabled.expectFrom(configuration,
                      on + "chip fail DECAP 1\ndecap-nh off\nfallback blue to red\n");
}

TEST(FailedProgramming, PrefixLengthsThatAResourceMissedAreNotProbed) {
  // A route whose length went into exact match is found by who was told of it only.
  ExpectedTraffic stale;
  stale.leaves(known, 1, "Ethernet30", "blue", asForwarded(known));
  stale.leaves(missing, 1, "Ethernet30", "blue", asForwarded(missing));
  stale.leaves(other, ExpectedTraffic::noRule, "Ethernet2", "default", asForwarded(other));
  stale.expectFrom(intoRed(), "chip fail red 1\nprefix-lens ipv4 red 24\n");
  asProgrammed().expectFrom(intoRed(), "prefix-lens ipv4 red 24\n");
  asProgrammed().expectFrom(intoRed(), "prefix-lens ipv4 red 24 32\nprefix-lens ipv4 blue 0\n");
}

}  // namespace
}  // namespace ZelAgent
