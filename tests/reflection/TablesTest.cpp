// The tables and the sets of dependent VRFs, by number.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "World.h"
#include "testing/TableJournal.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Mox::access;
using Mox::AnyValue;
using Mox::Operation;
using Mox::ReturnCode;
using ::testing::ElementsAre;

VrfAction lookUpIn(const std::string& vrf) {
  return {vrf, PolicyMap::ActionType::vrf};
}

class ReflectedVrfHwConfig : public ::testing::Test {
 protected:
  AnyValue ask(Operation operation, const std::vector<AnyValue>& arguments = {}) {
    const Mox::Answer answer = access(*users_, 130, operation, arguments);
    EXPECT_EQ(answer.code, ReturnCode::success);
    return answer.value;
  }
  void fill(unsigned entries) {
    for (unsigned i = 0; i < entries; ++i)
      users_->vrfRefCountIs(lookUpIn(std::to_string(i)), i);
  }

  Mox::Ptr<VrfHwConfig> users_ = vrfHwConfigFactory();
  const VrfAction red_ = lookUpIn("red");
};

TEST_F(ReflectedVrfHwConfig, ReadsTheCountOfAnAction) {
  users_->vrfRefCountIs(red_, 3);
  EXPECT_EQ(ask(Operation::read, {red_}), AnyValue(3U));
}

TEST_F(ReflectedVrfHwConfig, ReadsZeroForAnAbsentActionAndDoesNotInsertIt) {
  EXPECT_EQ(ask(Operation::read, {red_}), AnyValue(0U));
  EXPECT_EQ(users_->vrfRefCount().count(), 0U);
}

TEST_F(ReflectedVrfHwConfig, WritesACountAndPublishesIt) {
  Journal journal;
  const TableJournal notices(journal, users_, nullptr);
  EXPECT_EQ(ask(Operation::write, {red_, 2U}).type(), nullptr);
  EXPECT_EQ(users_->vrfRefCount(red_), 2U);
  EXPECT_THAT(journal.lines(), ElementsAre("vrfRefCount red = 2"));
}

TEST_F(ReflectedVrfHwConfig, DeletesAnEntryAndGivesTheCountThatItHad) {
  users_->vrfRefCountIs(red_, 3);
  EXPECT_EQ(ask(Operation::remove, {red_}), AnyValue(3U));
  EXPECT_FALSE(users_->vrfRefCount().has(red_));
  EXPECT_EQ(ask(Operation::remove, {red_}), AnyValue(0U));
}

TEST_F(ReflectedVrfHwConfig, TellsItsSizeCapacityAndMembers) {
  EXPECT_EQ(ask(Operation::count), AnyValue(0U));
  fill(20);
  EXPECT_EQ(ask(Operation::count), AnyValue(20U));
  EXPECT_EQ(ask(Operation::capacity), AnyValue(users_->vrfRefCount().capacity()));
  EXPECT_GE(ask(Operation::capacity).as<unsigned>(), 20U);
  EXPECT_EQ(ask(Operation::has, {lookUpIn("7")}), AnyValue(true));
  EXPECT_EQ(ask(Operation::has, {red_}), AnyValue(false));
}

TEST_F(ReflectedVrfHwConfig, HasNoAttribute131) {
  EXPECT_EQ(access(*users_, 131, Operation::read, {red_}).code, ReturnCode::unknownAttribute);
}

TEST_F(ReflectedVrfHwConfig, RefusesACountThatIsNone) {
  EXPECT_EQ(refusal<Mox::ArgumentException>([&] {
              access(*users_, 130, Operation::write, {red_, true});
            }),
            "vrfRefCount: expected a value of the kind unsigned as argument 2, found bool");
  EXPECT_EQ(users_->vrfRefCount().count(), 0U);
}

TEST_F(ReflectedVrfHwConfig, IsIteratedFromTheBeginning) {
  fill(50);
  std::set<std::string> keys;
  for (const auto entry = Mox::iterate(*users_, 130); *entry; entry->next()) {
    const auto action = entry->key().as<VrfAction>();
    EXPECT_TRUE(keys.insert(action.vrfName().str()).second) << action;
    EXPECT_EQ(entry->value(), AnyValue(users_->vrfRefCount(action)));
  }
  EXPECT_EQ(keys.size(), 50U);
}

TEST_F(ReflectedVrfHwConfig, IsIteratedFromAKeyToTheEnd) {
  fill(50);
  std::vector<AnyValue> whole;
  for (const auto entry = Mox::iterate(*users_, 130); *entry; entry->next())
    whole.push_back(entry->key());
  std::vector<AnyValue> tail;
  for (const auto entry = Mox::iterate(*users_, 130, whole[30]); *entry; entry->next())
    tail.push_back(entry->key());
  EXPECT_EQ(tail, std::vector<AnyValue>(whole.begin() + 30, whole.end()));
}

TEST_F(ReflectedVrfHwConfig, IterationFromAnAbsentKeyIsAtItsEnd) {
  fill(3);
  const auto entry = Mox::iterate(*users_, 130, red_);
  ASSERT_NE(entry, nullptr);
  EXPECT_FALSE(*entry);
}

TEST_F(ReflectedVrfHwConfig, IterationFromAKeyOfAnotherKindIsRefused) {
  EXPECT_EQ(refusal<Mox::ArgumentException>(
                [&] { static_cast<void>(Mox::iterate(*users_, 130, L3::VrfName("red"))); }),
            "expected a value of the kind ZelVrfSelectionPolicy::VrfAction, found L3::VrfName");
}

TEST_F(ReflectedVrfHwConfig, IsIteratedForItsCollectionOnly) {
  EXPECT_EQ(Mox::iterate(*users_, 131), nullptr);
  EXPECT_EQ(Mox::iterate(*users_, 129), nullptr);
  EXPECT_EQ(Mox::iterate(*users_, 131, red_), nullptr);
}

TEST_F(ReflectedVrfHwConfig, IterationSurvivesTheDeletionOfTheEntryThatItStandsOn) {
  fill(50);
  unsigned visited = 0;
  for (const auto entry = Mox::iterate(*users_, 130); *entry; entry->next()) {
    ask(Operation::remove, {entry->key()});
    EXPECT_TRUE(*entry);
    ++visited;
  }
  EXPECT_EQ(visited, 50U);
  EXPECT_EQ(users_->vrfRefCount().count(), 0U);
}

TEST_F(ReflectedVrfHwConfig, IterationKeepsTheTableAlive) {
  fill(3);
  const auto entry = Mox::iterate(*users_, 130);
  users_ = nullptr;
  unsigned visited = 0;
  for (; *entry; entry->next())
    ++visited;
  EXPECT_EQ(visited, 3U);
}

class ReflectedVrfHwStatus : public ::testing::Test {
 protected:
  ReflectedVrfHwStatus() { failed_.statusIs(ProgrammingResult::programmingFailure); }

  AnyValue ask(Operation operation, const std::vector<AnyValue>& arguments = {}) {
    const Mox::Answer answer = access(*statuses_, 130, operation, arguments);
    EXPECT_EQ(answer.code, ReturnCode::success);
    return answer.value;
  }

  Mox::Ptr<VrfHwStatus> statuses_ = vrfHwStatusFactory();
  const VrfAction red_ = lookUpIn("red");
  HwStatus failed_;
};

TEST_F(ReflectedVrfHwStatus, WritesReadsAndDeletesAStatus) {
  Journal journal;
  const TableJournal notices(journal, nullptr, statuses_);
  ask(Operation::write, {red_, failed_});
  EXPECT_EQ(statuses_->hwStatus(red_), failed_);
  EXPECT_EQ(ask(Operation::read, {red_}), AnyValue(failed_));
  EXPECT_EQ(ask(Operation::remove, {red_}), AnyValue(failed_));
  EXPECT_FALSE(statuses_->hwStatusHas(red_));
  EXPECT_THAT(journal.lines(),
              ElementsAre("hwStatus red = programmingFailure failureNone ''", "hwStatus red gone"));
}

TEST_F(ReflectedVrfHwStatus, ReadsAndDeletesTheDefaultStatusForAnAbsentAction) {
  EXPECT_EQ(ask(Operation::read, {red_}), AnyValue(HwStatus()));
  EXPECT_EQ(ask(Operation::remove, {red_}), AnyValue(HwStatus()));
  EXPECT_EQ(statuses_->hwStatus().count(), 0U);
}

TEST_F(ReflectedVrfHwStatus, TellsItsSizeCapacityAndMembers) {
  ask(Operation::write, {red_, failed_});
  EXPECT_EQ(ask(Operation::count), AnyValue(1U));
  EXPECT_EQ(ask(Operation::capacity), AnyValue(statuses_->hwStatus().capacity()));
  EXPECT_EQ(ask(Operation::has, {red_}), AnyValue(true));
  EXPECT_EQ(ask(Operation::has, {VrfAction()}), AnyValue(false));
}

TEST_F(ReflectedVrfHwStatus, IterationSurvivesDeletionAndStartsAtAKey) {
  for (const char* vrf : {"red", "blue", "green"})
    ask(Operation::write, {lookUpIn(vrf), failed_});
  const auto entry = Mox::iterate(*statuses_, 130, red_);
  ASSERT_TRUE(*entry);
  EXPECT_EQ(entry->key(), AnyValue(red_));
  EXPECT_EQ(entry->value(), AnyValue(failed_));
  unsigned visited = 0;
  for (const auto each = Mox::iterate(*statuses_, 130); *each; each->next(), ++visited)
    ask(Operation::remove, {each->key()});
  EXPECT_EQ(visited, 3U);
  EXPECT_EQ(statuses_->hwStatus().count(), 0U);
  EXPECT_EQ(Mox::iterate(*statuses_, 131), nullptr);
}

class ReflectedDependentVrfInfo : public ::testing::Test {
 protected:
  static constexpr Mox::AttributeId members = 131;

  AnyValue ask(Operation operation, const std::vector<AnyValue>& arguments = {}) {
    const Mox::Answer answer = access(*info_, members, operation, arguments);
    EXPECT_EQ(answer.code, ReturnCode::success);
    return answer.value;
  }

  Mox::Ptr<DependentVrfInfo> info_ = Mox::makeActivePtr<DependentVrfInfo>("blue");
  const L3::VrfName red_{"red"};
};

TEST_F(ReflectedDependentVrfInfo, ReadsItsKeyAndRefusesToWriteIt) {
  EXPECT_EQ(access(*info_, 130, Operation::read).value, AnyValue(L3::VrfName("blue")));
  EXPECT_EQ(access(*info_, 130, Operation::write, {red_}).code, ReturnCode::notSupported);
  EXPECT_EQ(info_->fallbackVrf(), "blue");
}

TEST_F(ReflectedDependentVrfInfo, AddsAMemberByWritingTrue) {
  EXPECT_EQ(ask(Operation::read, {red_}), AnyValue(false));
  ask(Operation::write, {red_, true});
  ask(Operation::write, {red_, true});
  EXPECT_TRUE(info_->dependentVrfs(red_));
  EXPECT_EQ(ask(Operation::read, {red_}), AnyValue(true));
  EXPECT_EQ(ask(Operation::has, {red_}), AnyValue(true));
  EXPECT_EQ(ask(Operation::count), AnyValue(1U));
}

TEST_F(ReflectedDependentVrfInfo, WritingFalseRaisesTheErrorForSettingAMemberToFalse) {
  info_->dependentVrfsIs(red_);
  EXPECT_EQ(refusal<Mox::FalseMemberException>([&] {
              access(*info_, members, Operation::write, {red_, false});
            }),
            "a member of the set 'dependentVrfs' cannot be set to false, only deleted");
  EXPECT_TRUE(info_->dependentVrfs(red_));
}

TEST_F(ReflectedDependentVrfInfo, RemovesAMemberAndTellsWhetherItWasOne) {
  info_->dependentVrfsIs(red_);
  EXPECT_EQ(ask(Operation::remove, {red_}), AnyValue(true));
  EXPECT_EQ(ask(Operation::remove, {red_}), AnyValue(false));
  EXPECT_EQ(ask(Operation::count), AnyValue(0U));
}

TEST_F(ReflectedDependentVrfInfo, TellsItsCapacity) {
  info_->dependentVrfsIs(red_);
  EXPECT_EQ(ask(Operation::capacity), AnyValue(info_->dependentVrfs().capacity()));
}

TEST_F(ReflectedDependentVrfInfo, IsIteratedByItsMembersWhichHaveNoValue) {
  for (const char* vrf : {"red", "green", "default"})
    info_->dependentVrfsIs(vrf);
  std::set<std::string> visited;
  for (const auto member = Mox::iterate(*info_, members); *member; member->next()) {
    visited.insert(member->key().as<L3::VrfName>().str());
    EXPECT_EQ(member->value().type(), nullptr);
    ask(Operation::remove, {member->key()});
  }
  EXPECT_THAT(visited, ElementsAre("default", "green", "red"));
  EXPECT_EQ(info_->dependentVrfs().count(), 0U);
  EXPECT_EQ(Mox::iterate(*info_, 130), nullptr) << "the key is no collection";
}

TEST_F(ReflectedDependentVrfInfo, IterationMayStartAtAMember) {
  for (const char* vrf : {"red", "green"})
    info_->dependentVrfsIs(vrf);
  const auto member = Mox::iterate(*info_, members, L3::VrfName("green"));
  ASSERT_TRUE(*member);
  EXPECT_EQ(member->key(), AnyValue(L3::VrfName("green")));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
