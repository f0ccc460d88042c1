#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

#include "Mox/Dir.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "testing/RecordingVrfHelper.h"
#include "testing/TableJournal.h"

namespace ZelVrfSelectionPolicy {
namespace {

using PolicyMap::ActionType;
using ::testing::ElementsAre;
using Testing::Journal;
using Testing::RecordingVrfHelper;

static_assert(std::is_abstract_v<VrfHelper>);
static_assert(std::is_base_of_v<Zel::ZelBaseHelper, VrfHelper>);
static_assert(std::is_base_of_v<Mox::Entity, Zel::ZelBaseHelper>);
static_assert(VrfHelper::vrfFallbackConfigAttribute == 386 &&
              VrfHelper::routingHwRouteStatusAttribute == 387 &&
              VrfHelper::routing6HwRouteStatusAttribute == 388 &&
              VrfHelper::createVrfAttribute == 389 && VrfHelper::updateVrfAttribute == 390 &&
              VrfHelper::deleteVrfAttribute == 391);

template <class Helper>
concept ReferencesAreWritable = requires(Helper& helper) {
  helper.vrfFallbackConfigIs(nullptr);
}
|| requires(Helper& helper) {
  helper.routingHwRouteStatusIs(nullptr);
}
|| requires(Helper& helper) {
  helper.routing6HwRouteStatusIs(nullptr);
};
static_assert(!ReferencesAreWritable<VrfHelper>, "fixed at construction");

class VrfHelperOfAgent : public ::testing::Test {
 protected:
  Journal journal_;
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback_ =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6_ =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<RecordingVrfHelper> helper_ =
      Mox::makePtr<RecordingVrfHelper>(journal_, fallback_, routes_, routes6_);
};

TEST_F(VrfHelperOfAgent, GivesItsThreeReferencesAndHoldsEachOnce) {
  EXPECT_EQ(helper_->vrfFallbackConfig(), fallback_);
  EXPECT_EQ(helper_->routingHwRouteStatus(), routes_);
  EXPECT_EQ(helper_->routing6HwRouteStatus(), routes6_);
  EXPECT_EQ(fallback_->references(), 2U);
  EXPECT_EQ(routes_->references(), 2U);
  EXPECT_EQ(routes6_->references(), 2U);
}

TEST_F(VrfHelperOfAgent, ReleasesItsReferencesWhenItGoes) {
  helper_ = nullptr;
  EXPECT_EQ(fallback_->references(), 1U);
  EXPECT_EQ(routes_->references(), 1U);
  EXPECT_EQ(routes6_->references(), 1U);
}

TEST_F(VrfHelperOfAgent, MayBeBuiltWithoutReferences) {
  const auto bare = Mox::makePtr<RecordingVrfHelper>(journal_);
  EXPECT_EQ(bare->vrfFallbackConfig(), nullptr);
  EXPECT_EQ(bare->routingHwRouteStatus(), nullptr);
  EXPECT_EQ(bare->routing6HwRouteStatus(), nullptr);
}

TEST_F(VrfHelperOfAgent, ItsNameStringIsItsName) {
  EXPECT_EQ(helper_->name(), Velo::String("recorder"));
  const Mox::Ptr<Mox::Entity> entity = helper_;
  EXPECT_EQ(entity->nameString(), Velo::String("recorder"));
}

TEST_F(VrfHelperOfAgent, IsOfItsOwnType) {
  EXPECT_EQ(helper_->fwkType()->name, "ZelVrfSelectionPolicy::VrfHelper");
}

TEST_F(VrfHelperOfAgent, NobodyCanSubscribe) {
  EXPECT_EQ(static_cast<unsigned>(helper_->notifieeList().kind), 0U);
}

TEST_F(VrfHelperOfAgent, HasAParentWhileADirectoryHoldsIt) {
  EXPECT_EQ(helper_->parent(), nullptr);
  const auto dir = Mox::Dir::DirIs("helpers");
  dir->entryIs(helper_);
  EXPECT_EQ(helper_->parent(), dir);
  dir->entryDel("recorder");
  EXPECT_EQ(helper_->parent(), nullptr);
}

/// A helper that tells of its parents.
class Child final : public VrfHelper {
 public:
  explicit Child(Journal& journal)
      : VrfHelper("child", nullptr, nullptr, nullptr), told_(journal) {}
  void handleParent(const Mox::Ptr<Mox::Entity>& parent) override {
    told_.write(parent ? "parent " + parent->nameString().str() : "no parent");
  }
  HwStatus createVrf(const VrfAction&) override { return {}; }
  HwStatus updateVrf(const VrfAction&) override { return {}; }
  void deleteVrf(const VrfAction&) override {}

 private:
  Journal& told_;
};

TEST_F(VrfHelperOfAgent, IsToldOfEachChangeOfItsParent) {
  const auto child = Mox::makePtr<Child>(journal_);
  const auto dir = Mox::Dir::DirIs("helpers");
  child->parentIs(dir);
  child->parentIs(dir);
  child->parentIs(nullptr);
  EXPECT_THAT(journal_.lines(), ElementsAre("parent helpers", "no parent"));
}

TEST_F(VrfHelperOfAgent, AFailedCreationStillLeavesItsRecordStoredForTheAction) {
  HwStatus failed;
  failed.statusIs(ProgrammingResult::programmingFailure);
  failed.failureReasonIs(FailureCode::failureVrfResourceExhausted);
  failed.failureDescriptionIs("no room");
  helper_->onCreate = [&](const VrfAction&) { return failed; };

  const auto users = vrfHwConfigFactory();
  const auto statuses = vrfHwStatusFactory();
  const auto sm = vrfSmFactory(users, statuses, helper_, fallback_, routes_, routes6_);
  const Testing::TableJournal tables(journal_, nullptr, statuses);
  const VrfAction red("red", ActionType::vrf);
  users->vrfRefCountInc(red, 1);

  ASSERT_TRUE(statuses->hwStatusHas(red));
  EXPECT_EQ(statuses->hwStatus(red), failed);
  EXPECT_THAT(journal_.lines(), ElementsAre("createVrf red",
                                            "hwStatus red = programmingFailure "
                                            "failureVrfResourceExhausted 'no room'"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
