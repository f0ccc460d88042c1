// While one of the two machines is installed or replaced, a call that comes from it empties or
// fills the attribute, or drops the top object. Afterwards the attribute and what was returned
// agree, and no machine that is not installed follows anything.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ActingTop.h"
#include "Mox/Entity.h"
#include "PolicyFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::IsEmpty;
using TrafficPolicy::ZelTrafficPolicySm;

/// A VRF helper that acts when it is destroyed, as it is with the last machine that it serves.
class ActingAtItsEnd final : public VrfHelper {
 public:
  explicit ActingAtItsEnd(std::function<void()> act)
      : VrfHelper("acting", nullptr, nullptr, nullptr), act_(std::move(act)) {}
  ~ActingAtItsEnd() override { act_(); }
  HwStatus createVrf(const VrfAction& /*action*/) override { return {}; }
  HwStatus updateVrf(const VrfAction& /*action*/) override { return {}; }
  void deleteVrf(const VrfAction& /*action*/) override {}

 private:
  std::function<void()> act_;
};

/// An entry of a directory that does so.
class ActingEntry final : public Mox::Entity {
 public:
  explicit ActingEntry(std::function<void()> act) : Entity("acting"), act_(std::move(act)) {}
  ~ActingEntry() override { act_(); }

 private:
  std::function<void()> act_;
};

// The top object with both machines. Every machine that it gives out is kept.
class EmptiedFromInside : public PolicyFixture {
 protected:
  EmptiedFromInside() {
    acting_ = makeTop<ActingTop>();
    top_ = acting_;
  }
  void TearDown() override {
    helper_->onUpdate = nullptr;
    policyHelper_->onAdd = nullptr;
  }

  Mox::Ptr<ActingTop> acting_;
  std::vector<Mox::Ptr<VrfSm>> vrfSms_;
  std::vector<Mox::Ptr<ZelTrafficPolicySm>> policySms_;

 public:
  Mox::Ptr<VrfSm> bindVrfOn(const Mox::Ptr<VrfHelper>& helper) {
    vrfSms_.push_back(top_->vrfSmIs(users_, statuses_, helper, fallback_, routes_, routes6_));
    return vrfSms_.back();
  }
  Mox::Ptr<VrfSm> bindOtherVrf() {
    return bindVrfOn(Mox::makePtr<RecordingVrfHelper>(journal_, fallback_, routes_, routes6_));
  }
  Mox::Ptr<ZelTrafficPolicySm> bindOtherPolicy() {
    arguments_.permitFragment = !arguments_.permitFragment;
    policySms_.push_back(bindPolicy());
    return policySms_.back();
  }
  void removeVrf() { vrfSms_.push_back(top_->vrfSmDel()); }
  void removePolicy() { policySms_.push_back(top_->policySmDel()); }
  /// The machines that it has go on in the test alone.
  void dropTop() {
    vrfSms_.push_back(top_->vrfSm());
    policySms_.push_back(top_->policySm());
    acting_ = nullptr;
    top_ = nullptr;
  }

 protected:
  template <class Machine>
  static void expectOnlyInstalledIsActive(const std::vector<Mox::Ptr<Machine>>& machines,
                                          const Mox::Ptr<Machine>& installed) {
    for (const auto& machine : machines) {
      if (!machine) continue;
      EXPECT_EQ(machine->hasNotificationActive(), machine == installed);
    }
    EXPECT_TRUE(!installed || installed->hasNotificationActive());
  }
  void expectOnlyTheInstalledAreActive() const {
    expectOnlyInstalledIsActive(vrfSms_, top_ ? top_->vrfSm() : nullptr);
    expectOnlyInstalledIsActive(policySms_, top_ ? top_->policySm() : nullptr);
  }

  /// A first user of an action is followed once by the VRF machine that is installed, if any.
  void expectCountsAreFollowedOnce() {
    forgetJournal();
    const VrfAction spare("spare", PolicyMap::ActionType::vrf);
    users_->vrfRefCountInc(spare, 1);
    unsigned creations = 0;
    for (const std::string& line : journal_.take())
      creations += line == "createVrf spare" ? 1U : 0U;
    EXPECT_EQ(creations, top_ && top_->vrfSm() ? 1U : 0U);
    EXPECT_EQ(statuses_->hwStatusHas(spare), creations == 1);
  }

  /// A change of a rule is followed once by the policy machine that is installed, if any.
  void expectRulesAreFollowedOnce() {
    forgetJournal();
    changeRule();
    if (top_ && top_->policySm()) {
      EXPECT_EQ(journal_.take().size(), 2U);
    } else {
      EXPECT_THAT(journal_.take(), IsEmpty());
    }
  }

  void expectConsistent() {
    expectOnlyTheInstalledAreActive();
    expectCountsAreFollowedOnce();
    expectRulesAreFollowedOnce();
  }
};

/// What is done from inside.
struct Act {
  const char* name;
  void (*perform)(EmptiedFromInside& test);

  friend std::ostream& operator<<(std::ostream& out, const Act& act) { return out << act.name; }
};

const Act acts[] = {
    {"RemovesTheVrfMachine", [](EmptiedFromInside& test) { test.removeVrf(); }},
    {"RemovesThePolicyMachine", [](EmptiedFromInside& test) { test.removePolicy(); }},
    {"RemovesBoth",
     [](EmptiedFromInside& test) {
       test.removeVrf();
       test.removePolicy();
     }},
    {"InstallsAnotherVrfMachine", [](EmptiedFromInside& test) { test.bindOtherVrf(); }},
    {"InstallsAndRemovesAnotherVrfMachine",
     [](EmptiedFromInside& test) {
       test.bindOtherVrf();
       test.removeVrf();
     }},
    {"DropsTheTopObject", [](EmptiedFromInside& test) { test.dropTop(); }},
};

// To program rules from inside the programming of a rule is against the contract of the helper.
const Act actsOnPolicies[] = {
    {"InstallsAnotherPolicyMachine", [](EmptiedFromInside& test) { test.bindOtherPolicy(); }},
    {"InstallsAndRemovesAnotherPolicyMachine",
     [](EmptiedFromInside& test) {
       test.bindOtherPolicy();
       test.removePolicy();
     }},
    {"InstallsBothAnew",
     [](EmptiedFromInside& test) {
       test.bindOtherPolicy();
       test.bindOtherVrf();
     }},
};

class ActFromInside : public EmptiedFromInside, public ::testing::WithParamInterface<Act> {
 protected:
  ActFromInside() {
    configureRed();
    fallback_->fallbackVrfIs("red", "blue");
    statuses_->hwStatusIs(red_, HwStatus());
    users_->vrfRefCountIs(red_, 1);
  }
  void bindBoth() {
    vrfSms_.push_back(bindVrf());
    policySms_.push_back(bindPolicy());
  }
  void actOnce() {
    if (!std::exchange(hasActed_, true)) GetParam().perform(*this);
  }
  /// What was returned last by the call under test is what is installed, unless it was removed.
  template <class Machine>
  void expectInstalledIfActive(const Mox::Ptr<Machine>& returned,
                               const Mox::Ptr<Machine>& present) {
    ASSERT_NE(returned, nullptr);
    EXPECT_EQ(returned->hasNotificationActive(), returned == present);
  }

  bool hasActed_ = false;
};

class ActInAHook : public ActFromInside {};

TEST_P(ActInAHook, OfTheFirstVrfMachine) {
  helper_->onUpdate = [this](const VrfAction&) {
    actOnce();
    return HwStatus();
  };
  const Mox::Ptr<VrfSm> returned = bindVrfOn(helper_);
  ASSERT_TRUE(hasActed_);
  EXPECT_EQ(returned->hasNotificationActive(), top_ != nullptr);
  EXPECT_TRUE(!top_ || top_->vrfSm() == returned);
  expectConsistent();
}

TEST_P(ActInAHook, OfAVrfMachineThatReplacesAnother) {
  bindBoth();
  const auto other = Mox::makePtr<RecordingVrfHelper>(journal_, fallback_, routes_, routes6_);
  other->onUpdate = [this](const VrfAction&) {
    actOnce();
    return HwStatus();
  };
  const Mox::Ptr<VrfSm> returned = bindVrfOn(other);
  other->onUpdate = nullptr;
  ASSERT_TRUE(hasActed_);
  EXPECT_EQ(returned->hasNotificationActive(), top_ != nullptr);
  EXPECT_TRUE(!top_ || top_->vrfSm() == returned);
  expectConsistent();
}

TEST_P(ActInAHook, OfAVrfMachineWhoseConstructionThenThrows) {
  bindBoth();
  const auto other = Mox::makePtr<RecordingVrfHelper>(journal_, fallback_, routes_, routes6_);
  other->onUpdate = [this](const VrfAction&) -> HwStatus {
    actOnce();
    throw std::runtime_error("no");
  };
  EXPECT_THROW(bindVrfOn(other), std::runtime_error);
  other->onUpdate = nullptr;
  ASSERT_TRUE(hasActed_);
  expectConsistent();
}

class ActAtTheEndOfAMachine : public ActFromInside {};

TEST_P(ActAtTheEndOfAMachine, ThatAVrfMachineReplaces) {
  policySms_.push_back(bindPolicy());
  top_->vrfSmIs(users_, statuses_, Mox::makePtr<ActingAtItsEnd>([this] { actOnce(); }), fallback_,
                routes_, routes6_);
  const Mox::Ptr<VrfSm> returned = bindVrfOn(helper_);
  ASSERT_TRUE(hasActed_);
  expectInstalledIfActive(returned, top_ ? top_->vrfSm() : nullptr);
  expectConsistent();
}

TEST_P(ActAtTheEndOfAMachine, ThatIsRemoved) {
  policySms_.push_back(bindPolicy());
  top_->vrfSmIs(users_, statuses_, Mox::makePtr<ActingAtItsEnd>([this] { actOnce(); }), fallback_,
                routes_, routes6_);
  static_cast<void>(top_->vrfSmDel());
  ASSERT_TRUE(hasActed_);
  expectConsistent();
}

TEST_P(ActAtTheEndOfAMachine, ThatAPolicyMachineReplaces) {
  vrfSms_.push_back(bindVrf());
  arguments_.routingVrfInfoDir->entryIs(Mox::makePtr<ActingEntry>([this] { actOnce(); }));
  static_cast<void>(bindPolicy());
  arguments_.routingVrfInfoDir = anEntity<Mox::Dir>("other");
  const Mox::Ptr<ZelTrafficPolicySm> returned = bindOtherPolicy();
  ASSERT_TRUE(hasActed_);
  expectInstalledIfActive(returned, top_ ? top_->policySm() : nullptr);
  expectConsistent();
}

class ActWhenReady : public ActFromInside {};

TEST_P(ActWhenReady, OfTheFirstPolicyMachine) {
  acting_->onReady = [this] { actOnce(); };
  const Mox::Ptr<ZelTrafficPolicySm> returned = bindOtherPolicy();
  ASSERT_TRUE(hasActed_);
  expectInstalledIfActive(returned, top_ ? top_->policySm() : nullptr);
  expectConsistent();
}

TEST_P(ActWhenReady, OfAPolicyMachineThatReplacesAnother) {
  bindBoth();
  acting_->onReady = [this] { actOnce(); };
  const Mox::Ptr<ZelTrafficPolicySm> returned = bindOtherPolicy();
  ASSERT_TRUE(hasActed_);
  expectInstalledIfActive(returned, top_ ? top_->policySm() : nullptr);
  expectConsistent();
}

TEST_P(ActWhenReady, AgainAfterAChange) {
  bindBoth();
  acting_->onReady = [this] { actOnce(); };
  changeRule();
  ASSERT_TRUE(hasActed_);
  expectConsistent();
}

class ActWhileARuleIsAdded : public ActFromInside {
 protected:
  void actWhileARuleIsAdded() {
    policyHelper_->onAdd = [this](const Velo::String&, const PolicyMap::AclRule&) {
      actOnce();
      return PolicyMap::AclResult();
    };
  }
};

TEST_P(ActWhileARuleIsAdded, OfTheFirstPolicyMachine) {
  vrfSms_.push_back(bindVrf());
  actWhileARuleIsAdded();
  const Mox::Ptr<ZelTrafficPolicySm> returned = bindOtherPolicy();
  ASSERT_TRUE(hasActed_);
  expectInstalledIfActive(returned, top_ ? top_->policySm() : nullptr);
  expectConsistent();
}

TEST_P(ActWhileARuleIsAdded, OfAPolicyMachineThatReplacesAnother) {
  bindBoth();
  actWhileARuleIsAdded();
  arguments_.policyConfig = anEntity<PolicyMap::PolicyMapTypeConfig>("other");
  changeRule();
  const Mox::Ptr<ZelTrafficPolicySm> returned = bindOtherPolicy();
  ASSERT_TRUE(hasActed_);
  expectInstalledIfActive(returned, top_ ? top_->policySm() : nullptr);
  expectConsistent();
}

TEST_P(ActWhileARuleIsAdded, OfAPolicyMachineWhoseConstructionThenThrows) {
  bindBoth();
  policyHelper_->onAdd = [this](const Velo::String&,
                                const PolicyMap::AclRule&) -> PolicyMap::AclResult {
    if (std::exchange(hasActed_, true)) return {};
    GetParam().perform(*this);
    throw std::runtime_error("no");
  };
  const auto configBefore =
      std::exchange(arguments_.policyConfig, anEntity<PolicyMap::PolicyMapTypeConfig>("other"));
  changeRule();
  EXPECT_THROW(bindOtherPolicy(), std::runtime_error);
  arguments_.policyConfig = configBefore;
  ASSERT_TRUE(hasActed_);
  expectConsistent();
}

const auto nameOfAct = [](const auto& act) { return act.param.name; };

INSTANTIATE_TEST_SUITE_P(Each, ActInAHook, testing::ValuesIn(acts), nameOfAct);
INSTANTIATE_TEST_SUITE_P(OnPolicies, ActInAHook, testing::ValuesIn(actsOnPolicies), nameOfAct);
INSTANTIATE_TEST_SUITE_P(Each, ActAtTheEndOfAMachine, testing::ValuesIn(acts), nameOfAct);
INSTANTIATE_TEST_SUITE_P(OnPolicies, ActAtTheEndOfAMachine, testing::ValuesIn(actsOnPolicies),
                         nameOfAct);
INSTANTIATE_TEST_SUITE_P(Each, ActWhenReady, testing::ValuesIn(acts), nameOfAct);
INSTANTIATE_TEST_SUITE_P(OnPolicies, ActWhenReady, testing::ValuesIn(actsOnPolicies), nameOfAct);
INSTANTIATE_TEST_SUITE_P(Each, ActWhileARuleIsAdded, testing::ValuesIn(acts), nameOfAct);

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
