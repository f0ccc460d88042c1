#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <type_traits>

#include "Actions.h"
#include "Publications.h"
#include "tests/vrf/LiveObjects.h"

namespace ZelVrfSelectionPolicy {
namespace {

using PolicyMap::ActionType;
using Testing::blue;
using ::testing::ElementsAre;
using Testing::green;
using ::testing::IsEmpty;
using Testing::Publications;
using Testing::red;
using ::testing::UnorderedElementsAre;

static_assert(VrfHwConfig::vrfRefCountAttribute == 130);
static_assert(
    std::is_same_v<VrfHwConfig::VrfRefCounts, Mox::HashMap2018<VrfAction, unsigned, 0xca67d662>>,
    "the table's own salt");
static_assert(std::is_same_v<decltype(&VrfHwConfig::VrfHwConfigIs), Mox::Ptr<VrfHwConfig> (*)()>);

TEST(VrfHwConfig, FactoryGivesAnEmptyTableWithNotificationsOn) {
  for (const auto& table : {vrfHwConfigFactory(), VrfHwConfig::VrfHwConfigIs()}) {
    EXPECT_EQ(table->references(), 1U);
    EXPECT_TRUE(table->hasNotificationActive());
    EXPECT_FALSE(table->isZombie());
    EXPECT_EQ(table->vrfRefCount().count(), 0U);
    EXPECT_FALSE(table->publisher().hasSubscribers());
    EXPECT_EQ(table->fwkType()->name, "ZelVrfSelectionPolicy::VrfHwConfig");
  }
}

TEST(VrfHwConfig, EachFactoryCallGivesATableOfItsOwn) {
  const auto one = vrfHwConfigFactory();
  const auto other = vrfHwConfigFactory();
  one->vrfRefCountIs(red, 1);
  EXPECT_EQ(other->vrfRefCount(red), 0U);
}

TEST(VrfHwConfig, WritingZeroOnAnEmptyTableCreatesAnEntryAndPublishesOnce) {
  const auto table = vrfHwConfigFactory();
  const Publications publications(*table);
  table->vrfRefCountIs(red, 0);
  EXPECT_TRUE(table->vrfRefCount().has(red));
  EXPECT_EQ(table->vrfRefCount(red), 0U);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red"));
}

TEST(VrfHwConfig, AnEntryWhoseCountReachesZeroStays) {
  const auto table = vrfHwConfigFactory();
  table->vrfRefCountInc(red, 1);
  EXPECT_EQ(table->vrfRefCountDec(red, 1), 0U);
  EXPECT_TRUE(table->vrfRefCount().has(red));
}

TEST(VrfHwConfig, SettingTheSameCountTwicePublishesOnlyTheFirstTime) {
  const auto table = vrfHwConfigFactory();
  const Publications publications(*table);
  table->vrfRefCountIs(red, 7);
  table->vrfRefCountIs(red, 7);
  table->vrfRefCountIs(blue, 0);
  table->vrfRefCountIs(blue, 0);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red", "130 blue"));
}

TEST(VrfHwConfig, EveryRealChangePublishesTheAttributeAndTheKey) {
  const auto table = vrfHwConfigFactory();
  const Publications publications(*table);
  table->vrfRefCountIs(red, 2);
  table->vrfRefCountInc(blue, 1);
  table->vrfRefCountDec(red, 1);
  table->vrfRefCountDel(blue);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red", "130 blue", "130 red", "130 blue"));
}

TEST(VrfHwConfig, AChangeIsPublishedAfterItWasMade) {
  const auto table = vrfHwConfigFactory();
  std::vector<unsigned> counts;
  const Publications publications(*table, [&](const VrfAction& key) {
    counts.push_back(table->vrfRefCount().has(key) ? table->vrfRefCount(key) : 1000);
  });
  table->vrfRefCountIs(red, 3);
  table->vrfRefCountDel(red);
  EXPECT_THAT(counts, ElementsAre(3, 1000));
}

TEST(VrfHwConfig, IncrementGivesTheNewCountFromZeroIfAbsent) {
  const auto table = vrfHwConfigFactory();
  EXPECT_EQ(table->vrfRefCountInc(red, 5), 5U);
  EXPECT_EQ(table->vrfRefCountInc(red, 2), 7U);
  EXPECT_EQ(table->vrfRefCount(red), 7U);
}

TEST(VrfHwConfig, IncrementByNothingCreatesAnAbsentEntryAndIsNoChangeOfAPresentOne) {
  const auto table = vrfHwConfigFactory();
  const Publications publications(*table);
  EXPECT_EQ(table->vrfRefCountInc(red, 0), 0U);
  EXPECT_EQ(table->vrfRefCountInc(red, 0), 0U);
  EXPECT_EQ(table->vrfRefCountDec(red, 0), 0U);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red"));
}

TEST(VrfHwConfig, DecrementOfAnAbsentKeyWrapsStoresAndPublishes) {
  const auto table = vrfHwConfigFactory();
  const Publications publications(*table);
  EXPECT_EQ(table->vrfRefCountDec(red, 1), 4294967295U);
  EXPECT_EQ(table->vrfRefCount(red), 4294967295U);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red"));
}

TEST(VrfHwConfig, IncrementPastTheTopWrapsStoresAndPublishes) {
  const auto table = vrfHwConfigFactory();
  table->vrfRefCountIs(red, 4294967295U);
  const Publications publications(*table);
  EXPECT_EQ(table->vrfRefCountInc(red, 3), 2U);
  EXPECT_EQ(table->vrfRefCount(red), 2U);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red"));
}

TEST(VrfHwConfig, DeletionGivesTheCountThatTheEntryHad) {
  const auto table = vrfHwConfigFactory();
  table->vrfRefCountIs(red, 9);
  EXPECT_EQ(table->vrfRefCountDel(red), 9U);
  EXPECT_FALSE(table->vrfRefCount().has(red));
  EXPECT_EQ(table->vrfRefCount(red), 0U);
}

TEST(VrfHwConfig, DeletionOfAnAbsentKeyGivesZeroAndPublishesNothing) {
  const auto table = vrfHwConfigFactory();
  table->vrfRefCountIs(red, 1);
  const Publications publications(*table);
  EXPECT_EQ(table->vrfRefCountDel(blue), 0U);
  EXPECT_THAT(publications.seen(), IsEmpty());
}

TEST(VrfHwConfig, DeletionOfAnEntryWithCountZeroPublishes) {
  const auto table = vrfHwConfigFactory();
  table->vrfRefCountIs(red, 0);
  const Publications publications(*table);
  EXPECT_EQ(table->vrfRefCountDel(red), 0U);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red"));
}

TEST(VrfHwConfig, DeletingAllWithASubscriberPublishesOncePerEntry) {
  const auto table = vrfHwConfigFactory();
  for (const VrfAction& action : {red, blue, green})
    table->vrfRefCountIs(action, 1);
  const Publications publications(*table);
  table->vrfRefCountDelAll();
  EXPECT_EQ(table->vrfRefCount().count(), 0U);
  EXPECT_THAT(publications.seen(), UnorderedElementsAre("130 red", "130 blue", "130 green"));
}

TEST(VrfHwConfig, DeletingAllWithoutASubscriberPublishesNothing) {
  const auto table = vrfHwConfigFactory();
  Publications publications(*table);
  for (const VrfAction& action : {red, blue, green})
    table->vrfRefCountIs(action, 1);
  EXPECT_EQ(publications.take().size(), 3U);
  publications.unsubscribe();
  table->vrfRefCountDelAll();
  EXPECT_EQ(table->vrfRefCount().count(), 0U);
  EXPECT_THAT(publications.seen(), IsEmpty());
}

TEST(VrfHwConfig, DeletingAllOfAnEmptyTablePublishesNothing) {
  const auto table = vrfHwConfigFactory();
  const Publications publications(*table);
  table->vrfRefCountDelAll();
  EXPECT_THAT(publications.seen(), IsEmpty());
}

TEST(VrfHwConfig, ASubscriberMayDeleteTheEntryThatIsPublished) {
  const auto table = vrfHwConfigFactory();
  Publications first(*table, [&](const VrfAction& key) {
    if (table->vrfRefCount().has(key)) table->vrfRefCountDel(key);
  });
  const Publications second(*table);
  table->vrfRefCountIs(red, 1);
  EXPECT_EQ(table->vrfRefCount().count(), 0U);
  EXPECT_THAT(first.seen(), ElementsAre("130 red", "130 red"));
  EXPECT_THAT(second.seen(), ElementsAre("130 red", "130 red"));
}

TEST(VrfHwConfig, TheKeyGivenMayBeTheTablesOwnAndItsEntryGoMeanwhile) {
  const auto table = vrfHwConfigFactory();
  table->vrfRefCountIs(red, 1);
  const Publications first(*table, [&](const VrfAction& key) {
    if (table->vrfRefCount().has(key)) table->vrfRefCountDel(key);
  });
  const Publications second(*table);
  table->vrfRefCountIs(table->vrfRefCount().iterator().key(), 2);
  EXPECT_THAT(second.seen(), ElementsAre("130 red", "130 red"));
  EXPECT_EQ(table->vrfRefCount().count(), 0U);
}

TEST(VrfHwConfig, ASubscriberMayCountFurtherFromInsideTheCall) {
  const auto table = vrfHwConfigFactory();
  const Publications publications(*table, [&](const VrfAction& key) {
    if (table->vrfRefCount(key) < 3) table->vrfRefCountInc(key, 1);
  });
  EXPECT_EQ(table->vrfRefCountInc(red, 1), 1U) << "the count that this call made";
  EXPECT_EQ(table->vrfRefCount(red), 3U);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red", "130 red", "130 red"));
}

TEST(VrfHwConfig, ASubscriberMayDeleteOthersWhileAllAreDeleted) {
  const auto table = vrfHwConfigFactory();
  for (const VrfAction& action : {red, blue, green})
    table->vrfRefCountIs(action, 1);
  const Publications publications(*table, [&](const VrfAction&) {
    for (const VrfAction& action : {red, blue, green})
      table->vrfRefCountDel(action);
  });
  table->vrfRefCountDelAll();
  EXPECT_EQ(table->vrfRefCount().count(), 0U);
  EXPECT_THAT(publications.seen(), UnorderedElementsAre("130 red", "130 blue", "130 green"));
}

TEST(VrfHwConfig, DeletingAllEndsThoughASubscriberInsertsMeanwhile) {
  const auto table = vrfHwConfigFactory();
  for (const VrfAction& action : {red, blue, green})
    table->vrfRefCountIs(action, 1);
  unsigned inserted = 0;
  const Publications publications(*table, [&](const VrfAction& key) {
    if (table->vrfRefCount().has(key)) return;
    table->vrfRefCountIs(VrfAction("new" + std::to_string(inserted++), ActionType::vrf), 1);
  });
  table->vrfRefCountDelAll();
  for (const VrfAction& action : {red, blue, green}) {
    EXPECT_FALSE(table->vrfRefCount().has(action)) << action;
  }
}

TEST(VrfHwConfig, DeletingAllGoesOnWithoutTheSubscriberThatLeavesMeanwhile) {
  const auto table = vrfHwConfigFactory();
  for (const VrfAction& action : {red, blue, green})
    table->vrfRefCountIs(action, 1);
  Publications publications(*table);
  publications.onPublication = [&](const VrfAction&) { publications.unsubscribe(); };
  table->vrfRefCountDelAll();
  EXPECT_EQ(publications.seen().size(), 1U);
  EXPECT_EQ(table->vrfRefCount().count(), 0U);
}

class VrfHwConfigReleasedBySubscriber : public ::testing::Test {
 protected:
  // The last reference goes in the middle of a publication.
  VrfHwConfigReleasedBySubscriber() {
    table_->vrfRefCountIs(red, 1);
    publications_.emplace(*table_, [this](const VrfAction&) {
      publications_->unsubscribe();
      table_ = nullptr;
    });
  }

  Mox::Ptr<VrfHwConfig> table_ = vrfHwConfigFactory();
  std::optional<Publications> publications_;
};

TEST_F(VrfHwConfigReleasedBySubscriber, ASetCompletes) {
  table_->vrfRefCountIs(red, 2);
  EXPECT_THAT(publications_->seen(), ElementsAre("130 red"));
  EXPECT_EQ(Testing::live(VrfHwConfig::typeName), 0U);
}

TEST_F(VrfHwConfigReleasedBySubscriber, CountingGivesTheNewCount) {
  EXPECT_EQ(table_->vrfRefCountInc(red, 4), 5U);
  EXPECT_EQ(Testing::live(VrfHwConfig::typeName), 0U);
}

TEST_F(VrfHwConfigReleasedBySubscriber, ADeletionGivesTheOldCount) {
  EXPECT_EQ(table_->vrfRefCountDel(red), 1U);
  EXPECT_EQ(Testing::live(VrfHwConfig::typeName), 0U);
}

TEST_F(VrfHwConfigReleasedBySubscriber, DeletingAllCompletes) {
  table_->vrfRefCountIs(red, 1);
  table_->vrfRefCountDelAll();
  EXPECT_THAT(publications_->seen(), ElementsAre("130 red"));
  EXPECT_EQ(Testing::live(VrfHwConfig::typeName), 0U);
}

TEST(VrfHwConfig, KeysThatDifferInOneFieldAreDifferentEntries) {
  const auto table = vrfHwConfigFactory();
  VrfAction withFallback = red;
  withFallback.fallbackVrfNameIs("blue");
  VrfAction withPostDecap = red;
  withPostDecap.postDecapVrfNameIs("blue");
  const VrfAction withType("red", ActionType::discard);
  unsigned count = 1;
  for (const VrfAction& action : {red, withFallback, withPostDecap, withType}) {
    table->vrfRefCountIs(action, count++);
  }
  EXPECT_EQ(table->vrfRefCount().count(), 4U);
  EXPECT_EQ(table->vrfRefCount(red), 1U);
  EXPECT_EQ(table->vrfRefCount(withType), 4U);
}

TEST(VrfHwConfig, NotifieeListIsAPublishersAndNamesTheTable) {
  const auto table = vrfHwConfigFactory();
  const Velo::NotifieeListDescriptor list = table->notifieeList();
  EXPECT_EQ(static_cast<unsigned>(list.kind), 2U);
  EXPECT_EQ(list.entity, table.get());
  ASSERT_NE(list.add, nullptr);
  ASSERT_NE(list.remove, nullptr);
  ASSERT_NE(list.visit, nullptr);
}

TEST(VrfHwConfig, NotifieeListGivesIterationOnlyWhileSomebodyIsSubscribed) {
  const auto table = vrfHwConfigFactory();
  EXPECT_EQ(table->notifieeList().iterate, nullptr);
  Publications publications(*table);
  const Velo::NotifieeListDescriptor list = table->notifieeList();
  ASSERT_NE(list.iterate, nullptr);
  void* only = list.iterate(list.list, nullptr);
  EXPECT_NE(only, nullptr);
  EXPECT_EQ(list.iterate(list.list, only), nullptr);
  publications.unsubscribe();
  EXPECT_EQ(table->notifieeList().iterate, nullptr);
}

TEST(VrfHwConfig, NotifieeListAddsAndRemovesSubscribers) {
  const auto table = vrfHwConfigFactory();
  static unsigned calls;
  calls = 0;
  Velo::Subscriber subscriber;
  subscriber.dispatch = [](Velo::Publisher*, Velo::Subscriber*, short, const void*, const void*) {
    ++calls;
  };
  const Velo::NotifieeListDescriptor list = table->notifieeList();
  EXPECT_TRUE(list.add(list.list, &subscriber));
  EXPECT_FALSE(list.add(list.list, &subscriber));
  table->vrfRefCountIs(red, 1);
  EXPECT_EQ(calls, 1U);

  std::vector<void*> visited;
  list.visit(
      list.list,
      [](void* context, void* notifiee) {
        static_cast<std::vector<void*>*>(context)->push_back(notifiee);
      },
      &visited);
  EXPECT_THAT(visited, ElementsAre(&subscriber));

  EXPECT_TRUE(list.remove(list.list, &subscriber));
  EXPECT_FALSE(list.remove(list.list, &subscriber));
  table->vrfRefCountIs(red, 2);
  EXPECT_EQ(calls, 1U);
}

TEST(VrfHwConfig, TablesAreCountedInTheirSlabWhileTheyLive) {
  ASSERT_EQ(Testing::live(VrfHwConfig::typeName), 0U);
  {
    const auto one = vrfHwConfigFactory();
    const auto other = VrfHwConfig::VrfHwConfigIs();
    EXPECT_EQ(Testing::live(VrfHwConfig::typeName), 2U);
  }
  EXPECT_EQ(Testing::live(VrfHwConfig::typeName), 0U);
}

// The number of a name goes to another when nobody holds the name.
TEST(VrfHwConfig, ADeletedEntryHoldsNoName) {
  const auto table = vrfHwConfigFactory();
  const auto passing = [] { return VrfAction("passing", ActionType::vrf); };
  const unsigned number = passing().vrfName().number();
  table->vrfRefCountIs(passing(), 1);
  table->vrfRefCountDel(passing());
  EXPECT_EQ(L3::VrfName("another").number(), number);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
