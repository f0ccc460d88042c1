#include "ZelVrfSelectionPolicy/tables/PolicySmMounts.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace ZelVrfSelectionPolicy {
namespace {

// One reference of the bag, as a test sees it: its accessor pair and the type that it holds.
template <class Object>
struct Reference {
  const Mox::Ptr<Object>& (PolicySmMounts::*read)() const noexcept;
  void (PolicySmMounts::*write)(const Mox::Ptr<Object>&) noexcept;
};

// Every reference with an object of its type, in declared order. Ten may only be read through.
template <class Visitor>
void forEachReference(Visitor visit) {
  using Bag = PolicySmMounts;
  visit("intfConfig", Reference<PolicyMap::IntfConfig const>{&Bag::intfConfig, &Bag::intfConfigIs},
        PolicyMap::IntfConfig::IntfConfigIs("a"), PolicyMap::IntfConfig::IntfConfigIs("b"));
  visit(
      "policyConfig",
      Reference<TrafficPolicy::TrafficPolicyConfig const>{&Bag::policyConfig, &Bag::policyConfigIs},
      TrafficPolicy::TrafficPolicyConfig::TrafficPolicyConfigIs("a"),
      TrafficPolicy::TrafficPolicyConfig::TrafficPolicyConfigIs("b"));
  visit("statusRequestDir",
        Reference<PolicyMap::PolicyMapStatusRequestDir>{&Bag::statusRequestDir,
                                                        &Bag::statusRequestDirIs},
        PolicyMap::PolicyMapStatusRequestDir::PolicyMapStatusRequestDirIs("a"),
        PolicyMap::PolicyMapStatusRequestDir::PolicyMapStatusRequestDirIs("b"));
  visit("policyStatus", Reference<TrafficPolicy::Status>{&Bag::policyStatus, &Bag::policyStatusIs},
        TrafficPolicy::Status::StatusIs("a"), TrafficPolicy::Status::StatusIs("b"));
  visit("aclConfig", Reference<Acl::Config const>{&Bag::aclConfig, &Bag::aclConfigIs},
        Acl::Config::ConfigIs("a"), Acl::Config::ConfigIs("b"));
  visit("lagInputConfig",
        Reference<Lag::Input::Config const>{&Bag::lagInputConfig, &Bag::lagInputConfigIs},
        Lag::Input::Config::ConfigIs("a"), Lag::Input::Config::ConfigIs("b"));
  visit("ipStatus", Reference<Ip::Status const>{&Bag::ipStatus, &Bag::ipStatusIs},
        Ip::Status::StatusIs("a"), Ip::Status::StatusIs("b"));
  visit("ip6Status", Reference<Ip6::Status const>{&Bag::ip6Status, &Bag::ip6StatusIs},
        Ip6::Status::StatusIs("a"), Ip6::Status::StatusIs("b"));
  visit("routingVrfInfoDir",
        Reference<Mox::Dir const>{&Bag::routingVrfInfoDir, &Bag::routingVrfInfoDirIs},
        Mox::Dir::DirIs("a"), Mox::Dir::DirIs("b"));
  visit("routing6VrfInfoDir",
        Reference<Mox::Dir const>{&Bag::routing6VrfInfoDir, &Bag::routing6VrfInfoDirIs},
        Mox::Dir::DirIs("a"), Mox::Dir::DirIs("b"));
  visit("bgpNeighborConfigDir",
        Reference<Mox::Dir const>{&Bag::bgpNeighborConfigDir, &Bag::bgpNeighborConfigDirIs},
        Mox::Dir::DirIs("a"), Mox::Dir::DirIs("b"));
  visit(
      "fieldSetConfig",
      Reference<Classification::FieldSetConfig const>{&Bag::fieldSetConfig, &Bag::fieldSetConfigIs},
      Classification::FieldSetConfig::FieldSetConfigIs("a"),
      Classification::FieldSetConfig::FieldSetConfigIs("b"));
}

TEST(PolicySmMounts, FactoryGivesABagWithAllTwelveReferencesEmpty) {
  for (const auto& mounts : {policySmMountsFactory(), PolicySmMounts::PolicySmMountsIs()}) {
    unsigned references = 0;
    forEachReference([&](const char* name, const auto& reference, const auto&, const auto&) {
      EXPECT_EQ(((*mounts).*reference.read)(), nullptr) << name;
      ++references;
    });
    EXPECT_EQ(references, 12U);
    EXPECT_TRUE(mounts->hasNotificationActive());
    EXPECT_FALSE(mounts->isZombie());
    EXPECT_EQ(mounts->fwkType()->name, "ZelVrfSelectionPolicy::PolicySmMounts");
  }
}

TEST(PolicySmMounts, EachReferenceIsHeldAndReadBackWithoutTouchingTheOthers) {
  const auto mounts = policySmMountsFactory();
  unsigned filled = 0;
  forEachReference([&](const char* name, const auto& reference, const auto& object, const auto&) {
    ((*mounts).*reference.write)(object);
    EXPECT_EQ(((*mounts).*reference.read)().get(), object.get()) << name;
    EXPECT_EQ(object->references(), 2U) << name;
    ++filled;
    unsigned held = 0;
    forEachReference([&](const char*, const auto& any, const auto&, const auto&) {
      if (((*mounts).*any.read)()) ++held;
    });
    EXPECT_EQ(held, filled) << name;
  });
}

TEST(PolicySmMounts, ReplacingAReferenceWithTheSamePointerLeavesTheCounts) {
  const auto mounts = policySmMountsFactory();
  forEachReference([&](const char* name, const auto& reference, const auto& object, const auto&) {
    ((*mounts).*reference.write)(object);
    ((*mounts).*reference.write)(object);
    EXPECT_EQ(object->references(), 2U) << name;
    // By the bag's own reference, too.
    ((*mounts).*reference.write)(((*mounts).*reference.read)());
    EXPECT_EQ(object->references(), 2U) << name;
  });
}

TEST(PolicySmMounts, ReplacingAReferenceTakesTheNewObjectAndReleasesTheOldOne) {
  const auto mounts = policySmMountsFactory();
  forEachReference(
      [&](const char* name, const auto& reference, const auto& before, const auto& after) {
        ((*mounts).*reference.write)(before);
        ((*mounts).*reference.write)(after);
        EXPECT_EQ(before->references(), 1U) << name;
        EXPECT_EQ(after->references(), 2U) << name;
        ((*mounts).*reference.write)(nullptr);
        EXPECT_EQ(after->references(), 1U) << name;
        EXPECT_EQ(((*mounts).*reference.read)(), nullptr) << name;
      });
}

TEST(PolicySmMounts, DestructionReleasesEveryReference) {
  forEachReference([](const char* name, const auto& reference, const auto& object, const auto&) {
    auto mounts = policySmMountsFactory();
    ((*mounts).*reference.write)(object);
    mounts = nullptr;
    EXPECT_EQ(object->references(), 1U) << name;
  });
}

/// Runs some work when it is destroyed.
class LastWord final : public Mox::Entity {
 public:
  explicit LastWord(std::function<void()> work) : Entity("last word"), work_(std::move(work)) {}
  ~LastWord() override { work_(); }

 private:
  std::function<void()> work_;
};

TEST(PolicySmMounts, TheNewObjectIsHeldBeforeTheOldOneIsReleased) {
  const auto mounts = policySmMountsFactory();
  const Mox::Ptr<Mox::Dir const> after = Mox::Dir::DirIs("after");
  unsigned heldAtTheEndOfTheOldOne = 0;
  auto before = Mox::Dir::DirIs("before");
  before->entryIs(Mox::makePtr<LastWord>([&] { heldAtTheEndOfTheOldOne = after->references(); }));
  mounts->routingVrfInfoDirIs(before);
  before = nullptr;
  mounts->routingVrfInfoDirIs(after);
  EXPECT_EQ(heldAtTheEndOfTheOldOne, 2U);
}

TEST(PolicySmMounts, NobodyCanSubscribe) {
  EXPECT_EQ(static_cast<unsigned>(policySmMountsFactory()->notifieeList().kind), 0U);
}

TEST(PolicySmMounts, BagsAreCountedInTheirSlabWhileTheyLive) {
  auto mounts = policySmMountsFactory();
  ASSERT_NE(Quarry::Slab::find(PolicySmMounts::typeName), nullptr);
  EXPECT_EQ(Quarry::Slab::find(PolicySmMounts::typeName)->live(), 1U);
  mounts = nullptr;
  EXPECT_EQ(Quarry::Slab::find(PolicySmMounts::typeName)->live(), 0U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
