#include <gmock/gmock.h>

#include <array>
#include <ostream>
#include <stdexcept>

#include "Mox/Exceptions.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "tests/vrf/BothSinks.h"
#include "tests/vrf/DrivenVrfSm.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

using Routing::Hardware::VrfStatus;
using Messages = std::vector<ExpectedMessage>;

class VrfInstanceTracking : public DrivenVrfSmTest {
 protected:
  VrfInstanceTracking() { start(); }

  Mox::Ptr<VrfSm::VrfInstanceSm> instanceOf(const L3::VrfName& name) const {
    const auto* found = vrfSm->moxVrfInstance().find(name);
    return found == nullptr ? nullptr : *found;
  }
};

TEST_F(VrfInstanceTracking, AssignedIdUpdatesWhatNamesTheVrfOnce) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  created(actionOf("blue"));

  red->vrfIdIs(7);

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

// Lists of actions are found by the number of the VRF's name.
TEST_F(VrfInstanceTracking, VrfWithTheNumberAfterTheHighestOfAnActionHasNoActions) {
  std::vector<L3::VrfName> names{L3::VrfName("vrf0")};
  unsigned highest = names.back().number();
  do {
    highest = std::max(highest, names.back().number());
    names.emplace_back("vrf" + std::to_string(names.size()));
  } while (names.back().number() != highest + 1 || names.size() < 100);
  created(actionOf((names.rbegin() + 1)->bytes()));

  routes->vrfStatusIs(names.back())->vrfIdIs(7);

  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, VrfThatATraceSinkAddsMeanwhileHasOneInstance) {
  const auto red = VrfStatus::VrfStatusIs("red");
  Mox::Ptr<VrfSm::VrfInstanceSm> inner;
  const Mox::TraceSink before = Mox::traceSinkIs([&](std::string_view) {
    Mox::traceLevelsIs("ZelVrfSelection=0");
    inner = vrfSm->vrfInstanceIs(red);
  });
  Mox::traceLevelsIs("ZelVrfSelection=5");
  const auto outer = vrfSm->vrfInstanceIs(red);
  Mox::traceSinkIs(before);
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(outer, inner);
  EXPECT_EQ(instanceOf("red"), inner);
  created(actionOf("red"));
  red->vrfIdIs(7);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_F(VrfInstanceTracking, AssignedIdReachesTwoLevelsOfDependentVrfs) {
  const auto red = routes->vrfStatusIs("red");
  for (const char* vrf : {"red", "green", "blue", "grey"})
    created(actionOf(vrf));
  fallback->fallbackVrfIs("green", "red");
  fallback->fallbackVrfIs("blue", "green");
  fallback->fallbackVrfIs("grey", "blue");
  forget();

  red->vrfIdIs(7);

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red", "updateVrf green", "updateVrf blue"));
}

TEST_F(VrfInstanceTracking, EachChangeToAnotherIdUpdatesAgain) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  red->vrfIdIs(7);
  red->vrfIdIs(8);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red", "updateVrf red"));
}

TEST_F(VrfInstanceTracking, IdBackToZeroIsTracedAndUpdatesNothing) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  red->vrfIdIs(7);
  forget();
  const BothSinks sinks;

  red->vrfIdIs(0);

  const Messages expected{
      {5, 201, "handleVrfId", "VrfSm::VrfInstanceSm::handleVrfId: VRF:red vrfId:0"},
      {7, 206, "handleVrfId",
       "VrfSm::VrfInstanceSm::handleVrfId VRF ID not assigned yet, Skipping"}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, IdOfTheDefaultVrfIsTracedAndUpdatesNothingWhateverItIs) {
  const auto status = routes->vrfStatusIs("default");
  created(actionOf("default"));
  const BothSinks sinks;

  status->vrfIdIs(7);
  status->vrfIdIs(0);
  status->vrfIdIs(0xffffffff);

  const Messages expected{
      {5, 201, "handleVrfId", "VrfSm::VrfInstanceSm::handleVrfId: VRF:default vrfId:7"},
      {5, 201, "handleVrfId", "VrfSm::VrfInstanceSm::handleVrfId: VRF:default vrfId:0"},
      {5, 201, "handleVrfId", "VrfSm::VrfInstanceSm::handleVrfId: VRF:default vrfId:4294967295"}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, AssignedIdIsTracedInBothSinksBeforeTheUpdate) {
  const auto red = routes->vrfStatusIs("red");
  const BothSinks sinks;

  red->vrfIdIs(7);

  const Messages expected{
      {5, 201, "handleVrfId", "VrfSm::VrfInstanceSm::handleVrfId: VRF:red vrfId:7"},
      updatingAll("red")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TEST_F(VrfInstanceTracking, NewInstanceIsTracedInBothSinksAndUpdatesNothingThoughItHasAnId) {
  created(actionOf("red"));
  const auto red = VrfStatus::VrfStatusIs("red");
  red->vrfIdIs(7);
  const BothSinks sinks;

  routes->vrfStatusIs(red);

  const Messages expected{
      {5, 227, "handleInitialized", "VrfSm::VrfInstanceSm::handleInitialized: VRF:red vrfId:7"}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  EXPECT_THAT(journal.take(), IsEmpty());
  red->vrfIdIs(8);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

struct Removed {
  const char* vrf;
  std::uint32_t vrfId;
};

void PrintTo(const Removed& removed, std::ostream* stream) {
  *stream << removed.vrf << " with id " << removed.vrfId;
}

class RemovedVrfInstance : public VrfInstanceTracking,
                           public ::testing::WithParamInterface<Removed> {};

TEST_P(RemovedVrfInstance, IsTracedInBothSinksAndUpdatesWhatNamesTheVrfOnce) {
  const auto& [vrf, vrfId] = GetParam();
  routes->vrfStatusIs(vrf)->vrfIdIs(vrfId);
  created(actionOf(vrf));
  const BothSinks sinks;

  routes->vrfStatusDel(vrf);

  const Messages expected{
      {5, 219, "handleVrfRemove",
       std::string("VrfSm::VrfInstanceSm::handleVrfRemove: VRF:") + vrf +
           " vrfId:" + std::to_string(vrfId)},
      updatingAll(vrf),
      {5, 137, "updateAllVrfActions",
       std::string("ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions: Updating VRF HW instance "
                   "for: ") +
           vrf}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  EXPECT_THAT(journal.take(), ElementsAre(std::string("updateVrf ") + vrf));
  EXPECT_FALSE(vrfSm->moxVrfInstanceHas(vrf));
}

INSTANTIATE_TEST_SUITE_P(WhateverItsNameAndId, RemovedVrfInstance,
                         ::testing::Values(Removed{"red", 7}, Removed{"red", 0},
                                           Removed{"default", 7}, Removed{"default", 0}),
                         [](const ::testing::TestParamInfo<Removed>& instance) {
                           return instance.param.vrf + std::to_string(instance.param.vrfId);
                         });

TEST_F(VrfInstanceTracking, RemovalReachesTwoLevelsOfDependentVrfs) {
  routes->vrfStatusIs("red");
  for (const char* vrf : {"red", "green", "blue"})
    created(actionOf(vrf));
  fallback->fallbackVrfIs("green", "red");
  fallback->fallbackVrfIs("blue", "green");
  forget();

  routes->vrfStatusDel("red");

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red", "updateVrf green", "updateVrf blue"));
}

TEST_F(VrfInstanceTracking, SameStatusTwiceMakesOneInstanceAndRunsNoHandler) {
  const auto red = VrfStatus::VrfStatusIs("red");
  red->vrfIdIs(7);
  created(actionOf("red"));
  const auto instance = vrfSm->vrfInstanceIs(red);
  const BothSinks sinks;

  EXPECT_EQ(vrfSm->vrfInstanceIs(red), instance);

  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(BothSinks::ring(), IsEmpty());
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, OtherStatusOfTheSameNameRepointsTheInstanceAndLooksAtItsIdAtOnce) {
  const auto before = routes->vrfStatusIs("red");
  created(actionOf("red"));
  const auto instance = instanceOf("red");
  const auto after = VrfStatus::VrfStatusIs("red");
  after->vrfIdIs(9);
  const BothSinks sinks;

  routes->vrfStatusIs(after);

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
  EXPECT_EQ(sinks.text().at(0), BothSinks::textOf({{5, 201, "handleVrfId",
                                                    "VrfSm::VrfInstanceSm::handleVrfId: VRF:red "
                                                    "vrfId:9"}})[0]);
  EXPECT_EQ(instanceOf("red"), instance);
  EXPECT_EQ(instance->vrfInstance(), after);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
}

TEST_F(VrfInstanceTracking, RepointedInstanceHearsTheNewStatusAndNoLongerTheOld) {
  const auto before = routes->vrfStatusIs("red");
  const auto after = VrfStatus::VrfStatusIs("red");
  routes->vrfStatusIs(after);
  created(actionOf("red"));

  before->vrfIdIs(7);
  EXPECT_THAT(journal.take(), IsEmpty());
  after->vrfIdIs(8);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_F(VrfInstanceTracking, RepointingToAStatusWithoutAnIdUpdatesNothing) {
  routes->vrfStatusIs("red")->vrfIdIs(7);
  created(actionOf("red"));
  const BothSinks sinks;

  routes->vrfStatusIs(VrfStatus::VrfStatusIs("red"));

  const Messages expected{
      {5, 201, "handleVrfId", "VrfSm::VrfInstanceSm::handleVrfId: VRF:red vrfId:0"},
      {7, 206, "handleVrfId",
       "VrfSm::VrfInstanceSm::handleVrfId VRF ID not assigned yet, Skipping"}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, NullStatusRaisesTheNullArgumentErrorAndChangesNothing) {
  routes->vrfStatusIs("red");
  const auto instance = instanceOf("red");

  EXPECT_THROW(vrfSm->vrfInstanceIs(nullptr), Mox::NullArgumentException);

  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
  EXPECT_EQ(instanceOf("red"), instance);
}

TEST_F(VrfInstanceTracking, NotifierThatIsNoVrfStatusCountsAsNone) {
  const auto red = routes->vrfStatusIs("red");
  const auto instance = instanceOf("red");
  created(actionOf("red"));
  const BothSinks sinks;

  instance->notifierIs(routes);

  EXPECT_EQ(instance->vrfInstance(), nullptr);
  EXPECT_EQ(instance->vrfName(), L3::VrfName());
  EXPECT_THAT(sinks.text(), IsEmpty());
  red->vrfIdIs(7);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, InstanceWithoutAStatusTakesTheNextOneOfItsName) {
  const auto red = routes->vrfStatusIs("red");
  red->vrfIdIs(7);
  created(actionOf("red"));
  instanceOf("red")->notifierIs(nullptr);

  vrfSm->vrfInstanceIs(red);

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
  EXPECT_EQ(instanceOf("red")->vrfInstance(), red);
}

TEST_F(VrfInstanceTracking, InstanceWithoutAStatusHasNoIdToPropagate) {
  routes->vrfStatusIs("red")->vrfIdIs(7);
  const auto instance = instanceOf("red");
  instance->notifierIs(nullptr);
  const BothSinks sinks;
  instance->handleVrfId();
  const Messages expected{
      {5, 201, "handleVrfId", "VrfSm::VrfInstanceSm::handleVrfId: VRF: vrfId:0"},
      {7, 206, "handleVrfId",
       "VrfSm::VrfInstanceSm::handleVrfId VRF ID not assigned yet, Skipping"}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, InstanceWithoutAStatusIsSilencedByItsRemovalOnly) {
  routes->vrfStatusIs("red");
  const auto instance = instanceOf("red");
  instance->notifierIs(nullptr);
  instance->moxDoZombieReactors(true);
  EXPECT_TRUE(instance->hasNotificationActive());
  vrfSm->vrfInstanceDel("red");
  EXPECT_FALSE(instance->hasNotificationActive());
}

TEST_F(VrfInstanceTracking, ZombieThatIsRepointedRunsNoHandler) {
  routes->vrfStatusIs("red");
  const auto instance = instanceOf("red");
  instance->moxDoZombieReactors(true);
  const auto after = VrfStatus::VrfStatusIs("red");
  after->vrfIdIs(7);
  const BothSinks sinks;

  instance->notifierIs(after);

  EXPECT_EQ(instance->vrfInstance(), after);
  EXPECT_THAT(sinks.text(), IsEmpty());
}

TEST_F(VrfInstanceTracking, OnlyTheIdAttributeIsHeard) {
  routes->vrfStatusIs("red")->vrfIdIs(7);
  created(actionOf("red"));
  const auto instance = instanceOf("red");

  constexpr std::array<Mox::AttributeId, 5> others{0, 130, 258, 260, 392};
  for (const Mox::AttributeId other : others)
    instance->onAttribute(other, nullptr);
  EXPECT_THAT(journal.take(), IsEmpty());
  instance->onAttribute(259, nullptr);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_F(VrfInstanceTracking, ZombieHearsNothing) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  const auto instance = instanceOf("red");
  instance->moxDoZombieReactors(true);
  forget();

  red->vrfIdIs(7);
  instance->onAttribute(259, nullptr);

  EXPECT_FALSE(instance->hasNotificationActive());
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, EveryChangeOfTheZombieStateUpdatesAndARepetitionDoesNot) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  const auto instance = instanceOf("red");

  instance->moxDoZombieReactors(false);
  EXPECT_THAT(journal.take(), IsEmpty());
  instance->moxDoZombieReactors(true);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
  instance->moxDoZombieReactors(true);
  EXPECT_THAT(journal.take(), IsEmpty());
  instance->moxDoZombieReactors(false);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
  EXPECT_TRUE(instance->hasNotificationActive());
  red->vrfIdIs(7);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_F(VrfInstanceTracking, InstanceMadeWhileItsOwnerIsAZombieIsOneFromTheStart) {
  vrfSm->moxDoZombieReactors(true);
  const auto red = VrfStatus::VrfStatusIs("red");
  const BothSinks sinks;

  const auto instance = vrfSm->vrfInstanceIs(red);

  EXPECT_TRUE(instance->isZombie());
  const Messages expected{
      {5, 227, "handleInitialized", "VrfSm::VrfInstanceSm::handleInitialized: VRF:red vrfId:0"},
      {5, 219, "handleVrfRemove", "VrfSm::VrfInstanceSm::handleVrfRemove: VRF:red vrfId:0"},
      updatingAll("red")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
}

TEST_F(VrfInstanceTracking, RemovedInstanceIsCutOffFromItsOwner) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  const auto instance = instanceOf("red");
  vrfSm->vrfInstanceDel("red");
  forget();

  EXPECT_TRUE(instance->isZombie());
  EXPECT_EQ(instance->vrfSm(), nullptr);
  EXPECT_FALSE(instance->hasNotificationActive());
  red->vrfIdIs(7);
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(instance->references(), 1U);
}

TEST_F(VrfInstanceTracking, DestructionOfARemovedInstanceRunsNoHandler) {
  routes->vrfStatusIs("red");
  Mox::Ptr<VrfSm::VrfInstanceSm> instance = vrfSm->vrfInstanceDel("red");
  const BothSinks sinks;

  instance = nullptr;

  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(BothSinks::ring(), IsEmpty());
}

TEST_F(VrfInstanceTracking, RemovalGivesTheInstance) {
  routes->vrfStatusIs("red");
  const auto instance = instanceOf("red");
  EXPECT_EQ(vrfSm->vrfInstanceDel("red"), instance);
}

TEST_F(VrfInstanceTracking, RemovalOfAnUnknownNameHasNoEffect) {
  routes->vrfStatusIs("red");
  const BothSinks sinks;

  EXPECT_EQ(vrfSm->vrfInstanceDel("blue"), nullptr);

  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
  EXPECT_THAT(sinks.text(), IsEmpty());
}

TEST_F(VrfInstanceTracking, RemovalOfAllRemovesEachWithItsUpdate) {
  for (const char* vrf : {"red", "green", "blue"}) {
    routes->vrfStatusIs(vrf);
    created(actionOf(vrf));
  }

  vrfSm->vrfInstanceDelAll();

  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  EXPECT_THAT(journal.take(),
              UnorderedElementsAre("updateVrf red", "updateVrf green", "updateVrf blue"));
}

TEST_F(VrfInstanceTracking, InstanceIsKeyedAndNamedByItsVrf) {
  routes->vrfStatusIs("red");
  const auto instance = instanceOf("red");
  EXPECT_TRUE(vrfSm->moxVrfInstanceHas("red"));
  EXPECT_FALSE(vrfSm->moxVrfInstanceHas("blue"));
  EXPECT_EQ(instance->fwkKey(), L3::VrfName("red"));
  EXPECT_EQ(instance->vrfName(), L3::VrfName("red"));
  EXPECT_EQ(instance->vrfInstanceName(), L3::VrfName("red"));
  EXPECT_EQ(instance->vrfSm(), vrfSm.get());
}

TEST_F(VrfInstanceTracking, RemovalWhoseHookThrowsStillTakesTheInstanceAwayAndCutsItOff) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  const auto instance = instanceOf("red");
  chip->onUpdate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("chip is gone"); };

  EXPECT_THROW(routes->vrfStatusDel("red"), std::runtime_error);

  chip->onUpdate = nullptr;
  forget();
  EXPECT_FALSE(vrfSm->moxVrfInstanceHas("red"));
  EXPECT_TRUE(instance->isZombie());
  EXPECT_EQ(instance->vrfSm(), nullptr);
  EXPECT_FALSE(instance->hasNotificationActive());
  red->vrfIdIs(7);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfInstanceTracking, NameOverAHundredBytesRaisesTheRangeError) {
  routes->vrfStatusIs("red");
  try {
    vrfSm->vrfInstanceDel(std::string(101, 'x'));
    FAIL() << "a name of 101 bytes was accepted";
  } catch (const Mox::RangeException& error) {
    EXPECT_STREQ(error.what(), "Mox::String::bytes > maxLength() not allowed");
  }
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
