#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <set>
#include <vector>

#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"
#include "testing/RandomSeed.h"

namespace ZelVrfSelectionPolicy {
namespace {

using PolicyMap::ActionType;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

VrfAction action(const L3::VrfName& vrfName, const L3::VrfName& fallback,
                 const L3::VrfName& postDecap) {
  VrfAction made(vrfName, ActionType::decapVrf);
  made.fallbackVrfNameIs(fallback);
  made.postDecapVrfNameIs(postDecap);
  return made;
}

// A copy of the next action; nothing at the end.
std::optional<VrfAction> nextOf(VrfHwStatus::ActionsNaming& actions) {
  return actions.advance() ? std::optional(actions.action()) : std::nullopt;
}

bool names(const VrfAction& action, const L3::VrfName& vrfName) {
  return action.vrfName() == vrfName || action.fallbackVrfName() == vrfName ||
         action.postDecapVrfName() == vrfName;
}

std::vector<VrfAction> walked(const Mox::Ptr<VrfHwStatus>& table, const L3::VrfName& vrfName) {
  std::vector<VrfAction> found;
  VrfHwStatus::ActionsNaming actions(table, vrfName);
  while (const auto next = nextOf(actions))
    found.push_back(*next);
  EXPECT_EQ(nextOf(actions), std::nullopt) << "the end stays the end";
  return found;
}

class ActionsNaming : public ::testing::Test {
 protected:
  void has(const std::vector<VrfAction>& actions) {
    for (const VrfAction& each : actions)
      table_->hwStatusIs(each, HwStatus());
  }

  const VrfAction asVrf_ = action("red", "", "x");
  const VrfAction asFallback_ = action("x", "red", "x");
  const VrfAction asPostDecap_ = action("x", "", "red");
  const VrfAction notAtAll_ = action("x", "y", "redder");
  Mox::Ptr<VrfHwStatus> table_ = vrfHwStatusFactory();
};

TEST_F(ActionsNaming, FindsAVrfInEachField) {
  has({asVrf_, asFallback_, asPostDecap_, notAtAll_});
  EXPECT_THAT(walked(table_, "red"), UnorderedElementsAre(asVrf_, asFallback_, asPostDecap_));
}

TEST_F(ActionsNaming, GivesAnActionThatNamesTheVrfInSeveralFieldsOnce) {
  const std::vector<VrfAction> several{action("red", "red", ""), action("red", "", "red"),
                                       action("", "red", "red"), action("red", "red", "red")};
  has(several);
  EXPECT_THAT(walked(table_, "red"), ::testing::UnorderedElementsAreArray(several));
}

TEST_F(ActionsNaming, TakesTheEmptyNameForANameLikeAnyOther) {
  const VrfAction full = action("a", "b", "c");
  has({asVrf_, asFallback_, asPostDecap_, full});
  EXPECT_THAT(walked(table_, ""), UnorderedElementsAre(asVrf_, asPostDecap_));
}

TEST_F(ActionsNaming, FindsNothingForAVrfThatNobodyNames) {
  EXPECT_THAT(walked(table_, "red"), IsEmpty());
  has({notAtAll_});
  EXPECT_THAT(walked(table_, "red"), IsEmpty());
}

TEST_F(ActionsNaming, DoesNotFindWhatWasDeletedOrCleared) {
  has({asVrf_, asFallback_});
  table_->hwStatusDel(asVrf_);
  EXPECT_THAT(walked(table_, "red"), ElementsAre(asFallback_));
  table_->hwStatusDelAll();
  EXPECT_THAT(walked(table_, "red"), IsEmpty());
  has({asVrf_});
  EXPECT_THAT(walked(table_, "red"), ElementsAre(asVrf_));
}

TEST_F(ActionsNaming, AChangedStatusLeavesTheActionFoundOnce) {
  has({asVrf_});
  HwStatus changed;
  changed.failureDescriptionIs("why");
  table_->hwStatusIs(asVrf_, changed);
  EXPECT_THAT(walked(table_, "red"), ElementsAre(asVrf_));
}

TEST_F(ActionsNaming, SurvivesDeletionOfTheActionJustGiven) {
  has({asVrf_, asFallback_, asPostDecap_});
  VrfHwStatus::ActionsNaming actions(table_, "red");
  std::vector<VrfAction> found;
  while (const auto next = nextOf(actions)) {
    found.push_back(*next);
    table_->hwStatusDel(*next);
  }
  EXPECT_THAT(found, UnorderedElementsAre(asVrf_, asFallback_, asPostDecap_));
}

TEST_F(ActionsNaming, PassesOverActionsThatWereDeletedBeforeTheirTurn) {
  has({asVrf_, asFallback_, asPostDecap_});
  VrfHwStatus::ActionsNaming actions(table_, "red");
  const auto first = nextOf(actions);
  ASSERT_TRUE(first);
  for (const VrfAction& each : {asVrf_, asFallback_, asPostDecap_}) {
    if (!(each == *first)) table_->hwStatusDel(each);
  }
  EXPECT_EQ(nextOf(actions), std::nullopt);
}

TEST_F(ActionsNaming, PassesOverActionsThatCameMeanwhile) {
  has({asVrf_, asFallback_});
  VrfHwStatus::ActionsNaming actions(table_, "red");
  std::vector<VrfAction> found;
  while (const auto next = nextOf(actions)) {
    found.push_back(*next);
    has({action("red", "new", std::to_string(found.size())), asPostDecap_});
  }
  EXPECT_THAT(found, UnorderedElementsAre(asVrf_, asFallback_));
}

TEST_F(ActionsNaming, EndsWhenTheTableIsCleared) {
  has({asVrf_, asFallback_, asPostDecap_});
  VrfHwStatus::ActionsNaming actions(table_, "red");
  ASSERT_TRUE(nextOf(actions));
  table_->hwStatusDelAll();
  has({asVrf_, asFallback_});
  EXPECT_EQ(nextOf(actions), std::nullopt);
}

TEST_F(ActionsNaming, HoldsTheTable) {
  has({asVrf_});
  VrfHwStatus::ActionsNaming actions(table_, "red");
  table_ = nullptr;
  EXPECT_EQ(nextOf(actions), asVrf_);
  EXPECT_EQ(nextOf(actions), std::nullopt);
}

/// Random changes of a table under random walks over it, nested ones included; every walk is
/// compared with what plain scans of the table say that it may and must give.
class RandomWalks {
 public:
  explicit RandomWalks(std::uint32_t seed) : random_(seed) {}

  void run(unsigned walks) {
    for (unsigned i = 0; i < walks && !::testing::Test::HasFailure(); ++i) {
      for (std::size_t changes = below(8); changes != 0; --changes)
        change();
      walk(0);
    }
  }

 private:
  using Actions = std::set<VrfAction>;

  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }
  L3::VrfName name() {
    static const std::vector<L3::VrfName> few{"", "default", "red", "blue", "green"};
    return few[below(few.size())];
  }

  Actions scan(const L3::VrfName& vrfName) const {
    Actions found;
    for (auto entry = table_->hwStatus().iterator(); entry; ++entry) {
      if (names(entry.key(), vrfName)) found.insert(entry.key());
    }
    return found;
  }

  void change() {
    const std::size_t kind = below(100);
    const VrfAction changed = action(name(), name(), name());
    if (kind == 0) {
      for (Actions* due : dueOfWalks_)
        due->clear();
      table_->hwStatusDelAll();
    } else if (kind < 50) {
      table_->hwStatusIs(changed, HwStatus());
    } else {
      for (Actions* due : dueOfWalks_)
        due->erase(changed);
      table_->hwStatusDel(changed);
    }
  }

  // What is due is what was there at the start, has not been given and has not been removed.
  void walk(unsigned depth) {
    const L3::VrfName vrfName = name();
    Actions due = scan(vrfName);
    dueOfWalks_.push_back(&due);
    VrfHwStatus::ActionsNaming actions(table_, vrfName);
    while (const auto next = nextOf(actions)) {
      EXPECT_EQ(due.erase(*next), 1U) << *next << " was given, but not due";
      EXPECT_TRUE(table_->hwStatusHas(*next)) << *next;
      if (depth < 2 && below(4) == 0) walk(depth + 1);
      for (std::size_t changes = below(4); changes != 0; --changes)
        change();
    }
    EXPECT_THAT(due, IsEmpty()) << "not given";
    dueOfWalks_.pop_back();
  }

  Mox::Ptr<VrfHwStatus> table_ = vrfHwStatusFactory();
  std::mt19937 random_;
  std::vector<Actions*> dueOfWalks_;
};

TEST(ActionsNamingAtRandom, GivesExactlyWhatAPlainScanFinds) {
  const Testing::RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomWalks(seed.value()).run(3000);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
