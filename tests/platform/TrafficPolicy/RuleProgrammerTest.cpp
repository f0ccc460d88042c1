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
using ::testing::IsEmpty;
using ZelVrfSelectionPolicy::Testing::Journal;
using ZelVrfSelectionPolicy::Testing::RandomSeed;
using ZelVrfSelectionPolicy::Testing::RecordingAclHelper;

const AclResult accepted{true, ""};

class RuleProgrammer : public ::testing::Test {
 protected:
  std::vector<AclResult> program(const Rules& wanted) {
    std::vector<RuleList> lists{{"eth1", wanted, {}}};
    isDifferent_ = programRules(*hardware_, lists);
    return lists[0].results;
  }
  /// The rules of two interfaces that changed together.
  std::vector<RuleList> program(std::string_view onEth1, std::string_view onEth2) {
    std::vector<RuleList> lists{{"eth1", rulesNamed(onEth1), {}}, {"eth2", rulesNamed(onEth2), {}}};
    isDifferent_ = programRules(*hardware_, lists);
    return lists;
  }
  std::vector<AclResult> program(std::string_view wanted) { return program(rulesNamed(wanted)); }
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
  EXPECT_THAT(program("ab"), ElementsAre(accepted, accepted));
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 0 any->a", "addRule eth1 1 any->b"));
  EXPECT_EQ(held(), "ab");
}

TEST_F(RuleProgrammer, DoesNothingWhereNothingDiffers) {
  beginWith("abc");
  EXPECT_THAT(program("abc"), ElementsAre(accepted, accepted, accepted));
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

TEST_F(RuleProgrammer, RemovesFromTheLastOn) {
  beginWith("abc");
  EXPECT_THAT(program(""), IsEmpty());
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

TEST_F(RuleProgrammer, LeavesOutWhatIsRefusedAndTellsWhy) {
  refuse("b");
  EXPECT_THAT(program("abc"), ElementsAre(accepted, AclResult{false, "refused"}, accepted));
  EXPECT_EQ(held(), "ac");
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 0 any->a", "addRule eth1 1 any->b",
                                            "addRule eth1 1 any->c"));
}

TEST_F(RuleProgrammer, AsksForNothingTwiceWhereNothingWasRemoved) {
  refuse("ab");
  program("ab");
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 0 any->a", "addRule eth1 0 any->b"));
}

TEST_F(RuleProgrammer, AsksForTheRefusedOnceMoreAfterTheRemovals) {
  hardware_->capacity = 2;
  beginWith("ab");
  EXPECT_THAT(program("xb"), ElementsAre(accepted, accepted));
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 1 any->x", "removeRule eth1 0 any->a",
                                            "addRule eth1 0 any->x"));
  EXPECT_EQ(held(), "xb");
}

TEST_F(RuleProgrammer, UsesTheRoomThatTheRemovalsOnAnotherInterfaceMake) {
  hardware_->capacity = 3;
  program("a", "bc");
  const std::vector<RuleList> lists = program("axy", "");
  EXPECT_THAT(lists[0].results, ElementsAre(accepted, accepted, accepted));
  EXPECT_EQ(held(), "axy");
}

TEST_F(RuleProgrammer, TellsOfThoseThatAreRefusedAgain) {
  hardware_->capacity = 2;
  beginWith("ab");
  const AclResult noRoom{false, "no room for more than 2"};
  EXPECT_THAT(program("xyz"), ElementsAre(accepted, accepted, noRoom));
  EXPECT_EQ(held(), "xy");
}

TEST_F(RuleProgrammer, LeavesTheOthersInPlaceWhileOneIsRefused) {
  beginWith("abc");
  refuse("x");
  program("axbc");
  EXPECT_EQ(held(), "abc");
  EXPECT_THAT(journal_.take(), ElementsAre("addRule eth1 1 any->x"));
  hardware_->onAdd = nullptr;
  EXPECT_THAT(program("axbc"), Each(accepted));
  EXPECT_THAT(journal_.lines(), ElementsAre("addRule eth1 1 any->x"));
}

TEST_F(RuleProgrammer, MovesTheOthersWhileOneIsRefused) {
  beginWith("abc");
  refuse("x");
  program("xcab");
  EXPECT_EQ(held(), "cab");
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
    EXPECT_THAT(program("fxbyd"), Each(accepted));
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
    EXPECT_THAT(program(after), Each(accepted));
    EXPECT_EQ(hardware_->held("eth1"), after);
    EXPECT_EQ(journal_.take().size(), fewestSteps(before, after))
        << namesOf(before) << " to " << namesOf(after);
  }
}

TEST_F(RandomRuleProgrammer, HoldsWhatItTellsToBeAcceptedInItsOrder) {
  for (unsigned round = 0; round < 400 && !HasFailure(); ++round) {
    hardware_->capacity = upTo(12);
    refuse(namesOf(anyList(upTo(3), 20)));
    const Rules wanted = anyList(upTo(15), 20);
    const std::vector<AclResult> results = program(wanted);
    ASSERT_EQ(results.size(), wanted.size());
    Rules acceptedRules;
    for (std::size_t at = 0; at < wanted.size(); ++at) {
      if (results[at].accepted) acceptedRules.push_back(wanted[at]);
      EXPECT_EQ(results[at].accepted, results[at].reason.empty());
    }
    EXPECT_EQ(namesOf(hardware_->held("eth1")), namesOf(acceptedRules));
  }
}

}  // namespace
}  // namespace TrafficPolicy
