#include <gmock/gmock.h>

#include <array>
#include <stdexcept>

#include "Mox/Exceptions.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "tests/vrf/BothSinks.h"
#include "tests/vrf/DrivenVrfSm.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

using Routing::Hardware::PrefixLensInExactMatch;
using Messages = std::vector<ExpectedMessage>;
using PrefixLens = Mox::Ptr<PrefixLensInExactMatch>;

// Everything in which the two families differ.
struct Ipv4 {
  using Machine = VrfSm::NestedSm_VrfPrefixLensInExactMatch;
  static constexpr const char* attribute = "vrfPrefixLensInExactMatch";
  static constexpr const char* prefix = "VrfSm::MoxVrfPrefixLensInExactMatch::";
  static constexpr unsigned initializedLine = 242;
  static constexpr unsigned prefixLenLine = 235;

  static auto& routes(const DrivenVrfSm& driven) { return *driven.routes; }
  static const auto& machines(const VrfSm& vrfSm) { return vrfSm.vrfPrefixLensInExactMatch(); }
  static void is(VrfSm& vrfSm, const PrefixLens& lens) { vrfSm.vrfPrefixLensInExactMatchIs(lens); }
  static void del(VrfSm& vrfSm, const char* name) { vrfSm.vrfPrefixLensInExactMatchDel(name); }
  static void delAll(VrfSm& vrfSm) { vrfSm.vrfPrefixLensInExactMatchDelAll(); }
};

struct Ipv6 {
  using Machine = VrfSm::NestedSm_VrfPrefixLensInExactMatchV6;
  static constexpr const char* attribute = "vrfPrefixLensInExactMatchV6";
  static constexpr const char* prefix = "VrfSm::MoxVrfPrefixLensInExactMatchV6::";
  static constexpr unsigned initializedLine = 257;
  static constexpr unsigned prefixLenLine = 249;

  static auto& routes(const DrivenVrfSm& driven) { return *driven.routes6; }
  static const auto& machines(const VrfSm& vrfSm) { return vrfSm.vrfPrefixLensInExactMatchV6(); }
  static void is(VrfSm& vrfSm, const PrefixLens& lens) {
    vrfSm.vrfPrefixLensInExactMatchV6Is(lens);
  }
  static void del(VrfSm& vrfSm, const char* name) { vrfSm.vrfPrefixLensInExactMatchV6Del(name); }
  static void delAll(VrfSm& vrfSm) { vrfSm.vrfPrefixLensInExactMatchV6DelAll(); }
};

template <class Family>
struct OtherFamily {
  using Type = Ipv6;
};
template <>
struct OtherFamily<Ipv6> {
  using Type = Ipv4;
};

struct FamilyName {
  template <class Family>
  static std::string GetName(int /*index*/) {
    return std::is_same_v<Family, Ipv4> ? "Ipv4" : "Ipv6";
  }
};

template <class Family>
class PrefixLensTracking : public DrivenVrfSmTest {
 protected:
  using Machine = typename Family::Machine;
  using Other = typename OtherFamily<Family>::Type;

  PrefixLensTracking() { start(); }

  auto& familyRoutes() const { return Family::routes(*this); }

  Mox::Ptr<Machine> machineOf(const char* name) const {
    const auto* found = Family::machines(*vrfSm).find(name);
    return found == nullptr ? nullptr : *found;
  }
  unsigned machines() const { return Family::machines(*vrfSm).count(); }

  static ExpectedMessage initialized(const std::string& name) {
    return {5, Family::initializedLine, "handleInitialized",
            Family::prefix + ("handleInitialized: VRF:" + name)};
  }
  static ExpectedMessage prefixLen(const std::string& name) {
    return {5, Family::prefixLenLine, "handlePrefixLen",
            Family::prefix + ("handlePrefixLen: VRF:" + name)};
  }
};

using Families = ::testing::Types<Ipv4, Ipv6>;
TYPED_TEST_SUITE(PrefixLensTracking, Families, FamilyName);

TYPED_TEST(PrefixLensTracking, FirstEntryMakesOneMachineTracesAndUpdatesWhatNamesTheVrfOnce) {
  this->created(actionOf("red"));
  this->created(actionOf("blue"));

  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");

  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
  ASSERT_EQ(this->machines(), 1U);
  const auto machine = this->machineOf("red");
  ASSERT_NE(machine, nullptr);
  EXPECT_EQ(machine->prefixLens(), lens);
  EXPECT_EQ(machine->vrfSm(), this->vrfSm.get());
  EXPECT_TRUE(machine->hasNotificationActive());
  EXPECT_FALSE(machine->isZombie());
  EXPECT_EQ(TestFixture::Other::machines(*this->vrfSm).count(), 0U);
}

TYPED_TEST(PrefixLensTracking, CreationIsTracedInBothSinks) {
  const BothSinks sinks;
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  const Messages expected{this->initialized("red"), updatingAll("red")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
}

TYPED_TEST(PrefixLensTracking, ChangeIsTracedInBothSinksAndUpdatesWhatNamesTheVrfOnce) {
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  const BothSinks sinks;

  lens->prefixLenIs(24);

  const Messages expected{this->prefixLen("red"), updatingAll("red")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  this->created(actionOf("red"));
  lens->prefixLenDel(24);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
}

TYPED_TEST(PrefixLensTracking, ChangeReachesTwoLevelsOfDependentVrfs) {
  for (const char* vrf : {"red", "green", "blue", "grey"})
    this->created(actionOf(vrf));
  this->fallback->fallbackVrfIs("green", "red");
  this->fallback->fallbackVrfIs("blue", "green");
  this->fallback->fallbackVrfIs("grey", "blue");
  this->forget();

  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  EXPECT_THAT(this->journal.take(),
              ElementsAre("updateVrf red", "updateVrf green", "updateVrf blue"));
  lens->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(),
              ElementsAre("updateVrf red", "updateVrf green", "updateVrf blue"));
}

TYPED_TEST(PrefixLensTracking, OtherAttributesDoNothing) {
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  const auto machine = this->machineOf("red");
  const BothSinks sinks;

  constexpr std::array<Mox::AttributeId, 5> others{0, 130, 257, 259, 392};
  for (const Mox::AttributeId other : others)
    machine->onAttribute(other, nullptr);
  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(this->journal.take(), IsEmpty());

  machine->onAttribute(258, nullptr);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
}

TYPED_TEST(PrefixLensTracking, RemovalIsTracedUpdatesOnceMoreAndTakesTheMachineAway) {
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  const BothSinks sinks;

  this->familyRoutes().vrfPrefixLensInExactMatchDel("red");

  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
  const Messages expected{this->prefixLen("red"),
                          updatingAll("red"),
                          {5, 137, "updateAllVrfActions",
                           "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions: Updating VRF HW "
                           "instance for: red"}};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_EQ(BothSinks::ring(), BothSinks::ringOf(expected));
  EXPECT_EQ(this->machines(), 0U);
}

TYPED_TEST(PrefixLensTracking, RemovedMachineIsCutOffAndItsDestructionRunsNoHandler) {
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  auto machine = this->machineOf("red");
  this->familyRoutes().vrfPrefixLensInExactMatchDel("red");
  this->forget();

  EXPECT_EQ(machine->references(), 1U);
  EXPECT_TRUE(machine->isZombie());
  EXPECT_EQ(machine->vrfSm(), nullptr);
  EXPECT_FALSE(machine->hasNotificationActive());
  lens->prefixLenIs(24);
  const BothSinks sinks;
  machine = nullptr;
  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(BothSinks::ring(), IsEmpty());
  EXPECT_THAT(this->journal.take(), IsEmpty());
}

TYPED_TEST(PrefixLensTracking, SameEntityTwiceDoesNothingTheSecondTime) {
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  const auto machine = this->machineOf("red");
  const BothSinks sinks;

  TypeParam::is(*this->vrfSm, lens);

  EXPECT_EQ(this->machineOf("red"), machine);
  EXPECT_EQ(this->machines(), 1U);
  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(BothSinks::ring(), IsEmpty());
  EXPECT_THAT(this->journal.take(), IsEmpty());
}

TYPED_TEST(PrefixLensTracking, MachineWithoutAnEntityIsSilencedByItsRemovalOnly) {
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  const auto machine = this->machineOf("red");
  machine->notifierIs(nullptr);
  machine->moxDoZombieReactors(true);
  EXPECT_TRUE(machine->hasNotificationActive());
  this->familyRoutes().vrfPrefixLensInExactMatchDel("red");
  EXPECT_FALSE(machine->hasNotificationActive());
}

TYPED_TEST(PrefixLensTracking, NoNameIsKeptOfPrefixLengthsThatHaveGone) {
  const unsigned number = L3::VrfName("passing").number();
  this->familyRoutes().vrfPrefixLensInExactMatchIs("passing");
  this->familyRoutes().vrfPrefixLensInExactMatchDel("passing");
  EXPECT_EQ(L3::VrfName("another").number(), number);
}

TYPED_TEST(PrefixLensTracking, SameEntityLeavesItsMachineInTheStateOfPendingDeletionThatItIsIn) {
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  const auto machine = this->machineOf("red");
  machine->moxDoZombieReactors(true);
  const BothSinks sinks;

  TypeParam::is(*this->vrfSm, lens);

  EXPECT_TRUE(machine->isZombie());
  EXPECT_THAT(sinks.text(), IsEmpty());
}

TYPED_TEST(PrefixLensTracking, NewEntityUnderTheSameKeyTakesItsMachineBackFromPendingDeletion) {
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  const auto machine = this->machineOf("red");
  machine->moxDoZombieReactors(true);
  const auto other = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");

  TypeParam::is(*this->vrfSm, other);

  EXPECT_FALSE(machine->isZombie());
  EXPECT_EQ(machine->prefixLens(), other);
}

TYPED_TEST(PrefixLensTracking, NewEntityUnderTheSameKeyRepointsTheMachineAndRunsNoHandler) {
  const auto before = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  const auto machine = this->machineOf("red");
  const auto after = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  after->prefixLenIs(8);
  const BothSinks sinks;

  this->familyRoutes().vrfPrefixLensInExactMatchIs(after);

  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(this->journal.take(), IsEmpty());
  EXPECT_EQ(this->machineOf("red"), machine);
  EXPECT_EQ(machine->prefixLens(), after);
  before->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(), IsEmpty());
  after->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
}

TYPED_TEST(PrefixLensTracking, RemovalOfAllRemovesEachWithItsFinalUpdate) {
  for (const char* vrf : {"red", "green", "blue"}) {
    this->familyRoutes().vrfPrefixLensInExactMatchIs(vrf);
    this->created(actionOf(vrf));
  }
  const BothSinks sinks;

  TypeParam::delAll(*this->vrfSm);

  EXPECT_EQ(this->machines(), 0U);
  EXPECT_THAT(this->journal.take(),
              UnorderedElementsAre("updateVrf red", "updateVrf green", "updateVrf blue"));
  const auto traced = counted(sinks.text());
  for (const char* vrf : {"red", "green", "blue"}) {
    EXPECT_EQ(traced.at(BothSinks::textOf({this->prefixLen(vrf)})[0]), 1) << vrf;
  }
}

TYPED_TEST(PrefixLensTracking, NullEntityRaisesTheNullArgumentErrorAndChangesNothing) {
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  const auto machine = this->machineOf("red");
  const BothSinks sinks;
  try {
    TypeParam::is(*this->vrfSm, nullptr);
    FAIL() << "null was accepted";
  } catch (const Mox::NullArgumentException& error) {
    EXPECT_THAT(error.what(), HasSubstr(std::string("'") + TypeParam::attribute + "'"));
  }
  EXPECT_EQ(this->machines(), 1U);
  EXPECT_EQ(this->machineOf("red"), machine);
  EXPECT_THAT(sinks.text(), IsEmpty());
}

TYPED_TEST(PrefixLensTracking, RemovalOfAnUnknownKeyHasNoEffectAndNoTrace) {
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("blue"));
  const BothSinks sinks;

  TypeParam::del(*this->vrfSm, "blue");

  EXPECT_EQ(this->machines(), 1U);
  EXPECT_THAT(sinks.text(), IsEmpty());
  EXPECT_THAT(BothSinks::ring(), IsEmpty());
  EXPECT_THAT(this->journal.take(), IsEmpty());
}

TYPED_TEST(PrefixLensTracking, NameOfAHundredBytesIsFollowed) {
  const std::string name(100, 'x');
  this->created(actionOf(name));
  this->familyRoutes().vrfPrefixLensInExactMatchIs(name);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf " + name));
}

TYPED_TEST(PrefixLensTracking, NameOverAHundredBytesIsTracedAndRaisesTheRangeError) {
  const std::string name(101, 'x');
  const auto red = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  const BothSinks sinks;
  try {
    this->familyRoutes().vrfPrefixLensInExactMatchIs(name);
    FAIL() << "a name of 101 bytes was accepted";
  } catch (const Mox::RangeException& error) {
    EXPECT_STREQ(error.what(), "Mox::String::bytes > maxLength() not allowed");
  }
  const Messages expected{this->initialized(name)};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
  EXPECT_THAT(this->journal.take(), IsEmpty());

  this->familyRoutes().vrfPrefixLensInExactMatchDel(name);
  EXPECT_THAT(this->journal.take(), IsEmpty());
  EXPECT_EQ(this->machines(), 1U);
  red->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
}

TYPED_TEST(PrefixLensTracking, MachineWithoutANotifierReportsTheEmptyName) {
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("a"));
  this->created(actionOf("b", "x", "y"));
  const auto machine = this->machineOf("red");
  machine->notifierIs(this->routes);
  const BothSinks sinks;

  machine->handlePrefixLen();

  EXPECT_EQ(machine->prefixLens(), nullptr);
  EXPECT_EQ(sinks.text().at(0), BothSinks::textOf({this->prefixLen("")})[0]);
  EXPECT_EQ(sinks.text().at(1), BothSinks::textOf({updatingAll("")})[0]);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf a"));
}

TYPED_TEST(PrefixLensTracking, EveryChangeOfTheZombieStateUpdatesAndARepetitionDoesNot) {
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  const auto machine = this->machineOf("red");

  machine->moxDoZombieReactors(false);
  EXPECT_THAT(this->journal.take(), IsEmpty());
  machine->moxDoZombieReactors(true);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
  EXPECT_TRUE(machine->isZombie());
  machine->moxDoZombieReactors(true);
  EXPECT_THAT(this->journal.take(), IsEmpty());
  machine->moxDoZombieReactors(false);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
  EXPECT_FALSE(machine->isZombie());
  lens->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
}

TYPED_TEST(PrefixLensTracking, ZombieIgnoresEveryChange) {
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  const auto machine = this->machineOf("red");
  machine->moxDoZombieReactors(true);
  this->forget();

  lens->prefixLenIs(24);
  machine->onAttribute(258, nullptr);

  EXPECT_FALSE(machine->hasNotificationActive());
  EXPECT_THAT(this->journal.take(), IsEmpty());
}

TYPED_TEST(PrefixLensTracking, MachineMadeWhileItsOwnerIsAZombieIsOneFromTheStart) {
  this->vrfSm->moxDoZombieReactors(true);
  const BothSinks sinks;

  TypeParam::is(*this->vrfSm, PrefixLensInExactMatch::PrefixLensInExactMatchIs("red"));

  EXPECT_TRUE(this->machineOf("red")->isZombie());
  const Messages expected{this->initialized("red"), updatingAll("red"), this->prefixLen("red"),
                          updatingAll("red")};
  EXPECT_EQ(sinks.text(), BothSinks::textOf(expected));
}

TYPED_TEST(PrefixLensTracking, EntriesPresentAtStartAreFollowedFromThen) {
  this->vrfSm = nullptr;
  const auto red = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->familyRoutes().vrfPrefixLensInExactMatchIs("blue");
  this->statuses->hwStatusIs(actionOf("red"), HwStatus());
  this->statuses->hwStatusIs(actionOf("blue"), HwStatus());

  this->vrfSm = VrfSm::VrfSmIs(this->users, this->statuses, this->chip, this->fallback,
                               this->routes, this->routes6);

  EXPECT_THAT(this->journal.take(), UnorderedElementsAre("updateVrf red", "updateVrf blue"));
  EXPECT_EQ(this->machines(), 2U);
  red->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
}

TYPED_TEST(PrefixLensTracking, VrfInBothFamiliesIsUpdatedByEitherAndEachHasItsOwnMachine) {
  this->created(actionOf("red"));
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  TestFixture::Other::routes(*this).vrfPrefixLensInExactMatchIs("red");
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red", "updateVrf red"));

  const BothSinks sinks;
  lens->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
  EXPECT_EQ(sinks.text().at(0), BothSinks::textOf({this->prefixLen("red")})[0]);

  TestFixture::Other::routes(*this).vrfPrefixLensInExactMatchDel("red");
  EXPECT_EQ(this->machines(), 1U);
  EXPECT_EQ(TestFixture::Other::machines(*this->vrfSm).count(), 0U);
}

[[noreturn]] HwStatus chipIsGone(const VrfAction& /*action*/) {
  throw std::runtime_error("chip is gone");
}

TYPED_TEST(PrefixLensTracking, RemovalWhoseHookThrowsStillTakesTheMachineAwayAndCutsItOff) {
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  const auto machine = this->machineOf("red");
  this->chip->onUpdate = chipIsGone;

  EXPECT_THROW(this->familyRoutes().vrfPrefixLensInExactMatchDel("red"), std::runtime_error);

  this->chip->onUpdate = nullptr;
  this->forget();
  EXPECT_EQ(this->machines(), 0U);
  EXPECT_TRUE(machine->isZombie());
  EXPECT_EQ(machine->vrfSm(), nullptr);
  EXPECT_FALSE(machine->hasNotificationActive());
  lens->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(), IsEmpty());
  this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
  EXPECT_EQ(this->machines(), 1U);
}

TYPED_TEST(PrefixLensTracking, ChangeWhoseHookThrowsLeavesTheMachineListening) {
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatchIs("red");
  this->created(actionOf("red"));
  this->chip->onUpdate = chipIsGone;

  EXPECT_THROW(lens->prefixLenIs(24), std::runtime_error);

  this->chip->onUpdate = nullptr;
  this->forget();
  lens->prefixLenIs(25);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
}

TYPED_TEST(PrefixLensTracking, CreationWhoseHookThrowsLeavesNothingBehindAndCanBeRepeated) {
  this->created(actionOf("red"));
  this->chip->onUpdate = chipIsGone;

  EXPECT_THROW(this->familyRoutes().vrfPrefixLensInExactMatchIs("red"), std::runtime_error);

  this->chip->onUpdate = nullptr;
  this->forget();
  EXPECT_EQ(this->machines(), 0U);
  const auto lens = this->familyRoutes().vrfPrefixLensInExactMatch("red");
  lens->prefixLenIs(24);
  EXPECT_THAT(this->journal.take(), IsEmpty());
  TypeParam::is(*this->vrfSm, lens);
  EXPECT_THAT(this->journal.take(), ElementsAre("updateVrf red"));
  EXPECT_EQ(this->machines(), 1U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
