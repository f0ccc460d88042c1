#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

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

static_assert(VrfHwStatus::hwStatusAttribute == 130);
static_assert(
    std::is_same_v<VrfHwStatus::HwStatuses, Mox::HashMap2018<VrfAction, HwStatus, 0x7b6bc380>>,
    "the table's own salt");
static_assert(std::is_same_v<decltype(&VrfHwStatus::VrfHwStatusIs), Mox::Ptr<VrfHwStatus> (*)()>);

HwStatus failed(const Velo::String& description) {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  status.failureReasonIs(FailureCode::failureVrfResourceAlloc);
  status.failureDescriptionIs(description);
  return status;
}

TEST(VrfHwStatus, FactoryGivesAnEmptyTableWithNotificationsOn) {
  for (const auto& table : {vrfHwStatusFactory(), VrfHwStatus::VrfHwStatusIs()}) {
    EXPECT_EQ(table->references(), 1U);
    EXPECT_TRUE(table->hasNotificationActive());
    EXPECT_FALSE(table->isZombie());
    EXPECT_EQ(table->hwStatus().count(), 0U);
    EXPECT_FALSE(table->publisher().hasSubscribers());
    EXPECT_EQ(table->fwkType()->name, "ZelVrfSelectionPolicy::VrfHwStatus");
  }
}

TEST(VrfHwStatus, AnAbsentActionReadsAsADefaultRecordAndIsNoMember) {
  const auto table = vrfHwStatusFactory();
  EXPECT_EQ(table->hwStatus(red), HwStatus());
  EXPECT_FALSE(table->hwStatusHas(red));
}

TEST(VrfHwStatus, ADefaultRecordCreatesAnEntryAndPublishesOnce) {
  const auto table = vrfHwStatusFactory();
  const Publications publications(*table);
  table->hwStatusIs(red, HwStatus());
  EXPECT_TRUE(table->hwStatusHas(red));
  EXPECT_THAT(publications.seen(), ElementsAre("130 red"));
}

TEST(VrfHwStatus, WritingAnEqualRecordPublishesNothing) {
  const auto table = vrfHwStatusFactory();
  table->hwStatusIs(red, failed("full"));
  table->hwStatusIs(blue, HwStatus());
  const Publications publications(*table);
  table->hwStatusIs(red, failed("full"));
  table->hwStatusIs(blue, HwStatus());
  EXPECT_THAT(publications.seen(), IsEmpty());
}

TEST(VrfHwStatus, ChangingOnlyTheDescriptionPublishesOnce) {
  const auto table = vrfHwStatusFactory();
  table->hwStatusIs(red, failed("full"));
  const Publications publications(*table);
  table->hwStatusIs(red, failed("still full"));
  EXPECT_EQ(table->hwStatus(red), failed("still full"));
  EXPECT_THAT(publications.seen(), ElementsAre("130 red"));
}

TEST(VrfHwStatus, ChangingOnlyStatusOrReasonPublishesOnceEach) {
  const auto table = vrfHwStatusFactory();
  HwStatus status = failed("full");
  table->hwStatusIs(red, status);
  const Publications publications(*table);
  status.failureReasonIs(FailureCode::failureVrfResourceExhausted);
  table->hwStatusIs(red, status);
  status.statusIs(ProgrammingResult::programmedInHw);
  table->hwStatusIs(red, status);
  EXPECT_THAT(publications.seen(), ElementsAre("130 red", "130 red"));
  EXPECT_EQ(table->hwStatus(red), status);
}

TEST(VrfHwStatus, AChangeIsPublishedAfterItWasMade) {
  const auto table = vrfHwStatusFactory();
  std::vector<std::string> states;
  const Publications publications(*table, [&](const VrfAction& key) {
    states.push_back(table->hwStatusHas(key) ? Testing::shown(table->hwStatus(key)) : "gone");
  });
  table->hwStatusIs(red, HwStatus());
  table->hwStatusDel(red);
  EXPECT_THAT(states, ElementsAre("ok", "gone"));
}

TEST(VrfHwStatus, DeletionGivesTheRecordAndPublishesOnce) {
  const auto table = vrfHwStatusFactory();
  table->hwStatusIs(red, failed("full"));
  const Publications publications(*table);
  EXPECT_EQ(table->hwStatusDel(red), failed("full"));
  EXPECT_FALSE(table->hwStatusHas(red));
  EXPECT_THAT(publications.seen(), ElementsAre("130 red"));
}

TEST(VrfHwStatus, DeletionOfAnAbsentKeyGivesADefaultRecordAndPublishesNothing) {
  const auto table = vrfHwStatusFactory();
  table->hwStatusIs(red, failed("full"));
  const Publications publications(*table);
  EXPECT_EQ(table->hwStatusDel(blue), HwStatus());
  EXPECT_THAT(publications.seen(), IsEmpty());
}

TEST(VrfHwStatus, DeletingAllWithOneSubscriberAndThreeEntriesPublishesThreeKeys) {
  const auto table = vrfHwStatusFactory();
  for (const VrfAction& action : {red, blue, green})
    table->hwStatusIs(action, HwStatus());
  const Publications publications(*table);
  table->hwStatusDelAll();
  EXPECT_EQ(table->hwStatus().count(), 0U);
  EXPECT_THAT(publications.seen(), UnorderedElementsAre("130 red", "130 blue", "130 green"));
}

TEST(VrfHwStatus, DeletingAllWithoutASubscriberPublishesNothing) {
  const auto table = vrfHwStatusFactory();
  Publications publications(*table);
  for (const VrfAction& action : {red, blue, green})
    table->hwStatusIs(action, HwStatus());
  EXPECT_EQ(publications.take().size(), 3U);
  publications.unsubscribe();
  table->hwStatusDelAll();
  EXPECT_EQ(table->hwStatus().count(), 0U);
  EXPECT_THAT(publications.seen(), IsEmpty());
}

TEST(VrfHwStatus, ASubscriberMayDeleteTheEntryThatIsPublished) {
  const auto table = vrfHwStatusFactory();
  const Publications first(*table, [&](const VrfAction& key) {
    if (table->hwStatusHas(key)) table->hwStatusDel(key);
  });
  const Publications second(*table);
  table->hwStatusIs(red, failed("full"));
  EXPECT_FALSE(table->hwStatusHas(red));
  EXPECT_THAT(first.seen(), ElementsAre("130 red", "130 red"));
  EXPECT_THAT(second.seen(), ElementsAre("130 red", "130 red"));
}

TEST(VrfHwStatus, KeyAndRecordGivenMayBeTheTablesOwnAndTheirEntryGoMeanwhile) {
  const auto table = vrfHwStatusFactory();
  table->hwStatusIs(red, failed("full"));
  table->hwStatusIs(blue, HwStatus());
  const Publications first(*table, [&](const VrfAction&) {
    table->hwStatusDel(red);
    table->hwStatusDel(blue);
  });
  const Publications second(*table);
  table->hwStatusIs(table->hwStatus().iterator(red).key(), *table->hwStatus().find(blue));
  EXPECT_EQ(table->hwStatus().count(), 0U);
  EXPECT_THAT(second.seen(), UnorderedElementsAre("130 red", "130 red", "130 blue"));
}

TEST(VrfHwStatus, ASubscriberMayDeleteOthersWhileAllAreDeleted) {
  const auto table = vrfHwStatusFactory();
  for (const VrfAction& action : {red, blue, green})
    table->hwStatusIs(action, HwStatus());
  const Publications publications(*table, [&](const VrfAction&) {
    for (const VrfAction& action : {red, blue, green})
      table->hwStatusDel(action);
  });
  table->hwStatusDelAll();
  EXPECT_EQ(table->hwStatus().count(), 0U);
  EXPECT_THAT(publications.seen(), UnorderedElementsAre("130 red", "130 blue", "130 green"));
}

class VrfHwStatusReleasedBySubscriber : public ::testing::Test {
 protected:
  // The last reference goes in the middle of a publication.
  VrfHwStatusReleasedBySubscriber() {
    table_->hwStatusIs(red, failed("full"));
    table_->hwStatusIs(blue, HwStatus());
    publications_.emplace(*table_, [this](const VrfAction&) {
      publications_->unsubscribe();
      table_ = nullptr;
    });
  }

  Mox::Ptr<VrfHwStatus> table_ = vrfHwStatusFactory();
  std::optional<Publications> publications_;
};

TEST_F(VrfHwStatusReleasedBySubscriber, AWriteCompletes) {
  table_->hwStatusIs(red, HwStatus());
  EXPECT_THAT(publications_->seen(), ElementsAre("130 red"));
  EXPECT_EQ(Testing::live(VrfHwStatus::typeName), 0U);
}

TEST_F(VrfHwStatusReleasedBySubscriber, ADeletionGivesTheRecord) {
  EXPECT_EQ(table_->hwStatusDel(red), failed("full"));
  EXPECT_EQ(Testing::live(VrfHwStatus::typeName), 0U);
}

TEST_F(VrfHwStatusReleasedBySubscriber, DeletingAllCompletes) {
  table_->hwStatusDelAll();
  EXPECT_EQ(publications_->seen().size(), 1U) << "the subscriber left at the first";
  EXPECT_EQ(Testing::live(VrfHwStatus::typeName), 0U);
}

TEST(VrfHwStatus, NotifieeListIsAPublishersAndNamesTheTable) {
  const auto table = vrfHwStatusFactory();
  EXPECT_EQ(table->notifieeList().iterate, nullptr);
  const Publications publications(*table);
  const Velo::NotifieeListDescriptor list = table->notifieeList();
  EXPECT_EQ(static_cast<unsigned>(list.kind), 2U);
  EXPECT_EQ(list.entity, table.get());
  EXPECT_NE(list.add, nullptr);
  EXPECT_NE(list.remove, nullptr);
  EXPECT_NE(list.visit, nullptr);
  EXPECT_NE(list.iterate, nullptr);
}

TEST(VrfHwStatus, TablesAreCountedInTheirSlabWhileTheyLive) {
  ASSERT_EQ(Testing::live(VrfHwStatus::typeName), 0U);
  {
    const auto one = vrfHwStatusFactory();
    const auto other = VrfHwStatus::VrfHwStatusIs();
    EXPECT_EQ(Testing::live(VrfHwStatus::typeName), 2U);
  }
  EXPECT_EQ(Testing::live(VrfHwStatus::typeName), 0U);
}

// The number of a name goes to another when nobody holds the name.
TEST(VrfHwStatus, ADeletedEntryHoldsNoName) {
  const auto table = vrfHwStatusFactory();
  const auto passing = [] { return VrfAction("passing", ActionType::vrf); };
  const unsigned number = passing().vrfName().number();
  table->hwStatusIs(passing(), HwStatus());
  table->hwStatusDel(passing());
  EXPECT_EQ(L3::VrfName("another").number(), number);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
