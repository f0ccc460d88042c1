#include "TrafficPolicy/RuleProgrammer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "FewestSteps.h"
#include "NamedRules.h"
#include "testing/RandomSeed.h"
#include "testing/RecordingAclHelper.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ZelVrfSelectionPolicy::Testing::Journal;
using ZelVrfSelectionPolicy::Testing::RandomSeed;
using ZelVrfSelectionPolicy::Testing::RecordingAclHelper;

const AclResult accepted{true, ""};

// The result of a list that was refused for that reason.
AclResult keptFor(const std::string& reason) {
  return {false, reason + "; the previous rules stay in force"};
}

// A rule for each letter, with a match of its own. Upper and lower case have the same match.
Rules rulesByMatch(std::string_view letters) {
  Rules rules = rulesNamed(letters);
  for (AclRule& rule : rules) {
    const char letter = rule.action.vrfName.str().front();
    PolicyMap::AclMatch match;
    match.family = Ip::Family::v4;
    match.protocol = static_cast<std::uint8_t>((letter & ~0x20) - 'A');
    rule.match = match;
  }
  return rules;
}

RuleList listOf(const char* intf, const Rules& rules) {
  return {intf, std::make_shared<const Rules>(rules), {}};
}

class RuleProgrammer : public ::testing::Test {
 protected:
  AclResult program(const Rules& wanted) {
    std::vector<RuleList> lists{listOf("eth1", wanted)};
    isDifferent_ = programRules(*hardware_, lists).isDifferent;
    return lists[0].result;
  }
  /// The rules of two interfaces that changed together.
  std::vector<RuleList> program(std::string_view onEth1, std::string_view onEth2) {
    std::vector<RuleList> lists{listOf("eth1", rulesNamed(onEth1)),
                                listOf("eth2", rulesNamed(onEth2))};
    isDifferent_ = programRules(*hardware_, lists).isDifferent;
    return lists;
  }
  AclResult program(std::string_view wanted) { return program(rulesNamed(wanted)); }
  std::string held() { return namesOf(hardware_->held("eth1")); }
  /// Begins with these rules and an empty journal.
  void beginWith(std::string_view letters) {
    static_cast<void>(program(letters));
    static_cast<void>(journal_.take());
  }
  void refuse(const std::string& letters) {
    hardware_->onAdd = [letters](const Velo::String&, const AclRule& rule) {
      const bool refused = letters.find(rule.action.vrfName.str()) != std::string::npos;
      return refused ? AclResult{false, "refused"} : accepted;
    };
  }

  bool isDifferent_ = false;  // what the last programming gave
  Journal journal_;
  Mox::Ptr<RecordingAclHelper> hardware_ = Mox::makePtr<RecordingAclHelper>(journal_);
};

TEST_F(RuleProgrammer, AddsTheRulesOfAnEmptyListFromTheFirstOn) {
  EXPECT_EQ(program("ab"), accepted);
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 0 any->a", "addRule eth1 1 any->b"));
  EXPECT_EQ(held(), "ab");
}

TEST_F(RuleProgrammer, DoesNothingWhereNothingDiffers) {
  beginWith("abc");
  EXPECT_EQ(program("abc"), accepted);
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(RuleProgrammer, RemovesFromTheLastOn) {
  beginWith("abc");
  EXPECT_EQ(program(""), accepted);
  EXPECT_THAT(journal_.lines(), ElementsAre("removeRule eth1 2 any->c", "removeRule eth1 1 any->b",
                                            "removeRule eth1 0 any->a"));
  EXPECT_THAT(hardware_->intfs(), IsEmpty());
}

TEST_F(RuleProgrammer, TouchesNoOtherInterface) {
  program("", "xy");
  beginWith("ab");
  program("c");
  EXPECT_EQ(namesOf(hardware_->held("eth2")), "xy");
  EXPECT_EQ(held(), "c");
}

TEST_F(RuleProgrammer, AddsAndMovesBeforeItRemoves) {
  beginWith("abcd");
  program("dxb");
  EXPECT_EQ(held(), "dxb");
  const std::vector<std::string> lines = journal_.take();
  const auto isRemoval = [](const std::string& line) { return line.starts_with("removeRule"); };
  EXPECT_TRUE(std::is_partitioned(lines.begin(), lines.end(),
                                  [&](const std::string& line) { return !isRemoval(line); }));
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isRemoval), 2);
  EXPECT_EQ(lines.size(), 4U);
}

TEST_F(RuleProgrammer, ReplacesByAnAdditionAndARemoval) {
  beginWith("abc");
  program("axc");
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 2 any->x", "removeRule eth1 1 any->b"));
}

TEST_F(RuleProgrammer, MovesTheLastOneToTheFrontByOneCall) {
  beginWith("abcd");
  program("dabc");
  EXPECT_THAT(journal_.lines(), ElementsAre("moveRule eth1 3 0 any->d"));
  EXPECT_EQ(held(), "dabc");
}

TEST_F(RuleProgrammer, MovesTheFirstOneToTheEndByOneCall) {
  beginWith("abcd");
  program("bcda");
  EXPECT_THAT(journal_.lines(), ElementsAre("moveRule eth1 0 3 any->a"));
  EXPECT_EQ(held(), "bcda");
}

TEST_F(RuleProgrammer, SwapsByOneCall) {
  beginWith("ab");
  program("ba");
  EXPECT_EQ(journal_.lines().size(), 1U);
  EXPECT_EQ(held(), "ba");
}

TEST_F(RuleProgrammer, AddsAndMovesOnEveryInterfaceBeforeItRemovesOnAny) {
  program("ab", "cd");
  static_cast<void>(journal_.take());
  program("bx", "dyc");
  EXPECT_THAT(journal_.take(), ElementsAre("addRule eth1 2 any->x", "moveRule eth2 1 0 any->d",
                                           "addRule eth2 1 any->y", "removeRule eth1 0 any->a"));
  EXPECT_EQ(held(), "bx");
  EXPECT_EQ(namesOf(hardware_->held("eth2")), "dyc");
}

TEST_F(RuleProgrammer, TellsWhetherAnythingWasDifferent) {
  program("ab");
  EXPECT_TRUE(isDifferent_);
  program("ab");
  EXPECT_FALSE(isDifferent_);
  program("ba");
  EXPECT_TRUE(isDifferent_);
  program("b");
  EXPECT_TRUE(isDifferent_);
  refuse("x");
  program("bx");
  EXPECT_TRUE(isDifferent_) << "although it was refused";
  program("b", "");
  EXPECT_FALSE(isDifferent_);
  program("b", "c");
  EXPECT_TRUE(isDifferent_);
}

// Refusals.

TEST_F(RuleProgrammer, AddsAllRulesOrNone) {
  beginWith("d");
  refuse("b");
  EXPECT_EQ(program("dabc"), keptFor("refused"));
  EXPECT_EQ(held(), "d");
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 1 any->a", "addRule eth1 2 any->b",
                                            "removeRule eth1 1 any->a"));
}

TEST_F(RuleProgrammer, UndoesMovesInTheOppositeOrder) {
  program(rulesByMatch("abcd"));
  static_cast<void>(journal_.take());
  refuse("x");
  EXPECT_EQ(program(rulesByMatch("dcabx")), keptFor("refused"));
  EXPECT_EQ(held(), "abcd");
  EXPECT_THAT(
      journal_.lines(),
      ElementsAre("moveRule eth1 3 0 v4,protocol=3->d", "moveRule eth1 3 1 v4,protocol=2->c",
                  "addRule eth1 4 v4,protocol=23->x", "moveRule eth1 1 3 v4,protocol=2->c",
                  "moveRule eth1 0 3 v4,protocol=3->d"));
}

TEST_F(RuleProgrammer, AsksForNothingTwiceWhereNothingWasRemoved) {
  refuse("ab");
  program("ab");
  EXPECT_THAT(journal_.take(), ElementsAre("addRule eth1 0 any->a", "close eth1"));
}

TEST_F(RuleProgrammer, KeepsTheOldRulesWhereBothDoNotFit) {
  hardware_->capacity = 2;
  beginWith("ab");
  EXPECT_EQ(program(rulesByMatch("xy")), keptFor("no room for more than 2"));
  EXPECT_EQ(held(), "ab");
}

TEST_F(RuleProgrammer, UsesTheRoomThatTheRemovalsOnAnotherInterfaceMake) {
  hardware_->capacity = 3;
  program("a", "bc");
  const std::vector<RuleList> lists = program("axy", "");
  EXPECT_EQ(lists[0].result, accepted);
  EXPECT_EQ(held(), "axy");
}

TEST_F(RuleProgrammer, AsksAgainAfterTheRemovalsOfAnInterfaceThatWasAskedAgainItself) {
  const auto threeListsOf = [](const char* eth1, const char* eth2, const char* eth3) {
    return std::vector<RuleList>{listOf("eth1", rulesByMatch(eth1)),
                                 listOf("eth2", rulesByMatch(eth2)),
                                 listOf("eth3", rulesByMatch(eth3))};
  };
  hardware_->capacity = 5;
  std::vector<RuleList> lists = threeListsOf("a", "bcd", "f");
  programRules(*hardware_, lists);
  // There is room for eth1 only after eth2 has changed, and for eth2 only after eth3 has.
  lists = threeListsOf("axy", "e", "");
  EXPECT_TRUE(programRules(*hardware_, lists).madeRoom);
  EXPECT_EQ(held(), "axy");
  EXPECT_EQ(namesOf(hardware_->held("eth2")), "e");
  EXPECT_EQ(lists[0].result, accepted);
}

TEST_F(RuleProgrammer, LeavesOtherInterfacesAloneWhileOneIsRefused) {
  program("a", "b");
  refuse("x");
  const std::vector<RuleList> lists = program("ax", "by");
  EXPECT_EQ(lists[0].result, keptFor("refused"));
  EXPECT_EQ(lists[1].result, accepted);
  EXPECT_EQ(held(), "a");
  EXPECT_EQ(namesOf(hardware_->held("eth2")), "by");
}

TEST_F(RuleProgrammer, ReplacesAnActionInPlaceWhereThereIsNoRoom) {
  hardware_->capacity = 2;
  program(rulesByMatch("ab"));
  static_cast<void>(journal_.take());
  EXPECT_EQ(program(rulesByMatch("aB")), accepted);
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 2 v4,protocol=1->B",
                                            "replaceRule eth1 1 v4,protocol=1->B"));
}

TEST_F(RuleProgrammer, ReplacesNothingIfTheRestDoesNotFit) {
  hardware_->capacity = 2;
  program(rulesByMatch("ab"));
  static_cast<void>(journal_.take());
  EXPECT_EQ(program(rulesByMatch("Abc")), keptFor("no room for more than 2"));
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 1 v4,protocol=0->A"));
}

TEST_F(RuleProgrammer, ReplacesAnActionInPlaceWhereThereIsRoomForTheRestOnly) {
  hardware_->capacity = 3;
  program(rulesByMatch("ab"));
  EXPECT_EQ(program(rulesByMatch("Abc")), accepted);
  EXPECT_EQ(held(), "Abc");
}

TEST_F(RuleProgrammer, ReplacesNothingIfAnotherInterfaceTookTheRoomForTheRest) {
  hardware_->capacity = 5;
  program(rulesByMatch("ab"));
  static_cast<void>(journal_.take());
  std::vector<RuleList> lists{listOf("eth1", rulesByMatch("ABcd")),
                              listOf("eth2", rulesNamed("xy"))};
  programRules(*hardware_, lists);
  EXPECT_EQ(held(), "ab");
  EXPECT_EQ(namesOf(hardware_->held("eth2")), "xy");
  EXPECT_THAT(journal_.lines(), Each(Not(HasSubstr("replaceRule"))));
}

TEST_F(RuleProgrammer, TakesReplacementsBackIfTheRestIsRefused) {
  program(rulesByMatch("ab"));
  static_cast<void>(journal_.take());
  refuse("c");
  EXPECT_EQ(program(rulesByMatch("Abc")), keptFor("refused"));
  EXPECT_THAT(
      journal_.lines(),
      ElementsAre("addRule eth1 1 v4,protocol=0->A", "addRule eth1 3 v4,protocol=2->c",
                  "removeRule eth1 1 v4,protocol=0->A", "replaceRule eth1 0 v4,protocol=0->A",
                  "addRule eth1 2 v4,protocol=2->c", "replaceRule eth1 0 v4,protocol=0->a"));
}

// The rule that moves is added at its new place before its old copy is removed.
TEST_F(RuleProgrammer, KeepsTheOldRulesIfThereIsNoRoomForOneThatMovesAndGetsAnotherAction) {
  hardware_->capacity = 2;
  program(rulesByMatch("ab"));
  EXPECT_EQ(program(rulesByMatch("Ba")), keptFor("no room for more than 2"));
  EXPECT_EQ(held(), "ab");
}

TEST_F(RuleProgrammer, ReportsARefusedReplacement) {
  hardware_->capacity = 2;
  program(rulesByMatch("ab"));
  hardware_->onReplace = [](const Velo::String&, const AclRule&) {
    return AclResult{false, "no such action"};
  };
  EXPECT_EQ(program(rulesByMatch("AB")), keptFor("no such action"));
  EXPECT_EQ(held(), "ab");
}

// Interfaces without rules whose rules do not fit.

TEST_F(RuleProgrammer, ClosesAnInterfaceThatHadNoRules) {
  hardware_->capacity = 1;
  const AclResult closed{false,
                         "no room for more than 1; all packets of the interface are dropped"};
  EXPECT_EQ(program("ab"), closed);
  EXPECT_THAT(journal_.take(), ElementsAre("addRule eth1 0 any->a", "addRule eth1 1 any->b",
                                           "removeRule eth1 0 any->a", "close eth1"));
  EXPECT_EQ(program("ac"), closed);
  EXPECT_TRUE(hardware_->intfClosed("eth1"));
}

TEST_F(RuleProgrammer, OpensAClosedInterfaceAfterAllRulesAreAdded) {
  hardware_->capacity = 1;
  program("ab");
  static_cast<void>(journal_.take());
  hardware_->capacity = 2;
  program("ab");
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth1 0 any->a", "addRule eth1 1 any->b", "open eth1"));
}

TEST_F(RuleProgrammer, OpensAClosedInterfaceThatIsToHaveNoRules) {
  hardware_->capacity = 1;
  program("ab");
  static_cast<void>(journal_.take());
  program("");
  EXPECT_TRUE(isDifferent_);
  EXPECT_THAT(journal_.lines(), ElementsAre("open eth1"));
}

TEST_F(RuleProgrammer, LeavesAnInterfaceOpenIfThatIsChosen) {
  hardware_->whenFullIs(PolicyMap::WhenFull::open);
  hardware_->capacity = 1;
  EXPECT_EQ(program("ab"),
            (AclResult{false, "no room for more than 1; the interface has no rules in force"}));
  EXPECT_FALSE(hardware_->intfClosed("eth1"));
  EXPECT_EQ(held(), "");
}

// A call that throws.

TEST_F(RuleProgrammer, LeavesAListThatALaterProgrammingMendsWhereverACallThrows) {
  const auto fail = [] { throw std::runtime_error("hardware lost"); };
  for (unsigned calls = 0;; ++calls) {
    hardware_ = Mox::makePtr<RecordingAclHelper>(journal_);
    beginWith("abcdef");
    unsigned left = calls;
    const auto count = [&](const Velo::String&, const AclRule&) {
      if (left-- == 0) fail();
    };
    hardware_->onAdd = [&](const Velo::String& intf, const AclRule& rule) {
      count(intf, rule);
      return accepted;
    };
    hardware_->onRemove = count;
    hardware_->onMove = count;
    bool failed = false;
    try {
      program("fxbyd");
    } catch (const std::runtime_error&) {
      failed = true;
    }
    left = 1000;
    EXPECT_EQ(program("fxbyd"), accepted);
    EXPECT_EQ(held(), "fxbyd") << calls;
    if (!failed) {
      EXPECT_EQ(calls, 6U) << "as many calls as it takes without a failure";
      break;
    }
  }
}

// At random.

class RandomRuleProgrammer : public RuleProgrammer {
 protected:
  std::size_t upTo(std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(0, most)(random_);
  }
  Rules anyList(std::size_t length, std::size_t kinds) {
    Rules rules;
    while (rules.size() < length)
      rules.push_back(ruleNamed(std::string(1, static_cast<char>('a' + upTo(kinds - 1)))));
    return rules;
  }

  const RandomSeed seed_;
  const ::testing::ScopedTrace trace_{__FILE__, __LINE__, seed_.replay()};
  std::mt19937 random_{seed_.value()};
};

TEST_F(RandomRuleProgrammer, MakesTheFewestCallsFromAnyListToAnyOther) {
  for (unsigned round = 0; round < 400 && !HasFailure(); ++round) {
    const Rules before = hardware_->held("eth1");
    const Rules after = anyList(upTo(20), 1 + upTo(20));
    EXPECT_EQ(program(after), accepted);
    EXPECT_EQ(hardware_->held("eth1"), after);
    EXPECT_EQ(journal_.take().size(), fewestSteps(before, after))
        << namesOf(before) << " to " << namesOf(after);
  }
}

}  // namespace
}  // namespace TrafficPolicy
