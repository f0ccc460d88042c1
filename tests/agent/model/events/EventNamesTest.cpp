// Which names of interfaces and VRFs an operator's event may have.
#include "agent/model/events/EventNames.h"

#include <gtest/gtest.h>

#include "agent/language/Errors.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/OpenConfigBuilder.h"

namespace ZelAgent {
namespace {

class EventNamesTest : public ::testing::Test {
 protected:
  EventNamesTest() {
    OpenConfigBuilder configuration;
    configuration.vrf("customers", "transit").vrf("transit");
    configuration.intf("customers", "Ethernet1").route("transit", "10.0.0.0/8", "Ethernet2");
    configuration.policy("edge", {ruleOf(1, "ipv4", {}, toVrf("guests"))}, {"Ethernet3"});
    agent_.apply(configuration.configuration());
  }

  // What is wrong with the names of the event. Empty if it is played.
  std::string problemOf(const std::string& line) {
    try {
      static_cast<void>(EventPlayer(agent_, {}).play(eventOf(line)));
    } catch (const EventError& error) {
      return error.what();
    }
    return "";
  }

  Event eventOf(const std::string& line) { return checkedEvent(agent_, readEvent(line).value()); }

  ForwardingAgent agent_{16};
};

TEST_F(EventNamesTest, TheDefaultVrfHasTheNameOfTheConfigurationToo) {
  Configuration configuration = agent_.configuration();
  configuration.defaultName = "main";
  agent_.apply(configuration);
  for (const std::string name : {"default", "DEFAULT", "main"}) {
    EXPECT_EQ(eventOf("vrf " + name + " id 7"), Event(SetVrfId{"default", 7}));
    EXPECT_EQ(eventOf("vrf " + name + " add"), Event(AddVrf{"default", 0}));
    EXPECT_EQ(eventOf("fallback " + name + " to transit"),
              Event(SetFallback{"default", "transit"}));
    EXPECT_EQ(eventOf("fallback transit to " + name), Event(SetFallback{"transit", "default"}));
    EXPECT_EQ(eventOf("prefix-lens ipv6 " + name + " remove"),
              Event(RemovePrefixLens{IpFamily::v6, "default"}));
    EXPECT_EQ(eventOf("chip fail " + name + " 1"), Event(PlanChipFaults{"default", 1}));
    EXPECT_EQ(eventOf("route " + name + " 10.0.0.0/8 via Ethernet1"),
              Event(SetEgressRoute{"default", *parseIpPrefix("10.0.0.0/8"), "Ethernet1"}));
  }
  EXPECT_EQ(eventOf("chip fail any 1"), Event(PlanChipFaults{std::nullopt, 1}));
}

TEST_F(EventNamesTest, DEFAULTIsReadAsTheDefaultVrf) {
  EXPECT_EQ(readEvent("vrf DEFAULT id 7"), Event(SetVrfId{"default", 7}));
  EXPECT_EQ(readEvent("fallback red to 'DEFAULT'"), Event(SetFallback{"red", "default"}));
}

TEST_F(EventNamesTest, TheNameOfTheDefaultInstanceIsSuggested) {
  Configuration configuration = agent_.configuration();
  configuration.defaultName = "main";
  agent_.apply(configuration);
  EXPECT_EQ(problemOf("vrf mian id 7"),
            "vrf NAME id N: NAME must be a VRF of the configuration or of the hardware, found "
            "'mian'; did you mean 'main'?");
  agent_.apply(Configuration{});
  EXPECT_NE(problemOf("vrf main id 7"), "");
}

TEST_F(EventNamesTest, AnInterfaceMayBeOfAnInstanceAPolicyOrARoute) {
  for (const std::string interface : {"Ethernet1", "Ethernet2", "Ethernet3"})
    EXPECT_EQ(problemOf("route transit 10.1.0.0/16 via " + interface), "");
}

TEST_F(EventNamesTest, AMistypedInterfaceIsRefusedWithTheNearestOne) {
  EXPECT_EQ(problemOf("route transit 10.1.0.0/16 via Etherent1"),
            "route VRF PREFIX via INTERFACE: INTERFACE must be an interface of the configuration, "
            "found 'Etherent1'; did you mean 'Ethernet1'?");
  EXPECT_EQ(problemOf("route transit 10.1.0.0/16 via lo"),
            "route VRF PREFIX via INTERFACE: INTERFACE must be an interface of the configuration, "
            "found 'lo'");
}

TEST_F(EventNamesTest, AMistypedVrfIsRefusedWithTheNearestOne) {
  const std::string refusal =
      " must be a VRF of the configuration or of the hardware, found 'transt'; did you mean "
      "'transit'?";
  EXPECT_EQ(problemOf("vrf transt id 7"), "vrf NAME id N: NAME" + refusal);
  EXPECT_EQ(problemOf("fallback transt to transit"), "fallback NAME to NAME: NAME" + refusal);
  EXPECT_EQ(problemOf("fallback customers to transt"),
            "fallback NAME to NAME: the second NAME" + refusal);
  EXPECT_EQ(problemOf("prefix-lens ipv6 transt 64"),
            "prefix-lens ipv6 NAME LENGTH...: NAME" + refusal);
  EXPECT_EQ(problemOf("chip fail transt 1"), "chip fail VRF|any COUNT: VRF" + refusal);
  EXPECT_EQ(problemOf("route transt 10.0.0.0/8 decap"), "route VRF PREFIX decap: VRF" + refusal);
  EXPECT_EQ(problemOf("route transt 10.0.0.0/8 via Ethernet1"),
            "route VRF PREFIX via INTERFACE: VRF" + refusal);
}

TEST_F(EventNamesTest, AVrfThatIsLikeNoOtherMustBeAddedFirst) {
  EXPECT_EQ(problemOf("fallback 'a b' to transit"),
            "fallback NAME to NAME: NAME must be a VRF of the configuration or of the hardware, "
            "found 'a b'; a new one needs first: vrf 'a b' add");
  EXPECT_EQ(problemOf("vrf 'a b' add"), "");
  EXPECT_EQ(problemOf("fallback 'a b' to transit"), "");
  EXPECT_EQ(problemOf("vrf 'a b' remove"), "");
  EXPECT_NE(problemOf("chip fail 'a b' 1"), "");
}

TEST_F(EventNamesTest, AVrfOfTheHardwareIsSuggested) {
  EXPECT_EQ(problemOf("vrf hardware add"), "");
  EXPECT_EQ(problemOf("chip fail hardwar 1"),
            "chip fail VRF|any COUNT: VRF must be a VRF of the configuration or of the hardware, "
            "found 'hardwar'; did you mean 'hardware'?");
}

TEST_F(EventNamesTest, AVrfThatOnlyARuleNamesIsKnown) {
  EXPECT_EQ(problemOf("fallback guests to default"), "");
  EXPECT_EQ(problemOf("chip fail guests 1"), "");
  EXPECT_EQ(problemOf("chip fail any 1"), "");
}

TEST_F(EventNamesTest, NamesOfAnEarlierConfigurationAreNotKnown) {
  agent_.apply(OpenConfigBuilder().configuration());
  EXPECT_NE(problemOf("route default 10.0.0.0/8 via Ethernet1"), "");
  EXPECT_NE(problemOf("chip fail customers 1"), "");
  EXPECT_EQ(problemOf("route default 10.0.0.0/8 decap"), "");
}

}  // namespace
}  // namespace ZelAgent
