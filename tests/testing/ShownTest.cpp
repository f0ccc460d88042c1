#include "testing/Shown.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using PolicyMap::ActionType;

VrfAction actionOf(std::string_view vrf, std::string_view fallback, std::string_view postDecap,
                   ActionType type) {
  VrfAction action(vrf, type);
  action.fallbackVrfNameIs(fallback);
  action.postDecapVrfNameIs(postDecap);
  return action;
}

HwStatus statusOf(ProgrammingResult result, FailureCode reason, std::string_view description) {
  HwStatus status;
  status.statusIs(result);
  status.failureReasonIs(reason);
  status.failureDescriptionIs(description);
  return status;
}

TEST(ShownAction, OfTypeVrfIsItsNameAlone) {
  EXPECT_EQ(shown(actionOf("red", "", "", ActionType::vrf)), "red");
}

TEST(ShownAction, WithFurtherNamesOrAnotherTypeHasThemAll) {
  EXPECT_EQ(shown(actionOf("red", "blue", "green", ActionType::decapVrf)),
            "red>blue>green:actionDecapVrf");
  EXPECT_EQ(shown(actionOf("red", "", "", ActionType::decapVrf)), "red>>:actionDecapVrf");
  EXPECT_EQ(shown(actionOf("red", "blue", "", ActionType::vrf)), "red>blue>:actionVrf");
  EXPECT_EQ(shown(actionOf("red", "", "green", ActionType::vrf)), "red>>green:actionVrf");
}

TEST(ShownAction, DiffersForDifferentActions) {
  std::set<std::string> forms;
  for (const char* const fallback : {"", "blue"}) {
    for (const char* const postDecap : {"", "blue"}) {
      for (const ActionType type : {ActionType::none, ActionType::vrf, ActionType::decapVrf})
        forms.insert(shown(actionOf("red", fallback, postDecap, type)));
    }
  }
  EXPECT_EQ(forms.size(), 12U);
}

TEST(ShownStatus, OfADefaultRecordIsOk) {
  EXPECT_EQ(shown(HwStatus()), "ok");
}

TEST(ShownStatus, OfAFailureHasResultReasonAndQuotedDescription) {
  EXPECT_EQ(shown(statusOf(ProgrammingResult::programmingFailure,
                           FailureCode::failureVrfResourceExhausted, "no \"room\"\n")),
            "programmingFailure failureVrfResourceExhausted 'no \"room\"\\n'");
}

TEST(ShownStatus, DiffersForDifferentRecords) {
  std::set<std::string> forms;
  for (const auto result :
       {ProgrammingResult::programmedInHw, ProgrammingResult::programmingFailure}) {
    for (const auto reason :
         {FailureCode::failureVrfResourceAlloc, FailureCode::failureVrfResourceExhausted}) {
      for (const char* const description : {"", "full"})
        forms.insert(shown(statusOf(result, reason, description)));
    }
  }
  EXPECT_EQ(forms.size(), 8U);
}

TEST(ShownRule, WithoutAMatchIsAny) {
  PolicyMap::AclRule rule;
  rule.action = {ActionType::vrf, "red", "", ""};
  EXPECT_EQ(shown(rule), "any->red");
}

TEST(ShownRule, HasEveryFieldOfItsMatch) {
  PolicyMap::AclRule rule;
  PolicyMap::AclMatch match;
  match.family = Ip::Family::v4;
  match.protocol = 17;
  match.dscps = 0xff;
  match.source = Ip::Prefix{{Ip::Family::v4, {10}}, 8};
  match.destination = Ip::Prefix{{Ip::Family::v4, {192, 0, 2, 1}}, 32};
  rule.match = match;
  rule.action = {ActionType::decapVrf, "red", "blue", "green"};
  EXPECT_EQ(shown(rule),
            "v4,protocol=17,dscps=ff,source=10.0.0.0/8,destination=192.0.2.1/32"
            "->red>blue>green:actionDecapVrf");
}

TEST(ShownRule, OfIpv6HasItsAddresses) {
  PolicyMap::AclRule rule;
  PolicyMap::AclMatch match;
  match.family = Ip::Family::v6;
  match.source = Ip::Prefix{{Ip::Family::v6, {0x20, 0x01, 0x0d, 0xb8}}, 32};
  match.destination = Ip::Prefix{{Ip::Family::v6, {}}, 0};
  rule.match = match;
  rule.action = {ActionType::vrf, "red", "", ""};
  EXPECT_EQ(shown(rule), "v6,source=2001:db8::/32,destination=::/0->red");
}

TEST(ShownRule, HasPrefixSetsPortsAndFragments) {
  PolicyMap::AclMatch match;
  match.family = Ip::Family::v4;
  match.dscps = 0x10;
  match.sourceSet =
      Classification::PrefixSet{{{{Ip::Family::v4, {10}}, 8}, {{Ip::Family::v4, {192, 0, 2}}, 24}},
                                {{{Ip::Family::v4, {10, 1}}, 16}}};
  match.destinationSet = Classification::PrefixSet();
  match.hopLimit = 16;
  match.length = 100;
  match.isFragment = true;
  match.fragmentOffsets = {{0, 8191}};
  match.sourcePorts = {{80, 80}, {1000, 2000}};
  match.destinationPorts = {{443, 443}};
  match.tcpFlags = {{0x12, 0x02}, {4, 4}};
  match.matchesLaterFragments = true;
  const PolicyMap::AclRule rule{match, {ActionType::vrf, "red", "", ""}};
  EXPECT_EQ(
      shown(rule),
      "v4,dscps=10,sourceSet={10.0.0.0/8 192.0.2.0/24 !10.1.0.0/16},destinationSet={},hopLimit=16,"
      "length=100,fragment,offsets=0..8191,sourcePorts=80+1000..2000,destinationPorts=443,"
      "tcpFlags=2/12,tcpFlags=4/4,laterFragments->red");
}

TEST(ShownRule, HasPrefixSetsThatOnlyExclude) {
  PolicyMap::AclMatch match;
  match.family = Ip::Family::v4;
  match.sourceSet = Classification::PrefixSet{
      {}, {{{Ip::Family::v4, {10}}, 8}, {{Ip::Family::v4, {192, 0, 2}}, 24}}};
  const PolicyMap::AclRule rule{match, {ActionType::vrf, "red", "", ""}};
  EXPECT_EQ(shown(rule), "v4,sourceSet={!10.0.0.0/8 !192.0.2.0/24}->red");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
