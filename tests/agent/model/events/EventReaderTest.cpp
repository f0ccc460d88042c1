#include "agent/model/events/EventReader.h"

#include <gtest/gtest.h>

#include <ostream>

#include "agent/language/Errors.h"
#include "agent/model/events/Event.h"
#include "tests/agent/model/events/BadEvents.h"

namespace ZelAgent {
namespace {

struct GoodEvent {
  const char* name;
  std::string line;
  Event event;

  friend std::ostream& operator<<(std::ostream& stream, const GoodEvent& good) {
    return stream << good.name;
  }
};

IpPrefix prefixOf(const char* text) {
  return parseIpPrefix(text).value();
}

class GoodEventTest : public ::testing::TestWithParam<GoodEvent> {};

TEST_P(GoodEventTest, IsReadAndWrittenAsItStands) {
  const auto event = readEvent(GetParam().line);
  ASSERT_TRUE(event.has_value());
  EXPECT_TRUE(*event == GetParam().event) << toText(*event);
  EXPECT_EQ(toText(*event), GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(
    Each, GoodEventTest,
    ::testing::Values(
        GoodEvent{"VrfId", "vrf red id 7", SetVrfId{"red", 7}},
        GoodEvent{"VrfIdZero", "vrf red id 0", SetVrfId{"red", 0}},
        GoodEvent{"VrfIdLargest", "vrf red id 4294967295", SetVrfId{"red", 4294967295}},
        GoodEvent{"VrfRemove", "vrf red remove", RemoveVrf{"red"}},
        GoodEvent{"VrfAdd", "vrf red add", AddVrf{"red", 0}},
        GoodEvent{"VrfAddId", "vrf red add id 9", AddVrf{"red", 9}},
        GoodEvent{"DefaultVrf", "vrf default id 3", SetVrfId{"default", 3}},
        GoodEvent{"VrfsNamedLikeVerbs", "vrf id id 1", SetVrfId{"id", 1}},
        GoodEvent{"NameWithBlanks", "vrf 'two words' remove", RemoveVrf{"two words"}},
        GoodEvent{"NameWithAQuote", "vrf 'it\\'s' remove", RemoveVrf{"it's"}},
        GoodEvent{"NameWithABackslash", "vrf 'a\\\\b' remove", RemoveVrf{"a\\b"}},
        GoodEvent{"NameWithANul", "vrf 'a\\x00b' remove", RemoveVrf{std::string("a\0b", 3)}},
        GoodEvent{"NameThatIsNotUtf8", "vrf '\\xff' remove", RemoveVrf{"\xff"}},
        GoodEvent{"NameThatLooksLikeAComment", "vrf '#1' remove", RemoveVrf{"#1"}},
        GoodEvent{"NameInUtf8", "vrf b\xc3\xbcro remove", RemoveVrf{"b\xc3\xbcro"}},
        GoodEvent{"NameWithAHash", "vrf a#1 remove", RemoveVrf{"a#1"}},
        GoodEvent{"NameOfHundredBytes", "vrf " + std::string(100, 'n') + " remove",
                  RemoveVrf{std::string(100, 'n')}},
        GoodEvent{"Fallback", "fallback red to blue", SetFallback{"red", "blue"}},
        GoodEvent{"FallbackToItself", "fallback red to red", SetFallback{"red", "red"}},
        GoodEvent{"FallbackToDefault", "fallback red to default", SetFallback{"red", "default"}},
        GoodEvent{"FallbackOfDefault", "fallback default to to", SetFallback{"default", "to"}},
        GoodEvent{"FallbackRemove", "fallback red remove", RemoveFallback{"red"}},
        GoodEvent{"DecapNhOn", "decap-nh on", SetDecapNh{true}},
        GoodEvent{"DecapNhOff", "decap-nh off", SetDecapNh{false}},
        GoodEvent{"DecapNhFallbackOn", "decap-nh-fallback on", SetDecapNhFallback{true}},
        GoodEvent{"DecapNhFallbackOff", "decap-nh-fallback off", SetDecapNhFallback{false}},
        GoodEvent{"PrefixLensIpv4", "prefix-lens ipv4 red 0 24 32",
                  SetPrefixLens{IpFamily::v4, "red", {0, 24, 32}}},
        GoodEvent{"PrefixLensIpv6", "prefix-lens ipv6 red 0 64 128",
                  SetPrefixLens{IpFamily::v6, "red", {0, 64, 128}}},
        GoodEvent{"PrefixLensRemove", "prefix-lens ipv6 red remove",
                  RemovePrefixLens{IpFamily::v6, "red"}},
        GoodEvent{"Config", "config next.json", ApplyConfig{"next.json"}},
        GoodEvent{"ConfigWithBlanks", "config 'next one.json'", ApplyConfig{"next one.json"}},
        GoodEvent{"ChipCapacity", "chip capacity 0", SetChipCapacity{0}},
        GoodEvent{"RuleCapacity", "chip rules 7", SetChipRules{7}},
        GoodEvent{"ChipFailVrf", "chip fail red 2", PlanChipFaults{"red", 2}},
        GoodEvent{"ChipFailAny", "chip fail any 0", PlanChipFaults{std::nullopt, 0}},
        GoodEvent{"ChipFailVrfCalledAny", "chip fail 'any' 1", PlanChipFaults{"any", 1}},
        GoodEvent{"RouteDecap", "route red 203.0.113.0/24 decap",
                  SetDecapRoute{"red", prefixOf("203.0.113.0/24")}},
        GoodEvent{"RouteVia", "route default ::/0 via Ethernet1/2",
                  SetEgressRoute{"default", prefixOf("::/0"), "Ethernet1/2"}},
        GoodEvent{"RouteViaWithBlanks", "route red 0.0.0.0/0 via 'two words'",
                  SetEgressRoute{"red", prefixOf("0.0.0.0/0"), "two words"}},
        GoodEvent{"RouteRemove", "route red 2001:db8::/32 remove",
                  RemoveRoute{"red", prefixOf("2001:db8::/32")}},
        GoodEvent{"RouteOfAVrfCalledLikeAVerb", "route via 10.0.0.0/8 remove",
                  RemoveRoute{"via", prefixOf("10.0.0.0/8")}},
        GoodEvent{"Retry", "retry", Retry{}}, GoodEvent{"Show", "show", Show{}}),
    [](const auto& good) { return std::string(good.param.name); });

class BadEventTest : public ::testing::TestWithParam<BadEvent> {};

TEST_P(BadEventTest, IsRefusedWithWhatWouldBeRight) {
  try {
    (void)readEvent(GetParam().line);
    FAIL() << "it was read";
  } catch (const EventError& error) {
    EXPECT_EQ(error.what(), GetParam().message);
  }
}

INSTANTIATE_TEST_SUITE_P(Each, BadEventTest, ::testing::ValuesIn(badEvents()),
                         [](const auto& bad) { return std::string(bad.param.name); });

TEST(EventReader, IgnoresBlankLinesAndComments) {
  for (const char* const line : {"", "   ", "\t", "\r", "#", "# show", "  # show", "#show"}) {
    EXPECT_FALSE(readEvent(line).has_value()) << line;
  }
}

TEST(EventReader, BlanksAndACommentMayStandAroundWords) {
  const Event expected = SetVrfId{"red", 7};
  for (const char* const line : {"  vrf red id 7", "vrf\tred  id\t7  ", "vrf red id 7\r",
                                 "vrf red id 7 # the id arrives", "'vrf' 'red' 'id' '7'"}) {
    EXPECT_TRUE(readEvent(line) == expected) << line;
  }
}

TEST(EventReader, BitsBehindThePrefixOfARouteAreNoPartOfIt) {
  EXPECT_TRUE(readEvent("route red 203.0.113.99/24 decap") ==
              Event(SetDecapRoute{"red", prefixOf("203.0.113.0/24")}));
}

TEST(EventReader, LengthsAreASet) {
  EXPECT_TRUE(readEvent("prefix-lens ipv4 red 24 8 24") ==
              Event(SetPrefixLens{IpFamily::v4, "red", {8, 24}}));
}

std::string linesOf(const std::string& text) {
  std::string lines;
  forEachEvent(text, "a.events", [&lines](const EventPlace& place, const Event& event) {
    lines += place.text() + ' ' + toText(event) + '\n';
  });
  return lines;
}

TEST(EventFile, GivesEachEventWithItsLine) {
  EXPECT_EQ(linesOf(""), "");
  EXPECT_EQ(linesOf("\n\n# nothing\n"), "");
  EXPECT_EQ(linesOf("show\n\n# a comment\r\nvrf red add\r\nshow"),
            "a.events:1 show\na.events:4 vrf red add\na.events:5 show\n");
}

TEST(EventFile, AWrongLineEndsItAndIsNamed) {
  unsigned visits = 0;
  try {
    forEachEvent("show\n\nshow me\nshow\n", "bad\n.events",
                 [&visits](const EventPlace&, const Event&) { ++visits; });
    FAIL() << "it was read";
  } catch (const EventError& error) {
    EXPECT_STREQ(error.what(), "bad\\x0a.events:3: show: the line must end here, found 'me'");
  }
  EXPECT_EQ(visits, 1U);
}

TEST(EventFile, AnEventThatCannotBePlayedIsNamed) {
  try {
    forEachEvent("show\nshow", "a.events", [](const EventPlace& place, const Event&) {
      if (place.line == 2) throw EventError("show: not now");
    });
    FAIL() << "it was played";
  } catch (const EventError& error) {
    EXPECT_STREQ(error.what(), "a.events:2: show: not now");
  }
}

}  // namespace
}  // namespace ZelAgent
