// The end of a prefix-length machine that never entered a collection.

#include <stdexcept>
#include <string>

#include "Mox/Exceptions.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "tests/vrf/FrameFixture.h"
#include "tests/vrf/LiveObjects.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Routing::Hardware::PrefixLensInExactMatch;

// "blue" falls back to "red"; each has a resource.
template <class MachineOfFamily>
class PrefixLensDestruction : public VrfSmFrameFixture {
 protected:
  using Machine = MachineOfFamily;

  void SetUp() override {
    fallback->fallbackVrfIs("blue", "red");
    start();
    users->vrfRefCountIs(red, 1);
    users->vrfRefCountIs(blue, 1);
    journalTrace();
    forgetLines();
  }
  void TearDown() override { chip->onUpdate = nullptr; }

  Mox::Ptr<Machine> made(const std::string& name = "red") {
    auto machine =
        Mox::makePtr<Machine>(PrefixLensInExactMatch::PrefixLensInExactMatchIs(name), vrfSm.get());
    forgetLines();
    return machine;
  }

  static constexpr bool isV6 = std::is_same_v<Machine, VrfSm::NestedSm_VrfPrefixLensInExactMatchV6>;
  static std::string initialized(const std::string& vrf) {
    return isV6 ? prefixLens6Initialized(vrf) : prefixLensInitialized(vrf);
  }
  static std::string changed(const std::string& vrf) {
    return isV6 ? prefixLens6(vrf) : prefixLens(vrf);
  }
  /// What the update of "red" writes, dependents included.
  static Lines updateOfRed() {
    return {updatingAll("red"),  updatingOneOfAll("red"),
            "updateVrf red",     updatingDependent("blue", "red"),
            updatingAll("blue"), updatingOneOfAll("blue"),
            "updateVrf blue"};
  }
  static Lines after(const std::string& first, Lines lines) {
    lines.insert(lines.begin(), first);
    return lines;
  }
  void throwInHooks() {
    chip->onUpdate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("no"); };
  }

  // So long that it is no name of a VRF.
  const std::string tooLong_ = std::string(101, 'x');
};

using MachinesOfFamilies = ::testing::Types<VrfSm::NestedSm_VrfPrefixLensInExactMatch,
                                            VrfSm::NestedSm_VrfPrefixLensInExactMatchV6>;
struct NameOfFamily {
  template <class Machine>
  static std::string GetName(int /*index*/) {
    return std::is_same_v<Machine, VrfSm::NestedSm_VrfPrefixLensInExactMatch> ? "Ipv4" : "Ipv6";
  }
};
TYPED_TEST_SUITE(PrefixLensDestruction, MachinesOfFamilies, NameOfFamily);

TYPED_TEST(PrefixLensDestruction, RunsTheLastHandlerOnce) {
  auto machine = this->made();
  machine = nullptr;
  EXPECT_EQ(this->journal.take(), this->after(this->changed("red"), this->updateOfRed()));
}

TYPED_TEST(PrefixLensDestruction, RunsItForAMachineThatWasSwitchedOn) {
  auto machine = this->made();
  machine->hasNotificationActiveIs(true);
  machine = nullptr;
  EXPECT_EQ(this->journal.take(), this->after(this->changed("red"), this->updateOfRed()));
}

TYPED_TEST(PrefixLensDestruction, OfAZombieRunsNothing) {
  auto machine = this->made();
  machine->moxDoZombieReactors(true);
  this->forgetLines();
  machine = nullptr;
  EXPECT_THAT(this->journal.take(), IsEmpty());
}

TYPED_TEST(PrefixLensDestruction, OfARevivedZombieRunsTheLastHandlerAgain) {
  auto machine = this->made();
  machine->moxDoZombieReactors(true);
  machine->moxDoZombieReactors(false);
  this->forgetLines();
  machine = nullptr;
  EXPECT_EQ(this->journal.take(), this->after(this->changed("red"), this->updateOfRed()));
}

TYPED_TEST(PrefixLensDestruction, LetsOutNoExceptionOfAHook) {
  auto machine = this->made();
  this->throwInHooks();
  EXPECT_NO_THROW(machine = nullptr);
  EXPECT_THAT(this->journal.take(), ElementsAre(this->changed("red"), this->updatingAll("red"),
                                                this->updatingOneOfAll("red"), "updateVrf red"));
  EXPECT_EQ(live(TestFixture::Machine::typeName), 0U);
}

TYPED_TEST(PrefixLensDestruction, LetsOutNoExceptionOfANameThatIsTooLong) {
  auto machine = this->made();
  machine->notifierIs(PrefixLensInExactMatch::PrefixLensInExactMatchIs(this->tooLong_));
  EXPECT_NO_THROW(machine = nullptr);
  EXPECT_THAT(this->journal.take(), ElementsAre(this->changed(this->tooLong_)));
  EXPECT_EQ(live(TestFixture::Machine::typeName), 0U);
}

TYPED_TEST(PrefixLensDestruction, OfAMachineWithoutAnOwnerIsTracedOnly) {
  auto machine = this->made();
  machine->vrfSmIs(nullptr);
  machine = nullptr;
  EXPECT_THAT(this->journal.take(), ElementsAre(this->changed("red")));
}

TYPED_TEST(PrefixLensDestruction, OfAMachineWithoutLengthsUpdatesTheEmptyName) {
  auto machine = Mox::makePtr<typename TestFixture::Machine>(nullptr, this->vrfSm.get());
  this->forgetLines();
  machine = nullptr;
  const auto lines = this->journal.take();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[0], this->changed(""));
  EXPECT_EQ(lines[1], this->updatingAll(""));
}

TYPED_TEST(PrefixLensDestruction, TakesTheMachineOffItsLengths) {
  const auto lens = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  auto machine = Mox::makePtr<typename TestFixture::Machine>(lens, this->vrfSm.get());
  machine->hasNotificationActiveIs(true);
  EXPECT_EQ(this->notifiees(*lens), 1U);
  this->chip->onUpdate = [&](const VrfAction&) {
    lens->prefixLenIs(24);
    return HwStatus();
  };
  this->forgetLines();
  machine = nullptr;
  EXPECT_EQ(this->journal.take(), this->after(this->changed("red"), this->updateOfRed()));
  EXPECT_EQ(this->notifiees(*lens), 0U);
}

TYPED_TEST(PrefixLensDestruction, DoesNotFollowAConstructionThatANameThatIsTooLongEnds) {
  const auto lens = PrefixLensInExactMatch::PrefixLensInExactMatchIs(this->tooLong_);
  EXPECT_THROW(
      static_cast<void>(Mox::makePtr<typename TestFixture::Machine>(lens, this->vrfSm.get())),
      Mox::RangeException);
  EXPECT_THAT(this->journal.take(), ElementsAre(this->initialized(this->tooLong_)));
  EXPECT_EQ(this->notifiees(*lens), 0U);
  EXPECT_EQ(live(TestFixture::Machine::typeName), 0U);
}

TYPED_TEST(PrefixLensDestruction, DoesNotFollowAConstructionThatAHookEnds) {
  const auto lens = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  this->throwInHooks();
  EXPECT_THROW(
      static_cast<void>(Mox::makePtr<typename TestFixture::Machine>(lens, this->vrfSm.get())),
      std::runtime_error);
  EXPECT_THAT(this->journal.take(), ElementsAre(this->initialized("red"), this->updatingAll("red"),
                                                this->updatingOneOfAll("red"), "updateVrf red"));
  EXPECT_EQ(this->notifiees(*lens), 0U);
  EXPECT_EQ(live(TestFixture::Machine::typeName), 0U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
