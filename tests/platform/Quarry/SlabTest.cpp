#include "Quarry/Slab.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Mox/Ptr.h"
#include "tests/platform/Allocations.h"

namespace Quarry {
namespace {

using ::testing::Contains;
using ::testing::Not;

TEST(Slab, GivesBlocksThatDoNotOverlapAndAreAligned) {
  constexpr std::size_t blockSize = 24;
  constexpr std::size_t blockCount = 300;
  Slab slab("SlabTest::Blocks", blockSize);
  std::set<char*> blocks;
  for (std::size_t block = 0; block < blockCount; ++block) {
    char* bytes = static_cast<char*>(slab.allocate(blockSize));
    std::memset(bytes, static_cast<int>(block), blockSize);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % alignof(std::max_align_t), 0u);
    blocks.insert(bytes);
  }
  EXPECT_EQ(blocks.size(), blockCount);
  const char* end = nullptr;
  for (char* block : blocks) {
    EXPECT_GE(block, end);
    end = block + blockSize;
    slab.release(block, blockSize);
  }
}

TEST(Slab, CountsLiveAndAllocatedObjects) {
  Slab slab("SlabTest::Counts", 16);
  EXPECT_EQ(slab.typeName(), "SlabTest::Counts");
  EXPECT_EQ(slab.live(), 0u);
  void* first = slab.allocate(16);
  void* second = slab.allocate(16);
  EXPECT_EQ(slab.live(), 2u);
  slab.release(first, 16);
  EXPECT_EQ(slab.live(), 1u);
  slab.release(second, 16);
  EXPECT_EQ(slab.live(), 0u);
  EXPECT_EQ(slab.allocated(), 2u);
}

TEST(Slab, GivesALargerObjectMemoryOfItsOwn) {
  Slab slab("SlabTest::Larger", 16);
  const std::size_t before = PlatformTests::liveAllocations();
  void* large = slab.allocate(4096);
  std::memset(large, 1, 4096);
  EXPECT_EQ(PlatformTests::liveAllocations(), before + 1);
  EXPECT_EQ(slab.live(), 1u);
  slab.release(large, 4096);
  EXPECT_EQ(PlatformTests::liveAllocations(), before);
  EXPECT_EQ(slab.live(), 0u);
}

/// A slab that has one page, as it has once a block was taken, and blocks of it to give back.
class SlabPages : public ::testing::Test {
 protected:
  static constexpr std::size_t blockSize = 32;
  static constexpr std::size_t manyBlocks = 1000;

  SlabPages() {
    blocks_.reserve(manyBlocks);
    slab.release(slab.allocate(blockSize), blockSize);
    allocationsOfOnePage = PlatformTests::liveAllocations();
  }
  void takeMany() {
    for (std::size_t block = 0; block < manyBlocks; ++block)
      blocks_.push_back(slab.allocate(blockSize));
  }
  void giveAllBack() {
    for (void* block : blocks_)
      slab.release(block, blockSize);
    blocks_.clear();
  }

  Slab slab{"SlabTest::Pages", blockSize};
  std::size_t allocationsOfOnePage = 0;

 private:
  std::vector<void*> blocks_;
};

TEST_F(SlabPages, AreReleasedButOneWithTheLastBlock) {
  for (int round = 0; round < 3; ++round) {
    takeMany();
    EXPECT_GT(PlatformTests::liveAllocations(), allocationsOfOnePage);
    giveAllBack();
    EXPECT_EQ(PlatformTests::liveAllocations(), allocationsOfOnePage);
  }
}

TEST_F(SlabPages, AreReleasedButOneAlsoWhenTheLastBlockIsALargerOne) {
  takeMany();
  void* large = slab.allocate(4096);
  giveAllBack();
  slab.release(large, 4096);
  EXPECT_EQ(slab.live(), 0u);
  EXPECT_EQ(PlatformTests::liveAllocations(), allocationsOfOnePage);
}

TEST(SlabUse, SharesOneSlabPerTypeNameWhichExistsAsLongAsThereIsAUse) {
  EXPECT_EQ(Slab::find("SlabTest::Shared"), nullptr);
  std::optional<SlabUse> first(std::in_place, "SlabTest::Shared", 16);
  std::optional<SlabUse> second(std::in_place, "SlabTest::Shared", 16);
  EXPECT_EQ(&first->slab(), &second->slab());
  EXPECT_EQ(Slab::find("SlabTest::Shared"), &first->slab());
  void* block = first->slab().allocate(16);
  first.reset();
  ASSERT_NE(Slab::find("SlabTest::Shared"), nullptr);
  EXPECT_EQ(second->slab().live(), 1u);
  second->slab().release(block, 16);
  second.reset();
  EXPECT_EQ(Slab::find("SlabTest::Shared"), nullptr);
}

TEST(SlabUse, ListsTheTypesInTheOrderOfTheirFirstUse) {
  const SlabUse first("SlabTest::First", 16);
  {
    const SlabUse second("SlabTest::Second", 16);
    const SlabUse again("SlabTest::First", 16);
    const std::vector<std::string> names = Slab::typeNames();
    ASSERT_GE(names.size(), 2u);
    EXPECT_EQ(names[names.size() - 2], "SlabTest::First");
    EXPECT_EQ(names.back(), "SlabTest::Second");
  }
  EXPECT_THAT(Slab::typeNames(), Contains("SlabTest::First"));
  EXPECT_THAT(Slab::typeNames(), Not(Contains("SlabTest::Second")));
}

/// An entity from a slab.
class Brick : public Mox::PtrInterface, public SlabAllocated<Brick> {
 public:
  static constexpr const char* typeName = "SlabTest::Brick";
};

class LargeBrick final : public Brick {
 public:
  std::uint64_t more[16] = {};
};

struct Cracked final : SlabAllocated<Cracked> {
  static constexpr const char* typeName = "SlabTest::Cracked";
  Cracked() { throw 1; }
};

TEST(SlabAllocated, CountsTheObjectsOfATypeThatAreAlive) {
  Mox::Ptr<Brick> first = Mox::makePtr<Brick>();
  const Slab* slab = Slab::find("SlabTest::Brick");
  ASSERT_NE(slab, nullptr);
  const std::size_t live = slab->live();
  const std::size_t allocated = slab->allocated();
  Mox::Ptr<Brick> second = Mox::makePtr<Brick>();
  EXPECT_EQ(slab->live(), live + 1);
  EXPECT_EQ(slab->allocated(), allocated + 1);
  first = nullptr;
  second = nullptr;
  EXPECT_EQ(slab->live(), live - 1);
}

TEST(SlabAllocated, CountsDerivedObjectsWithTheirBase) {
  Mox::Ptr<Brick> brick = Mox::makePtr<LargeBrick>();
  const Slab* slab = Slab::find("SlabTest::Brick");
  ASSERT_NE(slab, nullptr);
  const std::size_t live = slab->live();
  brick = nullptr;
  EXPECT_EQ(slab->live(), live - 1);
}

// Objects of a type and of two derived types, one of which has the size of the base.
class Animal : public SlabAllocated<Animal> {
 public:
  static constexpr const char* typeName = "SlabTest::Animal";
  explicit Animal(std::uint64_t mark) : mark_(mark) {}
  virtual ~Animal() = default;
  [[nodiscard]] virtual bool isIntact(std::uint64_t mark) const { return mark_ == mark; }

 private:
  std::uint64_t mark_;
};

class Mouse final : public Animal {
 public:
  using Animal::Animal;
};

class Whale final : public Animal {
 public:
  explicit Whale(std::uint64_t mark) : Animal(mark) { more_.fill(mark); }
  [[nodiscard]] bool isIntact(std::uint64_t mark) const override {
    return Animal::isIntact(mark) && more_ == Filled(mark);
  }

 private:
  struct Filled : std::array<std::uint64_t, 2> {
    Filled() = default;
    explicit Filled(std::uint64_t mark) { fill(mark); }
  };
  Filled more_;
};

std::unique_ptr<Animal> makeAnimal(std::uint64_t number) {
  if (number % 3 == 0) return std::make_unique<Animal>(number);
  if (number % 3 == 1) return std::make_unique<Mouse>(number);
  return std::make_unique<Whale>(number);
}

TEST(SlabAllocated, ObjectsOfDerivedTypesDoNotOverlapThoughBlocksAreUsedAgain) {
  constexpr std::uint64_t animals = 300;
  std::vector<std::unique_ptr<Animal>> zoo(animals);
  for (std::uint64_t round = 0; round < 5; ++round) {
    for (std::uint64_t place = 0; place < animals; place += 1 + round) {
      zoo[place].reset();
      zoo[place] = makeAnimal(place * 7 + round * 2);
      ASSERT_TRUE(zoo[place]->isIntact(place * 7 + round * 2));
    }
    std::uint64_t intact = 0;
    for (std::uint64_t place = 0; place < animals; ++place) {
      for (std::uint64_t past = 0; past <= round; ++past) {
        if (zoo[place]->isIntact(place * 7 + past * 2)) ++intact;
      }
    }
    EXPECT_EQ(intact, animals) << round;
  }
}

TEST(SlabAllocated, ObjectsOfDerivedTypesAreFreedByAPointerToTheBase) {
  { const std::unique_ptr<Animal> first = std::make_unique<Animal>(0); }  // the slab keeps a page
  const Slab* const slab = Slab::find("SlabTest::Animal");
  ASSERT_NE(slab, nullptr);
  const std::size_t memory = PlatformTests::liveAllocations();
  const std::size_t allocated = slab->allocated();
  std::vector<std::unique_ptr<Animal>> zoo;
  for (std::uint64_t number = 0; number < 300; ++number) {
    zoo.push_back(makeAnimal(number));
    EXPECT_EQ(slab->live(), number + 1);
  }
  EXPECT_EQ(slab->allocated(), allocated + 300);
  for (std::size_t left = zoo.size(); left > 0; zoo.pop_back(), --left)
    EXPECT_EQ(slab->live(), left);
  EXPECT_EQ(slab->live(), 0U);
  EXPECT_EQ(slab->allocated(), allocated + 300);
  zoo.shrink_to_fit();
  EXPECT_EQ(PlatformTests::liveAllocations(), memory);
}

TEST(SlabAllocated, GivesTheBlockBackWhenAConstructorThrows) {
  EXPECT_THROW(std::make_unique<Cracked>(), int);
  const Slab* slab = Slab::find("SlabTest::Cracked");
  ASSERT_NE(slab, nullptr);
  EXPECT_GE(slab->allocated(), 1u);
  EXPECT_EQ(slab->live(), 0u);
}

}  // namespace
}  // namespace Quarry
