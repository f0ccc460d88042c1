#include "TrafficPolicy/RuleListChange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "FewestSteps.h"
#include "NamedRules.h"
#include "testing/RandomSeed.h"

namespace TrafficPolicy {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr std::size_t none = RuleListChange::none;

RuleListChange changeOf(std::string_view before, std::string_view after) {
  return changeOfRules(rulesNamed(before), rulesNamed(after));
}

std::size_t stepsOf(const RuleListChange& change) {
  std::size_t steps = change.stays.size();
  for (const std::size_t from : change.from) {
    if (from == none) {
      ++steps;
    } else if (change.stays[from]) {
      --steps;  // it is not removed, and not moved
    }
  }
  return steps;
}

// That each rule comes from an equal one, none from the same, and that what stays is in order.
void expectSound(const RuleListChange& change, const Rules& before, const Rules& after) {
  ASSERT_EQ(change.from.size(), after.size());
  ASSERT_EQ(change.stays.size(), before.size());
  std::vector<bool> used(before.size(), false);
  std::size_t staying = 0;
  std::size_t lastStaying = none;
  for (std::size_t at = 0; at < after.size(); ++at) {
    const std::size_t from = change.from[at];
    if (from == none) continue;
    ASSERT_LT(from, before.size());
    EXPECT_EQ(before[from], after[at]);
    EXPECT_FALSE(used[from]);
    used[from] = true;
    if (!change.stays[from]) continue;
    EXPECT_TRUE(lastStaying == none || lastStaying < from);
    lastStaying = from;
    ++staying;
  }
  EXPECT_EQ(std::count(change.stays.begin(), change.stays.end(), true), staying)
      << "what stays is in both lists";
}

TEST(RuleListChange, OfEmptyListsIsEmpty) {
  const RuleListChange change = changeOf("", "");
  EXPECT_THAT(change.from, IsEmpty());
  EXPECT_THAT(change.stays, IsEmpty());
}

TEST(RuleListChange, OfEqualListsLetsEverythingStay) {
  const RuleListChange change = changeOf("abc", "abc");
  EXPECT_THAT(change.from, ElementsAre(0, 1, 2));
  EXPECT_THAT(change.stays, ElementsAre(true, true, true));
}

TEST(RuleListChange, FromAnEmptyListAddsEverything) {
  const RuleListChange change = changeOf("", "ab");
  EXPECT_THAT(change.from, ElementsAre(none, none));
  EXPECT_THAT(change.stays, IsEmpty());
}

TEST(RuleListChange, ToAnEmptyListLetsNothingStay) {
  const RuleListChange change = changeOf("ab", "");
  EXPECT_THAT(change.from, IsEmpty());
  EXPECT_THAT(change.stays, ElementsAre(false, false));
}

TEST(RuleListChange, OfASwapMovesOne) {
  const RuleListChange change = changeOf("ab", "ba");
  EXPECT_THAT(change.from, ElementsAre(1, 0));
  EXPECT_EQ(std::count(change.stays.begin(), change.stays.end(), true), 1);
}

TEST(RuleListChange, OfTheLastOneToTheFrontMovesThatOne) {
  const RuleListChange change = changeOf("abcd", "dabc");
  EXPECT_THAT(change.from, ElementsAre(3, 0, 1, 2));
  EXPECT_THAT(change.stays, ElementsAre(true, true, true, false));
}

TEST(RuleListChange, OfTheFirstOneToTheEndMovesThatOne) {
  const RuleListChange change = changeOf("abcd", "bcda");
  EXPECT_THAT(change.from, ElementsAre(1, 2, 3, 0));
  EXPECT_THAT(change.stays, ElementsAre(false, true, true, true));
}

TEST(RuleListChange, OfOneThatIsReplacedAddsAndRemovesIt) {
  const RuleListChange change = changeOf("abc", "axc");
  EXPECT_THAT(change.from, ElementsAre(0, none, 2));
  EXPECT_THAT(change.stays, ElementsAre(true, false, true));
}

TEST(RuleListChange, OfAllThatAreReplacedAddsAndRemovesThemAll) {
  const RuleListChange change = changeOf("ab", "xyz");
  EXPECT_THAT(change.from, ElementsAre(none, none, none));
  EXPECT_THAT(change.stays, ElementsAre(false, false));
}

TEST(RuleListChange, OfAReversalLetsOneStay) {
  const RuleListChange change = changeOf("abcd", "dcba");
  EXPECT_THAT(change.from, ElementsAre(3, 2, 1, 0));
  EXPECT_EQ(std::count(change.stays.begin(), change.stays.end(), true), 1);
}

TEST(RuleListChange, OfOneThatIsDoubledAddsOne) {
  EXPECT_EQ(stepsOf(changeOf("a", "aa")), 1U);
  EXPECT_EQ(stepsOf(changeOf("aba", "abaa")), 1U);
}

TEST(RuleListChange, OfADoubleThatIsDroppedRemovesOne) {
  EXPECT_EQ(stepsOf(changeOf("aaa", "aa")), 1U);
  EXPECT_EQ(stepsOf(changeOf("abab", "bab")), 1U);
}

TEST(RuleListChange, MovesADoubleRatherThanReplacingIt) {
  EXPECT_EQ(stepsOf(changeOf("aab", "aba")), 1U);
  EXPECT_EQ(stepsOf(changeOf("abcabc", "aabbcc")),
            fewestSteps(rulesNamed("abcabc"), rulesNamed("aabbcc")));
}

TEST(RuleListChange, TellsRulesApartByEveryField) {
  using PolicyMap::AclRule;
  const AclRule plain = ruleNamed("a");
  std::vector<AclRule> others(8, plain);
  std::vector<PolicyMap::AclMatch> matches(5);
  matches[0].family = Ip::Family::v4;
  matches[1].protocol = 0;
  matches[2].dscps = 1;
  matches[3].source = Ip::Prefix{};
  matches[4].sourcePorts = {{1, 2}};
  for (std::size_t at = 0; at < matches.size(); ++at)
    others[at].match = matches[at];
  others[5].action.type = PolicyMap::ActionType::decapVrf;
  others[6].action.fallbackVrfName = "b";
  others[7].action.postDecapVrfName = "b";
  for (const AclRule& other : others) {
    const RuleListChange change =
        changeOfRules(std::vector<AclRule>{plain}, std::vector<AclRule>{other});
    EXPECT_THAT(change.from, ElementsAre(none));
    EXPECT_THAT(change.stays, ElementsAre(false));
  }
}

// In place.

// The rule of VRF `vrf` for packets of DSCP `dscp`.
PolicyMap::AclRule ruleOnDscp(unsigned dscp, const char* vrf) {
  PolicyMap::AclRule rule = ruleNamed(vrf);
  PolicyMap::AclMatch match;
  match.dscps = std::uint64_t{1} << dscp;
  rule.match = match;
  return rule;
}

TEST(RuleListChangeInPlace, KeepsThePlaceOfARuleWithAnotherAction) {
  const Rules before{ruleOnDscp(1, "a"), ruleOnDscp(2, "b")};
  const Rules after{ruleOnDscp(1, "a"), ruleOnDscp(2, "c"), ruleOnDscp(3, "c")};
  const RuleListChange change = changeOfRulesInPlace(before, after);
  EXPECT_THAT(change.from, ElementsAre(0, 1, none));
  EXPECT_THAT(change.stays, ElementsAre(true, true));
}

TEST(RuleListChangeInPlace, MovesARuleOnlyIfItsActionIsTheSame) {
  const Rules before{ruleOnDscp(1, "a"), ruleOnDscp(2, "b"), ruleOnDscp(3, "c")};
  const Rules moved{ruleOnDscp(3, "c"), ruleOnDscp(1, "a"), ruleOnDscp(2, "x")};
  EXPECT_THAT(changeOfRulesInPlace(before, moved).from, ElementsAre(2, 0, 1));
  EXPECT_THAT(changeOfRulesInPlace(before, moved).stays, ElementsAre(true, true, false));
  const Rules changed{ruleOnDscp(3, "x"), ruleOnDscp(1, "a"), ruleOnDscp(2, "b")};
  EXPECT_THAT(changeOfRulesInPlace(before, changed).from, ElementsAre(none, 0, 1));
}

// By trying everything: how many steps it takes from one list to each other one that is not longer
// than `longest`.
std::map<std::string, std::size_t> stepsFrom(const std::string& start, std::size_t longest) {
  std::map<std::string, std::size_t> steps{{start, 0}};
  std::vector<std::string> reached{start};
  const auto reach = [&](const std::string& list, std::size_t after) {
    if (steps.emplace(list, after).second) reached.push_back(list);
  };
  for (std::size_t next = 0; next < reached.size(); ++next) {
    const std::string list = reached[next];
    const std::size_t after = steps[list] + 1;
    for (std::size_t at = 0; at < list.size(); ++at) {
      std::string rest = list;
      rest.erase(at, 1);
      reach(rest, after);
      for (std::size_t to = 0; to <= rest.size(); ++to)
        reach(std::string(rest).insert(to, 1, list[at]), after);
    }
    if (list.size() == longest) continue;
    for (const char added : {'a', 'b', 'c'}) {
      for (std::size_t to = 0; to <= list.size(); ++to)
        reach(std::string(list).insert(to, 1, added), after);
    }
  }
  return steps;
}

TEST(RuleListChange, IsTheShortestWayBetweenAllShortLists) {
  constexpr std::size_t longest = 3;
  for (const auto& [before, ignored] : stepsFrom("", longest)) {
    for (const auto& [after, steps] : stepsFrom(before, longest + 1)) {
      if (after.size() > longest) continue;
      const RuleListChange change = changeOf(before, after);
      ASSERT_EQ(stepsOf(change), steps) << before << " to " << after;
      ASSERT_EQ(fewestSteps(rulesNamed(before), rulesNamed(after)), steps);
      expectSound(change, rulesNamed(before), rulesNamed(after));
    }
  }
}

class RandomRuleListChange : public ::testing::Test {
 protected:
  std::size_t upTo(std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(0, most)(random_);
  }
  // A list of `length` out of `kinds` kinds of rules.
  Rules anyList(std::size_t length, std::size_t kinds) {
    Rules rules;
    while (rules.size() < length)
      rules.push_back(ruleNamed("vrf" + std::to_string(upTo(kinds - 1))));
    return rules;
  }
  // A list of different rules.
  Rules anyOrder(std::size_t length, std::size_t kinds) {
    Rules rules;
    for (std::size_t kind = 0; kind < kinds; ++kind)
      rules.push_back(ruleNamed("vrf" + std::to_string(kind)));
    std::shuffle(rules.begin(), rules.end(), random_);
    rules.resize(length);
    return rules;
  }
  static void expectFewestSteps(const Rules& before, const Rules& after) {
    const RuleListChange change = changeOfRules(before, after);
    expectSound(change, before, after);
    EXPECT_EQ(stepsOf(change), fewestSteps(before, after));
  }

  const RandomSeed seed_;
  const ::testing::ScopedTrace trace_{__FILE__, __LINE__, seed_.replay()};
  std::mt19937 random_{seed_.value()};
};

TEST_F(RandomRuleListChange, TakesTheFewestStepsBetweenListsOfDifferentRules) {
  for (unsigned round = 0; round < 300 && !HasFailure(); ++round) {
    const std::size_t kinds = 1 + upTo(40);
    expectFewestSteps(anyOrder(upTo(kinds), kinds), anyOrder(upTo(kinds), kinds));
  }
}

TEST_F(RandomRuleListChange, TakesTheFewestStepsBetweenListsWithRepeatedRules) {
  for (unsigned round = 0; round < 300 && !HasFailure(); ++round) {
    const std::size_t kinds = 1 + upTo(12);
    expectFewestSteps(anyList(upTo(32), kinds), anyList(upTo(32), kinds));
  }
}

TEST_F(RandomRuleListChange, TakesTheFewestStepsWhileTheOldListHoldsNoRuleMoreThan32Times) {
  for (unsigned round = 0; round < 20 && !HasFailure(); ++round) {
    Rules before = anyList(31, 1);
    const Rules others = anyOrder(20, 20);
    before.insert(before.end(), others.begin() + 1, others.end());
    std::shuffle(before.begin(), before.end(), random_);
    expectFewestSteps(before, anyList(upTo(100), 1 + upTo(5)));
  }
}

TEST_F(RandomRuleListChange, IsSoundAlsoWhereAStepMoreMayBeTaken) {
  for (unsigned round = 0; round < 20 && !HasFailure(); ++round) {
    const Rules before = anyList(300, 1 + upTo(2));
    const Rules after = anyList(upTo(300), 1 + upTo(2));
    const RuleListChange change = changeOfRules(before, after);
    expectSound(change, before, after);
    std::size_t additions = 0;
    for (const std::size_t from : change.from)
      additions += from == none ? 1 : 0;
    EXPECT_EQ(additions, after.size() - commonRules(before, after)) << "nothing is added in vain";
  }
}

TEST_F(RandomRuleListChange, OfALongListIsFoundByLookingAtWhatDiffers) {
  Rules before;
  for (unsigned number = 0; number < 10000; ++number)
    before.push_back(ruleNamed("vrf" + std::to_string(number)));
  Rules after = before;
  std::rotate(after.begin() + 5000, after.begin() + 9999, after.end());
  after[3] = ruleNamed("new");
  const RuleListChange change = changeOfRules(before, after);
  expectSound(change, before, after);
  EXPECT_EQ(stepsOf(change), 3U) << "an addition, a removal and a move";
}

}  // namespace
}  // namespace TrafficPolicy
