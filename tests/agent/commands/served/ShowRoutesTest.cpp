// The routes of routing tables with their origins and results.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "agent/commands/served/CommandDispatch.h"
#include "agent/language/Errors.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

class ShowRoutes : public ::testing::Test {
 protected:
  ShowRoutes() { served_.start(); }

  // The configuration again, with these static routes of red: each a prefix and the addresses,
  // interfaces ("via e1") or "drop" of its next hops.
  void configure(const std::vector<std::pair<std::string, std::vector<std::string>>>& routes) {
    Configuration configuration = served_.agent().configuration();
    NetworkInstance& red = configuration.networkInstances.at(1);
    ASSERT_EQ(red.name, "red");
    red.staticRoutes.clear();
    for (const auto& [prefix, nextHops] : routes) {
      StaticRoute& route = red.staticRoutes.emplace_back();
      route.prefix = parseIpPrefix(prefix).value();
      for (const std::string& text : nextHops) {
        NextHop& nextHop = route.nextHops.emplace_back();
        nextHop.index = std::to_string(route.nextHops.size());
        nextHop.drops = text == "drop";
        nextHop.address = parseIpAddress(text);
        if (text.starts_with("via ")) nextHop.interface = text.substr(4);
      }
    }
    served_.agent().apply(configuration);
  }
  std::string shown(const std::string& command) {
    return runCommand(served_, command, false).get<std::string>();
  }
  std::string shownJson(const std::string& command) {
    return runCommand(served_, command, true).dump();
  }
  std::string refused(const std::string& command) {
    try {
      (void)runCommand(served_, command, false);
      return "";
    } catch (const EventError& error) {
      return error.what();
    }
  }

  ServedAgent served_{writeSmall("c.json", {{{"red"}, {"blue"}}, {"red"}, {"e1"}}), 8};
};

TEST_F(ShowRoutes, WithoutAnyThereIsOneLine) {
  EXPECT_EQ(shown("show routes"), "  no routes\n");
  EXPECT_EQ(shownJson("show routes"), "[]");
}

TEST_F(ShowRoutes, HaveTheirOriginNextHopsAndResult) {
  configure({{"10.0.0.0/8", {"192.0.2.1", "via e7"}},
             {"192.0.2.0/24", {"via e8"}},
             {"2001:db8::/32", {"drop"}}});
  shown("route blue 10.9.0.0/16 decap");
  EXPECT_EQ(shown("show routes"),
            "  VRF   PREFIX         ORIGIN      NEXT-HOPS          RESOLVED  STATE\n"
            "  blue  10.9.0.0/16    event       -                  decap     programmed\n"
            "  red   10.0.0.0/8     configured  192.0.2.1, via e7  e8        programmed\n"
            "  red   192.0.2.0/24   configured  via e8             e8        programmed\n"
            "  red   2001:db8::/32  configured  drop               drop      programmed\n");
}

TEST_F(ShowRoutes, OfAnEventHideConfiguredOnes) {
  configure({{"10.0.0.0/8", {"via e7"}}});
  shown("route red 10.0.0.0/8 via e1");
  EXPECT_EQ(shown("show routes red"),
            "  VRF  PREFIX      ORIGIN      NEXT-HOPS  RESOLVED  STATE\n"
            "  red  10.0.0.0/8  event       -          e1        programmed\n"
            "  red  10.0.0.0/8  configured  via e7     -         hidden: an event has set another "
            "route to the prefix\n");
}

TEST_F(ShowRoutes, ThatAreNotResolvedHaveAReasonForEachNextHop) {
  configure({{"10.0.0.0/8", {"192.0.2.1", "198.51.100.1"}},
             {"198.51.100.0/24", {"203.0.113.1"}},
             {"172.16.0.0/12", {"172.17.0.1"}},
             {"172.17.0.0/16", {"172.16.0.1"}}});
  EXPECT_EQ(
      shown("show routes red 10.0.0.0/8"),
      "  VRF  PREFIX      ORIGIN      NEXT-HOPS                RESOLVED  STATE\n"
      "  red  10.0.0.0/8  configured  192.0.2.1, 198.51.100.1  -         not resolved: no "
      "other route to 192.0.2.1; the route 198.51.100.0/24 to 198.51.100.1 is not resolved\n");
  EXPECT_EQ(shownJson("show routes red 198.51.100.0/24"),
            R"([{"vrfName":"red","prefix":"198.51.100.0/24","origin":"configured",)"
            R"("nextHops":[{"index":"1","address":"203.0.113.1","interface":"","drop":false}],)"
            R"("resolved":null,"state":"not resolved","reason":"no other route to 203.0.113.1"}])");
}

TEST_F(ShowRoutes, ThatAreNotProgrammedHaveTheReason) {
  shown("route red 10.0.0.0/8 via e1");
  shown("vrf red id 0");
  EXPECT_EQ(
      shown("show routes"),
      "  VRF  PREFIX      ORIGIN  NEXT-HOPS  RESOLVED  STATE\n"
      "  red  10.0.0.0/8  event   -          e1        not programmed: the VRF has no hardware "
      "id\n");
  shown("vrf red id 70");
  shown("route blue 10.0.0.0/8 decap");
  shown("vrf blue id 70");
  EXPECT_EQ(shown("show routes"),
            "  VRF   PREFIX      ORIGIN  NEXT-HOPS  RESOLVED  STATE\n"
            "  blue  10.0.0.0/8  event   -          decap     not programmed: a VRF with the same "
            "hardware id has another route to the prefix\n"
            "  red   10.0.0.0/8  event   -          e1        programmed\n");
}

TEST_F(ShowRoutes, AreSelectedByVrfAndByAPrefixThatContainsThem) {
  for (const char* const prefix :
       {"10.0.0.0/8", "10.0.0.0/16", "10.0.1.0/24", "10.1.0.0/16", "0.0.0.0/0", "2001:db8::/32"}) {
    shown("route red " + std::string(prefix) + " via e1");
    shown("route blue " + std::string(prefix) + " via e1");
  }
  const auto prefixes = [&](const std::string& command) {
    std::string text;
    for (const auto& route : runCommand(served_, command, true))
      text += route["vrfName"].get<std::string>() + ' ' + route["prefix"].get<std::string>() + ' ';
    return text;
  };
  EXPECT_EQ(prefixes("show routes red 10.0.0.0/16"), "red 10.0.0.0/16 red 10.0.1.0/24 ");
  EXPECT_EQ(prefixes("show routes blue 10.1.0.0/16"), "blue 10.1.0.0/16 ") << "and no later VRF";
  EXPECT_EQ(prefixes("show routes 10.1.0.0/16"), "blue 10.1.0.0/16 red 10.1.0.0/16 ");
  EXPECT_EQ(prefixes("show routes red 0.0.0.0/0"),
            "red 0.0.0.0/0 red 10.0.0.0/8 red 10.0.0.0/16 red 10.0.1.0/24 red 10.1.0.0/16 ");
  EXPECT_EQ(prefixes("show routes red ::/0"), "red 2001:db8::/32 ");
  EXPECT_EQ(prefixes("show routes red 10.2.0.0/16"), "");
}

TEST_F(ShowRoutes, OfAVrfThatNobodyKnowsAreRefused) {
  EXPECT_EQ(
      refused("show routes green"),
      "show routes [VRF] [PREFIX]: VRF must be the name of one that exists, or PREFIX an IPv4 "
      "or IPv6 prefix, found 'green'");
  EXPECT_EQ(refused("show routes red 10.0.0.0"),
            "show routes [VRF] [PREFIX]: PREFIX must be an IPv4 or IPv6 prefix, found '10.0.0.0'");
  EXPECT_EQ(refused("show routes red 10.0.0.0/8 now"),
            "show routes [VRF] [PREFIX]: the line must end here, found 'now'");
}

}  // namespace
}  // namespace ZelAgent
