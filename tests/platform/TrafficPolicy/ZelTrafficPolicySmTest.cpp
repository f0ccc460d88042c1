#include "TrafficPolicy/ZelTrafficPolicySm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Velo/Subscriber.h"

namespace TrafficPolicy {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TrafficPolicySm : public ::testing::Test {
 protected:
  TrafficPolicySm() {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attributeId,
                              const void* key, const void* value) {
      Subscriber::ownerOf(subscriber).told(attributeId, key, value);
    };
    sm->publisher().subscriberIs(subscriber_);
  }
  ~TrafficPolicySm() override {
    if (sm) sm->publisher().subscriberDel(subscriber_);
  }

  Mox::Ptr<ZelTrafficPolicySm> sm = ZelTrafficPolicySm::ZelTrafficPolicySmIs();
  std::vector<std::string> calls;
  bool letGoWhenTold = false;

 private:
  using Subscriber = Velo::MemberSubscriber<TrafficPolicySm>;

  void told(short attributeId, const void* key, const void* value) {
    EXPECT_EQ(key, nullptr);
    EXPECT_EQ(sm->ready(), *static_cast<const bool*>(value));
    calls.push_back(std::to_string(attributeId) + (sm->ready() ? " ready" : " not ready"));
    if (letGoWhenTold) {
      sm->publisher().subscriberDel(subscriber_);
      sm = nullptr;
    }
  }

  Subscriber subscriber_{*this};
};

TEST_F(TrafficPolicySm, BeginsNotReady) {
  EXPECT_FALSE(sm->ready());
  EXPECT_TRUE(sm->hasNotificationActive());
  EXPECT_EQ(sm->fwkType()->name, "TrafficPolicy::ZelTrafficPolicySm");
}

TEST_F(TrafficPolicySm, IsAServicePolicyStateMachine) {
  const Mox::Ptr<PolicyMap::ServicePolicySm> base = sm;
  EXPECT_EQ(&base->publisher(), &sm->publisher());
  EXPECT_EQ(base->notifieeList().kind, Velo::NotifieeListDescriptor::Kind::publisher);
  EXPECT_EQ(base->notifieeList().entity, sm.get());
}

TEST_F(TrafficPolicySm, PublishesThatItBecomesReadyByItsNumber) {
  EXPECT_EQ(ZelTrafficPolicySm::readyAttribute, 283);
  sm->readyIs(true);
  sm->readyIs(false);
  EXPECT_THAT(calls, ElementsAre("283 ready", "283 not ready"));
}

TEST_F(TrafficPolicySm, PublishesOnChangeOnly) {
  sm->readyIs(false);
  EXPECT_THAT(calls, IsEmpty());
  sm->readyIs(true);
  sm->readyIs(true);
  EXPECT_THAT(calls, ElementsAre("283 ready"));
}

TEST_F(TrafficPolicySm, MayBeLetGoOfFromInsideAPublication) {
  letGoWhenTold = true;
  ZelTrafficPolicySm* raw = sm.get();
  raw->readyIs(true);
  EXPECT_FALSE(sm);
  EXPECT_THAT(calls, ElementsAre("283 ready"));
}

}  // namespace
}  // namespace TrafficPolicy
