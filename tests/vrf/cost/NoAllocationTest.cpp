#include <gtest/gtest.h>

#include <array>
#include <string>

#include "Duolog/Message.h"
#include "Velo/Publisher.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "tests/vrf/cost/Allocations.h"
#include "tests/vrf/cost/CountingChip.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

struct CountingSubscriber final : Velo::Subscriber {
  CountingSubscriber() {
    dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void*, const void*) {
      ++static_cast<CountingSubscriber*>(subscriber)->calls;
    };
  }
  unsigned calls = 0;
};

/// Sixteen subscribers of one publisher.
class Audience {
 public:
  explicit Audience(Velo::Publisher& publisher) : publisher_(publisher) {
    for (CountingSubscriber& subscriber : subscribers_)
      publisher_.subscriberIs(subscriber);
  }
  Audience(const Audience&) = delete;
  Audience& operator=(const Audience&) = delete;
  ~Audience() {
    for (CountingSubscriber& subscriber : subscribers_)
      publisher_.subscriberDel(subscriber);
  }

  [[nodiscard]] unsigned calls() const {
    unsigned all = 0;
    for (const CountingSubscriber& subscriber : subscribers_)
      all += subscriber.calls;
    return all;
  }

 private:
  Velo::Publisher& publisher_;
  std::array<CountingSubscriber, 16> subscribers_;
};

// "red" is named by three actions, one in each field, and "blue", which falls back to it, by one.
class NoAllocation : public ::testing::Test {
 protected:
  NoAllocation() {
    fallback->fallbackVrfIs("blue", "red");
    VrfAction decap("green", PolicyMap::ActionType::decapVrf);
    decap.postDecapVrfNameIs("red");
    VrfAction withFallback("white", PolicyMap::ActionType::vrf);
    withFallback.fallbackVrfNameIs("red");
    for (const VrfAction& action : {ofRed, ofBlue, decap, withFallback})
      users->vrfRefCountIs(action, 1);
    redStatus = routes->vrfStatusIs("red");
  }

  const VrfAction ofRed{"red", PolicyMap::ActionType::vrf};
  const VrfAction ofBlue{"blue", PolicyMap::ActionType::vrf};
  Mox::Ptr<VrfHwConfig> users = VrfHwConfig::VrfHwConfigIs();
  Mox::Ptr<VrfHwStatus> statuses = VrfHwStatus::VrfHwStatusIs();
  Mox::Ptr<CountingChip> chip = Mox::makePtr<CountingChip>();
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<VrfSm> vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, nullptr);
  Mox::Ptr<Routing::Hardware::VrfStatus> redStatus;
};

TEST_F(NoAllocation, InARefreshWhoseOutcomesChangeAndArePublished) {
  const Audience audience(statuses->publisher());
  EXPECT_EQ(Allocations::madeBy([&] { vrfSm->updateAllVrfActions("red"); }), 0U);
  EXPECT_EQ(chip->updates(), 3U);
  EXPECT_GE(audience.calls(), 16U);
}

TEST_F(NoAllocation, InAChangeThatReachesDependents) {
  EXPECT_EQ(Allocations::madeBy([&] { redStatus->vrfIdIs(7); }), 0U);
  EXPECT_EQ(chip->updates(), 4U);
}

TEST_F(NoAllocation, InAChangeOfADecapFlagThatReachesEveryAction) {
  EXPECT_EQ(Allocations::madeBy([&] { routes->decapNhEnabledIs(true); }), 0U);
  EXPECT_EQ(chip->updates(), 4U);
}

TEST_F(NoAllocation, WhenAnActionGetsAnotherUser) {
  const Audience audience(users->publisher());
  EXPECT_EQ(Allocations::madeBy([&] { users->vrfRefCountInc(ofRed, 1); }), 0U);
  EXPECT_EQ(users->vrfRefCount(ofRed), 2U);
  EXPECT_EQ(audience.calls(), 16U);
}

TEST_F(NoAllocation, WhenAnActionTakesThePlaceOfAnotherAmongThoseOfItsVrf) {
  std::array<VrfAction, 10> others;
  for (unsigned number = 0; number < others.size(); ++number) {
    others[number] = ofRed;
    others[number].postDecapVrfNameIs("v" + std::to_string(number));
    users->vrfRefCountIs(others[number], 1);
  }
  const auto comeAndGo = [&] {
    users->vrfRefCountDec(others[9], 1);
    users->vrfRefCountInc(others[9], 1);
  };
  comeAndGo();  // the first removal makes the room that others use
  EXPECT_EQ(Allocations::madeBy(comeAndGo), 0U);
}

TEST_F(NoAllocation, WhenAStatusChanges) {
  HwStatus failure;
  failure.statusIs(ProgrammingResult::programmingFailure);
  failure.failureDescriptionIs("a description that does not fit into any small buffer");
  const Audience audience(statuses->publisher());
  EXPECT_EQ(Allocations::madeBy([&] { statuses->hwStatusIs(ofRed, failure); }), 0U);
  EXPECT_EQ(statuses->hwStatus(ofRed), failure);
  EXPECT_EQ(audience.calls(), 16U);
}

TEST(NoAllocationIn, APublicationWhateverTheNumberOfSubscribers) {
  Velo::Publisher publisher;
  const Audience audience(publisher);
  const int key = 1;
  EXPECT_EQ(Allocations::madeBy([&] { publisher.publish(130, &key, nullptr); }), 0U);
  EXPECT_EQ(audience.calls(), 16U);
}

TEST(NoAllocationIn, APublicationInTheCourseOfWhichASubscriberLeaves) {
  struct Leaving final : Velo::Subscriber {
    Leaving() {
      dispatch = [](Velo::Publisher* publisher, Velo::Subscriber* subscriber, short, const void*,
                    const void*) { publisher->subscriberDel(*subscriber); };
    }
  };
  Velo::Publisher publisher;
  Leaving leaving;
  publisher.subscriberIs(leaving);
  const Audience audience(publisher);
  EXPECT_EQ(Allocations::madeBy([&] { publisher.publish(130, nullptr, nullptr); }), 0U);
  EXPECT_EQ(audience.calls(), 16U);
}

TEST(NoAllocationIn, AMessageWithArgumentsOfEveryKind) {
  static const Mox::TraceHandle off("NoAllocation", 0U);
  const Duolog::Message message({[]() -> const Mox::TraceHandle& { return off; }, "/src/cost"}, 5,
                                1, "send", {"name:", "%s", " number:", "%u", " flag:", "%b"});
  message("a name", 1U, true);
  const std::string longName(100, 'n');
  EXPECT_EQ(Allocations::madeBy([&] { message(std::string_view(longName), 4000000000U, false); }),
            0U);
  EXPECT_EQ(Blinklog::ring().dump().back().text,
            "name:" + longName + " number:4000000000 flag:false");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
