#include "Velo/NotifieeList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/platform/Allocations.h"

namespace Velo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Listener {
  int number;
};

class NotifieeLists : public ::testing::Test {
 protected:
  NotifieeLists() {
    list->add(a);
    list->add(b);
    list->add(c);
  }
  template <class Work>
  std::vector<int> visited(Work work) {
    std::vector<int> numbers;
    list->visit([&](Listener& listener) {
      numbers.push_back(listener.number);
      work(listener);
    });
    return numbers;
  }
  std::vector<int> visited() {
    return visited([](Listener&) {});
  }

  Listener a{1};
  Listener b{2};
  Listener c{3};
  Listener d{4};
  std::unique_ptr<NotifieeList<Listener>> list = std::make_unique<NotifieeList<Listener>>();
};

TEST_F(NotifieeLists, KeepTheOrderOfAdding) {
  EXPECT_THAT(visited(), ElementsAre(1, 2, 3));
  EXPECT_EQ(list->size(), 3u);
}

TEST_F(NotifieeLists, HoldANotifieeAtMostOnce) {
  EXPECT_FALSE(list->add(a));
  EXPECT_THAT(visited(), ElementsAre(1, 2, 3));
}

TEST_F(NotifieeLists, SayWhetherSomethingWasRemoved) {
  EXPECT_TRUE(list->remove(b));
  EXPECT_FALSE(list->remove(b));
  EXPECT_FALSE(list->has(b));
  EXPECT_TRUE(list->has(a));
  EXPECT_THAT(visited(), ElementsAre(1, 3));
}

TEST_F(NotifieeLists, AreEmptyWhenAllWereRemoved) {
  EXPECT_FALSE(list->empty());
  list->remove(a);
  list->remove(b);
  list->remove(c);
  EXPECT_TRUE(list->empty());
  EXPECT_EQ(list->size(), 0u);
  EXPECT_THAT(visited(), IsEmpty());
}

TEST_F(NotifieeLists, DoNotVisitThoseAddedMeanwhile) {
  EXPECT_THAT(visited([this](Listener&) { list->add(d); }), ElementsAre(1, 2, 3));
  EXPECT_THAT(visited(), ElementsAre(1, 2, 3, 4));
}

TEST_F(NotifieeLists, GoOnWhenTheVisitedOneRemovesItself) {
  EXPECT_THAT(visited([this](Listener& self) { list->remove(self); }), ElementsAre(1, 2, 3));
  EXPECT_TRUE(list->empty());
}

TEST_F(NotifieeLists, DoNotVisitThoseRemovedBeforeTheirTurn) {
  EXPECT_THAT(visited([this](Listener&) { list->remove(b); }), ElementsAre(1, 3));
}

TEST_F(NotifieeLists, GoOnWhenOneAlreadyVisitedIsRemoved) {
  EXPECT_THAT(visited([this](Listener& self) {
                if (self.number == 2) list->remove(a);
              }),
              ElementsAre(1, 2, 3));
  EXPECT_THAT(visited(), ElementsAre(2, 3));
}

TEST_F(NotifieeLists, DoNotVisitTwiceWhoIsRemovedAndAddedAgain) {
  const auto leaveAndReturn = [this](Listener& self) {
    list->remove(self);
    list->add(self);
  };
  EXPECT_THAT(visited(leaveAndReturn), ElementsAre(1, 2, 3));
  EXPECT_EQ(list->size(), 3u);
}

TEST_F(NotifieeLists, CountExactlyWhileTheyAreVisited) {
  visited([this](Listener& self) {
    if (self.number != 1) return;
    list->remove(b);
    EXPECT_EQ(list->size(), 2u);
    EXPECT_FALSE(list->has(b));
    list->add(b);
    EXPECT_EQ(list->size(), 3u);
    EXPECT_TRUE(list->has(b));
  });
  EXPECT_THAT(visited(), ElementsAre(1, 3, 2));
}

TEST_F(NotifieeLists, EndAVisitQuietlyWhenTheyAreDestroyed) {
  EXPECT_THAT(visited([this](Listener& self) {
                if (self.number == 2) list = nullptr;
              }),
              ElementsAre(1, 2));
}

TEST_F(NotifieeLists, EndEveryNestedVisitWhenTheyAreDestroyed) {
  std::vector<int> inner;
  EXPECT_THAT(visited([&](Listener&) {
                inner = visited([this](Listener& self) {
                  if (self.number == 2) list = nullptr;
                });
              }),
              ElementsAre(1));
  EXPECT_THAT(inner, ElementsAre(1, 2));
}

TEST_F(NotifieeLists, NestVisitsEachWithItsOwnNotifiees) {
  std::vector<int> inner;
  const std::vector<int> outer = visited([&](Listener& self) {
    if (self.number != 1) return;
    list->remove(b);
    list->add(d);
    inner = visited();
  });
  EXPECT_THAT(outer, ElementsAre(1, 3));
  EXPECT_THAT(inner, ElementsAre(1, 3, 4));
  EXPECT_THAT(visited(), ElementsAre(1, 3, 4));
}

TEST_F(NotifieeLists, GoOnInTheOuterVisitAfterRemovalsInTheInnerOne) {
  EXPECT_THAT(visited([this](Listener& self) {
                if (self.number == 1) visited([this](Listener& each) { list->remove(each); });
              }),
              ElementsAre(1));
  EXPECT_TRUE(list->empty());
}

TEST_F(NotifieeLists, AreWholeAfterAVisitorThrew) {
  EXPECT_THROW(visited([this](Listener& self) {
                 list->remove(self);
                 if (self.number == 2) throw std::runtime_error("no");
               }),
               std::runtime_error);
  EXPECT_THAT(visited(), ElementsAre(3));
  list->add(a);
  EXPECT_THAT(visited(), ElementsAre(3, 1));
}

TEST_F(NotifieeLists, GiveTheNextOneOverHoles) {
  EXPECT_EQ(list->next(nullptr), &a);
  EXPECT_EQ(list->next(&a), &b);
  EXPECT_EQ(list->next(&c), nullptr);
  EXPECT_EQ(list->next(&d), nullptr);
  visited([this](Listener& self) {
    if (self.number != 3) return;
    list->remove(a);
    list->remove(b);
    EXPECT_EQ(list->next(nullptr), &c);
  });
}

TEST_F(NotifieeLists, DoNotAllocateWhileTheyAreVisited) {
  std::size_t before = PlatformTests::allocations();
  int sum = 0;
  list->visit([&](Listener& self) {
    sum += self.number;
    if (self.number == 2) list->remove(self);
  });
  EXPECT_EQ(PlatformTests::allocations(), before);
  EXPECT_EQ(sum, 6);
}

TEST_F(NotifieeLists, CloseTheHolesOfAVisitWhenOneIsAddedAfterIt) {
  visited([this](Listener& self) {
    if (self.number == 1) list->remove(self);
    if (self.number == 2) list->remove(c);
  });
  EXPECT_EQ(list->next(nullptr), &b);
  EXPECT_EQ(list->next(&b), nullptr);
  const std::size_t before = PlatformTests::allocations();
  list->add(d);
  list->add(c);
  EXPECT_EQ(PlatformTests::allocations(), before);
  EXPECT_THAT(visited(), ElementsAre(2, 4, 3));
}

TEST_F(NotifieeLists, CloseTheHolesOfAVisitWhenTheyAreVisitedNext) {
  visited([this](Listener& self) {
    if (self.number != 3) list->remove(self);
  });
  const std::size_t before = PlatformTests::allocations();
  list->visit([this](Listener&) {
    list->add(a);
    list->add(b);
    list->add(d);
  });
  EXPECT_EQ(PlatformTests::allocations(), before);
  EXPECT_THAT(visited(), ElementsAre(3, 1, 2, 4));
}

TEST_F(NotifieeLists, CloseTheHolesOfAVisitWhenAnotherOneIsRemoved) {
  visited([this](Listener&) { list->remove(a); });
  EXPECT_TRUE(list->remove(c));
  EXPECT_EQ(list->size(), 1u);
  EXPECT_THAT(visited(), ElementsAre(2));
}

TEST_F(NotifieeLists, KeepHolesUntilTheOutermostVisitIsOver) {
  EXPECT_THAT(visited([this](Listener& self) {
                if (self.number != 1) return;
                visited([this](Listener& each) { list->remove(each); });
                list->add(b);
                list->add(a);
              }),
              ElementsAre(1));
  EXPECT_THAT(visited(), ElementsAre(2, 1));
}

TEST_F(NotifieeLists, DoNotGrowByVisitsInWhichOneLeavesAndReturns) {
  const auto leaveAndReturn = [this](Listener& self) {
    list->remove(self);
    list->add(self);
  };
  visited(leaveAndReturn);
  visited(leaveAndReturn);
  const std::size_t before = PlatformTests::allocations();
  for (int round = 0; round < 1000; ++round)
    list->visit(leaveAndReturn);
  EXPECT_EQ(PlatformTests::allocations(), before);
  EXPECT_EQ(list->size(), 3u);
}

}  // namespace
}  // namespace Velo
