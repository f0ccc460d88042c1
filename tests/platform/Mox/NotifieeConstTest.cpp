#include "Mox/NotifieeConst.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Velo/Publisher.h"

namespace Mox {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using NotifieeKind = Velo::NotifieeListDescriptor::Kind;

constexpr AttributeId colour = 130;
constexpr AttributeId size = 131;

/// An entity with reactors.
class ObservedLamp final : public PtrInterface {
 public:
  Velo::NotifieeListDescriptor notifieeList() const override {
    return reactors_.notifieeList(*this);
  }
  ~ObservedLamp() override {
    if (destroyed != nullptr) *destroyed = true;
  }
  void change(AttributeId attribute = colour, const void* key = nullptr) {
    reactors_.notify(*this, attribute, key);
  }

  bool* destroyed = nullptr;

 private:
  mutable ReactorList reactors_;
};

using Calls = std::vector<std::string>;

/// A reactor that writes down its calls and may be given work to do from inside one.
class Watcher final : public PtrInterface::NotifieeConst {
 public:
  Watcher(const Ptr<ObservedLamp>& lamp, std::string name, Calls& calls)
      : NotifieeConst(lamp), name_(std::move(name)), calls_(calls) {
    isRegisteredIs(true);
    hasNotificationActiveIs(true);
  }
  ~Watcher() override {
    moxDoZombieReactors(true);
    if (destroyed != nullptr) *destroyed = true;
  }

  void onAttribute(AttributeId attributeId, const void* key) override {
    calls_.push_back(name_ + " " + std::to_string(attributeId));
    lastKey = key;
    if (onCall) onCall(*this);
  }
  using NotifieeConst::isRegisteredIs;
  using NotifieeConst::notifierAs;
  using NotifieeConst::notifierIs;

  std::function<void(Watcher&)> onCall;
  const void* lastKey = nullptr;
  bool* destroyed = nullptr;

 private:
  std::string name_;
  Calls& calls_;
};

class Reactors : public ::testing::Test {
 protected:
  Ptr<Watcher> watcher(const std::string& name) { return makePtr<Watcher>(lamp, name, calls); }

  Calls calls;
  Ptr<ObservedLamp> lamp = makePtr<ObservedLamp>();
};

TEST_F(Reactors, AreToldTheAttributeAndTheKeyInTheOrderOfRegistration) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  const int key = 7;
  lamp->change(size, &key);
  EXPECT_THAT(calls, ElementsAre("a 131", "b 131"));
  EXPECT_EQ(a->lastKey, &key);
  EXPECT_EQ(b->lastKey, &key);
}

TEST_F(Reactors, HoldTheirNotifierWhichDoesNotHoldThem) {
  const Ptr<Watcher> a = watcher("a");
  EXPECT_EQ(lamp->references(), 2u);
  EXPECT_EQ(a->references(), 1u);
  EXPECT_EQ(a->notifier().get(), lamp.get());
  EXPECT_EQ(a->notifierAs<ObservedLamp>(), lamp.get());
}

TEST_F(Reactors, HearNothingWhileTheirNotificationsAreOff) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  a->hasNotificationActiveIs(false);
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("b 130"));
  a->hasNotificationActiveIs(true);
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("b 130", "a 130", "b 130"));
}

TEST_F(Reactors, BeginWithNotificationsOff) {
  struct Plain final : PtrInterface::NotifieeConst {
    explicit Plain(const Ptr<ObservedLamp>& lamp) : NotifieeConst(lamp) { isRegisteredIs(true); }
    void onAttribute(AttributeId, const void*) override { ++called; }
    int called = 0;
  };
  const Ptr<Plain> plain = makePtr<Plain>(lamp);
  EXPECT_FALSE(plain->hasNotificationActive());
  lamp->change();
  EXPECT_EQ(plain->called, 0);
}

TEST_F(Reactors, SwitchedOffByAnEarlierOneAreNotCalledAnyMore) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  a->onCall = [&](Watcher&) { b->hasNotificationActiveIs(false); };
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("a 130"));
}

TEST_F(Reactors, HearNothingUnlessRegistered) {
  const Ptr<Watcher> a = watcher("a");
  a->isRegisteredIs(false);
  lamp->change();
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(Reactors, RegisteredTwiceAreCalledOnce) {
  const Ptr<Watcher> a = watcher("a");
  a->isRegisteredIs(true);
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("a 130"));
}

TEST_F(Reactors, DestroyedAreOffTheListOfTheirNotifier) {
  { const Ptr<Watcher> a = watcher("a"); }
  lamp->change();
  EXPECT_THAT(calls, IsEmpty());
  EXPECT_EQ(lamp->references(), 1u);
  EXPECT_EQ(lamp->notifieeList().iterate, nullptr);
}

TEST_F(Reactors, MoveTheirRegistrationWithTheirNotifier) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<ObservedLamp> other = makePtr<ObservedLamp>();
  a->notifierIs(other);
  EXPECT_EQ(a->notifier().get(), other.get());
  EXPECT_EQ(lamp->references(), 1u);
  lamp->change();
  EXPECT_THAT(calls, IsEmpty());
  other->change();
  EXPECT_THAT(calls, ElementsAre("a 130"));
}

TEST_F(Reactors, UnregisteredStayUnregisteredWhenTheirNotifierChanges) {
  const Ptr<Watcher> a = watcher("a");
  a->isRegisteredIs(false);
  const Ptr<ObservedLamp> other = makePtr<ObservedLamp>();
  a->notifierIs(other);
  other->change();
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(Reactors, RegistrationSurvivesATimeWithoutNotifier) {
  const Ptr<Watcher> a = watcher("a");
  a->notifierIs(nullptr);
  EXPECT_EQ(a->notifierAs<ObservedLamp>(), nullptr);
  lamp->change();
  EXPECT_THAT(calls, IsEmpty());
  a->notifierIs(lamp);
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("a 130"));
}

TEST_F(Reactors, SetToTheSameNotifierAreStillCalledOnce) {
  const Ptr<Watcher> a = watcher("a");
  a->notifierIs(lamp);
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("a 130"));
}

TEST_F(Reactors, OfAnotherKindOfListAreNotPutOnIt) {
  class Publishing final : public PtrInterface {
   public:
    Velo::NotifieeListDescriptor notifieeList() const override {
      return publisher.notifieeList(this);
    }
    mutable Velo::Publisher publisher;
  };
  const Ptr<Publishing> publishing = makePtr<Publishing>();
  const Ptr<Watcher> a = watcher("a");
  a->notifierIs(publishing);
  EXPECT_FALSE(publishing->publisher.hasSubscribers());
}

TEST_F(Reactors, AddedDuringANotificationWaitForTheNextOne) {
  const Ptr<Watcher> a = watcher("a");
  Ptr<Watcher> late;
  a->onCall = [&](Watcher&) {
    if (!late) late = watcher("late");
  };
  lamp->change();
  EXPECT_THAT(std::exchange(calls, {}), ElementsAre("a 130"));
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("a 130", "late 130"));
}

TEST_F(Reactors, RemovedByAnEarlierOneAreNotCalledAfterRemoval) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  const Ptr<Watcher> c = watcher("c");
  a->onCall = [&](Watcher&) { b->isRegisteredIs(false); };
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("a 130", "c 130"));
}

TEST_F(Reactors, RemovedAndRegisteredAgainAreNotCalledTwice) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  a->onCall = [](Watcher& self) {
    self.isRegisteredIs(false);
    self.isRegisteredIs(true);
  };
  lamp->change();
  EXPECT_THAT(std::exchange(calls, {}), ElementsAre("a 130", "b 130"));
  a->onCall = nullptr;
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("b 130", "a 130"));
}

TEST_F(Reactors, DestroyedByAnEarlierOneAreNotCalled) {
  const Ptr<Watcher> a = watcher("a");
  Ptr<Watcher> b = watcher("b");
  const Ptr<Watcher> c = watcher("c");
  bool destroyed = false;
  b->destroyed = &destroyed;
  a->onCall = [&](Watcher&) { b = nullptr; };
  lamp->change();
  EXPECT_TRUE(destroyed);
  EXPECT_THAT(calls, ElementsAre("a 130", "c 130"));
}

TEST_F(Reactors, LetGoInTheirOwnCallLiveUntilItsEnd) {
  Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  bool destroyed = false;
  bool destroyedInside = true;
  a->destroyed = &destroyed;
  a->onCall = [&](Watcher&) {
    a = nullptr;
    destroyedInside = destroyed;
  };
  lamp->change();
  EXPECT_FALSE(destroyedInside);
  EXPECT_TRUE(destroyed);
  EXPECT_THAT(calls, ElementsAre("a 130", "b 130"));
}

TEST_F(Reactors, LettingGoOfTheNotifierKeepItAliveUntilAllWereTold) {
  Ptr<Watcher> a = watcher("a");
  Ptr<Watcher> b = watcher("b");
  bool destroyed = false;
  lamp->destroyed = &destroyed;
  ObservedLamp* raw = lamp.get();
  a->onCall = [&](Watcher& self) {
    lamp = nullptr;
    self.notifierIs(nullptr);
    b->onCall = [&](Watcher& last) {
      last.notifierIs(nullptr);
      EXPECT_FALSE(destroyed);
    };
  };
  raw->change();
  EXPECT_THAT(calls, ElementsAre("a 130", "b 130"));
  EXPECT_TRUE(destroyed);
}

TEST_F(Reactors, MovedToAnotherNotifierDuringACallHearTheOtherOnly) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  const Ptr<ObservedLamp> other = makePtr<ObservedLamp>();
  a->onCall = [&](Watcher&) { b->notifierIs(other); };
  lamp->change();
  EXPECT_THAT(std::exchange(calls, {}), ElementsAre("a 130"));
  other->change();
  EXPECT_THAT(calls, ElementsAre("b 130"));
}

TEST_F(Reactors, AreToldOfAChangeMadeInsideACall) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  a->onCall = [&](Watcher& self) {
    self.onCall = nullptr;
    lamp->change(size);
  };
  lamp->change(colour);
  EXPECT_THAT(calls, ElementsAre("a 130", "a 131", "b 131", "b 130"));
}

TEST_F(Reactors, AsZombiesHaveNotificationsOffAndOnAgainWhenRevived) {
  const Ptr<Watcher> a = watcher("a");
  a->moxDoZombieReactors(true);
  EXPECT_TRUE(a->isZombie());
  EXPECT_FALSE(a->hasNotificationActive());
  lamp->change();
  EXPECT_THAT(calls, IsEmpty());
  a->moxDoZombieReactors(false);
  EXPECT_FALSE(a->isZombie());
  EXPECT_TRUE(a->hasNotificationActive());
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("a 130"));
}

TEST_F(Reactors, ToldToBeWhatTheyAreKeepTheirNotificationFlag) {
  const Ptr<Watcher> a = watcher("a");
  a->moxDoZombieReactors(true);
  a->hasNotificationActiveIs(true);
  a->moxDoZombieReactors(true);
  EXPECT_TRUE(a->hasNotificationActive());
}

TEST_F(Reactors, WithoutNotifierBecomeZombiesWithTheirNotificationFlagAsItWas) {
  const Ptr<Watcher> a = watcher("a");
  a->notifierIs(nullptr);
  a->moxDoZombieReactors(true);
  EXPECT_TRUE(a->isZombie());
  EXPECT_TRUE(a->hasNotificationActive());
}

TEST_F(Reactors, MadeZombiesByAnEarlierOneAreNotCalled) {
  const Ptr<Watcher> a = watcher("a");
  const Ptr<Watcher> b = watcher("b");
  a->onCall = [&](Watcher&) { b->moxDoZombieReactors(true); };
  lamp->change();
  EXPECT_THAT(calls, ElementsAre("a 130"));
}

TEST_F(Reactors, WithTheLastReferenceAskTheirOwnHandlerToDestroyThem) {
  class Careful final : public PtrInterface::NotifieeConst {
   public:
    Careful(const Ptr<ObservedLamp>& notifier, int& zeros)
        : NotifieeConst(notifier), zeros_(zeros) {}
    void onAttribute(AttributeId, const void*) override {}
    void onZeroReferences() override {
      ++zeros_;
      NotifieeConst::onZeroReferences();
    }

   private:
    int& zeros_;
  };
  int zeros = 0;
  static_cast<void>(makePtr<Careful>(lamp, zeros));
  EXPECT_EQ(zeros, 1);
}

TEST_F(Reactors, AreReachedThroughTheDescriptorOfTheirNotifier) {
  const Ptr<Watcher> a = watcher("a");
  a->isRegisteredIs(false);
  const Velo::NotifieeListDescriptor empty = lamp->notifieeList();
  EXPECT_EQ(empty.kind, NotifieeKind::reactors);
  EXPECT_EQ(static_cast<unsigned>(empty.kind), 1u);
  EXPECT_EQ(empty.entity, lamp.get());
  EXPECT_EQ(empty.iterate, nullptr);

  a->isRegisteredIs(true);
  const Velo::NotifieeListDescriptor one = lamp->notifieeList();
  ASSERT_NE(one.iterate, nullptr);
  void* first = one.iterate(one.list, nullptr);
  EXPECT_EQ(first, static_cast<PtrInterface::NotifieeConst*>(a.get()));
  EXPECT_EQ(one.iterate(one.list, first), nullptr);
}

}  // namespace
}  // namespace Mox
