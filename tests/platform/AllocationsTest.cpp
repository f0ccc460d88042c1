#include "tests/platform/Allocations.h"

#include <gtest/gtest.h>

#include <new>

#include "Velo/String.h"

namespace PlatformTests {
namespace {

TEST(Allocations, CountsThoseOfThisExecutable) {
  const std::size_t before = allocations();
  const std::size_t liveBefore = liveAllocations();
  void* block = ::operator new(100);  // a new-expression might be optimised away
  EXPECT_EQ(allocations(), before + 1);
  EXPECT_EQ(liveAllocations(), liveBefore + 1);
  ::operator delete(block);
  EXPECT_EQ(allocations(), before + 1);
  EXPECT_EQ(liveAllocations(), liveBefore);
}

TEST(Allocations, CountsThoseOfThePlatformLibrary) {
  const std::size_t before = allocations();
  const Velo::String text("allocated inside the library");
  EXPECT_EQ(allocations(), before + 1);
}

}  // namespace
}  // namespace PlatformTests
