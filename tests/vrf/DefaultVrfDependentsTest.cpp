// The default VRF has no record of dependents unless somebody makes one. Then it is theirs:
// handling of fallback VRFs neither changes nor removes it.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/vrf/DrivenVrfSm.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class DefaultVrfDependents : public DrivenVrfSmTest {
 protected:
  DefaultVrfDependents() { start(); }

  void makeRecord(std::initializer_list<const char*> members) {
    record_ = vrfSm->dependentVrfInfoIs("default");
    for (const char* member : members)
      record_->dependentVrfsIs(member);
  }
  void expectRecordIsInPlace() const { EXPECT_EQ(vrfSm->dependentVrfInfo("default"), record_); }
  std::vector<std::string> members() const {
    std::vector<std::string> names;
    for (auto entry = record_->dependentVrfs().iterator(); entry; ++entry)
      names.push_back(entry.key().str());
    return names;
  }

  Mox::Ptr<DependentVrfInfo> record_;
};

TEST_F(DefaultVrfDependents, AreKeptByAnEntryThatComes) {
  makeRecord({"other"});
  fallback->fallbackVrfIs("v", "default");
  expectRecordIsInPlace();
  EXPECT_THAT(members(), UnorderedElementsAre("other"));
}

TEST_F(DefaultVrfDependents, AreKeptByAChangeToTheDefaultVrf) {
  makeRecord({"other"});
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("v", "default");
  expectRecordIsInPlace();
  EXPECT_THAT(members(), UnorderedElementsAre("other"));
  EXPECT_EQ(vrfSm->dependentVrfInfo("X"), nullptr);
}

TEST_F(DefaultVrfDependents, AreKeptByAChangeFromTheDefaultVrf) {
  makeRecord({"v", "other"});
  fallback->fallbackVrfIs("v", "default");
  fallback->fallbackVrfIs("v", "X");
  expectRecordIsInPlace();
  EXPECT_THAT(members(), UnorderedElementsAre("v", "other"));
  EXPECT_TRUE(vrfSm->dependentVrfInfo("X")->dependentVrfs("v"));
}

TEST_F(DefaultVrfDependents, AreKeptThoughTheVrfThatChangesIsTheLast) {
  makeRecord({"v"});
  fallback->fallbackVrfIs("v", "default");
  fallback->fallbackVrfIs("v", "X");
  expectRecordIsInPlace();
  EXPECT_THAT(members(), UnorderedElementsAre("v"));
}

TEST_F(DefaultVrfDependents, AreKeptByTheRemovalOfAnEntry) {
  makeRecord({"v"});
  fallback->fallbackVrfIs("v", "default");
  fallback->fallbackVrfDel("v");
  expectRecordIsInPlace();
  EXPECT_THAT(members(), UnorderedElementsAre("v"));
  EXPECT_FALSE(vrfSm->fallbackVrfInfo().has("v"));
}

TEST_F(DefaultVrfDependents, AreKeptByTheRemovalOfAllEntries) {
  makeRecord({"v", "w"});
  fallback->fallbackVrfIs("v", "default");
  fallback->fallbackVrfIs("w", "default");
  fallback->fallbackVrfDelAll();
  expectRecordIsInPlace();
  EXPECT_THAT(members(), UnorderedElementsAre("v", "w"));
}

TEST_F(DefaultVrfDependents, AreKeptByRepeatedNotices) {
  makeRecord({"v"});
  fallback->fallbackVrfIs("v", "default");
  vrfSm->handleVrfFallbackConfig("v");
  vrfSm->fallbackVrfInfoDel("v");
  vrfSm->handleVrfFallbackConfig("v");
  vrfSm->handleVrfFallbackConfig("unknown");
  expectRecordIsInPlace();
  EXPECT_THAT(members(), UnorderedElementsAre("v"));
}

TEST_F(DefaultVrfDependents, AreKeptWhenThereAreNone) {
  makeRecord({});
  fallback->fallbackVrfIs("v", "default");
  fallback->fallbackVrfIs("v", "X");
  fallback->fallbackVrfIs("v", "default");
  fallback->fallbackVrfDel("v");
  expectRecordIsInPlace();
  EXPECT_THAT(members(), IsEmpty());
}

TEST_F(DefaultVrfDependents, AreKeptByAMappingThatSomebodyElseStored) {
  makeRecord({"v"});
  vrfSm->fallbackVrfInfoIs("v", "default");
  vrfSm->handleVrfFallbackConfig("v");
  expectRecordIsInPlace();
  EXPECT_THAT(members(), UnorderedElementsAre("v"));
  EXPECT_FALSE(vrfSm->fallbackVrfInfo().has("v"));
}

TEST_F(DefaultVrfDependents, AreUpdatedWithTheDefaultVrf) {
  created(actionOf("v"));
  makeRecord({"v"});
  vrfSm->handleVrfUpdates("default", true);
  EXPECT_EQ(journal.take(), std::vector<std::string>{"updateVrf v"});
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
