#include "Velo/ScopeStack.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

namespace Velo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Note {
  int number = 0;
  bool isOdd = false;
};
using Stack = ScopeStack<Note>;

std::vector<int> numbersIn(const Stack& stack) {
  std::vector<int> numbers;
  stack.forEach([&](const Note& note) { numbers.push_back(note.number); });
  return numbers;
}

int innermostOf(const Stack& stack) {
  const Note* const innermost = stack.innermost();
  return innermost == nullptr ? 0 : innermost->number;
}

TEST(ScopeStack, IsEmptyAtFirst) {
  const Stack stack;
  EXPECT_TRUE(stack.empty());
  EXPECT_EQ(stack.innermost(), nullptr);
  EXPECT_EQ(stack.find([](const Note&) { return true; }), nullptr);
  EXPECT_THAT(numbersIn(stack), IsEmpty());
}

TEST(ScopeStack, HasTheNotesOfTheScopesThatAreOpenInnermostFirst) {
  Stack stack;
  const Stack::Scope outer(stack, 1);
  EXPECT_FALSE(stack.empty());
  {
    const Stack::Scope middle(stack, 2);
    {
      const Stack::Scope inner(stack, 3);
      EXPECT_THAT(numbersIn(stack), ElementsAre(3, 2, 1));
      EXPECT_EQ(innermostOf(stack), 3);
    }
    EXPECT_THAT(numbersIn(stack), ElementsAre(2, 1));
    EXPECT_EQ(innermostOf(stack), 2);
    const Stack::Scope next(stack, 4);
    EXPECT_THAT(numbersIn(stack), ElementsAre(4, 2, 1));
  }
  EXPECT_THAT(numbersIn(stack), ElementsAre(1));
}

TEST(ScopeStack, IsEmptyWhenTheOutermostScopeIsClosed) {
  Stack stack;
  {
    const Stack::Scope outer(stack, 1);
    const Stack::Scope inner(stack, 2);
  }
  EXPECT_TRUE(stack.empty());
  EXPECT_EQ(stack.innermost(), nullptr);
}

TEST(ScopeStack, MakesANoteOfWhatItIsGiven) {
  Stack stack;
  const Stack::Scope plain(stack);
  EXPECT_EQ(plain->number, 0);
  const Stack::Scope given(stack, 3, true);
  EXPECT_EQ(given->number, 3);
  EXPECT_TRUE(given->isOdd);
}

TEST(ScopeStack, FindsTheInnermostNoteThatMeetsACondition) {
  Stack stack;
  const Stack::Scope first(stack, 1, true);
  const Stack::Scope second(stack, 2, false);
  const Stack::Scope third(stack, 3, true);
  const Stack::Scope fourth(stack, 4, false);
  const Note* const odd = stack.find([](const Note& note) { return note.isOdd; });
  ASSERT_NE(odd, nullptr);
  EXPECT_EQ(odd->number, 3);
  const Note* const small = stack.find([](const Note& note) { return note.number < 2; });
  ASSERT_NE(small, nullptr);
  EXPECT_EQ(small->number, 1);
  EXPECT_EQ(stack.find([](const Note& note) { return note.number > 4; }), nullptr);
}

TEST(ScopeStack, SearchesNoFurtherThanWhatItFinds) {
  Stack stack;
  const Stack::Scope outer(stack, 1);
  const Stack::Scope middle(stack, 2);
  const Stack::Scope inner(stack, 3);
  std::vector<int> asked;
  static_cast<void>(stack.find([&](const Note& note) {
    asked.push_back(note.number);
    return note.number == 2;
  }));
  EXPECT_THAT(asked, ElementsAre(3, 2));
}

TEST(ScopeStack, LetsNotesBeWrittenByWhoeverFindsThem) {
  Stack stack;
  Stack::Scope outer(stack, 1);
  Stack::Scope inner(stack, 2);
  stack.innermost()->number = 20;
  stack.find([](const Note& note) { return note.number == 1; })->number = 10;
  EXPECT_EQ(outer->number, 10);
  EXPECT_EQ(inner->number, 20);
  stack.forEach([](Note& note) { note.isOdd = true; });
  EXPECT_TRUE(outer->isOdd);
  EXPECT_TRUE(inner->isOdd);
  outer->number = 11;
  EXPECT_THAT(numbersIn(stack), ElementsAre(20, 11));
}

TEST(ScopeStack, IsClosedByAnExceptionAsFarAsItPasses) {
  Stack stack;
  const Stack::Scope outer(stack, 1);
  try {
    const Stack::Scope middle(stack, 2);
    const Stack::Scope inner(stack, 3);
    throw std::runtime_error("no");
  } catch (const std::runtime_error&) {
    EXPECT_THAT(numbersIn(stack), ElementsAre(1));
  }
  EXPECT_EQ(innermostOf(stack), 1);
}

TEST(ScopeStack, ThatIsDestroyedLeavesEveryScopeAnOrphan) {
  std::optional<Stack> stack(std::in_place);
  Stack::Scope outer(*stack, 1);
  {
    const Stack::Scope inner(*stack, 2);
    EXPECT_FALSE(outer.isOrphan());
    EXPECT_FALSE(inner.isOrphan());
    stack.reset();
    EXPECT_TRUE(inner.isOrphan());
    EXPECT_EQ(inner->number, 2);
  }
  EXPECT_TRUE(outer.isOrphan());
  EXPECT_EQ(outer->number, 1);
}

// The memory of the stack is that of another one by then.
TEST(ScopeStack, IsNotTouchedByTheOrphansOfOneThatWasInItsPlace) {
  std::optional<Stack> stack(std::in_place);
  auto orphan = std::make_unique<Stack::Scope>(*stack, 1);
  stack.emplace();
  const Stack::Scope open(*stack, 2);
  orphan.reset();
  EXPECT_THAT(numbersIn(*stack), ElementsAre(2));
}

TEST(ScopeStack, OfOneObjectKnowsNothingOfThatOfAnother) {
  Stack first;
  Stack second;
  const Stack::Scope inFirst(first, 1);
  EXPECT_TRUE(second.empty());
  const Stack::Scope inSecond(second, 2);
  EXPECT_THAT(numbersIn(first), ElementsAre(1));
  EXPECT_THAT(numbersIn(second), ElementsAre(2));
}

}  // namespace
}  // namespace Velo
