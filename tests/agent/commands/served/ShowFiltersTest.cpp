// The filters of the commands that show rules and actions; interfaces and policies.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "agent/commands/served/CommandDispatch.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/model/events/EventLine.h"
#include "agent/model/packets/PacketText.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

// Two policies: edge on e1 and e2, core of the VRF red on e3. e4 has no policy.
constexpr const char* twoPolicies = R"({"network-instances": {"network-instance": [
  {"name": "DEFAULT", "config": {"type": "DEFAULT_INSTANCE"},
   "policy-forwarding": {
     "policies": {"policy": [
       {"policy-id": "edge", "config": {"type": "VRF_SELECTION_POLICY"}, "rules": {"rule": [
         {"sequence-id": 1, "ipv4": {"config": {"dscp": 1}},
          "action": {"config": {"network-instance": "red"}}},
         {"sequence-id": 2, "action": {"config": {"network-instance": "blue"}}}]}}]},
     "interfaces": {"interface": [
       {"interface-id": "e1", "config": {"apply-vrf-selection-policy": "edge"}},
       {"interface-id": "e2", "config": {"apply-vrf-selection-policy": "edge"}}]}}},
  {"name": "red", "config": {"type": "L3VRF"},
   "interfaces": {"interface": [
     {"id": "e3", "config": {"interface": "e3"}}, {"id": "e4", "config": {"interface": "e4"}}]},
   "policy-forwarding": {
     "policies": {"policy": [
       {"policy-id": "core", "config": {"type": "VRF_SELECTION_POLICY"}, "rules": {"rule": [
         {"sequence-id": 7, "action": {"config": {"network-instance": "blue"}}}]}}]},
     "interfaces": {"interface": [
       {"interface-id": "e3", "config": {"apply-vrf-selection-policy": "core"}}]}}},
  {"name": "blue", "config": {"type": "L3VRF"}}]}})";

class ShowFilters : public ::testing::Test {
 protected:
  ShowFilters() { served_.start(); }

  std::string shown(const std::string& command) {
    return runCommand(served_, command, false).get<std::string>();
  }
  OrderedJson shownJson(const std::string& command) { return runCommand(served_, command, true); }
  std::string refused(const std::string& command) {
    try {
      (void)runCommand(served_, command, false);
      return "";
    } catch (const EventError& error) {
      return error.what();
    }
  }
  // The interface and the number of each rule.
  std::string rules(const std::string& command) {
    std::string text;
    for (const OrderedJson& rule : shownJson(command)) {
      text += (text.empty() ? "" : " ") + rule["interface"].get<std::string>() + '/' +
              std::to_string(rule["rule"].get<int>());
    }
    return text;
  }
  // Applies the same with room for so many rules, after the chip held none.
  void applyWithRoomFor(std::uint32_t ruleCount) {
    served_.agent().apply({});
    served_.agent().ruleCapacityIs(ruleCount);
    (void)runCommand(served_, "config " + file_, false);
  }

  std::string file_ = writeFile("two.json", twoPolicies);
  ServedAgent served_{file_, 8};
};

TEST_F(ShowFilters, SelectRulesByInterfacePolicyAndVrf) {
  EXPECT_EQ(rules("show rules"), "e1/1 e1/2 e2/1 e2/2 e3/7");
  EXPECT_EQ(rules("show rules interface e2"), "e2/1 e2/2");
  EXPECT_EQ(rules("show rules policy core"), "e3/7");
  EXPECT_EQ(rules("show rules vrf blue"), "e1/2 e2/2 e3/7");
  EXPECT_EQ(rules("show rules interface e4"), "");
  EXPECT_EQ(shown("show rules interface e4"), "  no rules\n");
}

TEST_F(ShowFilters, NameTheDefaultVrfAsItsInstanceIsCalled) {
  std::string renamed(twoPolicies);
  renamed.replace(renamed.find("DEFAULT"), 7, "main");
  const std::string last = R"("network-instance": "blue")";
  renamed.replace(renamed.rfind(last), last.size(), R"("network-instance": "main")");
  (void)runCommand(served_, "config " + writeFile("main.json", renamed), false);
  for (const std::string name : {"main", "default", "DEFAULT"}) {
    EXPECT_EQ(rules("show rules vrf " + name), "e3/7");
    (void)runCommand(served_, "route " + name + " 10.0.0.0/8 via e4", false);
    EXPECT_EQ(shownJson("show routes " + name).at(0)["vrfName"], "default");
    (void)runCommand(served_, "route " + name + " 10.0.0.0/8 remove", false);
  }
  EXPECT_NE(refused("show rules vrf mian"), "");
}

TEST_F(ShowFilters, ThatAreCombinedSelectWhatAllSelect) {
  EXPECT_EQ(rules("show rules interface e1 vrf blue"), "e1/2");
  EXPECT_EQ(rules("show rules vrf blue policy edge interface e1"), "e1/2");
  EXPECT_EQ(rules("show rules policy core interface e1"), "");
}

TEST_F(ShowFilters, SelectRulesThatTheChipDoesNotHold) {
  EXPECT_EQ(rules("show rules failed"), "");
  applyWithRoomFor(2);
  EXPECT_EQ(rules("show rules failed"), "e2/1 e2/2 e3/7");
  EXPECT_EQ(rules("show rules failed interface e2 vrf red"), "e2/1");
  EXPECT_EQ(rules("show rules interface e1"), "e1/1 e1/2");
}

TEST_F(ShowFilters, SelectRulesInForceOfAPolicyThatIsNotConfiguredAnyMore) {
  applyWithRoomFor(5);
  std::string other(twoPolicies);
  const std::string core = "\"core\"";
  for (auto at = other.find(core); at != std::string::npos; at = other.find(core, at))
    other.replace(at, core.size(), "\"next\"");
  const std::string rule = "{\"sequence-id\": 7,";
  other.insert(other.find(rule), "{\"sequence-id\": 3}, {\"sequence-id\": 4}, ");
  (void)runCommand(served_, "config " + writeFile("next.json", other), false);
  EXPECT_EQ(rules("show rules policy next"), "e3/3 e3/4 e3/7");
  EXPECT_EQ(rules("show rules policy core"), "e3/7");
}

TEST_F(ShowFilters, SelectUsers) {
  EXPECT_EQ(shown("show users interface e1"),
            "  ACTION          INTERFACE  POLICY  RULE\n"
            "  actionVrf blue  e1         edge    2\n"
            "  actionVrf red   e1         edge    1\n");
  EXPECT_EQ(shown("show users vrf blue policy core"),
            "  ACTION          INTERFACE  POLICY     RULE\n"
            "  actionVrf blue  e3         red: core  7\n");
  const OrderedJson users = shownJson("show users vrf red");
  ASSERT_EQ(users.size(), 1U);
  EXPECT_EQ(users[0]["vrfName"], "red");
  EXPECT_EQ(users[0]["usedBy"].size(), 2U);
}

TEST_F(ShowFilters, SelectTheUsersOfActionsThatFailed) {
  EXPECT_EQ(shown("show users failed"), "  no users\n");
  shown("vrf blue id 0");
  EXPECT_EQ(shown("show users failed interface e3"),
            "  ACTION          INTERFACE  POLICY     RULE\n"
            "  actionVrf blue  e3         red: core  7\n");
  EXPECT_EQ(shownJson("show actions failed")["actions"].size(), 1U);
  EXPECT_EQ(shownJson("show actions failed")["actions"][0]["vrfName"], "blue");
  EXPECT_EQ(shownJson("show actions vrf red failed")["actions"].size(), 0U);
  EXPECT_EQ(shownJson("show actions vrf red")["actions"][0]["vrfName"], "red");
  EXPECT_EQ(shownJson("show actions")["actions"].size(), 2U);
}

TEST_F(ShowFilters, SelectCountersOfRulesAndOfAVrf) {
  shown("route red 0.0.0.0/0 via e1");
  EventLine packet("ipv4 192.0.2.1 to 192.0.2.2 dscp 1");
  (void)served_.agent().forwarder().forward("e1", readPacket(packet));
  EXPECT_EQ(shown("show counters interface e1 vrf red"),
            "  INTERFACE  POLICY  RULE  MATCH        ACTION         PACKETS  BYTES\n"
            "  e1         edge    1     ipv4 dscp 1  actionVrf red  1        28\n"
            "  VRF  PACKETS  BYTES\n"
            "  red  1        28\n");
  EXPECT_EQ(shownJson("show counters interface e3").dump(),
            R"({"rules":[{"interface":"e3","networkInstance":"red","policy":"core","rule":7,)"
            R"("match":"any","action":{"vrfName":"blue","fallbackVrfName":"",)"
            R"("postDecapVrfName":"","action":"actionVrf"},"programmed":true,"packets":0,)"
            R"("bytes":0}],"vrfs":[]})");
}

TEST_F(ShowFilters, OfNamesThatNothingHasAreRefused) {
  const std::string form = "show rules [interface INTERFACE] [policy POLICY] [vrf VRF] [failed]: ";
  EXPECT_EQ(refused("show rules interface e9"),
            form + "interface must be followed by the name of one that exists, found 'e9'");
  EXPECT_EQ(refused("show rules policy P"),
            form + "policy must be followed by the name of one that exists, found 'P'");
  EXPECT_EQ(refused("show rules vrf green"),
            form + "vrf must be followed by the name of one that exists, found 'green'");
  EXPECT_EQ(
      refused("show rules vrf"),
      form + "vrf must be followed by the name of one that exists, found the end of the line");
  EXPECT_EQ(refused("show actions interface e1"),
            "show actions [vrf VRF] [failed]: a filter must be vrf, failed or the end of the line, "
            "found 'interface'");
}

TEST_F(ShowFilters, ThatOccurTwiceAreRefused) {
  EXPECT_EQ(refused("show users failed failed"),
            "show users [interface INTERFACE] [policy POLICY] [vrf VRF] [failed]: a filter must be "
            "interface, policy, vrf or the end of the line, found 'failed'");
}

TEST_F(ShowFilters, InterfacesHaveTheirVrfPoliciesAndRules) {
  EXPECT_EQ(
      shown("show interfaces"),
      "  INTERFACE  VRF      POLICIES-OF  VRF-SELECTION  FORWARDING  PROGRAMMED  REFUSED  CLOSED\n"
      "  e1         default  default      edge           -           2           0        no\n"
      "  e2         default  default      edge           -           2           0        no\n"
      "  e3         red      red          core           -           1           0        no\n"
      "  e4         red      -            -              -           0           0        no\n");
  applyWithRoomFor(2);
  const OrderedJson interfaces = shownJson("show interfaces");
  EXPECT_EQ(interfaces[1].dump(),
            R"({"interface":"e2","vrfName":"default","networkInstance":"default",)"
            R"("vrfSelectionPolicy":"edge","forwardingPolicy":null,"programmed":0,"refused":2,)"
            R"("closed":true})");
  EXPECT_EQ(interfaces[0]["closed"], false);
}

TEST_F(ShowFilters, PoliciesHaveTheInterfacesThatApplyThem) {
  EXPECT_EQ(shown("show policies"),
            "  NETWORK-INSTANCE  POLICY  TYPE           RULES  INTERFACES\n"
            "  default           edge    vrf-selection  2      e1, e2\n"
            "  red               core    vrf-selection  1      e3\n");
  EXPECT_EQ(shownJson("show policies")[1].dump(),
            R"({"networkInstance":"red","policy":"core","type":"vrf-selection","rules":1,)"
            R"("interfaces":["e3"]})");
}

TEST_F(ShowFilters, ClearCountersClearsThoseOfRulesVrfsAndDrops) {
  EventLine matched("ipv4 192.0.2.1 to 192.0.2.2 dscp 1");
  shown("route red 0.0.0.0/0 via e1");
  (void)served_.agent().forwarder().forward("e1", readPacket(matched));
  EventLine dropped("ipv4 192.0.2.1 to 192.0.2.2");
  (void)served_.agent().forwarder().forward("e3", readPacket(dropped));
  const OrderedJson before = shownJson("show counters");
  EXPECT_EQ(before["rules"][0]["packets"], 1);
  EXPECT_EQ(before["vrfs"].size(), 1U);
  EXPECT_EQ(before["drops"].size(), 1U);
  EXPECT_EQ(shown("clear counters"), "all counters are 0\n");
  const OrderedJson after = shownJson("show counters");
  EXPECT_EQ(after["rules"][0]["packets"], 0);
  EXPECT_EQ(after["vrfs"].size(), 0U);
  EXPECT_EQ(after["drops"].size(), 0U);
}

}  // namespace
}  // namespace ZelAgent
