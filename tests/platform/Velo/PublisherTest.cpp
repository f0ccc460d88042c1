#include "Velo/Publisher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Velo/Subscriber.h"

namespace Velo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Kind = NotifieeListDescriptor::Kind;

/// A subscriber that writes down what it is told and may be given work to do from inside a call.
class Reader {
 public:
  Reader(std::string name, std::vector<std::string>& calls)
      : name_(std::move(name)), calls_(calls), subscriber(*this) {
    subscriber.dispatch = [](Publisher* publisher, Subscriber* called, short attributeId,
                             const void* key, const void* value) {
      MemberSubscriber<Reader>::ownerOf(called).told(publisher, attributeId, key, value);
    };
  }

  std::function<void(Publisher&)> onCall;

 private:
  void told(Publisher* publisher, short attributeId, const void* key, const void* value) {
    calls_.push_back(name_ + " " + std::to_string(attributeId) + " " + shown(key) + " " +
                     shown(value));
    if (onCall) onCall(*publisher);
  }
  static std::string shown(const void* number) {
    return number == nullptr ? "-" : std::to_string(*static_cast<const int*>(number));
  }

  std::string name_;
  std::vector<std::string>& calls_;

 public:
  MemberSubscriber<Reader> subscriber;
};

class Publishing : public ::testing::Test {
 protected:
  Publishing() {
    publisher->subscriberIs(a.subscriber);
    publisher->subscriberIs(b.subscriber);
  }
  void publish() { publisher->publish(130, &key, &value); }

  const int key = 5;
  const int value = 9;
  std::vector<std::string> calls;
  Reader a{"a", calls};
  Reader b{"b", calls};
  Reader c{"c", calls};
  std::unique_ptr<Publisher> publisher = std::make_unique<Publisher>();
};

TEST_F(Publishing, CallsSubscribersInTheOrderOfSubscribing) {
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9", "b 130 5 9"));
}

TEST_F(Publishing, PassesItselfAndNullsThrough) {
  Publisher* seen = nullptr;
  a.onCall = [&](Publisher& from) { seen = &from; };
  publisher->publish(258, &key, nullptr);
  EXPECT_EQ(seen, publisher.get());
  EXPECT_THAT(calls, ElementsAre("a 258 5 -", "b 258 5 -"));
}

TEST_F(Publishing, CallsWhoSubscribedTwiceOnce) {
  publisher->subscriberIs(a.subscriber);
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9", "b 130 5 9"));
}

TEST_F(Publishing, DoesNotCallWhoWasRemoved) {
  publisher->subscriberDel(a.subscriber);
  publisher->subscriberDel(c.subscriber);
  publish();
  EXPECT_THAT(calls, ElementsAre("b 130 5 9"));
}

TEST_F(Publishing, KnowsWhetherAnybodySubscribed) {
  EXPECT_TRUE(publisher->hasSubscribers());
  publisher->subscriberDel(a.subscriber);
  EXPECT_TRUE(publisher->hasSubscribers());
  publisher->subscriberDel(b.subscriber);
  EXPECT_FALSE(publisher->hasSubscribers());
  publish();
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(Publishing, LetsASubscriberAddAnotherForTheNextChange) {
  a.onCall = [this](Publisher& from) { from.subscriberIs(c.subscriber); };
  publish();
  EXPECT_THAT(std::exchange(calls, {}), ElementsAre("a 130 5 9", "b 130 5 9"));
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9", "b 130 5 9", "c 130 5 9"));
}

TEST_F(Publishing, LetsASubscriberRemoveItself) {
  a.onCall = [this](Publisher& from) { from.subscriberDel(a.subscriber); };
  publish();
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9", "b 130 5 9", "b 130 5 9"));
}

TEST_F(Publishing, LetsASubscriberRemoveALaterOneBeforeItsTurn) {
  a.onCall = [this](Publisher& from) { from.subscriberDel(b.subscriber); };
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9"));
}

TEST_F(Publishing, LetsASubscriberDestroyALaterOneThatItRemoved) {
  auto gone = std::make_unique<Reader>("gone", calls);
  publisher->subscriberIs(gone->subscriber);
  publisher->subscriberIs(c.subscriber);
  a.onCall = [&](Publisher& from) {
    if (!gone) return;
    from.subscriberDel(gone->subscriber);
    gone = nullptr;
  };
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9", "b 130 5 9", "c 130 5 9"));
}

TEST_F(Publishing, EndsWhenASubscriberDestroysThePublisher) {
  a.onCall = [this](Publisher&) { publisher = nullptr; };
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9"));
}

TEST_F(Publishing, EndsAtEveryDepthWhenASubscriberDestroysThePublisher) {
  a.onCall = [this](Publisher& from) {
    a.onCall = nullptr;
    from.publish(131, &key, &value);
  };
  b.onCall = [this](Publisher&) { publisher = nullptr; };
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9", "a 131 5 9", "b 131 5 9"));
}

TEST_F(Publishing, NestsAndThenTellsTheRestOfTheOuterChange) {
  a.onCall = [this](Publisher& from) {
    a.onCall = nullptr;
    from.publish(131, &value, &key);
  };
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9", "a 131 9 5", "b 131 9 5", "b 130 5 9"));
}

TEST_F(Publishing, DescribesItsSubscribersAsKindTwoOfTheEntity) {
  const int entity = 0;
  const NotifieeListDescriptor descriptor = publisher->notifieeList(&entity);
  EXPECT_EQ(descriptor.kind, Kind::publisher);
  EXPECT_EQ(static_cast<unsigned>(descriptor.kind), 2u);
  EXPECT_EQ(descriptor.entity, &entity);
}

TEST_F(Publishing, AddsAndRemovesThroughTheDescriptor) {
  const NotifieeListDescriptor descriptor = publisher->notifieeList(this);
  Subscriber* third = &c.subscriber;
  EXPECT_TRUE(descriptor.add(descriptor.list, third));
  EXPECT_FALSE(descriptor.add(descriptor.list, third));
  publish();
  EXPECT_THAT(std::exchange(calls, {}), ElementsAre("a 130 5 9", "b 130 5 9", "c 130 5 9"));
  EXPECT_TRUE(descriptor.remove(descriptor.list, third));
  EXPECT_FALSE(descriptor.remove(descriptor.list, third));
  publish();
  EXPECT_THAT(calls, ElementsAre("a 130 5 9", "b 130 5 9"));
}

TEST_F(Publishing, VisitsThroughTheDescriptorInOrder) {
  const NotifieeListDescriptor descriptor = publisher->notifieeList(this);
  std::vector<void*> visited;
  descriptor.visit(
      descriptor.list,
      [](void* context, void* notifiee) {
        static_cast<std::vector<void*>*>(context)->push_back(notifiee);
      },
      &visited);
  EXPECT_THAT(visited, ElementsAre(static_cast<Subscriber*>(&a.subscriber),
                                   static_cast<Subscriber*>(&b.subscriber)));
}

TEST_F(Publishing, IteratesThroughTheDescriptorFromFirstToNull) {
  const NotifieeListDescriptor descriptor = publisher->notifieeList(this);
  ASSERT_NE(descriptor.iterate, nullptr);
  void* first = descriptor.iterate(descriptor.list, nullptr);
  EXPECT_EQ(first, static_cast<Subscriber*>(&a.subscriber));
  void* second = descriptor.iterate(descriptor.list, first);
  EXPECT_EQ(second, static_cast<Subscriber*>(&b.subscriber));
  EXPECT_EQ(descriptor.iterate(descriptor.list, second), nullptr);
}

TEST_F(Publishing, GivesAnIterateOperationOnlyWhileThereIsASubscriber) {
  publisher->subscriberDel(a.subscriber);
  EXPECT_NE(publisher->notifieeList(this).iterate, nullptr);
  publisher->subscriberDel(b.subscriber);
  const NotifieeListDescriptor empty = publisher->notifieeList(this);
  EXPECT_EQ(empty.iterate, nullptr);
  EXPECT_NE(empty.add, nullptr);
  EXPECT_NE(empty.remove, nullptr);
  EXPECT_NE(empty.visit, nullptr);
}

}  // namespace
}  // namespace Velo
