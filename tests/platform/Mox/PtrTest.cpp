#include "Mox/Ptr.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <utility>

#include "Mox/PtrInterface.h"

namespace Mox {
namespace {

/// An entity that counts its destructions and may be given work to do in its destructor.
class Probe : public PtrInterface {
 public:
  explicit Probe(int& destroyed) : destroyed_(destroyed) {}
  ~Probe() override {
    ++destroyed_;
    if (onDestroy) onDestroy(*this);
  }

  std::function<void(Probe&)> onDestroy;

 private:
  int& destroyed_;
};

class DerivedProbe final : public Probe {
 public:
  using Probe::Probe;
};

class Unrelated final : public PtrInterface {};

static_assert(sizeof(Ptr<Probe>) == sizeof(Probe*));
static_assert(std::is_convertible_v<Ptr<Probe>, Ptr<Probe const>>);
static_assert(std::is_convertible_v<Ptr<DerivedProbe>, Ptr<Probe>>);
static_assert(!std::is_convertible_v<Ptr<Probe const>, Ptr<Probe>>);
static_assert(!std::is_convertible_v<Ptr<Probe>, Ptr<DerivedProbe>>);
static_assert(!std::is_convertible_v<Probe*, Ptr<Probe>>);
static_assert(!std::is_copy_constructible_v<PtrInterface>);

TEST(Ptr, IsNullByDefaultAndWhenMadeFromNull) {
  const Ptr<Probe> none;
  const Ptr<Probe> null = nullptr;
  EXPECT_FALSE(none);
  EXPECT_EQ(none.get(), nullptr);
  EXPECT_TRUE(none == nullptr);
  EXPECT_TRUE(null == none);
}

TEST(Ptr, ObjectIsBornWithTheOneReferenceOfItsCreator) {
  int destroyed = 0;
  const Ptr<Probe> probe = makePtr<Probe>(destroyed);
  EXPECT_EQ(probe->references(), 1u);
  EXPECT_FALSE(probe->hasNotificationActive());
  EXPECT_FALSE(probe->isZombie());
}

TEST(Ptr, MakeActivePtrSwitchesNotificationsOn) {
  int destroyed = 0;
  EXPECT_TRUE(makeActivePtr<Probe>(destroyed)->hasNotificationActive());
}

TEST(Ptr, CopyingCountsAndTheLastOneDestroysOnce) {
  int destroyed = 0;
  {
    const Ptr<Probe> first = makePtr<Probe>(destroyed);
    {
      const Ptr<Probe> second = first;  // NOLINT(performance-unnecessary-copy-initialization)
      const Ptr<Probe> third(first.get());
      EXPECT_EQ(first->references(), 3u);
      EXPECT_TRUE(second == third);
    }
    EXPECT_EQ(first->references(), 1u);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 1);
}

TEST(Ptr, MovingHandsTheReferenceOver) {
  int destroyed = 0;
  Ptr<Probe> from = makePtr<Probe>(destroyed);
  const Ptr<Probe> to = std::move(from);
  EXPECT_EQ(from.get(), nullptr);  // NOLINT(bugprone-use-after-move): what is tested
  EXPECT_EQ(to->references(), 1u);
  EXPECT_EQ(destroyed, 0);
}

TEST(Ptr, ConvertsToConstSharingTheCount) {
  int destroyed = 0;
  Ptr<Probe> probe = makePtr<Probe>(destroyed);
  const Ptr<Probe const> view = probe;
  EXPECT_EQ(view.get(), probe.get());
  EXPECT_EQ(probe->references(), 2u);
  const Ptr<Probe const> moved = std::move(probe);
  EXPECT_EQ(moved->references(), 2u);
}

TEST(Ptr, ConvertsToABaseAndDestroysThroughIt) {
  int destroyed = 0;
  {
    const Ptr<PtrInterface const> base = makePtr<DerivedProbe>(destroyed);
    EXPECT_EQ(base->references(), 1u);
  }
  EXPECT_EQ(destroyed, 1);
}

TEST(Ptr, CastGivesTheObjectAsWhatItIs) {
  int destroyed = 0;
  const Ptr<PtrInterface> base = makePtr<DerivedProbe>(destroyed);
  const Ptr<DerivedProbe> derived = ptrCast<DerivedProbe>(base);
  EXPECT_EQ(derived.get(), base.get());
  EXPECT_EQ(base->references(), 2u);
}

TEST(Ptr, CastKeepsConst) {
  int destroyed = 0;
  const Ptr<PtrInterface const> base = makePtr<DerivedProbe>(destroyed);
  const Ptr<Probe const> cast = ptrCast<Probe const>(base);
  EXPECT_EQ(cast.get(), base.get());
}

TEST(Ptr, CastOfNullOrOfSomethingElseIsNull) {
  int destroyed = 0;
  const Ptr<PtrInterface> base = makePtr<Probe>(destroyed);
  EXPECT_EQ(ptrCast<Unrelated>(base), nullptr);
  EXPECT_EQ(ptrCast<DerivedProbe>(base), nullptr);
  EXPECT_EQ(base->references(), 1u);
  EXPECT_EQ(ptrCast<Probe>(Ptr<PtrInterface>()), nullptr);
}

TEST(Ptr, AssignmentHoldsTheNewObjectBeforeItLetsTheOldOneGo) {
  int destroyed = 0;
  int heldDestroyed = 0;
  Ptr<Probe> slot = makePtr<Probe>(destroyed);
  Ptr<Probe> only = makePtr<Probe>(heldDestroyed);
  unsigned seen = 0;
  slot->onDestroy = [&](Probe&) {
    seen = only->references();
    EXPECT_EQ(slot.get(), only.get());
    only = nullptr;
  };
  slot = only;
  EXPECT_EQ(seen, 2u);
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(heldDestroyed, 0);
  EXPECT_EQ(slot->references(), 1u);
}

TEST(Ptr, AssignmentFromAMemberOfTheObjectLetGoIsSafe) {
  struct Node final : PtrInterface {
    Ptr<Node> next;
  };
  Ptr<Node> list = makePtr<Node>();
  list->next = makePtr<Node>();
  const Node* second = list->next.get();
  list = list->next;
  EXPECT_EQ(list.get(), second);
  EXPECT_EQ(list->references(), 1u);
}

TEST(Ptr, AssigningAPointerToItselfChangesNothing) {
  int destroyed = 0;
  Ptr<Probe> probe = makePtr<Probe>(destroyed);
  Ptr<Probe>& same = probe;
  probe = same;
  EXPECT_EQ(probe->references(), 1u);
  probe = std::move(same);
  ASSERT_TRUE(probe);
  EXPECT_EQ(probe->references(), 1u);
  EXPECT_EQ(destroyed, 0);
}

TEST(Ptr, AssigningNullLetsGo) {
  int destroyed = 0;
  Ptr<Probe> probe = makePtr<Probe>(destroyed);
  probe = nullptr;
  EXPECT_EQ(destroyed, 1);
  EXPECT_FALSE(probe);
}

TEST(Ptr, DetachAndAttachedKeepTheCount) {
  int destroyed = 0;
  Ptr<Probe> probe = makePtr<Probe>(destroyed);
  Probe* raw = probe.detach();
  EXPECT_FALSE(probe);
  EXPECT_EQ(raw->references(), 1u);
  EXPECT_EQ(Ptr<Probe>::attached(raw)->references(), 1u);
  EXPECT_EQ(destroyed, 1);
}

TEST(PtrInterface, PointersMayComeAndGoWhileTheConstructorRuns) {
  class SelfPointing final : public Probe {
   public:
    explicit SelfPointing(int& destroyed) : Probe(destroyed) {
      const Ptr<SelfPointing> self(this);
      const Ptr<Probe const> view = self;
    }
  };
  int destroyed = 0;
  {
    const Ptr<SelfPointing> made = makePtr<SelfPointing>(destroyed);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(made->references(), 1u);
  }
  EXPECT_EQ(destroyed, 1);
}

TEST(PtrInterface, AnObjectWhoseConstructorThrowsIsNotDestroyedByItsPointers) {
  class Failing final : public Probe {
   public:
    explicit Failing(int& destroyed) : Probe(destroyed) {
      const Ptr<Failing> self(this);
      throw std::runtime_error("no");
    }
  };
  int basesDestroyed = 0;
  EXPECT_THROW(static_cast<void>(makePtr<Failing>(basesDestroyed)), std::runtime_error);
  EXPECT_EQ(basesDestroyed, 1);
}

TEST(PtrInterface, IsDestroyedOnceWhateverPointersItsDestructorMakes) {
  int destroyed = 0;
  Ptr<Probe> probe = makePtr<Probe>(destroyed);
  int rounds = 0;
  probe->onDestroy = [&rounds](Probe& dying) {
    for (; rounds < 3; ++rounds) {
      Ptr<Probe> again(&dying);
      const Ptr<PtrInterface const> view = again;
      again = nullptr;
    }
  };
  probe = nullptr;
  EXPECT_EQ(rounds, 3);
  EXPECT_EQ(destroyed, 1);
}

TEST(PtrInterface, IsDestroyedOnceWhenADestructorReleasesItsOwner) {
  int outerDestroyed = 0;
  int innerDestroyed = 0;
  Ptr<Probe> outer = makePtr<Probe>(outerDestroyed);
  Ptr<Probe> inner = makePtr<Probe>(innerDestroyed);
  Probe* outerObject = outer.get();
  outer->onDestroy = [&](Probe&) { inner = nullptr; };
  inner->onDestroy = [&](Probe&) { const Ptr<Probe> back(outerObject); };
  outer = nullptr;
  EXPECT_EQ(outerDestroyed, 1);
  EXPECT_EQ(innerDestroyed, 1);
}

TEST(PtrInterface, TheLastReferenceAsksTheObjectToDestroyItself) {
  class Kept final : public PtrInterface {
   public:
    explicit Kept(int& zeros) : zeros_(zeros) {}
    void zeroReferencesIs(bool zero) override {
      if (zero) ++zeros_;
      PtrInterface::zeroReferencesIs(zero);
    }

   private:
    int& zeros_;
  };
  int zeros = 0;
  Ptr<Kept> kept = makePtr<Kept>(zeros);
  kept->zeroReferencesIs(false);
  EXPECT_EQ(kept->references(), 1u);
  kept = nullptr;
  EXPECT_EQ(zeros, 1);
}

TEST(PtrInterface, HasNoNotifieesUnlessItSaysSo) {
  const Ptr<Unrelated> entity = makePtr<Unrelated>();
  const Velo::NotifieeListDescriptor notifiees = entity->notifieeList();
  EXPECT_EQ(notifiees.kind, Velo::NotifieeListDescriptor::Kind::none);
  EXPECT_EQ(notifiees.list, nullptr);
  EXPECT_EQ(notifiees.add, nullptr);
  EXPECT_EQ(notifiees.remove, nullptr);
  EXPECT_EQ(notifiees.visit, nullptr);
  EXPECT_EQ(notifiees.iterate, nullptr);
}

/// Counts atomically while it lives.
class PtrThreadSafety : public ::testing::Test {
 protected:
  PtrThreadSafety() { PtrInterface::threadSafePointersIs(true); }
  ~PtrThreadSafety() override { PtrInterface::threadSafePointersIs(false); }

  static constexpr int rounds = 20000;
};

TEST(PtrThreadSafetySwitch, IsOffUntilItIsSwitchedOn) {
  EXPECT_FALSE(PtrInterface::threadSafePointers());
  PtrInterface::threadSafePointersIs(true);
  EXPECT_TRUE(PtrInterface::threadSafePointers());
  PtrInterface::threadSafePointersIs(false);
  EXPECT_FALSE(PtrInterface::threadSafePointers());
}

TEST_F(PtrThreadSafety, TwoThreadsLoseNoCount) {
  int destroyed = 0;
  Ptr<Probe> shared = makePtr<Probe>(destroyed);
  const auto copyAndDrop = [view = Ptr<Probe const>(shared)] {
    for (int round = 0; round < rounds; ++round) {
      const Ptr<Probe const> copy = view;
      const Ptr<Probe const> another = copy;
    }
  };
  {
    std::thread first(copyAndDrop);
    std::thread second(copyAndDrop);
    first.join();
    second.join();
  }
  EXPECT_EQ(shared->references(), 2u);  // `shared` and the view of the closure
  EXPECT_EQ(destroyed, 0);
}

TEST_F(PtrThreadSafety, OneOfTwoThreadsDestroysWhenBothLetGo) {
  for (int round = 0; round < 200; ++round) {
    int destroyed = 0;
    Ptr<Probe> first = makePtr<Probe>(destroyed);
    Ptr<Probe> second = first;
    std::thread other([&second] { second = nullptr; });
    first = nullptr;
    other.join();
    ASSERT_EQ(destroyed, 1) << "round " << round;
  }
}

}  // namespace
}  // namespace Mox
