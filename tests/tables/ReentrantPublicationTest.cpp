// A first subscriber changes the table again from inside the call. Those after it are still called
// for each change, with the right key, and can read the table.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Publications.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;

/// Numbers stand for values, so that one test is for both tables.
struct Users {
  using Table = VrfHwConfig;
  static Mox::Ptr<Table> made() { return vrfHwConfigFactory(); }
  static void is(Table& table, const VrfAction& action, unsigned value) {
    table.vrfRefCountIs(action, value);
  }
  static void del(Table& table, const VrfAction& action) { table.vrfRefCountDel(action); }
  static void delAll(Table& table) { table.vrfRefCountDelAll(); }
  static bool has(const Table& table, const VrfAction& action) {
    return table.vrfRefCount().has(action);
  }
  static unsigned value(const Table& table, const VrfAction& action) {
    return table.vrfRefCount(action);
  }
};

struct Statuses {
  using Table = VrfHwStatus;
  static Mox::Ptr<Table> made() { return vrfHwStatusFactory(); }
  static void is(Table& table, const VrfAction& action, unsigned value) {
    HwStatus status;
    status.failureDescriptionIs(std::to_string(value));
    table.hwStatusIs(action, status);
  }
  static void del(Table& table, const VrfAction& action) { table.hwStatusDel(action); }
  static void delAll(Table& table) { table.hwStatusDelAll(); }
  static bool has(const Table& table, const VrfAction& action) { return table.hwStatusHas(action); }
  static unsigned value(const Table& table, const VrfAction& action) {
    const std::string text(table.hwStatus(action).failureDescription().bytes());
    return text.empty() ? 0 : static_cast<unsigned>(std::stoul(text));
  }
};

template <class Kind>
class ReentrantPublication : public ::testing::Test {
 protected:
  using Table = typename Kind::Table;
  using Work = std::function<void(const VrfAction& key)>;
  using Lines = std::vector<std::string>;

  ReentrantPublication() { later_.onPublication = reading(); }

  /// What the first subscriber does in the call of that number.
  void inCall(unsigned number, Work work) {
    first_.onPublication = [this, number, work = std::move(work)](const VrfAction& key) {
      if (++calls_ == number) work(key);
    };
  }
  void is(const VrfAction& action, unsigned value) { Kind::is(*table_, action, value); }
  void del(const VrfAction& action) { Kind::del(*table_, action); }
  void delAll() { Kind::delAll(*table_); }
  /// What the later subscriber found in the table under the key of each call.
  Lines found() { return std::exchange(found_, {}); }

  // Neither is in the list of any other action.
  const VrfAction red_{"red", PolicyMap::ActionType::vrf};
  const VrfAction blue_{"blue", PolicyMap::ActionType::vrf};
  Mox::Ptr<Table> table_ = Kind::made();
  Publications first_{*table_};
  Publications later_{*table_};

 private:
  Work reading() {
    return [this](const VrfAction& key) {
      found_.push_back(Kind::has(*table_, key) ? std::to_string(Kind::value(*table_, key))
                                               : "gone");
    };
  }

  unsigned calls_ = 0;
  Lines found_;
};

struct NameOfKind {
  template <class Kind>
  static std::string GetName(int /*index*/) {
    return std::is_same_v<Kind, Users> ? "VrfHwConfig" : "VrfHwStatus";
  }
};
using Kinds = ::testing::Types<Users, Statuses>;
TYPED_TEST_SUITE(ReentrantPublication, Kinds, NameOfKind);

TYPED_TEST(ReentrantPublication, OfAnEntryThatIsChangedAgain) {
  this->inCall(1, [this](const VrfAction& key) { this->is(key, 2); });
  this->is(this->red_, 1);
  EXPECT_THAT(this->later_.take(), ElementsAre("130 red", "130 red"));
  EXPECT_THAT(this->found(), ElementsAre("2", "2"));
}

TYPED_TEST(ReentrantPublication, OfAnEntryThatIsDeleted) {
  this->inCall(1, [this](const VrfAction& key) { this->del(key); });
  this->is(this->red_, 1);
  EXPECT_THAT(this->first_.take(), ElementsAre("130 red", "130 red"));
  EXPECT_THAT(this->later_.take(), ElementsAre("130 red", "130 red"));
  EXPECT_THAT(this->found(), ElementsAre("gone", "gone"));
}

TYPED_TEST(ReentrantPublication, OfAnEntryThatIsChangedAndThenDeleted) {
  this->is(this->red_, 1);
  static_cast<void>(this->later_.take());
  static_cast<void>(this->found());
  this->inCall(1, [this](const VrfAction& key) { this->del(key); });
  this->is(this->red_, 2);
  EXPECT_THAT(this->later_.take(), ElementsAre("130 red", "130 red"));
  EXPECT_THAT(this->found(), ElementsAre("gone", "gone"));
}

TYPED_TEST(ReentrantPublication, OfAnEntryThatIsDeletedAndMadeAnew) {
  this->inCall(1, [this](const VrfAction& key) {
    const VrfAction copy = key;
    this->del(copy);
    this->is(copy, 7);
  });
  this->is(this->red_, 1);
  EXPECT_THAT(this->later_.take(), ElementsAre("130 red", "130 red", "130 red"));
  EXPECT_THAT(this->found(), ElementsAre("gone", "7", "7"));
}

TYPED_TEST(ReentrantPublication, OfADeletionWhoseEntryIsMadeAnew) {
  this->is(this->red_, 1);
  static_cast<void>(this->later_.take());
  static_cast<void>(this->found());
  this->inCall(1, [this](const VrfAction& key) { this->is(key, 5); });
  this->del(this->red_);
  EXPECT_THAT(this->later_.take(), ElementsAre("130 red", "130 red"));
  EXPECT_THAT(this->found(), ElementsAre("5", "5"));
}

TYPED_TEST(ReentrantPublication, OfAnEntryWhoseTableIsCleared) {
  this->is(this->blue_, 3);
  static_cast<void>(this->later_.take());
  static_cast<void>(this->found());
  this->inCall(1, [this](const VrfAction&) { this->delAll(); });
  this->is(this->red_, 1);
  const auto seen = this->later_.take();
  ASSERT_EQ(seen.size(), 3U);
  EXPECT_THAT(std::vector<std::string>(seen.begin(), seen.end() - 1),
              ::testing::UnorderedElementsAre("130 red", "130 blue"));
  EXPECT_EQ(seen.back(), "130 red");
  EXPECT_EQ(this->found().back(), "gone");
}

TYPED_TEST(ReentrantPublication, OfAnEntryAmongManyThatComeAndMoveItsPlace) {
  this->inCall(1, [this](const VrfAction& key) {
    this->del(key);
    for (int i = 0; i < 1000; ++i)
      this->is(VrfAction("v" + std::to_string(i), PolicyMap::ActionType::vrf), 1);
  });
  this->is(this->red_, 1);
  const auto seen = this->later_.take();
  ASSERT_EQ(seen.size(), 1002U);
  EXPECT_EQ(seen.front(), "130 red");
  EXPECT_EQ(seen[1], "130 v0");
  EXPECT_EQ(seen[1000], "130 v999");
  EXPECT_EQ(seen.back(), "130 red");
  EXPECT_EQ(this->found().back(), "gone");
}

// A table without subscribers is cleared at once; the key of the call under way is kept even so.
TYPED_TEST(ReentrantPublication, OfAnEntryWhoseTableIsClearedWithoutSubscribers) {
  std::string keyAfterwards;
  this->inCall(1, [&](const VrfAction& key) {
    this->later_.unsubscribe();
    this->first_.unsubscribe();
    this->delAll();
    for (int i = 0; i < 100; ++i)
      this->is(VrfAction("v" + std::to_string(i), PolicyMap::ActionType::vrf), 1);
    keyAfterwards = shown(key);
  });
  this->is(this->red_, 1);
  EXPECT_EQ(keyAfterwards, "red");
  EXPECT_THAT(this->first_.take(), ElementsAre("130 red"));
  EXPECT_FALSE(TypeParam::has(*this->table_, this->red_));
}

TYPED_TEST(ReentrantPublication, OfChangesWithinChangesComeInTheirOrder) {
  this->inCall(1, [this](const VrfAction&) { this->is(this->blue_, 1); });
  this->is(this->red_, 1);
  // The inner change is complete before the outer one goes on.
  EXPECT_THAT(this->first_.take(), ElementsAre("130 red", "130 blue"));
  EXPECT_THAT(this->later_.take(), ElementsAre("130 blue", "130 red"));
  EXPECT_THAT(this->found(), ElementsAre("1", "1"));
}

// The caller's key may be that of the entry itself.
TYPED_TEST(ReentrantPublication, OfAKeyThatTheTableItselfLent) {
  this->is(this->red_, 1);
  static_cast<void>(this->later_.take());
  this->inCall(1, [this](const VrfAction& key) {
    this->del(key);
    this->is(key, 9);
    this->del(key);
  });
  this->is(this->red_, 2);
  EXPECT_THAT(this->later_.take(), ElementsAre("130 red", "130 red", "130 red", "130 red"));
  EXPECT_THAT(this->found(), ElementsAre("1", "gone", "9", "gone", "gone"));
}

TYPED_TEST(ReentrantPublication, OfATableThatTheFirstSubscriberReleases) {
  auto* const table = this->table_.get();
  bool isLaterCalled = false;
  this->later_.onPublication = [&](const VrfAction& key) {
    isLaterCalled = true;
    EXPECT_EQ(shown(key), "red");
    EXPECT_TRUE(TypeParam::has(*table, key));
    this->later_.unsubscribe();
    this->first_.unsubscribe();
  };
  this->inCall(1, [this](const VrfAction&) { this->table_ = nullptr; });
  TypeParam::is(*table, this->red_, 1);
  EXPECT_TRUE(isLaterCalled);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
