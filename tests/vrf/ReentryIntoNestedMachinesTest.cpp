#include <gmock/gmock.h>

#include <map>
#include <ostream>
#include <stdexcept>
#include <string>

#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "tests/vrf/LiveObjects.h"
#include "tests/vrf/NestedMachines.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Collections of nested machines change while they are walked.
using ReentryIntoNestedMachines = NestedMachines;

TEST_F(ReentryIntoNestedMachines, VrfInstanceThatIsRemovedByItsOwnRemovalHookGoesOnce) {
  routes->vrfStatusIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    EXPECT_EQ(vrfSm->vrfInstanceDel("red"), nullptr);
    routes->vrfStatusDel("red");
  });
  routes->vrfStatusDel("red");
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
  expectMachinesInStep();
}

TEST_F(ReentryIntoNestedMachines, VrfThatComesBackWhileItIsRemovedHasANewInstance) {
  routes->vrfStatusIs("red");
  const auto before = *vrfSm->moxVrfInstance().find("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusIs("red"); });

  routes->vrfStatusDel("red");

  expectMachinesInStep();
  const auto after = *vrfSm->moxVrfInstance().find("red");
  EXPECT_NE(after, before);
  EXPECT_EQ(before->vrfSm(), nullptr);
  EXPECT_TRUE(before->isZombie());
  EXPECT_FALSE(after->isZombie());
  forget();
  routes->vrfStatus("red")->vrfIdIs(7);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_F(ReentryIntoNestedMachines, VrfInstanceMayBeRemovedWhileItsIdIsHandled) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusDel("red"); });

  red->vrfIdIs(7);

  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red", "updateVrf red"));
  expectMachinesInStep();
  EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
  red->vrfIdIs(8);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(ReentryIntoNestedMachines, VrfInstanceThatIsRemovedWhileItIsRepointedStaysCutOff) {
  routes->vrfStatusIs("red");
  const auto instance = *vrfSm->moxVrfInstance().find("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusDel("red"); });
  const auto other = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  other->vrfIdIs(9);

  routes->vrfStatusIs(other);

  EXPECT_TRUE(instance->isZombie());
  EXPECT_FALSE(instance->hasNotificationActive());
  EXPECT_EQ(instance->vrfSm(), nullptr);
}

TEST_F(ReentryIntoNestedMachines, VrfInstanceMayBeRemovedWhileItIsRepointed) {
  routes->vrfStatusIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusDel("red"); });
  const auto other = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  other->vrfIdIs(9);

  routes->vrfStatusIs(other);

  expectMachinesInStep();
  EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
  forget();
  other->vrfIdIs(10);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(ReentryIntoNestedMachines, VrfInstanceMayBeRepointedWhileItIsRepointed) {
  routes->vrfStatusIs("red");
  created(actionOf("red"));
  const auto second = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  const auto third = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  second->vrfIdIs(2);
  third->vrfIdIs(3);
  duringFirstUpdate([&](const VrfAction&) { routes->vrfStatusIs(third); });

  routes->vrfStatusIs(second);

  expectMachinesInStep();
  forget();
  second->vrfIdIs(22);
  EXPECT_THAT(journal.take(), IsEmpty());
  third->vrfIdIs(33);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_F(ReentryIntoNestedMachines, IdMayChangeAgainWhileItIsHandled) {
  const auto red = routes->vrfStatusIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { red->vrfIdIs(8); });
  red->vrfIdIs(7);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red", "updateVrf red"));
}

TEST_F(ReentryIntoNestedMachines, RemovalOfAllVrfInstancesSurvivesARemovalOfAllWithinIt) {
  for (const char* vrf : {"red", "green", "blue"}) {
    routes->vrfStatusIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) { vrfSm->vrfInstanceDelAll(); });

  vrfSm->vrfInstanceDelAll();

  const std::map<std::string, int> onceEach{
      {"updateVrf red", 1}, {"updateVrf green", 1}, {"updateVrf blue", 1}};
  EXPECT_EQ(counted(journal.take()), onceEach);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  EXPECT_EQ(live(VrfSm::VrfInstanceSm::typeName), 0U);
}

TEST_F(ReentryIntoNestedMachines, RemovalOfAllVrfInstancesMayReleaseTheMachine) {
  for (const char* vrf : {"red", "green", "blue"}) {
    routes->vrfStatusIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) { vrfSm = nullptr; });
  vrfSm->vrfInstanceDelAll();
  EXPECT_EQ(updates_, 3);
  EXPECT_EQ(live(VrfSm::typeName), 0U);
}

TEST_F(ReentryIntoNestedMachines, EnteringTheZombieStateSurvivesTheRemovalOfWhatIsVisited) {
  for (const char* vrf : {"red", "green", "blue"}) {
    routes->vrfStatusIs(vrf);
    routes->vrfPrefixLensInExactMatchIs(vrf);
    routes6->vrfPrefixLensInExactMatchIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm->vrfInstanceDelAll();
    vrfSm->vrfPrefixLensInExactMatchDelAll();
    vrfSm->vrfPrefixLensInExactMatchV6DelAll();
  });

  vrfSm->moxDoZombieReactors(true);

  EXPECT_TRUE(vrfSm->isZombie());
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 0U);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatchV6().count(), 0U);
}

// The two families of prefix lengths, which are twins.
struct PrefixLensFamily {
  const char* name;
  Routing::Hardware::RouteStatusBase& (*routes)(const DrivenVrfSm&);
  bool (*follows)(const VrfSm&, const char*);
  std::size_t (*liveMachines)();
  void (*delAll)(VrfSm&);
};

void PrintTo(const PrefixLensFamily& family, std::ostream* stream) {
  *stream << family.name;
}

const PrefixLensFamily ipv4{
    "Ipv4", [](const DrivenVrfSm& on) -> Routing::Hardware::RouteStatusBase& { return *on.routes; },
    [](const VrfSm& vrfSm, const char* name) {
      return vrfSm.vrfPrefixLensInExactMatch().has(name);
    },
    [] { return live(VrfSm::NestedSm_VrfPrefixLensInExactMatch::typeName); },
    [](VrfSm& vrfSm) { vrfSm.vrfPrefixLensInExactMatchDelAll(); }};
const PrefixLensFamily ipv6{
    "Ipv6",
    [](const DrivenVrfSm& on) -> Routing::Hardware::RouteStatusBase& { return *on.routes6; },
    [](const VrfSm& vrfSm, const char* name) {
      return vrfSm.vrfPrefixLensInExactMatchV6().has(name);
    },
    [] { return live(VrfSm::NestedSm_VrfPrefixLensInExactMatchV6::typeName); },
    [](VrfSm& vrfSm) { vrfSm.vrfPrefixLensInExactMatchV6DelAll(); }};

class ReentryIntoPrefixLens : public NestedMachines,
                              public ::testing::WithParamInterface<PrefixLensFamily> {
 protected:
  Routing::Hardware::RouteStatusBase& family() const { return GetParam().routes(*this); }
  bool follows(const char* name) const { return GetParam().follows(*vrfSm, name); }
};

INSTANTIATE_TEST_SUITE_P(Both, ReentryIntoPrefixLens, ::testing::Values(ipv4, ipv6),
                         [](const ::testing::TestParamInfo<PrefixLensFamily>& instance) {
                           return std::string(instance.param.name);
                         });

TEST_P(ReentryIntoPrefixLens, EntityRemovedWhileItsMachineIsCreatedLeavesNoMachine) {
  created(actionOf("red"));
  Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch> removed;
  duringFirstUpdate(
      [&](const VrfAction&) { removed = family().vrfPrefixLensInExactMatchDel("red"); });

  family().vrfPrefixLensInExactMatchIs("red");

  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 0U);
  EXPECT_EQ(updates_, 2);
  forget();
  removed->prefixLenIs(24);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_P(ReentryIntoPrefixLens, EntityReplacedWhileItsMachineIsCreatedIsFollowedInItsPlace) {
  created(actionOf("red"));
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  duringFirstUpdate([&](const VrfAction&) { family().vrfPrefixLensInExactMatchIs(other); });

  const auto first = family().vrfPrefixLensInExactMatchIs("red");

  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 1U);
  forget();
  first->prefixLenIs(24);
  EXPECT_THAT(journal.take(), IsEmpty());
  other->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_P(ReentryIntoPrefixLens, EntityRemovedAndReplacedWhileItsMachineIsCreatedIsFollowed) {
  created(actionOf("red"));
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  duringFirstUpdate([&](const VrfAction&) {
    family().vrfPrefixLensInExactMatchDel("red");
    family().vrfPrefixLensInExactMatchIs(other);
  });

  family().vrfPrefixLensInExactMatchIs("red");

  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 1U);
  forget();
  other->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_P(ReentryIntoPrefixLens, EntityRemovedAndPutBackWhileItsMachineIsCreatedIsFollowed) {
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    const auto taken = family().vrfPrefixLensInExactMatchDel("red");
    family().vrfPrefixLensInExactMatchIs(taken);
  });

  const auto lens = family().vrfPrefixLensInExactMatchIs("red");

  expectMachinesInStep();
  forget();
  lens->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_P(ReentryIntoPrefixLens, EntityReplacedAndRemovedWhileItsMachineIsCreatedLeavesNoMachine) {
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    family().vrfPrefixLensInExactMatchIs(
        Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red"));
    family().vrfPrefixLensInExactMatchDelAll();
  });
  family().vrfPrefixLensInExactMatchIs("red");
  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, OtherVrfsMayComeAndGoWhileAMachineIsCreated) {
  family().vrfPrefixLensInExactMatchIs("green");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    family().vrfPrefixLensInExactMatchDel("green");
    family().vrfPrefixLensInExactMatchIs("blue");
    family().vrfPrefixLensInExactMatchIs("grey");
  });
  family().vrfPrefixLensInExactMatchIs("red");
  expectMachinesInStep();
  EXPECT_TRUE(follows("red"));
  EXPECT_TRUE(follows("blue"));
  EXPECT_FALSE(follows("green"));
}

TEST_P(ReentryIntoPrefixLens, MachinesCreatedWithinOneAnotherMayLoseTheirEntities) {
  // While the machine of the last of five is created, all their entities go.
  for (int i = 0; i < 5; ++i)
    created(actionOf(numbered("v", i)));
  chip->onUpdate = [&](const VrfAction&) {
    if (++updates_ < 5) {
      family().vrfPrefixLensInExactMatchIs(numbered("v", updates_));
    } else if (updates_ == 5) {
      family().vrfPrefixLensInExactMatchDelAll();
    }
    return HwStatus();
  };

  family().vrfPrefixLensInExactMatchIs("v0");

  EXPECT_EQ(family().vrfPrefixLensInExactMatch().count(), 0U);
  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, MachineReleasedWhileANestedMachineIsCreatedTakesItAlong) {
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) {
    vrfSm = nullptr;
    family().vrfPrefixLensInExactMatchDel("red");
  });
  const auto lens = family().vrfPrefixLensInExactMatchIs("red");
  EXPECT_EQ(live(VrfSm::typeName), 0U);
  EXPECT_EQ(GetParam().liveMachines(), 0U);
  forget();
  lens->prefixLenIs(24);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_P(ReentryIntoPrefixLens, EntityThatComesBackWhileItIsRemovedHasANewMachine) {
  family().vrfPrefixLensInExactMatchIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { family().vrfPrefixLensInExactMatchIs("red"); });

  family().vrfPrefixLensInExactMatchDel("red");

  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 1U);
  forget();
  family().vrfPrefixLensInExactMatch("red")->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre("updateVrf red"));
}

TEST_P(ReentryIntoPrefixLens, EntityMayBeRemovedWhileItsChangeIsHandled) {
  const auto lens = family().vrfPrefixLensInExactMatchIs("red");
  created(actionOf("red"));
  duringFirstUpdate([&](const VrfAction&) { family().vrfPrefixLensInExactMatchDel("red"); });
  lens->prefixLenIs(24);
  EXPECT_EQ(updates_, 2);
  expectMachinesInStep();
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, RemovalOfAllSurvivesRemovalsAndAdditionsWithinIt) {
  for (const char* vrf : {"red", "green", "blue"}) {
    family().vrfPrefixLensInExactMatchIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) { GetParam().delAll(*vrfSm); });

  GetParam().delAll(*vrfSm);

  const std::map<std::string, int> onceEach{
      {"updateVrf red", 1}, {"updateVrf green", 1}, {"updateVrf blue", 1}};
  EXPECT_EQ(counted(journal.take()), onceEach);
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, RemovalOfAllMayReleaseTheMachine) {
  for (const char* vrf : {"red", "green", "blue"}) {
    family().vrfPrefixLensInExactMatchIs(vrf);
    created(actionOf(vrf));
  }
  duringFirstUpdate([&](const VrfAction&) { vrfSm = nullptr; });
  GetParam().delAll(*vrfSm);
  EXPECT_EQ(updates_, 3);
  EXPECT_EQ(live(VrfSm::typeName), 0U);
  EXPECT_EQ(GetParam().liveMachines(), 0U);
}

TEST_P(ReentryIntoPrefixLens, CreationWhoseHookReplacesTheEntityAndThrowsCanBeRepeated) {
  created(actionOf("red"));
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  duringFirstUpdate([&](const VrfAction&) {
    family().vrfPrefixLensInExactMatchIs(other);
    throw std::runtime_error("chip is gone");
  });

  EXPECT_THROW(family().vrfPrefixLensInExactMatchIs("red"), std::runtime_error);

  EXPECT_EQ(GetParam().liveMachines(), 0U);
  family().vrfPrefixLensInExactMatchDel("red");
  family().vrfPrefixLensInExactMatchIs(other);
  expectMachinesInStep();
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
