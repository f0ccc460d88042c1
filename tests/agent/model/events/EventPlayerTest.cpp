// What each event changes, and what that causes.
#include "agent/model/events/EventPlayer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/model/packets/PacketText.h"
#include "agent/reports/StateReport.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

using Chips::Hook;
using PolicyMap::ActionType;
using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::ProgrammingResult;

class EventPlayerTest : public ::testing::Test {
 protected:
  void apply(const SmallConfiguration& small) { agent_.apply(configurationOf(small)); }

  // Plays a line and gives its calls: "update actionVrf red, ...", failures with a '!'.
  std::string play(const std::string& line) {
    last_ = player_.play(readEvent(line).value());
    std::string text;
    for (const Chips::HookCall& call : last_.calls) {
      text += text.empty() ? "" : ", ";
      text += call.hook == Hook::createVrf ? "create " : "";
      text += call.hook == Hook::updateVrf ? "update " : "";
      text += call.hook == Hook::deleteVrf ? "delete " : "";
      text += toText(call.action) + (call.failed ? "!" : "");
    }
    return text;
  }

  std::string refusalOf(const std::string& line) {
    try {
      (void)player_.play(readEvent(line).value());
    } catch (const EventError& error) {
      return error.what();
    }
    return "it was played";
  }

  // Where a packet to the address goes that comes in by an interface of nobody's.
  std::string wayTo(const std::string& destination) {
    PacketFields fields;
    fields.source = parseIpAddress("192.0.2.1").value();
    fields.destination = parseIpAddress(destination).value();
    const auto verdict = agent_.forwarder().forward("e9", buildPacket(fields));
    return verdict.drop ? std::string(nameOf(*verdict.drop)) : verdict.egress;
  }

  [[nodiscard]] std::string program(const VrfAction& action) {
    std::ostringstream text;
    const auto* const resource = agent_.chip().resource(action);
    if (resource == nullptr) return "none";
    text << resource->program;
    return text.str().substr(0, text.str().find(';'));
  }

  ForwardingAgent agent_{16};
  EventPlayer player_{agent_, TestFiles::processFolder()};
  EventEffects last_;
};

TEST_F(EventPlayerTest, AnIdReachesTheActionsThatNameTheVrf) {
  apply({{{"red"}, {"blue", "red"}}, {"red", "blue"}, {"e1"}});
  EXPECT_EQ(play("vrf red id 70"), "update actionVrf red, update actionVrf blue");
  EXPECT_TRUE(last_.statusChanges.empty());
  EXPECT_EQ(program(blue), "look up blue(3) v4=[] v6=[] > red(70) v4=[] v6=[]");
  EXPECT_EQ(play("vrf red id 70"), "");
}

TEST_F(EventPlayerTest, AnIdThatBecomesZeroFailsItsActions) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_EQ(play("vrf red id 0"), "update actionVrf red!");
  EXPECT_EQ(program(red), "none");
  EXPECT_EQ(play("vrf red id 6"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(6) v4=[] v6=[]");
}

TEST_F(EventPlayerTest, AVrfThatGoesAwayFailsItsActionsAndKeepsItsConfiguration) {
  apply({{{"red", "DEFAULT"}}, {"red"}, {"e1"}});
  EXPECT_EQ(play("vrf red remove"), "update actionVrf red!");
  ASSERT_EQ(last_.statusChanges.size(), 1U);
  const StatusChange& change = last_.statusChanges.front();
  EXPECT_EQ(change.action, red);
  EXPECT_EQ(change.before.value(), ZelVrfSelectionPolicy::HwStatus());
  EXPECT_EQ(change.after.value().failureReason(), FailureCode::failureVrfResourceAlloc);
  EXPECT_EQ(program(red), "none");
  EXPECT_EQ(play("vrf red add"), "");
  EXPECT_EQ(play("vrf red id 5"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(5) v4=[] v6=[] > default(1) v4=[] v6=[]");
}

TEST_F(EventPlayerTest, AStatusThatAppearsWithAnIdProgramsItsActions) {
  apply({{}, {"red"}, {"e1"}});
  EXPECT_EQ(play("vrf red add id 5"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(5) v4=[] v6=[]");
}

TEST_F(EventPlayerTest, AStatusInPlaceOfAnotherIsFollowed) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_EQ(play("vrf red add id 5"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(5) v4=[] v6=[]");
  EXPECT_EQ(play("vrf red add"), "update actionVrf red!");
  EXPECT_EQ(play("vrf red id 6"), "update actionVrf red");
}

TEST_F(EventPlayerTest, FallbacksComeMoveAndGo) {
  apply({{{"red"}, {"blue"}}, {"red"}, {"e1"}});
  EXPECT_EQ(play("fallback red to blue"), "update actionVrf red");
  EXPECT_EQ(play("fallback red to blue"), "");
  EXPECT_EQ(play("fallback red to default"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(2) v4=[] v6=[] > default(1) v4=[] v6=[]");
  EXPECT_EQ(play("fallback red remove"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(2) v4=[] v6=[]");
}

TEST_F(EventPlayerTest, AFallbackNeedNotExist) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_EQ(play("fallback red to nowhere"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(2) v4=[] v6=[] > nowhere(0) v4=[] v6=[]");
}

TEST_F(EventPlayerTest, DecapFlagsReachEveryAction) {
  apply({{{"red"}, {"blue"}}, {"red", "blue"}, {"e1"}});
  for (const char* const flag : {"decap-nh ", "decap-nh-fallback "}) {
    EXPECT_EQ(play(std::string(flag) + "off"), "");
    play(std::string(flag) + "on");
    EXPECT_EQ(last_.calls.size(), 2U);
  }
  const auto& resource = *agent_.chip().resource(red);
  EXPECT_TRUE(resource.program.decapNhEnabled);
  EXPECT_TRUE(resource.program.decapNhFallbackEnabled);
}

TEST_F(EventPlayerTest, PrefixLengthsAreExactlyThoseGiven) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_EQ(play("prefix-lens ipv4 red 8 24"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(2) v4=[8,24] v6=[]");
  EXPECT_EQ(play("prefix-lens ipv6 red 64"), "update actionVrf red");
  EXPECT_EQ(play("prefix-lens ipv4 red 24 8"), "");
  play("prefix-lens ipv4 red 24 32");
  EXPECT_EQ(program(red), "look up red(2) v4=[24,32] v6=[64]");
  EXPECT_EQ(play("prefix-lens ipv4 red remove"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(2) v4=[] v6=[64]");
  EXPECT_EQ(play("prefix-lens ipv6 red remove"), "update actionVrf red");
  EXPECT_EQ(program(red), "look up red(2) v4=[] v6=[]");
}

TEST_F(EventPlayerTest, TheChipRunsFullAndRecovers) {
  play("chip capacity 1");
  apply({{{"red"}, {"blue"}}, {"blue", "red"}, {"e1"}});
  EXPECT_EQ(program(red), "none");
  EXPECT_EQ(play("chip capacity 2"), "update actionVrf red");
  ASSERT_EQ(last_.statusChanges.size(), 1U);
  EXPECT_EQ(last_.statusChanges.front().before.value().failureReason(),
            FailureCode::failureVrfResourceExhausted);
  EXPECT_EQ(last_.statusChanges.front().after.value().status(), ProgrammingResult::programmedInHw);
}

TEST_F(EventPlayerTest, TheChipFailsAsPlanned) {
  apply({{{"red"}, {"blue"}}, {"red", "blue"}, {"e1"}});
  EXPECT_EQ(play("chip fail red 1"), "");
  EXPECT_EQ(play("vrf blue id 9"), "update actionVrf blue");
  EXPECT_EQ(play("vrf red id 9"), "update actionVrf red!");
  EXPECT_EQ(play("chip fail any 2"), "update actionVrf red!");
  EXPECT_EQ(play("vrf blue id 8"), "update actionVrf blue!");
  EXPECT_EQ(play("chip fail any 0"), "update actionVrf red, update actionVrf blue");
}

TEST_F(EventPlayerTest, ShowChangesNothing) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_EQ(play("show"), "");
  EXPECT_TRUE(last_.statusChanges.empty());
}

TEST_F(EventPlayerTest, EventsThatNameNothingThatIsThereAreRefused) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_EQ(refusalOf("vrf late id 7"),
            "vrf NAME id N: NAME must be a VRF that exists, found 'late'; first: vrf late add");
  EXPECT_EQ(refusalOf("vrf 'two words' id 7"),
            "vrf NAME id N: NAME must be a VRF that exists, found 'two words'; first: vrf 'two "
            "words' add");
  EXPECT_EQ(refusalOf("vrf late remove"),
            "vrf NAME remove: NAME must be a VRF that exists, found 'late'");
  EXPECT_EQ(refusalOf("fallback red remove"),
            "fallback NAME remove: NAME must be a VRF that has a fallback, found 'red'");
  EXPECT_EQ(refusalOf("prefix-lens ipv4 red remove"),
            "prefix-lens ipv4 NAME remove: NAME must be a VRF that has ipv4 prefix lengths, found "
            "'red'");
  (void)play("prefix-lens ipv4 red 24");
  EXPECT_EQ(refusalOf("prefix-lens ipv6 red remove"),
            "prefix-lens ipv6 NAME remove: NAME must be a VRF that has ipv6 prefix lengths, found "
            "'red'");
}

TEST_F(EventPlayerTest, RoutesComeAndGo) {
  apply({{}, {}, {}});
  EXPECT_EQ(wayTo("203.0.113.1"), "noRoute");
  EXPECT_EQ(play("route default 203.0.113.0/24 via e1"), "");
  EXPECT_TRUE(last_.statusChanges.empty());
  EXPECT_EQ(wayTo("203.0.113.1"), "e1");
  (void)play("route default 203.0.113.0/24 via e2");
  EXPECT_EQ(wayTo("203.0.113.1"), "e2");
  (void)play("route default 203.0.113.1/32 decap");
  EXPECT_EQ(wayTo("203.0.113.1"), "decapDisabled");
  (void)play("route default 203.0.113.1/32 remove");
  (void)play("route default 203.0.113.0/24 remove");
  EXPECT_EQ(wayTo("203.0.113.1"), "noRoute");
}

TEST_F(EventPlayerTest, ARouteStandsInFrontOfTheConfiguredOneUntilItIsTakenBack) {
  OpenConfigBuilder configuration;
  configuration.route("DEFAULT", "203.0.113.0/24", "e1");
  agent_.apply(configuration.configuration());
  (void)play("route default 203.0.113.0/24 via e2");
  EXPECT_EQ(wayTo("203.0.113.1"), "e2");
  agent_.apply(configuration.configuration());
  EXPECT_EQ(wayTo("203.0.113.1"), "e2");
  (void)play("route default 203.0.113.0/24 remove");
  EXPECT_EQ(wayTo("203.0.113.1"), "e1");
}

TEST_F(EventPlayerTest, ARouteMayComeBeforeItsVrf) {
  apply({{}, {}, {}});
  (void)play("fallback default to late");
  (void)play("route late 203.0.113.0/24 via e1");
  EXPECT_EQ(wayTo("203.0.113.1"), "noRoute");
  (void)play("vrf late add");
  (void)play("vrf late id 7");
  EXPECT_EQ(wayTo("203.0.113.1"), "e1");
  (void)play("vrf late id 8");
  EXPECT_EQ(wayTo("203.0.113.1"), "e1");
}

TEST_F(EventPlayerTest, RoutesOfAConfigurationAreNotTakenBackByEvents) {
  OpenConfigBuilder configuration;
  configuration.route("DEFAULT", "203.0.113.0/24", "e1");
  agent_.apply(configuration.configuration());
  EXPECT_EQ(refusalOf("route default 203.0.113.0/24 remove"),
            "route VRF PREFIX remove: VRF must have a route of an event to 203.0.113.0/24, found "
            "'default'");
  EXPECT_EQ(refusalOf("route red 203.0.113.0/24 remove"),
            "route VRF PREFIX remove: VRF must have a route of an event to 203.0.113.0/24, found "
            "'red'");
  EXPECT_EQ(wayTo("203.0.113.1"), "e1");
}

TEST_F(EventPlayerTest, TheDefaultVrfIsAVrf) {
  apply({{}, {"DEFAULT"}, {"e1"}});
  EXPECT_EQ(play("vrf default remove"), "update actionVrf default!");
  EXPECT_EQ(refusalOf("vrf default id 4"),
            "vrf NAME id N: NAME must be a VRF that exists, found 'default'; first: vrf default "
            "add");
}

TEST_F(EventPlayerTest, AConfigurationThatIsBadIsRefused) {
  const std::string folder = TestFiles::processFolder() / "";
  EXPECT_EQ(refusalOf("config no-such-file.json"),
            "config FILE: " + folder +
                "no-such-file.json: cannot be read: No such file or directory; give a readable "
                "JSON file");
}

TEST_F(EventPlayerTest, AConfigurationThatIsAFifoIsRefusedAndNotWaitedFor) {
  const TestFiles::TemporaryFolder folder;
  const std::string fifo = folder.path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(refusalOf("config " + fifo),
            "config FILE: " + fifo + ": is a FIFO; give a readable JSON file");
}

TEST_F(EventPlayerTest, NobodyIsToldOfCallsOutsideOfEvents) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  (void)play("vrf red id 5");
  const std::size_t before = last_.calls.size();
  apply({{{"red", "DEFAULT"}}, {"red"}, {"e1"}});
  EXPECT_EQ(last_.calls.size(), before);
}

// A later configuration changes what it has otherwise than the one before, and nothing else.

TEST_F(EventPlayerTest, TheSameConfigurationKeepsWhatEventsChanged) {
  const SmallConfiguration same{{{"red", "blue"}, {"blue"}, {"green"}}, {"red"}, {"e1"}};
  apply(same);
  (void)play("vrf red id 50");
  (void)play("fallback red to green");
  (void)play("vrf blue remove");
  (void)play("fallback blue to red");
  apply(same);
  EXPECT_EQ(agent_.routeStatus().vrfStatus("red")->vrfId(), 50U);
  EXPECT_EQ(agent_.fallbackConfig().fallbackVrf("red"), L3::VrfName("green"));
  EXPECT_FALSE(agent_.routeStatus().vrfStatus("blue"));
  EXPECT_EQ(agent_.fallbackConfig().fallbackVrf("blue"), L3::VrfName("red"));
}

TEST_F(EventPlayerTest, AFallbackThatAConfigurationChangesIsChanged) {
  apply({{{"red", "blue"}, {"blue"}}, {"red"}, {"e1"}});
  (void)play("fallback red to green");
  apply({{{"red", "DEFAULT"}, {"blue"}}, {"red"}, {"e1"}});
  EXPECT_EQ(agent_.fallbackConfig().fallbackVrf("red"), L3::VrfName("default"));
  (void)play("fallback red to green");
  apply({{{"red"}, {"blue"}}, {"red"}, {"e1"}});
  EXPECT_FALSE(agent_.fallbackConfig().fallbackVrfHas("red"));
}

TEST_F(EventPlayerTest, AVrfThatAConfigurationBringsGetsItsIdAlsoWhenItExists) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  (void)play("vrf blue add id 77");
  (void)play("fallback blue to red");
  apply({{{"red"}, {"blue"}}, {"red"}, {"e1"}});
  EXPECT_EQ(agent_.routeStatus().vrfStatus("blue")->vrfId(), 3U);
  EXPECT_EQ(agent_.fallbackConfig().fallbackVrf("blue"), L3::VrfName("red"));
}

TEST_F(EventPlayerTest, AVrfThatAConfigurationNoLongerHasGoesWhoeverChangedIt) {
  apply({{{"red"}, {"blue"}}, {"red"}, {"e1"}});
  (void)play("vrf blue add id 77");
  (void)play("fallback blue to red");
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_FALSE(agent_.routeStatus().vrfStatus("blue"));
  EXPECT_FALSE(agent_.fallbackConfig().fallbackVrfHas("blue"));
}

TEST_F(EventPlayerTest, WhatOnlyEventsMadeOutlivesConfigurations) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  (void)play("vrf blue add id 77");
  (void)play("fallback green to blue");
  (void)play("prefix-lens ipv4 red 24");
  apply({{{"green"}}, {"green"}, {"e1"}});
  EXPECT_TRUE(agent_.routeStatus().vrfStatus("blue"));
  EXPECT_EQ(agent_.fallbackConfig().fallbackVrf("green"), L3::VrfName("blue"));
  EXPECT_TRUE(agent_.routeStatus().vrfPrefixLensInExactMatch("red"));
}

TEST_F(EventPlayerTest, RemovingAllRemovesWhatEventsMadeToo) {
  apply({{{"red"}}, {"red", "late"}, {"e1"}});
  (void)play("vrf late add");
  (void)play("vrf late id 7");
  (void)play("fallback late to red");
  (void)play("prefix-lens ipv4 late 24");
  (void)play("prefix-lens ipv6 late 64");
  (void)play("route late 203.0.113.0/24 via e1");
  agent_.removeAll();
  EXPECT_TRUE(agent_.state().actions.empty());
  EXPECT_TRUE(agent_.chip().resources().empty());
  EXPECT_EQ(agent_.routeStatus().vrfStatus().count(), 0U);
  EXPECT_EQ(agent_.fallbackConfig().fallbackVrf().count(), 0U);
  EXPECT_EQ(agent_.routeStatus().vrfPrefixLensInExactMatch().count(), 0U);
  EXPECT_EQ(agent_.routeStatusV6().vrfPrefixLensInExactMatch().count(), 0U);
  (void)play("vrf late add");
  (void)play("vrf late id 7");
  (void)play("fallback default to late");
  EXPECT_EQ(wayTo("203.0.113.1"), "noRoute");
}

}  // namespace
}  // namespace ZelAgent
