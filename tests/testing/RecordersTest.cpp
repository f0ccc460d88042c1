// The recorders write hook calls, table changes and trace lines into one journal, in their order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Mox/TraceHandle.h"
#include "Mox/TraceHelper.h"
#include "testing/Journal.h"
#include "testing/RecordingVrfHelper.h"
#include "testing/TableJournal.h"
#include "testing/TraceCapture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

VrfAction vrfAction(std::string_view vrf) {
  return {vrf, PolicyMap::ActionType::vrf};
}

HwStatus exhausted() {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  status.failureReasonIs(FailureCode::failureVrfResourceExhausted);
  return status;
}

TEST(JournalOfATest, HoldsLinesInTheirOrder) {
  Journal journal;
  EXPECT_THAT(journal.lines(), IsEmpty());
  journal.write("second is not sorted");
  journal.write("first");
  journal.write("first");
  EXPECT_THAT(journal.lines(), ElementsAre("second is not sorted", "first", "first"));
}

TEST(JournalOfATest, IsEmptyAfterItsLinesAreTaken) {
  Journal journal;
  journal.write("one");
  EXPECT_THAT(journal.take(), ElementsAre("one"));
  EXPECT_THAT(journal.lines(), IsEmpty());
  journal.write("two");
  EXPECT_THAT(journal.take(), ElementsAre("two"));
}

class RecordingVrf : public ::testing::Test {
 protected:
  Journal journal_;
  Mox::Ptr<RecordingVrfHelper> chip_ = Mox::makePtr<RecordingVrfHelper>(journal_);
};

TEST_F(RecordingVrf, WritesEachHookCallAndReportsSuccess) {
  EXPECT_EQ(chip_->createVrf(vrfAction("red")), HwStatus());
  EXPECT_EQ(chip_->updateVrf(VrfAction("red", PolicyMap::ActionType::decapVrf)), HwStatus());
  chip_->deleteVrf(vrfAction("blue"));
  EXPECT_THAT(journal_.lines(),
              ElementsAre("createVrf red", "updateVrf red>>:actionDecapVrf", "deleteVrf blue"));
}

TEST_F(RecordingVrf, ReturnsTheOutcomeOfItsFunction) {
  chip_->onCreate = [](const VrfAction& action) {
    return action == vrfAction("red") ? exhausted() : HwStatus();
  };
  EXPECT_EQ(chip_->createVrf(vrfAction("red")), exhausted());
  EXPECT_EQ(chip_->createVrf(vrfAction("blue")), HwStatus());
  EXPECT_EQ(chip_->updateVrf(vrfAction("red")), HwStatus());
  chip_->onUpdate = [](const VrfAction&) { return exhausted(); };
  EXPECT_EQ(chip_->updateVrf(vrfAction("red")), exhausted());
}

TEST_F(RecordingVrf, WritesTheCallBeforeItsFunctionRuns) {
  const auto work = [this](const VrfAction& action) {
    journal_.write("function for " + action.vrfName().str());
  };
  chip_->onCreate = chip_->onUpdate = [&](const VrfAction& action) {
    work(action);
    return HwStatus();
  };
  chip_->onDelete = work;
  static_cast<void>(chip_->createVrf(vrfAction("red")));
  static_cast<void>(chip_->updateVrf(vrfAction("red")));
  chip_->deleteVrf(vrfAction("red"));
  EXPECT_THAT(journal_.lines(),
              ElementsAre("createVrf red", "function for red", "updateVrf red", "function for red",
                          "deleteVrf red", "function for red"));
}

TEST_F(RecordingVrf, PassesExceptionsOfItsFunctionsOn) {
  chip_->onCreate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("create"); };
  chip_->onDelete = [](const VrfAction&) { throw std::runtime_error("delete"); };
  EXPECT_THROW(static_cast<void>(chip_->createVrf(vrfAction("red"))), std::runtime_error);
  EXPECT_THROW(chip_->deleteVrf(vrfAction("red")), std::runtime_error);
  EXPECT_THAT(journal_.lines(), ElementsAre("createVrf red", "deleteVrf red"));
}

class JournalOfTables : public ::testing::Test {
 protected:
  Journal journal_;
  Mox::Ptr<VrfHwConfig> users_ = VrfHwConfig::VrfHwConfigIs();
  Mox::Ptr<VrfHwStatus> statuses_ = VrfHwStatus::VrfHwStatusIs();
};

TEST_F(JournalOfTables, HasEveryChangeOfBoth) {
  const TableJournal tables(journal_, users_, statuses_);
  users_->vrfRefCountInc(vrfAction("red"), 2);
  users_->vrfRefCountIs(vrfAction("blue"), 1);
  statuses_->hwStatusIs(vrfAction("red"), HwStatus());
  statuses_->hwStatusIs(vrfAction("red"), exhausted());
  statuses_->hwStatusDel(vrfAction("red"));
  users_->vrfRefCountDel(vrfAction("red"));
  EXPECT_THAT(journal_.lines(),
              ElementsAre("vrfRefCount red = 2", "vrfRefCount blue = 1", "hwStatus red = ok",
                          "hwStatus red = programmingFailure failureVrfResourceExhausted ''",
                          "hwStatus red gone", "vrfRefCount red gone"));
}

TEST_F(JournalOfTables, ShowsTheStateAtTheTimeOfTheNotification) {
  struct Changer {
    explicit Changer(VrfHwConfig& changed) : users(changed) {}
    VrfHwConfig& users;
    Velo::MemberSubscriber<Changer> subscriber{*this};
  } changer(*users_);
  changer.subscriber.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                                   const void* key, const void*) {
    VrfHwConfig& users = Velo::MemberSubscriber<Changer>::ownerOf(subscriber).users;
    const VrfAction action = *static_cast<const VrfAction*>(key);
    const unsigned* const count = users.vrfRefCount().find(action);
    if (count != nullptr && *count == 1) users.vrfRefCountIs(action, 7);
  };
  users_->publisher().subscriberIs(changer.subscriber);
  const TableJournal tables(journal_, users_, statuses_);
  users_->vrfRefCountIs(vrfAction("red"), 1);
  users_->publisher().subscriberDel(changer.subscriber);
  ASSERT_FALSE(journal_.lines().empty());
  for (const std::string& line : journal_.lines())
    EXPECT_EQ(line, "vrfRefCount red = 7");
}

TEST_F(JournalOfTables, MayBeOfOneTable) {
  {
    const TableJournal tables(journal_, users_, nullptr);
    users_->vrfRefCountIs(vrfAction("red"), 1);
    statuses_->hwStatusIs(vrfAction("red"), HwStatus());
    EXPECT_THAT(journal_.take(), ElementsAre("vrfRefCount red = 1"));
  }
  const TableJournal tables(journal_, nullptr, statuses_);
  users_->vrfRefCountIs(vrfAction("red"), 2);
  statuses_->hwStatusIs(vrfAction("blue"), HwStatus());
  EXPECT_THAT(journal_.take(), ElementsAre("hwStatus blue = ok"));
}

TEST_F(JournalOfTables, EndsWithItsObject) {
  { const TableJournal tables(journal_, users_, statuses_); }
  users_->vrfRefCountIs(vrfAction("red"), 1);
  statuses_->hwStatusIs(vrfAction("red"), HwStatus());
  EXPECT_THAT(journal_.lines(), IsEmpty());
}

class CaptureOfTrace : public ::testing::Test {
 protected:
  void trace(unsigned level, std::string_view text) const {
    Mox::TraceHelper(handle_, level, "/src/path", 1, "f").stream() << text;
  }

  const Mox::TraceHandle handle_{"CaptureOfTrace", 0};
  Journal outer_;
  Journal inner_;
};

TEST_F(CaptureOfTrace, WritesTheLinesOfItsLevels) {
  const TraceCapture capture(outer_, "CaptureOfTrace=5");
  trace(5, "shown");
  trace(6, "not shown");
  EXPECT_THAT(outer_.lines(), ElementsAre("CaptureOfTrace 5 /src/path:1 f shown"));
}

TEST_F(CaptureOfTrace, IsOfTheLibraryByDefault) {
  const Mox::TraceHandle library("ZelVrfSelection", 0);
  const TraceCapture capture(outer_);
  for (unsigned level = 0; level < Mox::TraceHandle::levels; ++level)
    EXPECT_TRUE(library.isOn(level)) << level;
}

TEST_F(CaptureOfTrace, InsideAnotherTakesItsLines) {
  const TraceCapture outer(outer_, "CaptureOfTrace=5");
  trace(5, "before");
  {
    const TraceCapture inner(inner_, "CaptureOfTrace=5");
    trace(5, "between");
  }
  trace(5, "after");
  EXPECT_THAT(outer_.lines(), ElementsAre("CaptureOfTrace 5 /src/path:1 f before",
                                          "CaptureOfTrace 5 /src/path:1 f after"));
  EXPECT_THAT(inner_.lines(), ElementsAre("CaptureOfTrace 5 /src/path:1 f between"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
