#include "agent/model/policies/VrfActions.h"

#include <gtest/gtest.h>

namespace ZelAgent {
namespace {

using PolicyMap::ActionType;

Configuration configurationOf(std::vector<Rule> rules, std::vector<PolicyBinding> bindings) {
  NetworkInstance instance;
  instance.name = defaultVrfName;
  instance.policies = {{"P", std::move(rules)}};
  instance.policyBindings = std::move(bindings);
  return {{instance}};
}

TEST(VrfActions, CountsEachPairOfInterfaceAndRule) {
  const ActionUsers users = usersOfActions(
      configurationOf({{10, {}, LookUp{"red"}}, {20, {}, LookUp{"blue"}}, {30, {}, LookUp{"red"}}},
                      {{"e1", "P"}, {"e2", "P"}}));
  const ActionUsers expected = {{VrfAction("red", ActionType::vrf),
                                 {{"e1", "default", "P", 10},
                                  {"e1", "default", "P", 30},
                                  {"e2", "default", "P", 10},
                                  {"e2", "default", "P", 30}}},
                                {VrfAction("blue", ActionType::vrf),
                                 {{"e1", "default", "P", 20}, {"e2", "default", "P", 20}}}};
  EXPECT_EQ(users, expected);
}

TEST(VrfActions, TheKindOfActionTellsActionsOfOneVrfApart) {
  VrfAction decap("red", ActionType::decapVrf);
  decap.fallbackVrfNameIs("blue");
  decap.postDecapVrfNameIs("default");
  const ActionUsers users = usersOfActions(configurationOf(
      {{1, {}, LookUp{"red"}}, {2, {}, Decapsulate{"red", "blue", "default"}}}, {{"e1", "P"}}));
  const ActionUsers expected = {{VrfAction("red", ActionType::vrf), {{"e1", "default", "P", 1}}},
                                {decap, {{"e1", "default", "P", 2}}}};
  EXPECT_EQ(users, expected);
}

TEST(VrfActions, RulesWithoutAVrfActionHaveNoUsers) {
  EXPECT_EQ(
      usersOfActions(configurationOf({{1, {}, Discard{}}, {2, {}, NoAction{}}}, {{"e1", "P"}})),
      ActionUsers{});
}

TEST(VrfActions, BothPoliciesOfAnInterfaceUseTheirActions) {
  Configuration configuration = configurationOf({{1, {}, LookUp{"red"}}}, {{"e1", "P", "Q"}});
  configuration.networkInstances[0].policies.push_back(
      {"Q", {{1, {}, LookUp{"red"}}}, PolicyType::forwarding});
  const ActionUsers expected = {
      {VrfAction("red", ActionType::vrf), {{"e1", "default", "P", 1}, {"e1", "default", "Q", 1}}}};
  EXPECT_EQ(usersOfActions(configuration), expected);
}

TEST(VrfActions, PoliciesThatAreNotAppliedHaveNoUsers) {
  EXPECT_EQ(usersOfActions(configurationOf({{1, {}, LookUp{"red"}}}, {})), ActionUsers{});
  EXPECT_EQ(usersOfActions(configurationOf({{1, {}, LookUp{"red"}}}, {{"e1", ""}})), ActionUsers{});
}

TEST(VrfActions, PoliciesOfOneIdInTwoInstancesAreDifferentPolicies) {
  Configuration configuration = configurationOf({{1, {}, LookUp{"red"}}}, {{"e1", "P"}});
  configuration.networkInstances.push_back(configuration.networkInstances[0]);
  configuration.networkInstances[1].name = "red";
  configuration.networkInstances[1].policyBindings = {{"e2", "P"}};
  EXPECT_EQ(usersOfActions(configuration),
            (ActionUsers{{VrfAction("red", ActionType::vrf),
                          {{"e1", "default", "P", 1}, {"e2", "red", "P", 1}}}}));
}

TEST(VrfActions, TwoInterfacesWithThreeRulesIntoOneVrfMakeSixUsers) {
  const ActionUsers users = usersOfActions(
      configurationOf({{1, {}, LookUp{"red"}}, {2, {}, LookUp{"red"}}, {3, {}, LookUp{"red"}}},
                      {{"e1", "P"}, {"e2", "P"}}));
  ASSERT_EQ(users.size(), 1U);
  EXPECT_EQ(users.begin()->second.size(), 6U);
}

}  // namespace
}  // namespace ZelAgent
