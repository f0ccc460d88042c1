// How changes of the two hardware route statuses reach the machine.

#include "Mox/NotifieeConst.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Reactor = Mox::PtrInterface::NotifieeConst;

class VrfSmRouteStatus : public VrfSmFrameFixture {
 protected:
  void SetUp() override { start(); }

  // The one reactor of `entity`, through which a notification under way can be played.
  static Mox::Ptr<Reactor> reactorOf(const Mox::PtrInterface& entity) {
    const Velo::NotifieeListDescriptor list = entity.notifieeList();
    Mox::Ptr<Reactor> reactor;
    list.visit(
        list.list,
        [](void* found, void* notifiee) {
          *static_cast<Mox::Ptr<Reactor>*>(found) =
              Mox::Ptr<Reactor>(static_cast<Reactor*>(notifiee));
        },
        &reactor);
    return reactor;
  }
};

TEST_F(VrfSmRouteStatus, AddingAVrfStatusForIpv4CreatesOneInstanceAndRemovingItDeletesIt) {
  const auto status = routes->vrfStatusIs("red");
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
  ASSERT_TRUE(vrfSm->moxVrfInstanceHas("red"));
  EXPECT_EQ((*vrfSm->moxVrfInstance().find("red"))->vrfInstance().get(), status.get());
  routes->vrfStatusDel("red");
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
}

TEST_F(VrfSmRouteStatus, RemovingAllVrfStatusesDeletesAllInstances) {
  for (const char* vrf : {"default", "red", "blue"})
    routes->vrfStatusIs(vrf);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 3U);
  routes->vrfStatusDelAll();
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
}

TEST_F(VrfSmRouteStatus, ReplacingAVrfStatusRepointsThePresentInstance) {
  routes->vrfStatusIs("red");
  const auto instance = *vrfSm->moxVrfInstance().find("red");
  const auto other = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  routes->vrfStatusIs(other);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
  EXPECT_EQ(*vrfSm->moxVrfInstance().find("red"), instance);
  EXPECT_EQ(instance->vrfInstance().get(), other.get());
}

TEST_F(VrfSmRouteStatus, VrfStatusesForIpv6DoNothing) {
  journalTrace();
  routes6->vrfStatusIs("red")->vrfIdIs(7);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  routes->vrfStatusIs("red");
  forgetLines();
  routes6->vrfStatusDel("red");
  EXPECT_TRUE(vrfSm->moxVrfInstanceHas("red"));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmRouteStatus, PrefixLengthsForIpv4ReachTheIpv4CollectionOnly) {
  routes->vrfPrefixLensInExactMatchIs("red");
  EXPECT_TRUE(vrfSm->vrfPrefixLensInExactMatch().has("red"));
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatchV6().count(), 0U);
  routes->vrfPrefixLensInExactMatchDel("red");
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 0U);
}

TEST_F(VrfSmRouteStatus, PrefixLengthsForIpv6ReachTheIpv6CollectionOnly) {
  routes6->vrfPrefixLensInExactMatchIs("red");
  EXPECT_TRUE(vrfSm->vrfPrefixLensInExactMatchV6().has("red"));
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 0U);
  routes6->vrfPrefixLensInExactMatchDel("red");
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatchV6().count(), 0U);
}

TEST_F(VrfSmRouteStatus, RemovingPrefixLengthsOfOneFamilyLeavesThoseOfTheOther) {
  routes->vrfPrefixLensInExactMatchIs("red");
  routes6->vrfPrefixLensInExactMatchIs("red");
  routes->vrfPrefixLensInExactMatchDel("red");
  EXPECT_FALSE(vrfSm->vrfPrefixLensInExactMatch().has("red"));
  EXPECT_TRUE(vrfSm->vrfPrefixLensInExactMatchV6().has("red"));
}

TEST_F(VrfSmRouteStatus, ReplacedPrefixLengthsAreFollowedInPlaceOfTheOld) {
  const auto before = routes->vrfPrefixLensInExactMatchIs("red");
  const auto now = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  routes->vrfPrefixLensInExactMatchIs(now);
  EXPECT_EQ(vrfSm->vrfPrefixLensInExactMatch().count(), 1U);
  journalTrace();
  before->prefixLenIs(24);
  EXPECT_THAT(journal.take(), IsEmpty());
  now->prefixLenIs(24);
  EXPECT_THAT(journal.take(), ElementsAre(prefixLens("red"), updatingAll("red")));
}

TEST_F(VrfSmRouteStatus, DecapFlagsForIpv6CallNoHandler) {
  users->vrfRefCountIs(red, 1);
  forgetLines();
  journalTrace();
  for (const bool enabled : {true, false}) {
    routes6->decapNhEnabledIs(enabled);
    routes6->decapNhFallbackEnabledIs(enabled);
  }
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmRouteStatus, EachDecapFlagForIpv4CallsItsOwnHandler) {
  journalTrace();
  routes->decapNhEnabledIs(true);
  EXPECT_THAT(journal.take(), ElementsAre(traced(7, 278, "handleDecapNh",
                                                 "VrfSm::handleDecapNh decapNhEnabled:true")));
  routes->decapNhFallbackEnabledIs(true);
  EXPECT_THAT(journal.take(),
              ElementsAre(traced(7, 266, "handleDecapNhFallback",
                                 "VrfSm::handleDecapNhFallback decapNhFallbackEnabled:true")));
}

/// A reactor that is told before the machine's, and does something about the first notification.
class FirstToKnow final : public Reactor {
 public:
  FirstToKnow(const Mox::Ptr<Mox::PtrInterface const>& notifier, std::function<void()> work)
      : NotifieeConst(notifier), work_(std::move(work)) {
    isRegisteredIs(true);
    hasNotificationActiveIs(true);
  }
  ~FirstToKnow() override { NotifieeConst::moxDoZombieReactors(true); }
  void onAttribute(Mox::AttributeId /*attributeId*/, const void* /*key*/) override {
    if (const auto work = std::exchange(work_, nullptr)) work();
  }

 private:
  std::function<void()> work_;
};

// The entry goes, unseen by the machine, between the notification of a change and its turn.
class VrfSmLateNotification : public VrfSmFrameFixture {
 protected:
  void startBehind(const Mox::Ptr<Mox::PtrInterface const>& notifier,
                   const std::function<void()>& removal) {
    vrfSm = nullptr;
    first = Mox::makePtr<FirstToKnow>(notifier, [this, removal] {
      vrfSm->hasNotificationActiveIs(false);
      removal();
      vrfSm->hasNotificationActiveIs(true);
    });
    start();
    journalTrace();
  }

  Mox::Ptr<FirstToKnow> first;
};

TEST_F(VrfSmLateNotification, OfAVrfStatusThatIsGoneAlreadyIsHandledAsARemoval) {
  routes->vrfStatusIs("red")->vrfIdIs(7);
  startBehind(routes, [this] { routes->vrfStatusDel("red"); });
  routes->vrfStatusIs(Routing::Hardware::VrfStatus::VrfStatusIs("red"));
  EXPECT_THAT(journal.take(), ElementsAre(instanceRemove("red", 7), updatingAll("red")));
  EXPECT_FALSE(vrfSm->moxVrfInstanceHas("red"));
}

TEST_F(VrfSmLateNotification, OfIpv4PrefixLengthsThatAreGoneAlreadyIsHandledAsARemoval) {
  routes->vrfPrefixLensInExactMatchIs("red");
  startBehind(routes, [this] { routes->vrfPrefixLensInExactMatchDel("red"); });
  routes->vrfPrefixLensInExactMatchIs(
      Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red"));
  EXPECT_THAT(journal.take(), ElementsAre(prefixLens("red"), updatingAll("red")));
  EXPECT_FALSE(vrfSm->vrfPrefixLensInExactMatch().has("red"));
}

TEST_F(VrfSmLateNotification, OfIpv6PrefixLengthsThatAreGoneAlreadyIsHandledAsARemoval) {
  routes6->vrfPrefixLensInExactMatchIs("red");
  startBehind(routes6, [this] { routes6->vrfPrefixLensInExactMatchDel("red"); });
  routes6->vrfPrefixLensInExactMatchIs(
      Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red"));
  EXPECT_THAT(journal.take(), ElementsAre(prefixLens6("red"), updatingAll("red")));
  EXPECT_FALSE(vrfSm->vrfPrefixLensInExactMatchV6().has("red"));
}

TEST_F(VrfSmLateNotification, OfANewVrfStatusThatIsGoneAlreadyMakesNoInstance) {
  startBehind(routes, [this] { routes->vrfStatusDel("red"); });
  routes->vrfStatusIs("red");
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_FALSE(vrfSm->moxVrfInstanceHas("red"));
}

TEST_F(VrfSmRouteStatus, ReactorsIgnoreAttributesThatAreNotTheirs) {
  const L3::VrfName vrf("red");
  const Velo::String name("red");
  routes->vrfStatusIs(vrf);
  routes->vrfPrefixLensInExactMatchIs(name);
  routes6->vrfStatusIs(vrf);
  journalTrace();
  for (const short attribute :
       std::initializer_list<short>{-1, 0, 130, 258, 260, 391, 393, 403, 405, 407}) {
    reactorOf(*routes)->onAttribute(attribute, &vrf);
  }
  for (const short attribute : std::initializer_list<short>{-1, 0, 130, 258, 260, 392, 404, 406}) {
    reactorOf(*routes6)->onAttribute(attribute, &vrf);
  }
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 1U);
}

TEST_F(VrfSmRouteStatus, AFlagNotificationUnderWayIsDroppedByAZombie) {
  users->vrfRefCountIs(red, 1);
  vrfSm->moxDoZombieReactors(true);
  forgetLines();
  journalTrace();
  reactorOf(*routes)->onAttribute(404, nullptr);
  reactorOf(*routes)->onAttribute(406, nullptr);
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(VrfSmRouteStatus, ACollectionNotificationUnderWayIsHandledByAZombie) {
  const L3::VrfName vrf("red");
  const Velo::String name("red");
  vrfSm->moxDoZombieReactors(true);
  routes->vrfStatusIs(vrf);
  routes->vrfPrefixLensInExactMatchIs(name);
  routes6->vrfPrefixLensInExactMatchIs(name);
  EXPECT_EQ(vrfSm->moxVrfInstance().count(), 0U);
  reactorOf(*routes)->onAttribute(392, &vrf);
  EXPECT_TRUE(vrfSm->moxVrfInstanceHas("red"));
  EXPECT_TRUE((*vrfSm->moxVrfInstance().find("red"))->isZombie());
  reactorOf(*routes)->onAttribute(259, &name);
  EXPECT_TRUE(vrfSm->vrfPrefixLensInExactMatch().has("red"));
  reactorOf(*routes6)->onAttribute(259, &name);
  EXPECT_TRUE(vrfSm->vrfPrefixLensInExactMatchV6().has("red"));
}

TEST_F(VrfSmRouteStatus, ReactorsThatOutliveTheMachineIgnoreEveryNotification) {
  const L3::VrfName vrf("red");
  const Velo::String name("red");
  routes->vrfStatusIs(vrf);
  routes->vrfPrefixLensInExactMatchIs(name);
  routes6->vrfPrefixLensInExactMatchIs(name);
  const auto reactor = reactorOf(*routes);
  const auto reactor6 = reactorOf(*routes6);
  vrfSm = nullptr;
  journalTrace();
  reactor->onAttribute(392, &vrf);
  reactor->onAttribute(259, &name);
  reactor->onAttribute(404, nullptr);
  reactor->onAttribute(406, nullptr);
  reactor6->onAttribute(259, &name);
  EXPECT_THAT(journal.take(), IsEmpty());
  EXPECT_TRUE(reactor->isZombie());
  EXPECT_TRUE(reactor6->isZombie());
  EXPECT_FALSE(reactor->hasNotificationActive());
  EXPECT_FALSE(reactor6->hasNotificationActive());
}

TEST_F(VrfSmRouteStatus, ReactorsSwitchTheirNotificationsWithTheZombieState) {
  const auto reactor = reactorOf(*routes);
  const auto reactor6 = reactorOf(*routes6);
  EXPECT_TRUE(reactor->hasNotificationActive());
  EXPECT_TRUE(reactor6->hasNotificationActive());
  vrfSm->moxDoZombieReactors(true);
  EXPECT_FALSE(reactor->hasNotificationActive());
  EXPECT_FALSE(reactor6->hasNotificationActive());
  vrfSm->moxDoZombieReactors(false);
  EXPECT_TRUE(reactor->hasNotificationActive());
  EXPECT_TRUE(reactor6->hasNotificationActive());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
