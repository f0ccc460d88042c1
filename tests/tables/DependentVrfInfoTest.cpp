#include "ZelVrfSelectionPolicy/tables/DependentVrfInfo.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <type_traits>

#include "tests/platform/L3/CollidingNames.h"

namespace ZelVrfSelectionPolicy {
namespace {

static_assert(DependentVrfInfo::fallbackVrfAttribute == 130);
static_assert(DependentVrfInfo::dependentVrfsAttribute == 131);
static_assert(std::is_same_v<DependentVrfInfo::DependentVrfs,
                             Mox::HashMap2018<L3::VrfName, Mox::NoValue, 0x9e9099d6>>,
              "the set's own salt");

template <class Record>
concept FallbackVrfIsWritable = requires(Record& record) {
  record.fallbackVrfIs(L3::VrfName());
}
|| std::assignable_from<decltype(std::declval<Record&>().fallbackVrf()), L3::VrfName>;
static_assert(!FallbackVrfIsWritable<DependentVrfInfo>, "the key is fixed at construction");

// A name that counts comparisons with others.
struct CountedName {
  L3::VrfName name;
  std::size_t* comparisons;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept { return name.hash(seed); }
  friend bool operator==(const CountedName& a, const CountedName& b) noexcept {
    ++*a.comparisons;
    return a.name == b.name;
  }
};

// A set that finds its members as one of names does.
template <unsigned Salt>
Mox::HashSet2018<CountedName, Salt> countedLike(const Mox::HashSet2018<L3::VrfName, Salt>&);
using CountedNames = decltype(countedLike(std::declval<DependentVrfInfo::DependentVrfs>()));

template <unsigned Salt>
unsigned hashIn(const Mox::HashSet2018<L3::VrfName, Salt>&, const L3::VrfName& name) {
  return name.hash(Mox::HashHelper::hashSeed32() ^ Salt);
}

class DependentVrfInfoOfRed : public ::testing::Test {
 protected:
  Mox::Ptr<DependentVrfInfo> info_ = Mox::makePtr<DependentVrfInfo>("red");
};

TEST_F(DependentVrfInfoOfRed, StartsWithItsKeyAndAnEmptySet) {
  EXPECT_EQ(info_->fallbackVrf(), L3::VrfName("red"));
  EXPECT_EQ(info_->dependentVrfs().count(), 0U);
  EXPECT_FALSE(info_->dependentVrfs("red"));
  EXPECT_EQ(info_->fwkType()->name, "ZelVrfSelectionPolicy::DependentVrfInfo");
}

TEST_F(DependentVrfInfoOfRed, AddingTheSameNameTwiceLeavesOneMember) {
  info_->dependentVrfsIs("blue");
  info_->dependentVrfsIs("blue");
  EXPECT_EQ(info_->dependentVrfs().count(), 1U);
  EXPECT_TRUE(info_->dependentVrfs("blue"));
}

TEST_F(DependentVrfInfoOfRed, RemovingAnAbsentNameIsFalseAndLeavesTheSet) {
  info_->dependentVrfsIs("blue");
  EXPECT_FALSE(info_->dependentVrfsDel("green"));
  EXPECT_EQ(info_->dependentVrfs().count(), 1U);
  EXPECT_TRUE(info_->dependentVrfs("blue"));
}

TEST_F(DependentVrfInfoOfRed, RemovingAPresentNameIsTrueOnce) {
  info_->dependentVrfsIs("blue");
  info_->dependentVrfsIs("green");
  EXPECT_TRUE(info_->dependentVrfsDel("blue"));
  EXPECT_FALSE(info_->dependentVrfsDel("blue"));
  EXPECT_FALSE(info_->dependentVrfs("blue"));
  EXPECT_TRUE(info_->dependentVrfs("green"));
}

TEST_F(DependentVrfInfoOfRed, RemovingAllOfAnEmptySetIsHarmless) {
  info_->dependentVrfsDelAll();
  EXPECT_EQ(info_->dependentVrfs().count(), 0U);
  info_->dependentVrfsIs("blue");
  EXPECT_TRUE(info_->dependentVrfs("blue"));
}

TEST_F(DependentVrfInfoOfRed, RemovingAllEmptiesTheSet) {
  for (const char* name : {"", "default", "blue"})
    info_->dependentVrfsIs(name);
  info_->dependentVrfsDelAll();
  EXPECT_EQ(info_->dependentVrfs().count(), 0U);
  EXPECT_FALSE(info_->dependentVrfs("blue"));
}

TEST_F(DependentVrfInfoOfRed, TheEmptyNameTheKeyAndBytesAreMembersLikeAnyOther) {
  for (const L3::VrfName& name : {L3::VrfName(), L3::VrfName("red"), L3::VrfName("Red"),
                                  L3::VrfName(std::string(100, '\0'))}) {
    EXPECT_FALSE(info_->dependentVrfs(name));
    info_->dependentVrfsIs(name);
    EXPECT_TRUE(info_->dependentVrfs(name));
  }
  EXPECT_EQ(info_->dependentVrfs().count(), 4U);
}

// Their bytes have one hash, under the seed 0.
TEST_F(DependentVrfInfoOfRed, NamesChosenToCollideHaveHashesOfTheirOwnInTheSet) {
  constexpr unsigned count = 20000;
  const PlatformTests::CollidingNames colliding(count);
  for (const std::string& text : colliding.texts())
    info_->dependentVrfsIs(text);
  EXPECT_EQ(info_->dependentVrfs().count(), count);
  std::set<unsigned> hashes;
  for (const std::string& text : colliding.texts()) {
    ASSERT_TRUE(info_->dependentVrfs(text));
    hashes.insert(hashIn(info_->dependentVrfs(), text));
  }
  // Of so many random 32-bit numbers, one pair in ten runs is equal.
  EXPECT_GE(hashes.size(), count - 5);
}

TEST_F(DependentVrfInfoOfRed, NamesChosenToCollideAreFoundByAFewComparisons) {
  constexpr unsigned count = 20000;
  const PlatformTests::CollidingNames colliding(count);
  CountedNames names;
  std::size_t comparisons = 0;
  for (const std::string& text : colliding.texts())
    names.insert({text, &comparisons});
  EXPECT_LE(comparisons, 2 * count) << "to insert";

  comparisons = 0;
  for (const std::string& text : colliding.texts())
    ASSERT_TRUE(names.has({text, &comparisons}));
  EXPECT_GE(comparisons, count);
  EXPECT_LE(comparisons, 3 * count) << "to find";
}

TEST_F(DependentVrfInfoOfRed, NobodyCanSubscribe) {
  EXPECT_EQ(static_cast<unsigned>(info_->notifieeList().kind), 0U);
}

TEST_F(DependentVrfInfoOfRed, ItIsCountedInItsSlabWhileItLives) {
  ASSERT_NE(Quarry::Slab::find(DependentVrfInfo::typeName), nullptr);
  EXPECT_EQ(Quarry::Slab::find(DependentVrfInfo::typeName)->live(), 1U);
  info_ = nullptr;
  EXPECT_EQ(Quarry::Slab::find(DependentVrfInfo::typeName)->live(), 0U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
